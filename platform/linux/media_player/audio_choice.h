/**
 * Which sink the sound goes to. A choice stands until its device is lost; that there was no device
 * is no choice, and is looked into again, because a sound server may come up after the demo and a
 * cable may be put back. A sound server that does not answer is waited for a while and not longer.
 * Any thread; a search may outlive whoever asked for it, and the object must outlive the search.
 */
#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <string>

namespace platform {

/**
 * A set without any sound is asked for it no more often than this: a sound server that hangs takes
 * seconds to answer, and each of them may hold back a video.
 */
constexpr std::chrono::milliseconds SOUND_SEARCH_INTERVAL = std::chrono::minutes(1);

/** What the choice goes by; tests have their own. */
struct AudioEnvironment {
    std::function<std::string()> wanted;                ///< element asked for by name; or empty
    std::function<bool(const std::string &sink)> opens; ///< whether a device answers
    /** Whether it answers two at a time: many a device mixes in software. */
    std::function<bool(const std::string &sink)> opens_twice;
    std::function<std::chrono::steady_clock::time_point()> now;
    std::chrono::milliseconds patience{5000}; ///< the longest wait for a search
};

class AudioChoice {
  public:
    explicit AudioChoice(AudioEnvironment environment) : environment_(std::move(environment)) {}

    /**
     * Looks for a device, if none is chosen and the last search is not of the last minute.
     *
     * @return the name of the sink's element; empty when there is no device, or none has answered
     */
    std::string sink();

    /** Whether two pipelines can have the chosen device at a time; silence can be shared. */
    bool is_shared() const;

    /** The device is gone; the next sink() looks for another one. */
    void forget();

    /** The device does not answer; it is as if a search had just found none. */
    void on_hang();

  private:
    void search();
    std::string find_sink();

    const AudioEnvironment environment_;
    mutable std::mutex mutex_; ///< guards all below
    std::condition_variable searched_;
    bool searching_ = false;
    std::chrono::steady_clock::time_point search_limit_; ///< when the one under way takes too long
    std::string sink_;
    bool shared_ = false; ///< two can have it at a time
    std::optional<std::chrono::steady_clock::time_point> last_search_;
    bool silence_logged_ = false; ///< the log says that there is no device; the search's own
};

} // namespace platform
