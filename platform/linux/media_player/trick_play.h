/**
 * The speeds of one file. Forwards a pipeline does by itself; backwards it does only where that is
 * smooth. Elsewhere the picture steps back from key frame to key frame in a held pipeline, at the
 * times at which a smooth play would have come by. The thread that drives the pipeline.
 */
#pragma once

#include <optional>

#include "media_player/backward_steps.h"
#include "media_player/pipeline.h"

namespace platform {

class TrickPlay {
  public:
    using Time = BackwardSteps::Time;

    TrickPlay(Pipeline &pipeline, const FrameOutput &output);

    double rate() const { return rate_; }

    /** Whether the picture steps in a held pipeline instead of playing. */
    bool stepping() const { return steps_.has_value(); }

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
     * @param position  where the file is
     * @param running   whether it plays, or is held
     * @param in_rounds whether it is to be played over and over
     */
    Next begin(double rate, GstClockTime position, bool running, bool in_rounds, Time now);

    /** The frame that was waited for is there; steps instead, where smooth play failed. */
    void frame_ready(bool running, Time now);

    /** Holds stepping, or goes on with it. */
    void set_running(bool running, Time now);

    /** When to call step(); nothing when there are no steps to do. */
    std::optional<Time> deadline() const;

    /** Goes one step back, if it is time. */
    Next step(Time now);

    /** Media time; GST_CLOCK_TIME_NONE when unknown. */
    GstClockTime position(Time now) const;

    /** Forgets speed and steps; touches no pipeline. */
    void reset();

  private:
    bool seek_to(double rate, GstClockTime position, bool in_rounds);
    void start_stepping(GstClockTime position, bool running, Time now);

    Pipeline &pipeline_;
    const FrameOutput &output_;
    double rate_ = 1.0;
    GstClockTime origin_ = 0; ///< where the last seek went
    bool in_rounds_ = false;
    std::optional<BackwardSteps> steps_;
};

} // namespace platform
