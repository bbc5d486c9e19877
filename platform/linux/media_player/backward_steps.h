/**
 * When to show which key frame, where a held picture steps back at the pace of a smooth backwards
 * play. Decides only; the caller seeks. One thread at a time, which tells the time.
 */
#pragma once

#include <chrono>
#include <optional>

namespace platform {

class BackwardSteps {
  public:
    using Time = std::chrono::steady_clock::time_point;
    using Nanoseconds = std::chrono::nanoseconds;

    /**
     * @param position where the file is
     * @param rate     speed, below 0
     * @param running  whether the place moves, or is held
     */
    BackwardSteps(Nanoseconds position, double rate, bool running, Time now);

    /** Holds the place, or lets it move on. */
    void set_running(bool running, Time now);

    /** The place that a smooth play would have come to; 0 at the start. */
    Nanoseconds place(Time now) const;

    /** When step() is next due; nothing while held. */
    std::optional<Time> due() const;

    /** Asks for the next picture. @return the place to show; nothing when it is not time yet */
    std::optional<Nanoseconds> step(Time now);

    /** The picture that was asked for is there. @param position its own place */
    void on_shown(Nanoseconds position);

  private:
    double rate_;
    bool running_;
    Nanoseconds origin_; ///< the place at origin_time_, from which the present one is reckoned
    Time origin_time_;
    std::optional<Nanoseconds> shown_; ///< the key frame on screen
    Nanoseconds asked_{0};             ///< the place of the last step
    Time last_step_;
};

} // namespace platform
