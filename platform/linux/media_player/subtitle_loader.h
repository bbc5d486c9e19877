/**
 * Reads a file's subtitle beside the opening of its video, on a thread of its own: a subtitle that
 * is slow to read, or made to be slow, must hold up neither the video nor its closing.
 */
#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <string>

#include "subtitles/subtitle_track.h"

namespace platform {

class SubtitleLoader {
  public:
    /** SubtitleTrack::load(), or what a test has in its place. */
    using Load = std::function<std::unique_ptr<SubtitleTrack>(
        const std::string &path, std::string &error, const StopRequest &stop)>;

    /**
     * Begins to read a file.
     *
     * @param on_done called on the loader's thread when take() has the result
     * @return null when there is no thread for it
     */
    static std::shared_ptr<SubtitleLoader> start(const std::string &path, Load load,
                                                 std::function<void()> on_done);

    /** The result, once; null with a sentence in `error` when it could not be read. Any thread. */
    std::unique_ptr<SubtitleTrack> take(std::string &error);

    /** Tells the load to give up; returns at once. Any thread. */
    void stop() { stopped_ = true; }

    /** Waits for the loader's thread to end. @return false when it is not in time */
    bool wait_for_end(std::chrono::milliseconds limit) const;

    SubtitleLoader() = default;

  private:
    void run(const std::string &path, const Load &load);

    std::atomic<bool> stopped_{false};
    std::promise<void> end_;
    const std::shared_future<void> ended_ = end_.get_future().share();

    std::mutex mutex_; ///< guards all below
    std::unique_ptr<SubtitleTrack> track_;
    std::string error_;
};

} // namespace platform
