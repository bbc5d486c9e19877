/**
 * Which sink the sound goes to. A choice stands until its device is lost; that there was no device
 * is no choice, and is looked into again, because a sound server may come up after the demo and a
 * cable may be put back. Any thread; searching takes as long as a sound server takes to answer.
 */
#pragma once

#include <chrono>
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
};

class AudioChoice {
  public:
    explicit AudioChoice(AudioEnvironment environment) : environment_(std::move(environment)) {}

    /**
     * Looks for a device, if none is chosen and the last search is not of the last minute.
     *
     * @return the name of the sink's element; empty when there is no device
     */
    std::string sink();

    /** Whether two pipelines can have the chosen device at a time; silence can be shared. */
    bool is_shared() const;

    /** The device is gone; the next sink() looks for another one. */
    void forget();

  private:
    std::string find_sink();

    const AudioEnvironment environment_;
    mutable std::mutex mutex_; ///< guards all below
    std::string sink_;
    bool shared_ = false; ///< two can have it at a time
    std::optional<std::chrono::steady_clock::time_point> last_search_;
    bool silence_logged_ = false; ///< the log says that there is no device
};

} // namespace platform
