/**
 * The destination of the log: standard error, which is the journal when the program was started as
 * a systemd service. Any thread, from before main() until the process ends.
 *
 * The environment, read at the first line:
 *  - OSTREL_DEMO_LOG_LEVEL: debug, info (default), warning or error; lower lines are left out;
 *  - OSTREL_DEMO_LOG_COLOR: always, never or auto (default): colours when it is a terminal.
 */
#pragma once

#include <mutex>
#include <string>

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
     * Writes one line. A reader that went away costs the line, never the process.
     *
     * @return bytes written, or -1 when the line was lost
     */
    int write(int priority, const char *tag, const std::string &text);

  private:
    LogWriter();
    int write_whole(const std::string &line);

    LogStyle style_;
    int lowest_;
    std::mutex mutex_;
};

} // namespace platform
