#include "log/log_writer.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <csignal>
#include <ctime>

#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/environment.h"
#include "dlog.h"

namespace platform {

namespace {

using std::chrono::milliseconds;

// How long lines wait for a full destination, all together; grows back with the tenth of the time
// that passes. Every thread waits for the one that does, the main loop too.
constexpr milliseconds PATIENCE{1000};
constexpr int GROWS_BACK_IN = 10;

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

bool is_pipe()
{
    struct stat status = {};
    return fstat(STDERR_FILENO, &status) == 0 && S_ISFIFO(status.st_mode);
}

/** @return false when nothing can be written for so long */
bool has_room(milliseconds patience)
{
    pollfd descriptor = {STDERR_FILENO, POLLOUT, 0};
    return poll(&descriptor, 1, static_cast<int>(patience.count())) != 0;
}

// Like write(), but a full pipe or socket is EAGAIN however it was opened. To make them
// non-blocking would do the same to whoever else has them.
ssize_t write_what_fits(std::string_view text)
{
    const ssize_t sent = send(STDERR_FILENO, text.data(), text.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
    if (sent >= 0 || errno != ENOTSOCK)
        return sent;
    if (is_pipe()) {
        if (!has_room(milliseconds(0))) {
            errno = EAGAIN;
            return -1;
        }
        text = text.substr(0, PIPE_BUF); // more would wait for more room
    }
    return write(STDERR_FILENO, text.data(), text.size());
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
    const std::string line = format_log_line(style_, priority, tag, getpid(), text);
    // A line may be taken in pieces, and then the lock keeps other threads' lines out of it.
    const std::lock_guard<std::mutex> lock(mutex_);
    if (!tell_lost() || !put(line))
        return -1;
    return static_cast<int>(std::min<size_t>(line.size(), INT_MAX));
}

bool LogWriter::tell_lost()
{
    if (lost_ == 0)
        return true;
    const std::string line =
        format_log_line(style_, DLOG_ERROR, "PLATFORM", getpid(),
                        "log: lines lost, for want of room: " + std::to_string(lost_));
    if (!put(cut_ ? "\n" + line : line))
        return false;
    lost_ = 0;
    cut_ = false;
    return true;
}

bool LogWriter::put(std::string_view text)
{
    BrokenPipeGuard guard;
    const size_t size = text.size();
    while (!text.empty()) {
        const ssize_t written = write_what_fits(text);
        if (written > 0) {
            text.remove_prefix(static_cast<size_t>(written));
        } else if (written < 0 && errno == EAGAIN) {
            // A reader that was not there in time is not waited for again until it has come.
            if (lost_ == 0 && wait_for_room())
                continue;
            ++lost_;
            cut_ = cut_ || text.size() < size;
            return false;
        } else if (written == 0 || errno != EINTR) {
            if (written < 0 && errno == EPIPE)
                guard.note_raised();
            return false;
        }
    }
    return true;
}

bool LogWriter::wait_for_room()
{
    const Clock::time_point begun = Clock::now();
    patience_ = std::min<Clock::duration>(PATIENCE, patience_ + (begun - waited_) / GROWS_BACK_IN);
    const bool room = has_room(std::chrono::duration_cast<milliseconds>(patience_));
    waited_ = Clock::now();
    patience_ = std::max(Clock::duration::zero(), patience_ - (waited_ - begun));
    return room;
}

} // namespace platform
