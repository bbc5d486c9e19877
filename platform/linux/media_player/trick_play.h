/**
 * The speeds of one file. Forwards a pipeline does by itself; backwards it does only where that is
 * smooth. Elsewhere the picture steps back from key frame to key frame in a held pipeline, at the
 * times at which a smooth play would have come by. The thread that drives the pipeline.
 */
#pragma once

#include <optional>

#include "media_player/pipeline.h"
#include "media_player/task_queue.h"

namespace platform {

class TrickPlay {
  public:
    using Clock = TaskQueue::Clock;

    TrickPlay(Pipeline &pipeline, const FrameOutput &output);

    double rate() const { return rate_; }

    /** Whether the picture steps in a held pipeline instead of playing. */
    bool stepping() const { return stepping_; }

    /** Whether the present stretch ends in a round that next_round() follows up without a seam. */
    bool in_rounds() const { return in_rounds_; }

    /** Goes on from the start without a seam. @return false when only begin() can */
    bool next_round();

    /** What to do after a call. */
    enum class Next {
        Nothing,    ///< go on
        AwaitFrame, ///< a seek is under way; tell frame_ready() when it is done
        AtStart,    ///< backwards play has come to the start
        Refused,    ///< the file cannot be sought
    };

    /**
     * Takes up a speed.
     *
     * @param position  where the file is now
     * @param running   whether it plays, or is held
     * @param in_rounds whether it is to be played over and over
     */
    Next begin(double rate, GstClockTime position, bool running, bool in_rounds);

    /** The frame that was waited for has been shown; steps instead, where smooth play failed. */
    void frame_ready();

    /** Holds stepping, or goes on with it. */
    void set_running(bool running);

    /** When to call step(); nothing when there are no steps to do. */
    std::optional<Clock::time_point> deadline() const;

    /** Goes one step back, if it is time. */
    Next step();

    /** Media time while stepping. */
    GstClockTime position() const;

    /** Forgets speed and steps; touches no pipeline. */
    void reset();

  private:
    bool seek_to(double rate, GstClockTime position, bool in_rounds);
    void start_stepping(GstClockTime position, bool running);

    Pipeline &pipeline_;
    const FrameOutput &output_;
    double rate_ = 1.0;
    bool stepping_ = false;
    bool in_rounds_ = false;
    bool running_ = false;

    // While stepping: the place and time from which the present place is reckoned.
    GstClockTime origin_ = 0;
    Clock::time_point origin_time_;
    GstClockTime shown_ = GST_CLOCK_TIME_NONE; ///< the key frame on screen
    GstClockTime asked_ = 0;                   ///< the place of the step under way
    Clock::time_point last_step_;
};

} // namespace platform
