#include <cerrno>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <string>

#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "base/regular_file.h"
#include "store_support/scratch.h"

namespace {

using platform::file_stamp;
using platform::open_regular_file;
using platform::read_piece;
using platform::read_regular_file;

constexpr size_t LIMIT = 300'000;

volatile std::sig_atomic_t alarms = 0;
volatile std::sig_atomic_t pipe_input = -1;

/** The last of several alarms gives the reader what it waits for. */
void on_alarm(int /*signal*/)
{
    alarms = alarms + 1;
    if (alarms == 5)
        static_cast<void>(!write(pipe_input, "x", 1));
}

class RegularFile : public testing::Test {
  protected:
    std::string write(const std::string &content) const
    {
        std::ofstream(path_, std::ios::binary) << content;
        return path_;
    }

    const store_test::ScratchDir scratch_;
    const std::string path_ = scratch_ / "file";
    std::string content_ = "left from before";
};

TEST_F(RegularFile, IsReadToItsEnd)
{
    const std::string bytes = std::string(LIMIT - 1, 'x') + '\0';
    EXPECT_EQ(read_regular_file(write(bytes), LIMIT, content_), 0);
    EXPECT_EQ(content_, bytes);
}

TEST_F(RegularFile, MayBeEmpty)
{
    EXPECT_EQ(read_regular_file(write(""), LIMIT, content_), 0);
    EXPECT_EQ(content_, "");
}

TEST_F(RegularFile, OverTheLimitIsRefused)
{
    EXPECT_EQ(read_regular_file(write(std::string(LIMIT + 1, 'x')), LIMIT, content_), EFBIG);
}

TEST_F(RegularFile, IsGivenUpBetweenPieces)
{
    int asked = 0;
    EXPECT_EQ(read_regular_file(write(std::string(LIMIT, 'x')), LIMIT, content_,
                                [&asked] { return ++asked == 2; }),
              ECANCELED);
    EXPECT_EQ(asked, 2);
}

TEST_F(RegularFile, ThatIsNotThereIsToldByErrno)
{
    EXPECT_EQ(read_regular_file(path_, LIMIT, content_), ENOENT);
    EXPECT_EQ(read_regular_file(write("x") + "/below", LIMIT, content_), ENOTDIR);
}

TEST_F(RegularFile, IsNoFolderPipeOrDevice)
{
    EXPECT_EQ(read_regular_file(scratch_.path(), LIMIT, content_), EISDIR);
    ASSERT_EQ(mkfifo(path_.c_str(), 0600), 0);
    EXPECT_EQ(read_regular_file(path_, LIMIT, content_), EINVAL);
    EXPECT_EQ(read_regular_file("/dev/zero", LIMIT, content_), EINVAL);
}

TEST_F(RegularFile, IsNotHandedToChildProcesses)
{
    const platform::Descriptor file = open_regular_file(write("x"));
    EXPECT_EQ(fcntl(file.number(), F_GETFD), FD_CLOEXEC);
}

TEST_F(RegularFile, IsOpenedWithTheFlagsAskedFor)
{
    std::filesystem::create_symlink(write("x"), scratch_ / "link");
    EXPECT_TRUE(open_regular_file(scratch_ / "link"));
    EXPECT_FALSE(open_regular_file(scratch_ / "link", O_RDONLY | O_NOFOLLOW));
    EXPECT_EQ(errno, ELOOP);
}

TEST_F(RegularFile, HasAnotherStampWhenItIsWrittenToOrReplaced)
{
    const auto stamp = file_stamp(write("text"));
    EXPECT_EQ(file_stamp(path_), stamp);

    const auto longer = file_stamp(write("more text"));
    EXPECT_NE(longer, stamp);

    const std::string copy = scratch_ / "copy";
    std::filesystem::copy_file(path_, copy);
    std::filesystem::last_write_time(copy, std::filesystem::last_write_time(path_));
    std::filesystem::rename(copy, path_);
    EXPECT_NE(file_stamp(path_), longer);

    std::filesystem::remove(path_);
    EXPECT_FALSE(file_stamp(path_));
}

TEST_F(RegularFile, HasAnotherStampWhenItIsRepairedInPlaceAndItsTimeSetBack)
{
    const auto stamp = file_stamp(write("taxt"));
    struct stat before = {};
    ASSERT_EQ(stat(path_.c_str(), &before), 0);
    const timespec times[] = {before.st_atim, before.st_mtim};
    struct stat after = before;

    // The file system's clock ticks some hundred times a second.
    while (after.st_ctim.tv_sec == before.st_ctim.tv_sec &&
           after.st_ctim.tv_nsec == before.st_ctim.tv_nsec) {
        write("text");
        ASSERT_EQ(utimensat(AT_FDCWD, path_.c_str(), times, 0), 0);
        ASSERT_EQ(stat(path_.c_str(), &after), 0);
    }

    EXPECT_NE(file_stamp(path_), stamp);
}

TEST(ReadPiece, GoesOnAfterASignal)
{
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const platform::Descriptor output(ends[0]);
    const platform::Descriptor input(ends[1]);
    pipe_input = input.number();
    struct sigaction action = {};
    action.sa_handler = on_alarm;
    struct sigaction former = {};
    sigaction(SIGALRM, &action, &former);
    const itimerval every_millisecond = {{0, 1000}, {0, 1000}};
    setitimer(ITIMER_REAL, &every_millisecond, nullptr);

    char piece[16];
    EXPECT_EQ(read_piece(output.number(), piece, sizeof piece), 1);

    const itimerval never = {};
    setitimer(ITIMER_REAL, &never, nullptr);
    sigaction(SIGALRM, &former, nullptr);
}

} // namespace
