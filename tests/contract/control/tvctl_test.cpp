// What tvctl does without a player: its usage, and the configuration store.
#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

#include "control_fixture.h"
#include "player_rules/config_keys.h"

namespace {

using testing::HasSubstr;
using testing::StartsWith;

constexpr char TIMER[] = "db/ostrel-demo-player-tv/portrait_timer";

class Tvctl : public ControlFixture {
  protected:
    /**
     * Changes a key until a "tvctl config watch" shows it: the watch says nothing when it is ready,
     * nor when it has found a folder again, and what came before is not told.
     */
    void change_until_seen(store_test::Child &watch, const std::string &key)
    {
        const auto deadline = std::chrono::steady_clock::now() + PATIENCE;
        for (int value = 0; watch.out_text().find(key + " ") == std::string::npos;
             value = (value + 1) % 10) {
            ASSERT_LT(std::chrono::steady_clock::now(), deadline) << "no change of " << key;
            ASSERT_EQ(tvctl({"config", "set", key, std::to_string(value)}).status, 0);
            watch.read_some(0);
        }
    }
};

TEST_F(Tvctl, WrongUsageIsExplained)
{
    const std::vector<std::vector<std::string>> wrong = {
        {},
        {"nonsense"},
        {"key"},
        {"key", "a", "b"},
        {"panel", "upside-down"},
        {"power", "on"},
        {"usb"},
        {"usb", "add"},
        {"usb", "eject", "/x"},
        {"usb", "add", ""},
        {"language"},
        {"launch", "folder"},
        {"launch", "--unknown", "x"},
        {"launch", "--folder_path"},
        {"launch", "--extra", "x"},
        {"launch", "--extra", "=x"},
        {"config"},
        {"config", "erase"},
        {"config", "get"},
        {"config", "set", "demo_mode"},
        {"config", "list", "x"},
        {"status", "--xml"},
    };
    for (const auto &arguments : wrong) {
        const Outcome outcome = tvctl(arguments);
        EXPECT_EQ(outcome.status, 2) << testing::PrintToString(arguments);
        EXPECT_THAT(outcome.err, HasSubstr("--help")) << testing::PrintToString(arguments);
        EXPECT_EQ(outcome.out, "");
    }
}

TEST_F(Tvctl, EveryCommandExplainsItselfAndIsInTheManualAndTheCompletion)
{
    const std::string manual = store_test::read_file(TVCTL_MANUAL);
    const std::string completion = store_test::read_file(TVCTL_COMPLETION);
    const std::string overview = tvctl({"--help"}).out;
    for (const std::string command :
         {"launch", "key", "panel", "power", "language", "usb", "config", "status"}) {
        const Outcome outcome = tvctl({command, "--help"});
        EXPECT_EQ(outcome.status, 0);
        EXPECT_THAT(outcome.out, StartsWith("Usage: tvctl " + command));
        EXPECT_THAT(overview, HasSubstr("  tvctl " + command));
        EXPECT_THAT(manual, HasSubstr("\n.B tvctl " + command));
        EXPECT_THAT(completion, HasSubstr(command));
    }
}

TEST_F(Tvctl, ConfigValueIsSetAndRead)
{
    EXPECT_EQ(tvctl({"config", "set", TIMER, "3"}).status, 0);
    EXPECT_EQ(store_test::read_file(in_store("state/") + TIMER), "3\n");
    const Outcome outcome = tvctl({"config", "get", "portrait_timer"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out, "3\n");
}

TEST_F(Tvctl, ConfigMayHoldOtherKeys)
{
    EXPECT_EQ(tvctl({"config", "set", "memory/other/key", "-2147483648"}).status, 0);
    EXPECT_EQ(tvctl({"config", "get", "memory/other/key"}).out, "-2147483648\n");
}

TEST_F(Tvctl, TimerOutsideItsRangeIsRefusedNamingTheRange)
{
    for (const char *bad : {"10", "-1"}) {
        const Outcome outcome = tvctl({"config", "set", "portrait_timer", bad});
        EXPECT_EQ(outcome.status, 1);
        EXPECT_THAT(outcome.err, HasSubstr("takes 0 to 9"));
    }
    EXPECT_EQ(tvctl({"config", "get", "portrait_timer"}).status, 1);
}

TEST_F(Tvctl, BadKeysAndValuesAreRefused)
{
    EXPECT_EQ(tvctl({"config", "get", "demo_mode"}).err,
              "tvctl: db/ostrel-demo-player-tv/demo_mode is not set\n");
    for (const char *bad : {"elsewhere/x", "db/../x", "nonsense", ""}) {
        EXPECT_EQ(tvctl({"config", "get", bad}).status, 1) << bad;
        EXPECT_EQ(tvctl({"config", "set", bad, "1"}).status, 1) << bad;
        EXPECT_EQ(tvctl({"config", "watch", bad}).status, 1) << bad;
    }
    for (const char *bad : {"", "x", "1x", "99999999999", "1.5"})
        EXPECT_EQ(tvctl({"config", "set", "demo_mode", bad}).status, 1) << bad;
}

TEST_F(Tvctl, ListHoldsKnownKeysAndAllThatIsSet)
{
    ASSERT_EQ(tvctl({"config", "set", "db/a", "7"}).status, 0);
    ASSERT_EQ(tvctl({"config", "set", "demo_mode", "258"}).status, 0);
    const std::string list = tvctl({"config", "list"}).out;
    EXPECT_THAT(list, HasSubstr("db/a 7\n"));
    EXPECT_THAT(list, HasSubstr("db/ostrel-demo-player-tv/demo_mode 258\n"));
    for (const platform::KnownKey &key : platform::known_keys())
        EXPECT_THAT(list, HasSubstr(std::string(key.name) + " "));
}

TEST_F(Tvctl, WatchPrintsChangesUntilItIsInterrupted)
{
    for (const int signal : {SIGINT, SIGTERM}) {
        store_test::Child watch({TVCTL, "config", "watch", "portrait_timer", "memory/a"});
        ASSERT_NO_FATAL_FAILURE(change_until_seen(watch, TIMER));
        EXPECT_THAT(watch.out_text(), StartsWith(std::string(TIMER) + " "));

        ASSERT_EQ(tvctl({"config", "set", "memory/a", "77"}).status, 0);
        EXPECT_TRUE(wait_for(watch, "memory/a 77\n"));
        std::filesystem::remove(in_store("run/memory/a"));
        EXPECT_TRUE(wait_for(watch, "memory/a -\n"));

        watch.signal(signal);
        EXPECT_EQ(watch.finish(), 0);
    }
}

TEST_F(Tvctl, WatchWithoutAKeyPrintsChangesOfKeysThatNobodyKnewBefore)
{
    ASSERT_EQ(tvctl({"config", "set", "memory/old", "1"}).status, 0);
    store_test::Child watch({TVCTL, "config", "watch"});
    ASSERT_NO_FATAL_FAILURE(change_until_seen(watch, TIMER));
    EXPECT_THAT(watch.out_text(), StartsWith(std::string(TIMER) + " "));
    ASSERT_EQ(tvctl({"config", "set", "memory/old", "2"}).status, 0);
    EXPECT_TRUE(wait_for(watch, "memory/old 2\n"));
    ASSERT_EQ(tvctl({"config", "set", "db/new/folder/key", "7"}).status, 0);
    EXPECT_TRUE(wait_for(watch, "db/new/folder/key 7\n"));
    ASSERT_EQ(tvctl({"config", "set", "db/new/folder/key", "8"}).status, 0);
    EXPECT_TRUE(wait_for(watch, "db/new/folder/key 8\n"));
    std::filesystem::rename(in_store("state/db/new"), in_store("state/db/moved"));
    EXPECT_TRUE(wait_for(watch, "db/new/folder/key -\n"));
    EXPECT_TRUE(wait_for(watch, "db/moved/folder/key 8\n"));
    std::filesystem::remove_all(in_store("state/db/moved"));
    EXPECT_TRUE(wait_for(watch, "db/moved/folder/key -\n"));
    std::filesystem::remove_all(in_store("run/memory"));
    EXPECT_TRUE(wait_for(watch, "memory/old -\n"));
    ASSERT_NO_FATAL_FAILURE(change_until_seen(watch, "memory/again"));
    EXPECT_EQ(watch.out_text().find("/."), std::string::npos) << "half-written files are no keys";
    watch.signal(SIGTERM);
    EXPECT_EQ(watch.finish(), 0);
}

TEST_F(Tvctl, StoreThatCannotBeWatchedIsRefused)
{
    store_test::write_file(in_store("state"), "a file in the folder's place");
    const Outcome outcome = tvctl({"config", "watch"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.err, HasSubstr("cannot be watched"));
}

} // namespace
