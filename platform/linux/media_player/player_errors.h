/**
 * What went wrong inside a pipeline, in the player's own terms. Any thread.
 */
#pragma once

#include <string>

#include "media_player/gst_ptr.h"

namespace platform {

/** One error of one pipeline. */
struct Failure {
    enum class Part {
        Picture, ///< the file, its picture, or anything not named below
        Sound,   ///< the sound's decoder, which the picture can do without
        SoundDevice,
        Display, ///< the plane was taken away
    };

    Part part = Part::Picture;
    int code = 0;      ///< a player error
    bool busy = false; ///< something else has taken what is needed
    std::string text;
    std::string details; ///< where it happened, for GStreamer's developers; may be empty
};

/** Reads an error message of a bus. */
Failure read_failure(GstMessage *message);

} // namespace platform
