/**
 * What a status report tells of a film's picture: gathered on the frames' way from the decoder to
 * the plane, in GStreamer's own names.
 */
#pragma once

#include <map>
#include <mutex>
#include <string>

#include "media_player/colour_tags.h"
#include "media_player/gst_ptr.h"
#include "media_player/player_status.h"

namespace platform {

/** The facts of one file's streams. Any thread; its lock is never held for long. */
class VideoFacts {
  public:
    /**
     * Looks at an event in a probe: on a decoder's source pad, and on the pad where frames, also
     * those that need no decoder, come in to be shown.
     */
    void on_event(GstPad *pad, GstPadProbeInfo *info);

    /** How frames become pixels of the screen. */
    struct Conversion {
        bool exact;   ///< by our own loops
        double peak;  ///< of the film, as film_peak() tells it
        double white; ///< light that becomes the screen's white, cd/m²
    };

    /**
     * Frames are to come from a stream, of which get() tells from then on.
     *
     * @param stream its id
     */
    void on_frames(const std::string &stream, const TaggedColour &colour,
                   const Conversion &conversion);

    /** What is known of the stream that is shown, but for its counts of frames. */
    VideoStatus get() const;

  private:
    mutable std::mutex mutex_;
    std::map<std::string, VideoStatus> streams_;
    std::string shown_; ///< id of the stream
};

} // namespace platform
