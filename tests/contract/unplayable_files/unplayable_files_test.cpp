// Which files could not be shown, and which of them are passed over without being tried.

#include <gmock/gmock.h>

#include "unplayable_files/unplayable_files.h"

namespace {

using namespace std::chrono_literals;
using platform::UnplayableFiles;
using Kind = platform::UnplayableFile::Kind;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr platform::FileStamp ONE = {1, 2, 3, 4, 5, 6, 7};
constexpr platform::FileStamp ANOTHER = {1, 2, 3, 4, 5, 6, 8};

TEST(UnplayableFilesTest, AFileThatHasFailedTwiceIsKnownUntilItChanges)
{
    UnplayableFiles files;
    EXPECT_FALSE(files.why("/a.mp4", ONE));

    files.note("/a.mp4", ONE, "it has no picture");
    EXPECT_FALSE(files.why("/a.mp4", ONE)) << "something else may have been to blame";
    files.note("/a.mp4", ONE, "it has no picture");

    EXPECT_EQ(files.why("/a.mp4", ONE), "it has no picture");
    EXPECT_FALSE(files.why("/a.mp4", ANOTHER));
    EXPECT_FALSE(files.why("/b.mp4", ONE));
}

TEST(UnplayableFilesTest, AFileThatHasChangedHasTwoTriesAgain)
{
    UnplayableFiles files;
    files.note("/a.mp4", ONE, "rubbish");
    files.note("/a.mp4", ONE, "rubbish");

    files.note("/a.mp4", ANOTHER, "rubbish");
    EXPECT_FALSE(files.why("/a.mp4", ANOTHER));

    files.note("/a.mp4", ANOTHER, "rubbish");
    EXPECT_TRUE(files.why("/a.mp4", ANOTHER));
}

TEST(UnplayableFilesTest, AFileThatIsTooSlowIsTriedAgainMoreAndMoreRarely)
{
    UnplayableFiles files;
    UnplayableFiles::Clock::time_point now;
    files.note("/a.mp4", ONE, "its first frame does not come", Kind::TooSlow, now);
    EXPECT_FALSE(files.why("/a.mp4", ONE, now));

    for (const auto &pause : {5min, 10min, 20min, 40min, 60min, 60min}) {
        files.note("/a.mp4", ONE, "its first frame does not come", Kind::TooSlow, now);
        now += pause - 1s;
        EXPECT_TRUE(files.why("/a.mp4", ONE, now)) << pause.count();
        files.note("/a.mp4", ONE, "its first frame does not come", Kind::Damaged, now);
        now += 1s;
        EXPECT_FALSE(files.why("/a.mp4", ONE, now)) << pause.count();
    }

    files.note("/a.mp4", ONE, "it has no picture", Kind::Damaged, now);
    EXPECT_TRUE(files.why("/a.mp4", ONE, now + 24h)) << "the disk has answered";
}

TEST(UnplayableFilesTest, AFileThatStoodStillIsTriedAgainMoreAndMoreRarelyUntilItPlaysToItsEnd)
{
    UnplayableFiles files;
    UnplayableFiles::Clock::time_point now;
    for (const auto &pause : {5min, 10min, 20min, 40min, 60min, 60min}) {
        files.note_stalls("/a.mp4", ONE, "no frame comes any more", now);
        now += pause - 1s;
        EXPECT_EQ(files.why("/a.mp4", ONE, now), "no frame comes any more") << pause.count();
        EXPECT_FALSE(files.why("/a.mp4", ANOTHER, now));
        now += 1s;
        EXPECT_FALSE(files.why("/a.mp4", ONE, now)) << pause.count();
        files.forget("/a.mp4"); // it could be opened, as before
    }
    EXPECT_EQ(files.all().size(), 1u);

    files.forget_stalls("/a.mp4");

    EXPECT_THAT(files.all(), IsEmpty());
}

TEST(UnplayableFilesTest, AFileThatStoodStillAndFailsToOpenHasTwoTriesAtThat)
{
    UnplayableFiles files;
    UnplayableFiles::Clock::time_point now;
    files.note_stalls("/a.mp4", ONE, "no frame comes any more", now);
    now += 5min;

    EXPECT_TRUE(files.note("/a.mp4", ONE, "rubbish", Kind::Damaged, now));
    EXPECT_FALSE(files.why("/a.mp4", ONE, now));
    files.forget_stalls("/a.mp4");
    EXPECT_EQ(files.all().size(), 1u) << "it is none of those that stood still";
    EXPECT_FALSE(files.note("/a.mp4", ONE, "rubbish", Kind::Damaged, now));
    EXPECT_EQ(files.why("/a.mp4", ONE, now + 24h), "rubbish");
}

TEST(UnplayableFilesTest, AFileWithoutAStampIsToldOfAndTriedEachTime)
{
    UnplayableFiles files;

    for (int time = 0; time < 2; ++time)
        files.note("/a.mp4", std::nullopt, "there is no such file", Kind::Unreadable);

    ASSERT_EQ(files.all().size(), 1u);
    EXPECT_EQ(files.all()[0].path, "/a.mp4");
    EXPECT_EQ(files.all()[0].why, "there is no such file");
    EXPECT_EQ(files.all()[0].kind, Kind::Unreadable);
    EXPECT_FALSE(files.why("/a.mp4", ONE));
}

TEST(UnplayableFilesTest, TheSameIsNewsOnce)
{
    UnplayableFiles files;

    EXPECT_TRUE(files.note("/a.mp4", std::nullopt, "there is no such file"));
    EXPECT_FALSE(files.note("/a.mp4", std::nullopt, "there is no such file"));
    EXPECT_TRUE(files.note("/a.mp4", std::nullopt, "it may not be read"));
    EXPECT_TRUE(files.note("/a.mp4", ONE, "it may not be read"));
    EXPECT_TRUE(files.note("/a.mp4", ANOTHER, "it may not be read"));
}

TEST(UnplayableFilesTest, NewsIsToldAsLongAsSomebodyListens)
{
    UnplayableFiles files;
    int told = 0;
    files.set_listener([&told] { ++told; });

    for (int time = 0; time < 2; ++time)
        files.note("/a.jpg", std::nullopt, "it is empty");
    EXPECT_EQ(told, 1);
    files.note_stalls("/b.mp4", ONE, "no frame comes any more");
    EXPECT_EQ(told, 2);

    files.set_listener({});
    files.note_stalls("/c.mp4", ONE, "no frame comes any more");
    EXPECT_EQ(told, 2);
}

TEST(UnplayableFilesTest, AFileThatFailsAgainInOtherWordsIsNoNews)
{
    UnplayableFiles files;
    files.note("/a.mp4", ONE, "it contains no streams");

    EXPECT_FALSE(files.note("/a.mp4", ONE, "its reader found nothing in it"));

    EXPECT_EQ(files.why("/a.mp4", ONE), "it contains no streams") << "as the log has it";
}

TEST(UnplayableFilesTest, AFileThatCouldBeOpenedIsNotToldOfAnyMore)
{
    UnplayableFiles files;
    files.note("/a.mp4", ONE, "it has no picture");

    files.forget("/a.mp4");

    EXPECT_THAT(files.all(), IsEmpty());
}

TEST(UnplayableFilesTest, TheyAreNotKeptWithoutEndAndTheRestIsToldOfOnce)
{
    UnplayableFiles files;
    for (int number = 0; number < 4096; ++number)
        EXPECT_TRUE(files.note("/" + std::to_string(number), ONE, "rubbish"));
    testing::internal::CaptureStderr();

    for (int number = 4096; number < 5000; ++number)
        EXPECT_FALSE(files.note("/" + std::to_string(number), ONE, "rubbish"));

    const std::string log = testing::internal::GetCapturedStderr();
    EXPECT_THAT(log, HasSubstr("more than 4096 files cannot be shown"));
    EXPECT_EQ(log.find("more than"), log.rfind("more than")) << log;
    EXPECT_EQ(files.all().size(), 4096u);
    EXPECT_TRUE(files.note("/0", ANOTHER, "still rubbish")) << "it is listed";
}

} // namespace
