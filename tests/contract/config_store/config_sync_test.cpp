// A key's value after a power cut: what is synced, and in front of what. A medium that takes long.
#include <algorithm>
#include <cerrno>
#include <condition_variable>
#include <cstdio>
#include <filesystem>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <unistd.h>

#include "config_store.h"
#include "config_store/config_files.h"
#include "config_store/platform_store.h"
#include "config_store_fixture.h"
#include "store_support/captured_log.h"
#include "store_support/scratch.h"

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;

/** What was done to the medium, by the last part of each path; a temporary file is "new". */
std::vector<std::string> done;
bool syncing_fails = false;

/** Where a sync waits while the medium is held. */
class Medium {
  public:
    void set_held(bool held)
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        held_ = held;
        main_loop_came_ = false;
        changed_.notify_all();
    }

    /** Whether the main loop would have been held up. */
    bool main_loop_came()
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        return main_loop_came_;
    }

    void pass()
    {
        std::unique_lock<std::mutex> lock(mutex_);
        if (held_ && std::this_thread::get_id() == main_loop_)
            main_loop_came_ = true;
        else
            changed_.wait(lock, [this] { return !held_; });
    }

  private:
    std::mutex mutex_;
    std::condition_variable changed_;
    const std::thread::id main_loop_ = std::this_thread::get_id();
    bool held_ = false;
    bool main_loop_came_ = false;
} medium;

std::string name_of(const fs::path &path)
{
    return path.filename().string().front() == '.' ? "new" : path.filename().string();
}

int synced(int descriptor)
{
    medium.pass();
    done.push_back("sync " +
                   name_of(fs::read_symlink("/proc/self/fd/" + std::to_string(descriptor))));
    errno = EIO;
    return syncing_fails ? -1 : 0;
}

} // namespace

// The linker sends the calls of this program's own objects here.
extern "C" int __wrap_fsync(int descriptor);
extern "C" int __wrap_fdatasync(int descriptor);
extern "C" int __wrap_rename(const char *from, const char *to);
extern "C" int __real_rename(const char *from, const char *to);

int __wrap_fsync(int descriptor)
{
    return synced(descriptor);
}

int __wrap_fdatasync(int descriptor)
{
    return synced(descriptor);
}

int __wrap_rename(const char *from, const char *to)
{
    done.push_back("rename " + name_of(from) + " to " + name_of(to));
    return __real_rename(from, to);
}

namespace {

class ConfigSync : public testing::Test {
  protected:
    ConfigSync()
    {
        EXPECT_TRUE(files_.write("db/a/key", 1));
        EXPECT_TRUE(files_.write("memory/a/key", 1));
        done.clear();
    }
    ~ConfigSync() override { syncing_fails = false; }

    const store_test::ScratchDir scratch_;
    platform::ConfigFiles files_{scratch_ / "state", scratch_ / "run"};
};

TEST_F(ConfigSync, AValueIsOnTheMediumBeforeItTakesTheKeysName)
{
    EXPECT_TRUE(files_.write("db/a/key", 2));
    EXPECT_THAT(done, ElementsAre("sync new", "rename new to key", "sync a"));
}

TEST_F(ConfigSync, AValueThatStandsAlreadyIsSyncedInCaseItsWriterDidNot)
{
    EXPECT_TRUE(files_.write("db/a/key", 1));
    EXPECT_THAT(done, ElementsAre("sync key", "sync a"));
}

TEST_F(ConfigSync, ANewFolderIsOnTheMediumBeforeAKeyStandsInIt)
{
    EXPECT_TRUE(files_.write("db/b/c/key", 1));
    EXPECT_THAT(done, ElementsAre("sync db", "sync b", "sync new", "rename new to key", "sync c"));
}

TEST_F(ConfigSync, AKeyOfThisBootOnlyIsNotSynced)
{
    EXPECT_TRUE(files_.write("memory/a/key", 2));
    EXPECT_TRUE(files_.write("memory/a/key", 2));
    EXPECT_THAT(done, ElementsAre("rename new to key"));
}

TEST_F(ConfigSync, AFailedSyncIsLoggedAndTheOldValueStands)
{
    syncing_fails = true;
    const store_test::CapturedLog log;
    EXPECT_FALSE(files_.write("db/a/key", 2));
    EXPECT_THAT(log.text(), HasSubstr("db/a/key could not be written: Input/output error"));
    int value = 0;
    EXPECT_TRUE(files_.read("db/a/key", value));
    EXPECT_EQ(value, 1);
}

/** The store as the player calls it, with a value that the medium does not take yet. */
class SlowMedium : public ConfigStoreFixture {
  protected:
    SlowMedium()
    {
        EXPECT_EQ(vconf_set_int(key("a"), 1), 0);
        EXPECT_EQ(vconf_set_int(key("b"), 1), 0);
        done.clear();
        medium.set_held(true);
        EXPECT_EQ(vconf_set_int(key("a"), 2), 0);
    }
    ~SlowMedium() override
    {
        medium.set_held(false);
        EXPECT_TRUE(platform::finish_writes());
        syncing_fails = false;
    }

    static int read(const char *key)
    {
        int value = -99;
        EXPECT_EQ(vconf_get_int(key, &value), 0);
        return value;
    }

    int on_medium(const char *key) const
    {
        int value = -99;
        EXPECT_TRUE(platform::ConfigFiles::parse(store_test::read_file(path(key)), value));
        return value;
    }

    const store_test::CapturedLog log_;
};

TEST_F(SlowMedium, DoesNotHoldUpWhoWritesAndReadsTheNewValue)
{
    EXPECT_EQ(read(key("a")), 2);
    EXPECT_EQ(platform::stored_keys().at(key("a")), 2);
    EXPECT_EQ(platform::stored_keys().at(key("b")), 1);
    EXPECT_EQ(on_medium(key("a")), 1);
    EXPECT_THAT(log_.text(), HasSubstr("a takes long to be written; it is not waited for"));

    medium.set_held(false);
    EXPECT_TRUE(platform::finish_writes());
    EXPECT_EQ(on_medium(key("a")), 2);
    EXPECT_EQ(read(key("a")), 2);
}

TEST_F(SlowMedium, GetsTheNewestValuesOnlyAndInTheirOrder)
{
    EXPECT_EQ(vconf_set_int(key("a"), 3), 0);
    EXPECT_EQ(vconf_set_int(key("b"), 2), 0);
    EXPECT_EQ(vconf_set_int(key("a"), 4), 0);
    EXPECT_EQ(read(key("a")), 4);

    medium.set_held(false);
    EXPECT_TRUE(platform::finish_writes());
    EXPECT_EQ(read(key("a")), 4);
    done.erase(std::remove_if(done.begin(), done.end(),
                              [](const auto &what) { return what.compare(0, 6, "rename") != 0; }),
               done.end());
    EXPECT_THAT(done, ElementsAre("rename new to a", "rename new to b", "rename new to a"));
}

TEST_F(SlowMedium, ThatFailsInTheEndLeavesTheOldValue)
{
    syncing_fails = true;
    medium.set_held(false);
    EXPECT_TRUE(platform::finish_writes());
    EXPECT_EQ(read(key("a")), 1);
    EXPECT_THAT(log_.text(), HasSubstr("a could not be written: Input/output error"));

    EXPECT_EQ(vconf_set_int(key("a"), 3), -1) << "it answers in time again";
}

TEST_F(SlowMedium, DoesNotHoldUpWhoWatchesAFolderThatIsGone)
{
    const std::string name = key("away/c");
    const fs::path folder = fs::path(path(name)).parent_path();
    const auto nothing = [](keynode_t *, void *) {};
    EXPECT_EQ(vconf_notify_key_changed(name.c_str(), nothing, nullptr), 0);
    fs::remove(folder);
    EXPECT_TRUE(store_test::run_loop_until([&] { return fs::exists(folder); }));
    EXPECT_FALSE(medium.main_loop_came());

    medium.set_held(false);
    EXPECT_EQ(vconf_set_int(name.c_str(), 1), 0);
    EXPECT_TRUE(platform::finish_writes());
    const std::string sync_above = "sync " + folder.parent_path().filename().string();
    EXPECT_THAT(done, ElementsAre("sync new", "rename new to a", sync_above, sync_above, sync_above,
                                  "sync new", "rename new to c", "sync away"))
        << "each time it was made, and before a key stands in it";
    EXPECT_EQ(vconf_ignore_key_changed(name.c_str(), nothing), 0);
}

TEST_F(SlowMedium, IsWaitedForAtTheEndButNotForEver)
{
    EXPECT_FALSE(platform::finish_writes());
    EXPECT_THAT(log_.text(), HasSubstr("a may keep its old value: 2 is not written yet"));
}

} // namespace
