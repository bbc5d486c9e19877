// Which videos are passed over, and how long a list of nothing but such is waited with.

#include <gmock/gmock.h>

#include "media_player/broken_files.h"

namespace {

using namespace std::chrono_literals;
using platform::BrokenFiles;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr platform::FileStamp ONE = {1, 2, 3, 4, 5};
constexpr platform::FileStamp ANOTHER = {1, 2, 3, 4, 6};
constexpr bool CERTAIN = true;

TEST(BrokenFilesTest, AFileIsKnownUntilItChanges)
{
    BrokenFiles files;
    EXPECT_FALSE(files.why("/a.mp4", ONE));

    files.note("/a.mp4", ONE, "it has no picture", CERTAIN);

    EXPECT_EQ(files.why("/a.mp4", ONE), "it has no picture");
    EXPECT_FALSE(files.why("/a.mp4", ANOTHER));
    EXPECT_FALSE(files.why("/b.mp4", ONE));
}

TEST(BrokenFilesTest, AFileThatMayBeGoodIsTriedOnceMore)
{
    BrokenFiles files;

    files.note("/a.mp4", ONE, "its first frame does not come", !CERTAIN);
    EXPECT_FALSE(files.why("/a.mp4", ONE));
    files.note("/a.mp4", ANOTHER, "its first frame does not come", !CERTAIN);
    EXPECT_FALSE(files.why("/a.mp4", ANOTHER)) << "it has changed";

    files.note("/a.mp4", ANOTHER, "its first frame does not come", !CERTAIN);
    EXPECT_TRUE(files.why("/a.mp4", ANOTHER));
}

TEST(BrokenFilesTest, AFileWithoutAStampIsToldOfAndTriedEachTime)
{
    BrokenFiles files;

    files.note("/a.mp4", std::nullopt, "there is no such file", CERTAIN);

    ASSERT_EQ(files.all().size(), 1u);
    EXPECT_EQ(files.all()[0].path, "/a.mp4");
    EXPECT_EQ(files.all()[0].why, "there is no such file");
    EXPECT_FALSE(files.why("/a.mp4", ONE));
}

TEST(BrokenFilesTest, TheSameIsNewsOnce)
{
    BrokenFiles files;

    EXPECT_TRUE(files.note("/a.mp4", ONE, "it has no picture", CERTAIN));
    EXPECT_FALSE(files.note("/a.mp4", ONE, "it has no picture", CERTAIN));
    EXPECT_TRUE(files.note("/a.mp4", ONE, "it is a photo", CERTAIN));
    EXPECT_TRUE(files.note("/a.mp4", ANOTHER, "it is a photo", CERTAIN));
}

TEST(BrokenFilesTest, AFileThatCouldBeOpenedIsNotToldOfAnyMore)
{
    BrokenFiles files;
    files.note("/a.mp4", ONE, "it has no picture", CERTAIN);

    files.forget("/a.mp4");

    EXPECT_THAT(files.all(), IsEmpty());
}

TEST(BrokenFilesTest, ItDoesNotGrowWithoutEnd)
{
    BrokenFiles files;
    for (int number = 0; number < 5000; ++number)
        files.note("/" + std::to_string(number), ONE, "rubbish", CERTAIN);

    EXPECT_EQ(files.all().size(), 4096u);
    files.note("/0", ONE, "still rubbish", CERTAIN);
    EXPECT_EQ(files.why("/0", ONE), "still rubbish");
    EXPECT_EQ(files.pause_for("/4999", 0), 1s) << "one more must not keep the set busy";
}

TEST(BrokenFilesTest, RoundsOfNothingButSuchBecomeRarer)
{
    BrokenFiles files;
    files.note("/a.mp4", ONE, "rubbish", CERTAIN);
    files.note("/b.mp4", ONE, "rubbish", CERTAIN);
    EXPECT_EQ(files.pause_for("/a.mp4", 7), 0s);
    EXPECT_EQ(files.pause_for("/b.mp4", 7), 0s);
    testing::internal::CaptureStderr();

    for (const auto &pause : {1s, 2s, 4s, 8s, 16s, 32s, 60s, 60s}) {
        EXPECT_EQ(files.pause_for("/a.mp4", 7), pause);
        EXPECT_EQ(files.pause_for("/b.mp4", 7), 0s) << "of the same round";
    }

    const std::string log = testing::internal::GetCapturedStderr();
    EXPECT_THAT(log, HasSubstr("none of the videos can be played; the next try is in 2 s"));
    EXPECT_EQ(log.find("in 60 s"), log.rfind("in 60 s")) << "said once: " << log;
}

TEST(BrokenFilesTest, AnythingThatWasShownEndsTheWaiting)
{
    BrokenFiles files;
    files.note("/a.mp4", ONE, "rubbish", CERTAIN);
    for (int round = 0; round < 3; ++round)
        files.pause_for("/a.mp4", 7);

    EXPECT_EQ(files.pause_for("/a.mp4", 8), 0s);
    EXPECT_EQ(files.pause_for("/a.mp4", 8), 1s);
}

} // namespace
