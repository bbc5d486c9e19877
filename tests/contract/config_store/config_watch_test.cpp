// Change callbacks: real inotify, the main loop, and another process.
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "config_store.h"
#include "config_store_fixture.h"
#include "store_support/captured_log.h"

namespace {

namespace fs = std::filesystem;
using store_test::Child;
using store_test::run_loop_until;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

// What one callback was told; the callback runs `then`, if there is one.
struct Listener {
    std::vector<std::string> told;
    std::function<void()> then;
};

void hear(keynode_t *node, void *data)
{
    auto &listener = *static_cast<Listener *>(data);
    listener.told.emplace_back(vconf_keynode_get_name(node));
    if (listener.then)
        listener.then();
}

void hear_too(keynode_t *node, void *data)
{
    hear(node, data);
}

/** A registration that ends with the object, and has to be in force until then. */
class Watch {
  public:
    Watch(const std::string &key, Listener &listener, vconf_callback_fn callback = hear)
        : key_(key), callback_(callback)
    {
        EXPECT_EQ(vconf_notify_key_changed(key.c_str(), callback, &listener), 0);
    }
    ~Watch() { EXPECT_EQ(vconf_ignore_key_changed(key_.c_str(), callback_), 0); }
    Watch(const Watch &) = delete;
    Watch &operator=(const Watch &) = delete;

  private:
    std::string key_;
    vconf_callback_fn callback_;
};

class ConfigWatch : public ConfigStoreFixture {
  protected:
    // A key that is written behind everything else: once its change was told, so was all before.
    const char *last() { return memory_key("last"); }

    void settle()
    {
        Listener end;
        const Watch watch(last(), end, hear_too);
        ASSERT_EQ(vconf_set_int(last(), ++rounds_), 0);
        EXPECT_TRUE(run_loop_until([&] { return !end.told.empty(); }));
    }

    /** Waits until the listener has been told something. @return false when it is not in time */
    bool gets_told()
    {
        return run_loop_until([this] { return !listener_.told.empty(); });
    }

    Listener listener_;
    int rounds_ = 0;
};

TEST_F(ConfigWatch, OwnWriteIsToldOnceWithTheFullName)
{
    const Watch watch(memory_key("a"), listener_);
    ASSERT_EQ(vconf_set_int(memory_key("a"), 1), 0);
    EXPECT_THAT(listener_.told, IsEmpty()) << "told on the main loop, not from inside the write";

    settle();
    EXPECT_THAT(listener_.told, ElementsAre(memory_key("a")));
}

TEST_F(ConfigWatch, KeysUnderDbAreWatchedToo)
{
    const Watch watch(key("a"), listener_);
    ASSERT_EQ(vconf_set_int(key("a"), 1), 0);
    EXPECT_TRUE(gets_told());
    EXPECT_THAT(listener_.told, ElementsAre(key("a")));
}

TEST_F(ConfigWatch, WriteOfTheSameValueIsToldToo)
{
    ASSERT_EQ(vconf_set_int(memory_key("a"), 1), 0);
    const Watch watch(memory_key("a"), listener_);
    ASSERT_EQ(vconf_set_int(memory_key("a"), 1), 0);
    settle();
    EXPECT_THAT(listener_.told, ElementsAre(memory_key("a")));
}

TEST_F(ConfigWatch, WriteOfAnotherProcessIsTold)
{
    const Watch watch(memory_key("a"), listener_);
    Child writer({CONFIG_STORE_PEER, "set", memory_key("a"), "5"});
    EXPECT_EQ(writer.finish(), 0);
    EXPECT_TRUE(gets_told());
    int value = 0;
    EXPECT_EQ(vconf_get_int(memory_key("a"), &value), 0);
    EXPECT_EQ(value, 5);
}

TEST_F(ConfigWatch, OtherProcessIsToldOfOurWrites)
{
    Child watcher({CONFIG_STORE_PEER, "watch", memory_key("a")});
    while (watcher.out_text().find("ready\n") == std::string::npos)
        ASSERT_TRUE(watcher.read_some(10000));
    ASSERT_EQ(vconf_set_int(memory_key("a"), 12), 0);
    while (watcher.out_text().find("12\n") == std::string::npos)
        ASSERT_TRUE(watcher.read_some(10000));
    ASSERT_EQ(vconf_set_int(memory_key("a"), -1), 0);
    EXPECT_EQ(watcher.finish(), 0);
    EXPECT_EQ(watcher.out_text(), "ready\n12\n-1\n");
}

TEST_F(ConfigWatch, FileWrittenWithAnEditorIsTold)
{
    const Watch watch(memory_key("a"), listener_);
    std::ofstream(path(memory_key("a"))) << "9\n";
    settle();
    EXPECT_THAT(listener_.told, ElementsAre(memory_key("a")));
}

TEST_F(ConfigWatch, RemovalIsTold)
{
    ASSERT_EQ(vconf_set_int(memory_key("a"), 1), 0);
    const Watch watch(memory_key("a"), listener_);
    fs::remove(path(memory_key("a")));
    settle();
    EXPECT_THAT(listener_.told, ElementsAre(memory_key("a")));
}

TEST_F(ConfigWatch, NeighboursInTheFolderAreNotMixedUp)
{
    Listener neighbour;
    const Watch watch(memory_key("a"), listener_);
    const Watch neighbour_watch(memory_key("ab"), neighbour);
    ASSERT_EQ(vconf_set_int(memory_key("ab"), 1), 0);
    ASSERT_EQ(vconf_set_int(memory_key("unwatched"), 1), 0);
    settle();
    EXPECT_THAT(listener_.told, IsEmpty());
    EXPECT_THAT(neighbour.told, ElementsAre(memory_key("ab")));
}

TEST_F(ConfigWatch, SameKeyAndCallbackTwiceKeepOneWithTheNewData)
{
    Listener newer;
    ASSERT_EQ(vconf_notify_key_changed(memory_key("a"), hear, &listener_), 0);
    ASSERT_EQ(vconf_notify_key_changed(memory_key("a"), hear, &newer), 0);
    ASSERT_EQ(vconf_set_int(memory_key("a"), 1), 0);
    settle();
    EXPECT_THAT(listener_.told, IsEmpty());
    EXPECT_THAT(newer.told, SizeIs(1));
    EXPECT_EQ(vconf_ignore_key_changed(memory_key("a"), hear), 0);
    EXPECT_EQ(vconf_ignore_key_changed(memory_key("a"), hear), -1);
}

TEST_F(ConfigWatch, TwoCallbacksOfOneKeyAreBothTold)
{
    Listener other;
    const Watch watch(memory_key("a"), listener_);
    const Watch other_watch(memory_key("a"), other, hear_too);
    ASSERT_EQ(vconf_set_int(memory_key("a"), 1), 0);
    settle();
    EXPECT_THAT(listener_.told, SizeIs(1));
    EXPECT_THAT(other.told, SizeIs(1));
}

TEST_F(ConfigWatch, IgnoreDropsWhatWasNotDeliveredYet)
{
    ASSERT_EQ(vconf_notify_key_changed(memory_key("a"), hear, &listener_), 0);
    ASSERT_EQ(vconf_set_int(memory_key("a"), 1), 0);
    EXPECT_EQ(vconf_ignore_key_changed(memory_key("a"), hear), 0);
    settle();
    EXPECT_THAT(listener_.told, IsEmpty());
}

TEST_F(ConfigWatch, NewRegistrationIsNotToldOfEarlierWrites)
{
    Listener neighbour;
    const Watch neighbour_watch(memory_key("b"), neighbour);
    ASSERT_EQ(vconf_set_int(memory_key("a"), -1), 0);
    ASSERT_EQ(vconf_set_int(memory_key("b"), 1), 0);
    const Watch watch(memory_key("a"), listener_);
    settle();
    EXPECT_THAT(listener_.told, IsEmpty());
    EXPECT_THAT(neighbour.told, SizeIs(1));
}

TEST_F(ConfigWatch, FurtherRegistrationOfAWatchedKeyIsNotToldOfEarlierWrites)
{
    Listener earlier;
    const Watch earlier_watch(memory_key("a"), earlier, hear_too);
    ASSERT_EQ(vconf_set_int(memory_key("a"), 1), 0);
    const Watch watch(memory_key("a"), listener_);
    settle();
    EXPECT_THAT(earlier.told, SizeIs(1));
    EXPECT_THAT(listener_.told, IsEmpty());
}

TEST_F(ConfigWatch, CallbackMayEndItsOwnRegistration)
{
    listener_.then = [&] { EXPECT_EQ(vconf_ignore_key_changed(memory_key("a"), hear), 0); };
    ASSERT_EQ(vconf_notify_key_changed(memory_key("a"), hear, &listener_), 0);
    ASSERT_EQ(vconf_set_int(memory_key("a"), 1), 0);
    EXPECT_TRUE(gets_told());
    ASSERT_EQ(vconf_set_int(memory_key("a"), 2), 0);
    settle();
    EXPECT_THAT(listener_.told, SizeIs(1));
}

TEST_F(ConfigWatch, CallbackMayEndAnothersRegistrationBeforeItIsTold)
{
    Listener other;
    listener_.then = [&] { vconf_ignore_key_changed(memory_key("a"), hear_too); };
    const Watch watch(memory_key("a"), listener_);
    ASSERT_EQ(vconf_notify_key_changed(memory_key("a"), hear_too, &other), 0);
    ASSERT_EQ(vconf_set_int(memory_key("a"), 1), 0);
    settle();
    EXPECT_THAT(listener_.told, SizeIs(1));
    EXPECT_THAT(other.told, IsEmpty());
}

TEST_F(ConfigWatch, CallbackMayWriteAndRegister)
{
    Listener second;
    listener_.then = [&] {
        if (listener_.told.size() == 1) {
            EXPECT_EQ(vconf_notify_key_changed(memory_key("b"), hear, &second), 0);
            EXPECT_EQ(vconf_set_int(memory_key("b"), 1), 0);
            EXPECT_EQ(vconf_set_int(memory_key("a"), 2), 0);
        }
    };
    const Watch watch(memory_key("a"), listener_);
    ASSERT_EQ(vconf_set_int(memory_key("a"), 1), 0);
    EXPECT_TRUE(run_loop_until([&] { return listener_.told.size() == 2 && !second.told.empty(); }));
    EXPECT_EQ(vconf_ignore_key_changed(memory_key("b"), hear), 0);
}

TEST_F(ConfigWatch, RemovedFolderIsMadeAgainAndWatched)
{
    const Watch watch(memory_key("a"), listener_);
    const std::string folder = fs::path(path(memory_key("a"))).parent_path().string();
    fs::remove_all(folder);
    EXPECT_TRUE(run_loop_until([&] { return fs::exists(folder); }));
    listener_.told.clear();

    ASSERT_EQ(vconf_set_int(memory_key("a"), 7), 0);
    EXPECT_TRUE(gets_told());
    EXPECT_THAT(listener_.told, ElementsAre(memory_key("a")));
}

TEST_F(ConfigWatch, WriteIntoAFolderThatWasJustRemovedIsTold)
{
    const Watch watch(memory_key("a"), listener_);
    fs::remove_all(fs::path(path(memory_key("a"))).parent_path());
    Child writer({CONFIG_STORE_PEER, "set", memory_key("a"), "5"});
    EXPECT_EQ(writer.finish(), 0);
    EXPECT_TRUE(gets_told());
}

TEST_F(ConfigWatch, FolderMovedAwayIsMadeAgainAndWatched)
{
    ASSERT_EQ(vconf_set_int(memory_key("a"), 1), 0);
    const Watch watch(memory_key("a"), listener_);
    const std::string folder = fs::path(path(memory_key("a"))).parent_path().string();
    fs::rename(folder, folder + "-away");
    EXPECT_TRUE(gets_told()) << "the key is gone";
    listener_.told.clear();
    ASSERT_EQ(vconf_set_int(memory_key("a"), 7), 0);
    EXPECT_TRUE(gets_told());
}

TEST_F(ConfigWatch, FolderThatCannotBeMadeAgainIsWatchedOnceItCan)
{
    const Watch watch(memory_key("a"), listener_);
    const std::string folder = fs::path(path(memory_key("a"))).parent_path().string();
    {
        const store_test::CapturedLog log;
        fs::remove_all(folder);
        store_test::write_file(folder, "in its way");
        EXPECT_TRUE(run_loop_until(
            [&] { return log.text().find("cannot be watched for now") != std::string::npos; }));
    }
    fs::remove(folder);
    EXPECT_TRUE(run_loop_until([&] { return fs::is_directory(folder); }));
    listener_.told.clear();

    ASSERT_EQ(vconf_set_int(memory_key("a"), 7), 0);
    EXPECT_TRUE(gets_told());
}

TEST_F(ConfigWatch, OverflowOfTheKernelsQueueLosesNoChange)
{
    std::ifstream limit("/proc/sys/fs/inotify/max_queued_events");
    int events = 0;
    limit >> events;
    ASSERT_GT(events, 0);
    ASSERT_EQ(vconf_set_int(memory_key("a"), 1), 0);
    const Watch watch(memory_key("a"), listener_);

    // Two names in turn, because equal events are joined.
    const std::string folder = fs::path(path(memory_key("a"))).parent_path().string();
    for (int i = 0; i <= events; ++i)
        close(open((folder + (i % 2 != 0 ? "/x" : "/y")).c_str(), O_WRONLY | O_CREAT | O_CLOEXEC,
                   0600));
    ASSERT_EQ(vconf_set_int(memory_key("a"), 2), 0);

    const store_test::CapturedLog log;
    EXPECT_TRUE(gets_told());
    EXPECT_THAT(log.text(), testing::HasSubstr("comparing the watched keys"));
    EXPECT_THAT(listener_.told, ElementsAre(memory_key("a")));
}

TEST_F(ConfigWatch, BadArgumentsAndUnknownRegistrationsAreRefused)
{
    EXPECT_EQ(vconf_notify_key_changed(nullptr, hear, nullptr), -1);
    EXPECT_EQ(vconf_notify_key_changed(memory_key("a"), nullptr, nullptr), -1);
    EXPECT_EQ(vconf_notify_key_changed("db/../a", hear, nullptr), -1);
    EXPECT_EQ(vconf_ignore_key_changed(memory_key("a"), hear), -1);
    EXPECT_EQ(vconf_ignore_key_changed(nullptr, hear), -1);
    EXPECT_EQ(vconf_ignore_key_changed(memory_key("a"), nullptr), -1);
}

TEST_F(ConfigWatch, FolderThatCannotBeMadeCannotBeWatched)
{
    ASSERT_EQ(vconf_set_int("memory/blocked", 1), 0);
    const store_test::CapturedLog log;
    EXPECT_EQ(vconf_notify_key_changed("memory/blocked/a", hear, &listener_), -1);
    EXPECT_EQ(vconf_ignore_key_changed("memory/blocked/a", hear), -1);
    EXPECT_THAT(log.text(), testing::HasSubstr("cannot be watched"));
}

TEST_F(ConfigWatch, NothingIsHeldWhenTheLastRegistrationHasGone)
{
    const auto descriptors = [] {
        int count = 0;
        for ([[maybe_unused]] const auto &entry : fs::directory_iterator("/proc/self/fd"))
            ++count;
        return count;
    };
    const int before = descriptors();
    for (int i = 0; i < 20; ++i) {
        ASSERT_EQ(vconf_notify_key_changed(memory_key("a"), hear, &listener_), 0);
        ASSERT_EQ(vconf_set_int(memory_key("a"), i), 0);
        ASSERT_EQ(vconf_ignore_key_changed(memory_key("a"), hear), 0);
    }
    EXPECT_EQ(descriptors(), before);
}

} // namespace
