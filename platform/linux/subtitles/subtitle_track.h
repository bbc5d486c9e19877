/**
 * A subtitle file: read with libavformat, decoded with libavcodec, drawn with libass. One object
 * belongs to one prepared video and is used by one thread at a time.
 */
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "subtitles/stop_request.h"

namespace platform {

class SubtitleTrack {
  public:
    /** A text that is on screen at some time. */
    struct Cue {
        int64_t start_ms = 0;
        int64_t duration_ms = 0;
        std::string text; ///< UTF-8, plain
    };

    virtual ~SubtitleTrack() = default;

    /**
     * Reads a whole file. Blocks; not for the main loop. UTF-8, UTF-16 and legacy encodings.
     *
     * @param path  any bytes but null
     * @param error receives one sentence when null is returned
     * @param stop  asked while it is being read, whether to give up
     */
    static std::unique_ptr<SubtitleTrack> load(const std::string &path, std::string &error,
                                               const StopRequest &stop = {});

    /**
     * Draws what is on screen at a time into a picture of 32-bit XRGB pixels.
     *
     * @param position_ms media time
     * @param degrees     clockwise turn at which the text stands upright for the viewer: 0, 90, 180
     *                    or 270; on a panel turned by 90 degrees that is 270
     * @return true when anything was drawn
     */
    virtual bool draw(int64_t position_ms, uint8_t *pixels, int width, int height, int stride,
                      int degrees) = 0;

    /** The cue on screen at a time, or null; owned by the track. */
    virtual const Cue *cue_at(int64_t position_ms) const = 0;
};

} // namespace platform
