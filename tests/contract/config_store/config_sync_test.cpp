// A key's value after a power cut: what is synced, and in front of what.
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <unistd.h>

#include "config_store/config_files.h"
#include "store_support/captured_log.h"
#include "store_support/scratch.h"

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;

/** What was done to the medium, by the last part of each path; a temporary file is "new". */
std::vector<std::string> done;
bool syncing_fails = false;

std::string name_of(const fs::path &path)
{
    return path.filename().string().front() == '.' ? "new" : path.filename().string();
}

int synced(int descriptor)
{
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

} // namespace
