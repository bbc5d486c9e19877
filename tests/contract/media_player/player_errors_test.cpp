// What an error of the media system means to the player.

#include <gtest/gtest.h>

#include "media_player.h"
#include "media_player/gst_ptr.h"
#include "media_player/player_errors.h"

namespace platform {
namespace {

Failure failure_of(GstElement *source, GQuark domain, int code)
{
    const ErrorPtr error(g_error_new_literal(domain, code, "a reason"));
    GstMessage *message =
        gst_message_new_error(source ? GST_OBJECT(source) : nullptr, error.get(), "details");
    Failure failure = read_failure(message);
    gst_message_unref(message);
    return failure;
}

class PlayerErrors : public testing::Test {
  protected:
    static void SetUpTestSuite() { gst_init(nullptr, nullptr); }
};

TEST_F(PlayerErrors, EachReasonHasItsCode)
{
    const struct {
        GQuark domain;
        int reason;
        int code;
    } cases[] = {
        {GST_RESOURCE_ERROR, GST_RESOURCE_ERROR_NOT_FOUND, PLAYER_ERROR_NO_SUCH_FILE},
        {GST_RESOURCE_ERROR, GST_RESOURCE_ERROR_NOT_AUTHORIZED, PLAYER_ERROR_PERMISSION_DENIED},
        {GST_RESOURCE_ERROR, GST_RESOURCE_ERROR_BUSY, PLAYER_ERROR_RESOURCE_LIMIT},
        {GST_RESOURCE_ERROR, GST_RESOURCE_ERROR_NO_SPACE_LEFT, PLAYER_ERROR_RESOURCE_LIMIT},
        {GST_RESOURCE_ERROR, GST_RESOURCE_ERROR_READ, PLAYER_ERROR_INVALID_OPERATION},
        {GST_STREAM_ERROR, GST_STREAM_ERROR_CODEC_NOT_FOUND,
         PLAYER_ERROR_NOT_SUPPORTED_VIDEO_CODEC},
        {GST_STREAM_ERROR, GST_STREAM_ERROR_DECODE, PLAYER_ERROR_NOT_SUPPORTED_FILE},
        {GST_CORE_ERROR, GST_CORE_ERROR_MISSING_PLUGIN, PLAYER_ERROR_NOT_SUPPORTED_VIDEO_CODEC},
        {GST_CORE_ERROR, GST_CORE_ERROR_NEGOTIATION, PLAYER_ERROR_INVALID_OPERATION},
    };
    for (const auto &[domain, reason, code] : cases) {
        const Failure failure = failure_of(nullptr, domain, reason);
        EXPECT_EQ(failure.code, code) << g_quark_to_string(domain) << " " << reason;
        EXPECT_EQ(failure.busy, domain == GST_RESOURCE_ERROR && reason == GST_RESOURCE_ERROR_BUSY);
        EXPECT_EQ(failure.text, "a reason");
        EXPECT_EQ(failure.details, "details");
    }
}

TEST_F(PlayerErrors, ItsSourceTellsWhatIsBroken)
{
    const std::pair<const char *, Failure::Part> cases[] = {
        {"alsasink", Failure::Part::SoundDevice},  {"avdec_aac", Failure::Part::Sound},
        {"fakevideosink", Failure::Part::Display}, {"avdec_h264", Failure::Part::Picture},
        {"wavparse", Failure::Part::Picture},      {"qtdemux", Failure::Part::Picture},
    };
    for (const auto &[name, part] : cases) {
        const ElementPtr source = make_element(name);
        ASSERT_TRUE(source) << name;
        EXPECT_EQ(failure_of(source.get(), GST_STREAM_ERROR, GST_STREAM_ERROR_FAILED).part, part)
            << name;
    }
}

} // namespace
} // namespace platform
