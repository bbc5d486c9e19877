/**
 * The destination of the log: standard error, which is the journal when the program was started as
 * a systemd service. Any thread, from before main() until the process ends.
 *
 * The environment, read at the first line:
 *  - OSTREL_DEMO_LOG_LEVEL: debug, info (default), warning or error; lower lines are left out;
 *  - OSTREL_DEMO_LOG_COLOR: always, never or auto (default): colours when it is a terminal.
 */
#pragma once

#include <chrono>
#include <mutex>
#include <string>
#include <string_view>

#include "log/log_line.h"

namespace platform {

class LogWriter {
  public:
    /** The one writer; never destroyed, for threads and destructors that log late. */
    static LogWriter &get();

    LogWriter(const LogWriter &) = delete;
    LogWriter &operator=(const LogWriter &) = delete;

    /** Whether lines of this priority are written. */
    bool wants(int priority) const { return priority >= lowest_; }

    /**
     * Writes one line. A reader that went away costs the line, never the process. So does a pipe
     * or a socket that nobody reads, after a moment's wait; how many lines that were is the first
     * thing written when there is room again.
     *
     * @return bytes written, or -1 when the line was lost
     */
    int write(int priority, const char *tag, const std::string &text);

  private:
    using Clock = std::chrono::steady_clock;

    LogWriter();
    bool tell_lost();
    bool put(std::string_view text);
    bool wait_for_room();

    LogStyle style_;
    int lowest_;

    std::mutex mutex_;      ///< guards what follows
    unsigned int lost_ = 0; ///< lines that there was no room for, not told of yet
    bool cut_ = false;      ///< one of them was begun
    Clock::duration patience_{};
    Clock::time_point waited_;
};

} // namespace platform
