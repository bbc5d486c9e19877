/**
 * What becomes of a file's sound: whether it plays without, and when a lost device is to be tried
 * again. Decides only; the caller looks for devices and opens pipelines. One thread at a time,
 * which tells the time.
 */
#pragma once

#include <chrono>

namespace platform {

class SoundRecovery {
  public:
    using Time = std::chrono::steady_clock::time_point;

    /** @param pause from losing the sound to the first new try */
    explicit SoundRecovery(std::chrono::milliseconds pause) : first_pause_(pause), pause_(pause) {}

    /** Whether the file plays without sound, after trouble with it. */
    bool silent() const { return silent_; }

    /** Whether it does because of its device, and not of its own sound. */
    bool lost_device() const { return silent_ && without_device_; }

    /** A pipeline with a sink for the sound is made. @param device whether there is a device */
    void on_pipeline(bool device, Time now);

    /** @return false when the file was silent already */
    bool go_silent();

    /** The device broke. One that was good for a while is tried again soon. */
    void on_device_lost(Time now);

    /**
     * Whether to look for a device now. A yes counts as a try: the next one comes a pause later.
     *
     * @param has_track whether the present pipeline plays a track of sound
     */
    bool try_is_due(bool has_track, Time now);

    /** A search that try_is_due() asked for is over. */
    void on_search_over(bool found) { found_ = found && without_device_; }

    /** Whether the last search found a device for the file to be opened anew with. */
    bool found_device() const { return found_; }

    /**
     * There is a device again, and the file is opened anew for it. A device that is there and
     * breaks each time holds the picture, so the tries become rarer.
     */
    void on_device_found();

    /** The file opened anew without getting its sound. */
    void on_failed_return() { without_device_ = true; }

  private:
    const std::chrono::milliseconds first_pause_;
    std::chrono::milliseconds pause_;
    bool silent_ = false;
    bool without_device_ = false; ///< there was no device, or it was lost
    bool found_ = false;
    Time next_try_;
};

} // namespace platform
