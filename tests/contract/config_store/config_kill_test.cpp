// A key's value when its writer is killed in the middle of writing it: the old one or the new one.
//
// CONFIG_KILLS   how many living writers are killed at moments that nobody chooses (default: 20)
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>

#include <gmock/gmock.h>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

#include "config_store/config_files.h"
#include "store_support/scratch.h"

namespace {

namespace fs = std::filesystem;
using platform::ConfigFiles;
using testing::AllOf;
using testing::Ge;
using testing::Le;

class ConfigKill : public testing::TestWithParam<const char *> {
  protected:
    const std::string key_ = GetParam();
    const store_test::ScratchDir scratch_;

    ConfigFiles files() const { return {scratch_ / "state", scratch_ / "run"}; }

    /** The value, or -1 where there is none. */
    int value() const
    {
        int value = -1;
        files().read(key_, value);
        return value;
    }

    void expect_only_the_key_is_left() const
    {
        for (const auto &entry : fs::directory_iterator(files().folder(key_)))
            EXPECT_EQ(entry.path().filename(), fs::path(key_).filename());
    }

    /**
     * Lets another process write a value, and kills it when it has begun or ended this many system
     * calls.
     *
     * @return whether it was killed before it was done
     */
    bool write_and_be_killed(int value, int steps) const
    {
        const pid_t writer = fork();
        if (writer == 0) {
            if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0)
                _exit(2);
            raise(SIGSTOP);
            _exit(files().write(key_, value) ? 0 : 1);
        }
        int status = 0;
        waitpid(writer, &status, 0);
        for (; steps > 0 && WIFSTOPPED(status); --steps) {
            ptrace(PTRACE_SYSCALL, writer, nullptr, nullptr);
            waitpid(writer, &status, 0);
        }
        if (!WIFSTOPPED(status)) {
            EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "status " << status;
            return false;
        }
        kill(writer, SIGKILL);
        waitpid(writer, &status, 0);
        EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << "status " << status;
        return true;
    }
};

TEST_P(ConfigKill, AtAnySystemCallLeavesTheOldValueOrTheNewOne)
{
    for (const int old : {-1, 1}) {
        int kept = 0;
        int taken = 0;
        for (int steps = 1;; ++steps) {
            fs::remove_all(scratch_ / "state");
            fs::remove_all(scratch_ / "run");
            if (old >= 0) {
                ASSERT_TRUE(files().write(key_, old));
            }
            const bool killed = write_and_be_killed(2, steps);
            ASSERT_THAT(value(), testing::AnyOf(old, 2)) << "after " << steps << " steps";
            ++(value() == 2 ? taken : kept);
            ASSERT_TRUE(files().write(key_, 3)) << "after " << steps << " steps";
            ASSERT_EQ(value(), 3);
            expect_only_the_key_is_left();
            if (!killed)
                break;
        }
        EXPECT_GT(kept, 10) << "it was not killed early";
        EXPECT_GT(taken, 1) << "it was not killed late";
    }
}

TEST_P(ConfigKill, AtAnyMomentLeavesTheOldValueOrTheNewOne)
{
    const char *wanted = std::getenv("CONFIG_KILLS");
    const int kills = wanted ? std::atoi(wanted) : 20;
    store_test::Environment state("OSTREL_DEMO_STATE_DIR", scratch_ / "state");
    store_test::Environment run("OSTREL_DEMO_RUNTIME_DIR", scratch_ / "run");
    store_test::Environment conf("OSTREL_DEMO_TV_CONF", scratch_ / "tv.conf");
    store_test::write_file(scratch_ / "tv.conf", "");
    std::minstd_rand random; // always the same numbers
    int last = 0;
    for (int i = 0; i < kills; ++i) {
        store_test::Child writer({CONFIG_STORE_PEER, "keep", key_, std::to_string(last + 1)});
        while (writer.out_text().find('\n') == std::string::npos)
            ASSERT_TRUE(writer.read_some(10000)) << writer.err_text();
        // Anywhere in a write, which takes some tens of microseconds.
        const auto end =
            std::chrono::steady_clock::now() + std::chrono::microseconds(random() % 500);
        while (std::chrono::steady_clock::now() < end) {
        }
        writer.signal(SIGKILL);
        ASSERT_EQ(writer.finish(), -SIGKILL) << writer.err_text();
        const std::string told = writer.out_text();
        const int written = std::atoi(told.c_str() + told.rfind('\n', told.size() - 2) + 1);
        // What a medium takes long for is not waited for, and says so: then some may be lost.
        const bool waited = writer.err_text().find("it is not waited for") == std::string::npos;
        const int least = waited ? written : last;
        last = value();
        ASSERT_THAT(last, AllOf(Ge(least), Le(written + 1))) << "kill " << i;
    }
    ASSERT_TRUE(files().write(key_, 0));
    expect_only_the_key_is_left();
}

INSTANTIATE_TEST_SUITE_P(All, ConfigKill, testing::Values("db/a/key", "memory/a/key"),
                         [](const auto &key) {
                             return *key.param == 'd' ? "Lasting" : "OfThisBoot";
                         });

} // namespace
