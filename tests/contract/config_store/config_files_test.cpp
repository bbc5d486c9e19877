#include <chrono>
#include <climits>
#include <filesystem>
#include <future>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include "base/descriptor.h"
#include "config_store/config_files.h"
#include "store_support/captured_log.h"
#include "store_support/scratch.h"

namespace {

namespace fs = std::filesystem;
using platform::ConfigFiles;
using platform::Descriptor;
using store_test::CapturedLog;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pair;

class ConfigFilesTest : public testing::Test {
  protected:
    std::vector<std::string> names(const std::string &folder)
    {
        std::vector<std::string> found;
        for (const auto &entry : fs::directory_iterator(folder))
            found.push_back(entry.path().filename().string());
        std::sort(found.begin(), found.end());
        return found;
    }

    /** Writes the key. @return what the system then knows about its file */
    struct stat file_after_writing(int value)
    {
        EXPECT_TRUE(files_.write(key_, value));
        struct stat known = {};
        EXPECT_EQ(stat(path_.c_str(), &known), 0);
        return known;
    }

    store_test::ScratchDir scratch_;
    ConfigFiles files_{scratch_ / "state", scratch_ / "run"};
    const std::string key_ = "db/a/key";
    const std::string path_ = scratch_ / "state/db/a/key";
};

TEST_F(ConfigFilesTest, ValueIsAFileWithTheIntegerAndANewline)
{
    ASSERT_TRUE(files_.write("db/a/key", -42));
    EXPECT_EQ(store_test::read_file(scratch_ / "state/db/a/key"), "-42\n");
    ASSERT_TRUE(files_.write("memory/key", 7));
    EXPECT_EQ(store_test::read_file(scratch_ / "run/memory/key"), "7\n");
}

TEST_F(ConfigFilesTest, EveryIntegerComesBack)
{
    for (const int value : {0, 1, -1, 258, INT_MAX, INT_MIN}) {
        ASSERT_TRUE(files_.write(key_, value));
        int read = 99;
        ASSERT_TRUE(files_.read(key_, read));
        EXPECT_EQ(read, value);
    }
}

TEST_F(ConfigFilesTest, MissingKeyFailsAndLeavesTheVariable)
{
    int value = 99;
    EXPECT_FALSE(files_.read(key_, value));
    EXPECT_EQ(value, 99);
}

TEST_F(ConfigFilesTest, OnlyAnIntegerCanBeRead)
{
    for (const char *good : {"5", "5\n", "5 \t\r\n\n", "05\n"}) {
        store_test::write_file(path_, good);
        int value = 99;
        EXPECT_TRUE(files_.read(key_, value)) << good;
        EXPECT_EQ(value, 5) << good;
    }
    const std::string many_blanks = "5" + std::string(1000, '\n');
    for (const std::string &bad :
         {std::string(), std::string("\n"), std::string("x"), std::string("5x"), std::string("5 6"),
          std::string(" 5"), std::string("+5"), std::string("--5"), std::string("0x5"),
          std::string("5.0"), std::string("2147483648"), std::string("-2147483649"),
          std::string("5\0", 2), many_blanks}) {
        store_test::write_file(path_, bad);
        int value = 99;
        EXPECT_FALSE(files_.read(key_, value)) << bad;
        EXPECT_EQ(value, 99) << bad;
    }
}

TEST_F(ConfigFilesTest, FolderOrPipeInAKeysPlaceFailsAtOnce)
{
    int value = 99;
    fs::create_directories(path_);
    EXPECT_FALSE(files_.read(key_, value));
    ASSERT_EQ(mkfifo((scratch_ / "state/db/a/pipe").c_str(), 0600), 0);
    EXPECT_FALSE(files_.read("db/a/pipe", value));
    EXPECT_EQ(value, 99);
}

TEST_F(ConfigFilesTest, NamesThatCouldLeaveTheStoreAreRefused)
{
    const CapturedLog log;
    for (const char *bad :
         {"", "db", "db/", "db//a", "db/a/", "db/../a", "db/a/..", "db/./a", "db/.hidden",
          "other/a", "/db/a", "memory", "dba/b", "db/a\nb", "db/a/../../../b"}) {
        int value = 0;
        EXPECT_FALSE(ConfigFiles::is_valid_key(bad)) << bad;
        EXPECT_FALSE(files_.write(bad, 1)) << bad;
        EXPECT_FALSE(files_.read(bad, value)) << bad;
    }
    EXPECT_FALSE(ConfigFiles::is_valid_key("db/" + std::string(198, 'x')));
    EXPECT_TRUE(ConfigFiles::is_valid_key("db/" + std::string(197, 'x')));
    EXPECT_TRUE(ConfigFiles::is_valid_key("db/a..b"));
    EXPECT_FALSE(fs::exists(scratch_ / "state"));
}

TEST_F(ConfigFilesTest, LongestNameCanBeWritten)
{
    EXPECT_TRUE(files_.write("db/" + std::string(197, 'x'), 1));
}

TEST_F(ConfigFilesTest, WriteLeavesNothingButTheKey)
{
    for (int value = 0; value < 10; ++value)
        ASSERT_TRUE(files_.write(key_, value));
    EXPECT_THAT(names(scratch_ / "state/db/a"), ElementsAre("key"));
}

TEST_F(ConfigFilesTest, WriteReplacesTheFileSoThatReadersSeeOldOrNewWhole)
{
    const struct stat before = file_after_writing(1);
    const struct stat after = file_after_writing(2);
    EXPECT_NE(before.st_ino, after.st_ino);
}

TEST_F(ConfigFilesTest, ValueThatStandsAlreadyIsNotWrittenAgain)
{
    const struct stat before = file_after_writing(1);
    const struct stat after = file_after_writing(1);
    EXPECT_EQ(before.st_ino, after.st_ino);
    EXPECT_EQ(before.st_mtim.tv_nsec, after.st_mtim.tv_nsec);
}

TEST_F(ConfigFilesTest, RubbishInAKeysFileIsOverwritten)
{
    store_test::write_file(path_, "rubbish");
    ASSERT_TRUE(files_.write(key_, 3));
    EXPECT_EQ(store_test::read_file(path_), "3\n");
}

TEST_F(ConfigFilesTest, FailedWriteIsLoggedAndTheOldValueStands)
{
    ASSERT_TRUE(files_.write(key_, 1));
    // No file of this process may grow: what a full medium does to a write.
    rlimit before = {};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    struct sigaction action = {};
    struct sigaction old_action = {};
    action.sa_handler = SIG_IGN;
    sigaction(SIGXFSZ, &action, &old_action);
    const rlimit none = {0, before.rlim_max};

    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &none), 0);
    // A pipe, because the limit holds for a file that takes the log too.
    int log[2];
    ASSERT_EQ(pipe2(log, O_CLOEXEC), 0);
    const int standard_error = dup(STDERR_FILENO);
    dup2(log[1], STDERR_FILENO);
    const bool written = files_.write(key_, 2);
    dup2(standard_error, STDERR_FILENO);
    close(standard_error);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
    sigaction(SIGXFSZ, &old_action, nullptr);

    char text[512] = {};
    ASSERT_GT(read(log[0], text, sizeof text - 1), 0);
    close(log[0]);
    close(log[1]);
    EXPECT_FALSE(written);
    EXPECT_THAT(text, HasSubstr("E/PLATFORM"));
    EXPECT_THAT(text, HasSubstr(path_ + " could not be written: File too large"));
    EXPECT_EQ(store_test::read_file(path_), "1\n");
    EXPECT_THAT(names(scratch_ / "state/db/a"), ElementsAre("key"));
}

TEST_F(ConfigFilesTest, FileInAFoldersPlaceFailsTheWrite)
{
    store_test::write_file(scratch_ / "state/db/a", "1\n");
    const CapturedLog log;
    EXPECT_FALSE(files_.write(key_, 1));
    EXPECT_THAT(log.text(), HasSubstr("could not be written: Not a directory"));
    EXPECT_EQ(store_test::read_file(scratch_ / "state/db/a"), "1\n");
}

TEST_F(ConfigFilesTest, LeftoversOfACrashAreRemovedAndLivingWritersSpared)
{
    const std::string folder = scratch_ / "state/db/a";
    store_test::write_file(folder + "/.key.new-1-1", "5");
    store_test::write_file(folder + "/.key.new-2-7", "6\n");
    store_test::write_file(folder + "/.other", "no temporary file");
    const int living = open((folder + "/.key.new-2-7").c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(flock(living, LOCK_EX), 0);

    const CapturedLog log;
    ASSERT_TRUE(files_.write(key_, 1));

    EXPECT_THAT(names(folder), ElementsAre(".key.new-2-7", ".other", "key"));
    EXPECT_THAT(log.text(), HasSubstr("left behind by a crash"));
    close(living);
}

TEST_F(ConfigFilesTest, ListHoldsEveryKeyThatCanBeRead)
{
    ASSERT_TRUE(files_.write("db/b", 1));
    ASSERT_TRUE(files_.write("db/a/c/d", 2));
    ASSERT_TRUE(files_.write("memory/x/y", 3));
    store_test::write_file(scratch_ / "state/db/rubbish", "rubbish");
    store_test::write_file(scratch_ / "state/db/.hidden", "1\n");
    EXPECT_THAT(files_.list(),
                ElementsAre(Pair("db/a/c/d", 2), Pair("db/b", 1), Pair("memory/x/y", 3)));
}

TEST_F(ConfigFilesTest, ListOfAnEmptyStoreIsEmpty)
{
    EXPECT_TRUE(files_.list().empty());
}

/** A store on a medium that survives a restart of the machine, "memory" included. */
class ConfigBoot : public ConfigFilesTest {
  protected:
    ConfigBoot() { restart("first"); }

    void restart(const std::string &boot_id) { store_test::write_file(boot_, boot_id + "\n"); }
    ConfigFiles files() const { return {scratch_ / "state", scratch_ / "run", boot_}; }

    /** Whether somebody in this process waits for a lock on a file. */
    static bool waits_for_lock()
    {
        std::istringstream locks(store_test::read_file("/proc/locks"));
        const std::string who = " " + std::to_string(getpid()) + " ";
        for (std::string line; std::getline(locks, line);) {
            if (line.find("-> FLOCK") != std::string::npos && line.find(who) != std::string::npos)
                return true;
        }
        return false;
    }

    const std::string boot_ = scratch_ / "boot_id";
};

TEST_F(ConfigBoot, MemoryKeysLastUntilTheMachineIsStartedAnew)
{
    ASSERT_TRUE(files().write("db/a", 1));
    ASSERT_TRUE(files().write("memory/b", 2));
    ASSERT_TRUE(files().write("memory/c/d", 3));
    EXPECT_THAT(files().list(),
                ElementsAre(Pair("db/a", 1), Pair("memory/b", 2), Pair("memory/c/d", 3)));

    restart("second");
    EXPECT_THAT(files().list(), ElementsAre(Pair("db/a", 1)));
    ASSERT_TRUE(files().write("memory/b", 4));
    EXPECT_THAT(files().list(), ElementsAre(Pair("db/a", 1), Pair("memory/b", 4)));
}

TEST_F(ConfigBoot, KeysThatNobodySaysTheBootOfAreGoneAndNothingElseIs)
{
    store_test::write_file(scratch_ / "run/memory/key", "1\n");
    store_test::write_file(scratch_ / "run/memory/photo.jpg", "no key");
    store_test::write_file(scratch_ / "elsewhere/other", "1\n");
    fs::create_symlink(scratch_ / "elsewhere", scratch_ / "run/memory/link");

    EXPECT_TRUE(files().list().empty());

    EXPECT_THAT(names(scratch_ / "run/memory"), ElementsAre("link", "photo.jpg"));
    EXPECT_THAT(names(scratch_ / "elsewhere"), ElementsAre("other"));
}

TEST_F(ConfigBoot, ReadingMakesNoFolder)
{
    int value = 0;
    EXPECT_FALSE(files().read("memory/key", value));
    EXPECT_FALSE(fs::exists(scratch_ / "run"));
}

TEST_F(ConfigBoot, KeysStayWhereTheBootCannotBeTold)
{
    ASSERT_TRUE(files().write("memory/key", 1));
    fs::remove(boot_);
    const CapturedLog log;
    EXPECT_THAT(files().list(), ElementsAre(Pair("memory/key", 1)));
    EXPECT_THAT(log.text(), HasSubstr("boot_id cannot be read"));
}

TEST_F(ConfigBoot, FormerKeysAreNotUsedWhereTheBootCannotBeNoted)
{
    ASSERT_TRUE(files().write("memory/key", 1));
    restart("second");
    fs::create_directory(scratch_ / "run/boot_id.new-0");
    const CapturedLog log;
    ConfigFiles files = this->files();
    int value = 0;
    EXPECT_FALSE(files.read("memory/key", value));
    EXPECT_FALSE(files.write("memory/key", 2));
    EXPECT_THAT(files.list(), IsEmpty());
    EXPECT_THAT(log.text(), HasSubstr("boot_id.new-0 could not be written: Is a directory"));

    fs::remove(scratch_ / "run/boot_id.new-0");
    EXPECT_TRUE(files.write("memory/key", 2));
    EXPECT_THAT(files.list(), ElementsAre(Pair("memory/key", 2)));
}

TEST_F(ConfigBoot, WhatOneProcessHasWrittenIsSafeFromTheNextThatStarts)
{
    ASSERT_TRUE(files().write("memory/key", 1));
    restart("second");
    // The first process has the lock, and the next has seen the old boot's id.
    std::future<std::map<std::string, int>> next;
    const Descriptor lock(open((scratch_ / "run").c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    ASSERT_EQ(flock(lock.number(), LOCK_EX), 0);
    next = std::async(std::launch::async, [this] { return files().list(); });
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!waits_for_lock()) {
        ASSERT_EQ(next.wait_for(std::chrono::seconds(0)), std::future_status::timeout)
            << "it did not wait";
        ASSERT_LT(std::chrono::steady_clock::now(), deadline);
    }
    store_test::write_file(scratch_ / "run/boot_id", "second\n");
    store_test::write_file(scratch_ / "run/memory/key", "2\n");
    flock(lock.number(), LOCK_UN);
    EXPECT_THAT(next.get(), ElementsAre(Pair("memory/key", 2)));
}

} // namespace
