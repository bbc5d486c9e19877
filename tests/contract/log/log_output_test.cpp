#include <algorithm>
#include <chrono>
#include <climits>
#include <csignal>
#include <functional>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <poll.h>
#include <pty.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include "dlog.h"
#include "store_support/scratch.h"

namespace {

using store_test::Child;
using store_test::Environment;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

constexpr int WRITTEN = 10;
constexpr int LOST = 11;
constexpr int LEFT_OUT = 12;

/** Where the standard error's bytes go, a few with each call, while it is there. */
std::string *taken_in_pieces = nullptr;

/** Called whenever somebody is about to wait, if there is one. */
std::function<void()> before_a_wait;

using SteadyClock = std::chrono::steady_clock;

/** By how much time has passed that nobody waited for. */
SteadyClock::duration passed{};

} // namespace

// The linker sends the calls of this program's own objects here.
extern "C" ssize_t __wrap_write(int descriptor, const void *bytes, size_t count);
extern "C" ssize_t __real_write(int descriptor, const void *bytes, size_t count);
extern "C" int __wrap_poll(pollfd *descriptors, nfds_t count, int timeout_ms);
extern "C" int __real_poll(pollfd *descriptors, nfds_t count, int timeout_ms);
SteadyClock::time_point wrap_now() asm("__wrap__ZNSt6chrono3_V212steady_clock3nowEv");
SteadyClock::time_point real_now() asm("__real__ZNSt6chrono3_V212steady_clock3nowEv");

SteadyClock::time_point wrap_now()
{
    return real_now() + passed;
}

int __wrap_poll(pollfd *descriptors, nfds_t count, int timeout_ms)
{
    if (timeout_ms != 0 && before_a_wait)
        before_a_wait();
    return __real_poll(descriptors, count, timeout_ms);
}

ssize_t __wrap_write(int descriptor, const void *bytes, size_t count)
{
    if (!taken_in_pieces || descriptor != STDERR_FILENO)
        return __real_write(descriptor, bytes, count);
    constexpr size_t PIECE = 7;
    taken_in_pieces->append(static_cast<const char *>(bytes), std::min(count, PIECE));
    return static_cast<ssize_t>(std::min(count, PIECE));
}

namespace {

class LogOutput : public testing::Test {
  protected:
    Environment level_{"OSTREL_DEMO_LOG_LEVEL"};
    Environment colour_{"OSTREL_DEMO_LOG_COLOR"};
    Environment journal_{"JOURNAL_STREAM"};
};

std::vector<std::string> probe(int priority, const std::string &text)
{
    return {LOG_PROBE, std::to_string(priority), "TAG", text};
}

/** Logs a line in another process. @return what became of it: WRITTEN, LOST or LEFT_OUT */
int fate_of(int priority)
{
    return Child(probe(priority, "text")).finish();
}

TEST_F(LogOutput, LineGoesToStandardErrorWithTheProcessId)
{
    Child child(probe(DLOG_WARN, "text"));
    const pid_t pid = child.pid();

    EXPECT_EQ(child.finish(), WRITTEN);

    char expected[64];
    std::snprintf(expected, sizeof expected, "W/TAG(%5d): text\n", pid);
    EXPECT_EQ(child.err_text(), expected);
    EXPECT_EQ(child.out_text(), "");
}

TEST_F(LogOutput, DebugIsLeftOutUnlessAskedFor)
{
    Child silent(probe(DLOG_DEBUG, "text"));
    EXPECT_EQ(silent.finish(), LEFT_OUT);
    EXPECT_EQ(silent.err_text(), "");

    const Environment debug("OSTREL_DEMO_LOG_LEVEL", "debug");
    Child child(probe(DLOG_DEBUG, "text"));
    EXPECT_EQ(child.finish(), WRITTEN);
    EXPECT_THAT(child.err_text(), StartsWith("D/TAG("));
}

TEST_F(LogOutput, LevelErrorLeavesWarningsOut)
{
    const Environment level("OSTREL_DEMO_LOG_LEVEL", "error");
    EXPECT_EQ(fate_of(DLOG_WARN), LEFT_OUT);
    EXPECT_EQ(fate_of(DLOG_ERROR), WRITTEN);
}

TEST_F(LogOutput, UnknownLevelMeansInfo)
{
    const Environment level("OSTREL_DEMO_LOG_LEVEL", "loud");
    EXPECT_EQ(fate_of(DLOG_INFO), WRITTEN);
    EXPECT_EQ(fate_of(DLOG_DEBUG), LEFT_OUT);
}

TEST_F(LogOutput, ColoursAreDroppedOnAPipeAndKeptWhenAskedFor)
{
    Child dropped(probe(DLOG_INFO, "\033[31mred\033[0m"));
    EXPECT_EQ(dropped.finish(), WRITTEN);
    EXPECT_THAT(dropped.err_text(), EndsWith("): red\n"));

    const Environment always("OSTREL_DEMO_LOG_COLOR", "always");
    Child kept(probe(DLOG_INFO, "\033[31mred\033[0m"));
    EXPECT_EQ(kept.finish(), WRITTEN);
    EXPECT_THAT(kept.err_text(), EndsWith("): \033[31mred\033[0m\n"));
}

TEST_F(LogOutput, TerminalGetsColoursUnlessRefused)
{
    for (const bool refused : {false, true}) {
        const Environment colour("OSTREL_DEMO_LOG_COLOR", refused ? "never" : "auto");
        int terminal = -1;
        int slave = -1;
        ASSERT_EQ(openpty(&terminal, &slave, nullptr, nullptr, nullptr), 0);

        Child child(probe(DLOG_INFO, "\033[31mred\033[0m"),
                    [slave] { dup2(slave, STDERR_FILENO); });
        EXPECT_EQ(child.finish(), WRITTEN);

        char text[256];
        const ssize_t length = read(terminal, text, sizeof text);
        ASSERT_GT(length, 0);
        const std::string line(text, static_cast<size_t>(length));
        if (refused)
            EXPECT_THAT(line, Not(HasSubstr("\033")));
        else
            EXPECT_THAT(line, HasSubstr("\033[31mred\033[0m"));
        close(slave);
        close(terminal);
    }
}

TEST_F(LogOutput, JournalStreamGetsLevelsAndNoColours)
{
    const store_test::ScratchDir scratch;
    const std::string stream = scratch / "journal";
    const int file = open(stream.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    struct stat status = {};
    ASSERT_EQ(fstat(file, &status), 0);
    const Environment journal("JOURNAL_STREAM",
                              std::to_string(status.st_dev) + ":" + std::to_string(status.st_ino));

    Child child(probe(DLOG_ERROR, "\033[31mred\033[0m"), [file] { dup2(file, STDERR_FILENO); });
    EXPECT_EQ(child.finish(), WRITTEN);
    EXPECT_THAT(store_test::read_file(stream), StartsWith("<3>E/TAG("));
    EXPECT_THAT(store_test::read_file(stream), EndsWith("): red\n"));

    Child elsewhere(probe(DLOG_ERROR, "text"));
    EXPECT_EQ(elsewhere.finish(), WRITTEN);
    EXPECT_THAT(elsewhere.err_text(), StartsWith("E/TAG("));
    close(file);
}

/** So much that it is never full, however late this process reads it. */
void enlarge_pipe()
{
    fcntl(STDERR_FILENO, F_SETPIPE_SZ, 1 << 20);
}

TEST_F(LogOutput, LongTextStaysOneLine)
{
    const std::string text(100000, 'x');
    Child child(probe(DLOG_INFO, text), enlarge_pipe);
    EXPECT_EQ(child.finish(), WRITTEN);
    EXPECT_THAT(child.err_text(), EndsWith("): " + text + "\n"));
    EXPECT_EQ(std::count(child.err_text().begin(), child.err_text().end(), '\n'), 1);
}

TEST_F(LogOutput, ALineThatIsTakenInPiecesArrivesWhole)
{
    std::string line;
    taken_in_pieces = &line;
    const int written = __dlog_print(LOG_ID_APPS, DLOG_ERROR, "TAG", "%s", "text of some length");
    taken_in_pieces = nullptr;
    EXPECT_THAT(line, StartsWith("E/TAG("));
    EXPECT_THAT(line, EndsWith("): text of some length\n"));
    EXPECT_EQ(written, static_cast<int>(line.size()));
}

TEST_F(LogOutput, LinesOfSeveralThreadsDoNotMix)
{
    Child child({LOG_PROBE, "threads", "4", "50"}, enlarge_pipe);
    EXPECT_EQ(child.finish(), 0);

    std::istringstream lines(child.err_text());
    int count = 0;
    for (std::string line; std::getline(lines, line); ++count) {
        const std::string text = line.substr(line.find(": ") + 2);
        ASSERT_EQ(text, std::string(3000, text.front()));
    }
    EXPECT_EQ(count, 200);
}

TEST_F(LogOutput, ReaderThatWentAwayCostsTheLineOnly)
{
    int broken[2];
    ASSERT_EQ(pipe2(broken, O_CLOEXEC), 0);
    close(broken[0]);
    Child child(probe(DLOG_INFO, "text"), [&] {
        std::signal(SIGPIPE, SIG_DFL);
        dup2(broken[1], STDERR_FILENO);
    });
    EXPECT_EQ(child.finish(), LOST);
    close(broken[1]);
}

/** This process's own standard error, for as long as the object lives. */
class OwnStandardError {
  public:
    explicit OwnStandardError(int descriptor) { dup2(descriptor, STDERR_FILENO); }
    ~OwnStandardError()
    {
        dup2(before_, STDERR_FILENO);
        close(before_);
    }
    OwnStandardError(const OwnStandardError &) = delete;
    OwnStandardError &operator=(const OwnStandardError &) = delete;

  private:
    const int before_ = dup(STDERR_FILENO);
};

bool logged(const std::string &text)
{
    return __dlog_print(LOG_ID_APPS, DLOG_ERROR, "TAG", "%s", text.c_str()) > 0;
}

TEST_F(LogOutput, ABrokenPipeThatWasToldBeforeIsStillToBeHeardOfAfterALine)
{
    sigset_t pipe_signal, before;
    sigemptyset(&pipe_signal);
    sigaddset(&pipe_signal, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &pipe_signal, &before);
    raise(SIGPIPE);
    int broken[2];
    ASSERT_EQ(pipe2(broken, O_CLOEXEC), 0);
    close(broken[0]);
    {
        const OwnStandardError standard_error(broken[1]);
        EXPECT_FALSE(logged("text"));
    }
    const timespec no_wait = {};
    EXPECT_EQ(sigtimedwait(&pipe_signal, nullptr, &no_wait), SIGPIPE);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    close(broken[1]);
}

TEST_F(LogOutput, ClosedStandardErrorCostsTheLineOnly)
{
    Child child(probe(DLOG_INFO, "text"), [] { close(STDERR_FILENO); });
    EXPECT_EQ(child.finish(), LOST);
}

/** Both ends of something that is full: the reader's, which does not block, and the writer's. */
class Full {
  public:
    enum Kind { BlockingPipe, NonBlockingPipe, StreamSocket };

    explicit Full(Kind kind)
    {
        const bool made = kind == StreamSocket
                              ? socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends_) == 0
                              : pipe2(ends_, O_CLOEXEC) == 0;
        if (!made)
            std::abort();
        for (const int end : ends_)
            fcntl(end, F_SETFL, O_NONBLOCK);
        const std::string filling(PIPE_BUF, 'x');
        while (write(writer(), filling.data(), filling.size()) > 0) {
        }
        if (kind != NonBlockingPipe)
            fcntl(writer(), F_SETFL, 0);
    }
    ~Full()
    {
        close(ends_[0]);
        close(ends_[1]);
    }
    Full(const Full &) = delete;
    Full &operator=(const Full &) = delete;

    int writer() const { return ends_[1]; }

    /** Takes so much out of it, or what there is. */
    std::string read(size_t most) const
    {
        std::string text(most, 0);
        const ssize_t length = ::read(ends_[0], text.data(), most);
        text.resize(length > 0 ? static_cast<size_t>(length) : 0);
        return text;
    }

  private:
    int ends_[2] = {-1, -1};
};

TEST_F(LogOutput, WhatIsFullCostsTheLineOnly)
{
    for (const Full::Kind kind : {Full::BlockingPipe, Full::NonBlockingPipe, Full::StreamSocket}) {
        const Full full(kind);
        Child child(probe(DLOG_INFO, "text"), [&] {
            dup2(full.writer(), STDERR_FILENO);
            alarm(20); // seconds; a line that waits for ever
        });
        EXPECT_EQ(child.finish(), LOST) << kind;
    }
}

TEST_F(LogOutput, ALineWaitsForAReaderThatIsLate)
{
    const Full full(Full::BlockingPipe);
    const OwnStandardError standard_error(full.writer());
    const size_t all = 1 << 20;
    before_a_wait = [&] { full.read(all); };

    EXPECT_TRUE(logged("text"));

    before_a_wait = {};
    EXPECT_THAT(full.read(all), EndsWith("): text\n"));
}

TEST_F(LogOutput, WhatIsLostIsCountedAndWaitedForOnce)
{
    const Full full(Full::BlockingPipe);
    const OwnStandardError standard_error(full.writer());
    full.read(PIPE_BUF);
    int waits = 0;
    before_a_wait = [&] { ++waits; };

    EXPECT_FALSE(logged(std::string(size_t{2} * PIPE_BUF, 'y'))) << "half of it has room";
    EXPECT_FALSE(logged("lost"));
    passed += std::chrono::hours(1); // in which patience grows back
    EXPECT_FALSE(logged("lost"));
    EXPECT_EQ(waits, 1);
    before_a_wait = {};
    const size_t all = 1 << 20;
    full.read(all);
    EXPECT_TRUE(logged("text"));
    EXPECT_TRUE(logged("more"));

    std::string text = full.read(all);
    for (size_t at = 0; (at = text.find(std::to_string(getpid()), at)) != std::string::npos;)
        text.replace(at, std::to_string(getpid()).size(), "PID");
    EXPECT_THAT(text, StartsWith("\nE/PLATFORM("));
    EXPECT_THAT(text, HasSubstr("PID): log: lines lost, for want of room: 3\nE/TAG("));
    EXPECT_THAT(text, HasSubstr("PID): text\nE/TAG("));
    EXPECT_THAT(text, EndsWith("PID): more\n"));
}

TEST_F(LogOutput, ErrnoOfTheCallerIsLeftAlone)
{
    Child child({LOG_PROBE, "errno"}, [] { close(STDERR_FILENO); });
    EXPECT_EQ(child.finish(), 0);
}

} // namespace
