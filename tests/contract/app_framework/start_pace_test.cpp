// How soon a start follows others that ended soon.

#include <vector>

#include <gmock/gmock.h>
#include <sys/stat.h>

#include "app_framework/start_pace.h"
#include "store_support/captured_log.h"
#include "store_support/scratch.h"

namespace {

using namespace std::chrono_literals;
using platform::next_start;
using platform::note_start;
using platform::StartRecord;
using std::chrono::milliseconds;
using store_test::read_file;
using store_test::write_file;
using testing::ElementsAre;
using testing::HasSubstr;

/** How long each start waits when each player lives for so long. */
std::vector<milliseconds> waits(int starts, milliseconds life)
{
    std::vector<milliseconds> all;
    std::optional<StartRecord> former;
    milliseconds now = 1h;
    for (int i = 0; i < starts; ++i) {
        const StartRecord record = next_start(former, now);
        all.push_back(record.began - now);
        now = record.began + life;
        former = record;
    }
    return all;
}

TEST(StartPace, PlayersThatEndSoonAreStartedLessAndLessOftenButWithinTenSeconds)
{
    EXPECT_THAT(waits(10, 9999ms), ElementsAre(0ms, 0ms, 250ms, 500ms, 1000ms, 2000ms, 4000ms,
                                               8000ms, 8000ms, 8000ms));
}

TEST(StartPace, APlayerThatLivedForAWhileIsStartedAtOnce)
{
    EXPECT_THAT(waits(4, 10s), ElementsAre(0ms, 0ms, 0ms, 0ms));
    EXPECT_EQ(next_start(StartRecord{8, 1h}, 1h + 10s).short_lives, 0);
    EXPECT_EQ(next_start(StartRecord{8, 1h}, 1h + 9s).began, 1h + 9s + 8s);
}

TEST(StartPace, ARecordOfAnEarlierRunOfTheMachineDoesNotCount)
{
    EXPECT_EQ(next_start(StartRecord{8, 2h}, 1min).began, 1min);
}

TEST(StartPace, TheRecordIsKeptInAFileWhoseFolderIsMade)
{
    const store_test::ScratchDir folder;
    const std::string file = folder / "run/start";

    EXPECT_EQ(note_start(file, 60s), 0ms);
    EXPECT_EQ(read_file(file), "0 60000\n");
    EXPECT_EQ(note_start(file, 61s), 0ms);
    EXPECT_EQ(read_file(file), "1 61000\n");
    EXPECT_EQ(note_start(file, 62s), 250ms);
    EXPECT_EQ(read_file(file), "2 62250\n");
}

TEST(StartPace, ARecordThatCannotBeReadIsNone)
{
    const store_test::ScratchDir folder;
    const std::string file = folder / "start";
    for (const char *text : {"", "many 60000", "3", "99999999999999999999 x"}) {
        write_file(file, text);
        EXPECT_EQ(note_start(file, 61s), 0ms) << text;
    }
    for (const char *text :
         {"-7 60000", "2147483647 -9223372036854775808", "0 9223372036854775807"}) {
        write_file(file, text);
        EXPECT_EQ(note_start(file, 61s), 0ms) << text;
    }
    write_file(file, "2147483647 60000");
    EXPECT_EQ(note_start(file, 61s), 8s);
}

TEST(StartPace, APipeInThePlaceOfTheRecordHoldsNobodyUp)
{
    const store_test::ScratchDir folder;
    const std::string file = folder / "start";
    ASSERT_EQ(mkfifo(file.c_str(), 0600), 0);

    EXPECT_EQ(note_start(file, 60s), 0ms);

    EXPECT_EQ(read_file(file), "0 60000\n");
}

TEST(StartPace, WhereNothingCanBeNotedNobodyWaitsAndTheLogSaysSo)
{
    const store_test::ScratchDir folder;
    write_file(folder / "run", "a file, no folder");
    const store_test::CapturedLog log;

    EXPECT_EQ(note_start(folder / "run/start", 60s), 0ms);

    EXPECT_THAT(log.text(), HasSubstr("the start cannot be noted in " + (folder / "run/start")));
}

} // namespace
