/**
 * One file's subtitle while it is read: beside the opening of the video, which is mostly the longer
 * of the two, and on a thread of its own, because one that is slow to read, or made to be slow,
 * must hold up neither the video nor its closing. For the file's own thread.
 */
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "base/regular_file.h"
#include "base/worker_thread.h"
#include "media_player/player_options.h"

namespace platform {

class SubtitleReading {
  public:
    using Time = WorkerThread::Clock::time_point;

    struct Result {
        std::string path;
        std::optional<FileStamp> stamp;       ///< of the file, before it was read
        std::shared_ptr<SubtitleTrack> track; ///< null: nothing was read, and why
        std::string error;
    };

    /** Takes what was read, on the reading thread. */
    using Deliver = std::function<void(const Result &result)>;

    /** @param path of the subtitle that is wanted; empty: none */
    explicit SubtitleReading(std::string path) : path_(std::move(path)) {}

    /** The one that is wanted; empty: none. */
    const std::string &path() const { return path_; }

    /** Wants another one, or none. Whatever has been read or is being read is good for nothing. */
    void want(const std::string &path);

    /**
     * Begins to read the one that is wanted, unless that has been begun.
     *
     * @param load    called on a thread that may outlive this object
     * @param deliver the same
     * @return false when there is no thread for it
     */
    bool begin(SubtitleLoad load, Deliver deliver);

    /** Whether it is being read and still wanted. */
    bool pending() const { return pending_; }

    /**
     * @return whether what was delivered is what is waited for, which it is from now on no more;
     * one that has changed while it was read has to be begun again
     */
    bool accept(const Result &result);

    /**
     * Whether a file, as it is at present, is another one than what was read of it. If it is still
     * being read, accept() finds out.
     */
    bool is_outdated(const std::string &path, const std::optional<FileStamp> &stamp);

    /** Sets when it is to be given up; nothing: never. */
    void expect_by(std::optional<Time> limit) { limit_ = limit; }

    /** When to give_up(), if ever. */
    std::optional<Time> due() const { return limit_; }

    /** Reads nothing any more. */
    void give_up();

    /** Waits until the thread has ended, after give_up(), for a limited time. */
    void wait_for_end(std::chrono::milliseconds limit) const { reader_->wait_for_end(limit); }

  private:
    static constexpr const char *THREAD = "subtitle";

    std::string path_;
    std::string begun_; ///< the one whose reading was begun last
    std::string read_;  ///< the one that was read last
    std::optional<FileStamp> stamp_;
    std::optional<std::optional<FileStamp>> wanted_stamp_; ///< of what is being read
    bool pending_ = false;
    std::optional<Time> limit_;
    std::optional<WorkerThread> reader_{THREAD};
};

} // namespace platform
