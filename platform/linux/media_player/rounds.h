/**
 * The rounds of a file that plays over and over. The reader is ahead of the picture: the next round
 * is read while the end of this one is still being shown. Decides only; the caller seeks and shows.
 * One thread at a time, which tells the time.
 */
#pragma once

#include <chrono>
#include <optional>

namespace platform {

class Rounds {
  public:
    using Time = std::chrono::steady_clock::time_point;

    /** What is to follow the present round. */
    enum class Plan {
        End,             ///< nothing: the file does not play over and over, or not any more
        GoOn,            ///< the next round
        ReopenWithSound, ///< the next round, of the file opened anew with its sound
    };

    /** What to do after a call. */
    enum class Step {
        Nothing,
        Begin, ///< begin the next round, and tell on_begun()
        Complete,
        ReopenWithSound,
    };

    /** The play starts, or goes on after a stop. */
    void on_start(Time now) { last_begun_ = now; }

    /** A stretch was sought, so nothing of the rounds before counts; or the play ended. */
    void reset();

    /** A round has been read; plan_read() follows as soon as the file plays. */
    void on_read() { read_ = Read::Unplanned; }
    bool wants_plan() const { return read_ == Read::Unplanned; }

    /** @param at_end whether the round has been shown to its end as well */
    Step plan_read(Plan plan, bool at_end, Time now);

    /** The last picture of a round has had its time. @param looping whether another is wanted */
    Step on_shown(bool looping, Time now);

    /** The end came from a reader that does not go in rounds: it has been read and shown. */
    Step on_ended(Plan plan, Time now);

    /** When on_due() is to be called, if ever. */
    std::optional<Time> due() const { return due_; }
    Step on_due();

    /** @param seamless whether it is read behind the present one, without a seek */
    void on_begun(bool seamless, Time now);

  private:
    Step go_on(Time now);

    enum class Read { Underway, Unplanned, Last, BeforeReopening };
    Read read_ = Read::Underway;
    int ahead_ = 0;              ///< rounds begun by the reader and not yet by the picture
    bool picture_waits_ = false; ///< the last picture has had its time, and no round is ahead
    std::optional<Time> due_;
    Time last_begun_;
};

} // namespace platform
