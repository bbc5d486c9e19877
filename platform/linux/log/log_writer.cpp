#include "log/log_writer.h"

#include <cerrno>
#include <climits>
#include <csignal>
#include <ctime>

#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/environment.h"
#include "dlog.h"

namespace platform {

namespace {

// How long a line waits for a full, non-blocking destination before it is given up.
constexpr int FULL_DESTINATION_MS = 100;

int lowest_priority()
{
    const std::string level = environment_variable("OSTREL_DEMO_LOG_LEVEL");
    if (level == "debug")
        return DLOG_DEBUG;
    if (level == "warning")
        return DLOG_WARN;
    if (level == "error")
        return DLOG_ERROR;
    return DLOG_INFO;
}

// systemd names the journal's stream by device and inode, because children inherit the variable
// while their standard error may have been redirected.
bool stderr_is_journal()
{
    const std::string stream = environment_variable("JOURNAL_STREAM");
    struct stat status = {};
    if (stream.empty() || fstat(STDERR_FILENO, &status) != 0)
        return false;
    return stream == std::to_string(status.st_dev) + ":" + std::to_string(status.st_ino);
}

bool wants_colours()
{
    const std::string colour = environment_variable("OSTREL_DEMO_LOG_COLOR");
    if (colour == "always")
        return true;
    return colour != "never" && isatty(STDERR_FILENO) == 1;
}

// Keeps a broken pipe from killing the process, for the calling thread and for as long as the
// object lives, whatever the process has set for the signal.
class BrokenPipeGuard {
  public:
    BrokenPipeGuard()
    {
        sigset_t waiting;
        sigemptyset(&waiting);
        sigpending(&waiting);
        was_pending_ = sigismember(&waiting, SIGPIPE) == 1;
        sigemptyset(&pipe_);
        sigaddset(&pipe_, SIGPIPE);
        pthread_sigmask(SIG_BLOCK, &pipe_, &before_);
    }

    ~BrokenPipeGuard()
    {
        // Our own signal is taken back before the thread can see it.
        if (raised_ && !was_pending_) {
            const timespec no_wait = {};
            while (sigtimedwait(&pipe_, nullptr, &no_wait) < 0 && errno == EINTR) {
            }
        }
        pthread_sigmask(SIG_SETMASK, &before_, nullptr);
    }

    BrokenPipeGuard(const BrokenPipeGuard &) = delete;
    BrokenPipeGuard &operator=(const BrokenPipeGuard &) = delete;

    void note_raised() { raised_ = true; }

  private:
    sigset_t pipe_;
    sigset_t before_;
    bool was_pending_ = false;
    bool raised_ = false;
};

bool wait_for_room()
{
    pollfd descriptor = {STDERR_FILENO, POLLOUT, 0};
    return poll(&descriptor, 1, FULL_DESTINATION_MS) == 1;
}

} // namespace

LogWriter &LogWriter::get()
{
    static LogWriter &writer = *new LogWriter;
    return writer;
}

LogWriter::LogWriter() : lowest_(lowest_priority())
{
    style_.journal = stderr_is_journal();
    style_.colours = wants_colours();
}

int LogWriter::write(int priority, const char *tag, const std::string &text)
{
    return write_whole(format_log_line(style_, priority, tag, getpid(), text));
}

int LogWriter::write_whole(const std::string &line)
{
    // One line is one write; only a full pipe or terminal takes it in pieces, and then the lock
    // keeps other threads' lines out of it.
    const std::lock_guard<std::mutex> lock(mutex_);
    BrokenPipeGuard guard;
    size_t done = 0;
    while (done < line.size()) {
        const ssize_t written = ::write(STDERR_FILENO, line.data() + done, line.size() - done);
        if (written > 0) {
            done += static_cast<size_t>(written);
        } else if (written < 0 && errno == EPIPE) {
            guard.note_raised();
            return -1;
        } else if (written < 0 && (errno == EINTR || (errno == EAGAIN && wait_for_room()))) {
            continue;
        } else {
            return -1;
        }
    }
    return done > INT_MAX ? INT_MAX : static_cast<int>(done);
}

} // namespace platform
