// Why a file cannot be prepared: what its reason is called, and whose fault it is.

#include <gmock/gmock.h>

#include "media_player.h"
#include "media_player/failure_facts.h"

using platform::FailureFacts;
using platform::Track;
using testing::HasSubstr;
using Kind = platform::UnplayableFile::Kind;

namespace {

TEST(FailureFactsTest, AFileWhoseFirstFrameDoesNotComeIsTooSlow)
{
    FailureFacts facts;
    EXPECT_EQ(facts.kind(PLAYER_ERROR_NOT_SUPPORTED_FILE), Kind::Damaged);

    facts.on_timed_out();

    EXPECT_EQ(facts.kind(PLAYER_ERROR_NOT_SUPPORTED_FILE), Kind::TooSlow);
}

TEST(FailureFactsTest, APictureWithoutItsDecoderIsNotTheFilesFault)
{
    FailureFacts facts;
    facts.on_decoder_missing(Track::Sound, "AC-3");
    EXPECT_TRUE(facts.is_its_own_fault(PLAYER_ERROR_NOT_SUPPORTED_VIDEO_CODEC));

    facts.on_decoder_missing(Track::Picture, "H.265");

    EXPECT_FALSE(facts.is_its_own_fault(PLAYER_ERROR_NOT_SUPPORTED_VIDEO_CODEC));
    EXPECT_EQ(facts.kind(PLAYER_ERROR_NOT_SUPPORTED_VIDEO_CODEC), Kind::NoDecoder);
}

TEST(FailureFactsTest, EachMissingDecoderIsNamedOnce)
{
    FailureFacts facts;
    EXPECT_EQ(facts.why_no_picture("it is broken"), "it is broken");
    for (const char *decoder : {"H.265", "VP9", "H.265"})
        facts.on_decoder_missing(Track::Picture, decoder);

    EXPECT_THAT(facts.why_no_picture("it is broken"), HasSubstr("(H.265, VP9)"));
    EXPECT_EQ(facts.missing_decoders(Track::Sound), "");
}

} // namespace
