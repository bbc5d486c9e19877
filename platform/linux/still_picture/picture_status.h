/**
 * What the picture library is showing at this moment, for a status report. Main-loop thread only.
 */
#pragma once

#include <string>

namespace platform {

struct PictureStatus {
    std::string path;   ///< as the caller named it; empty when there is no picture
    bool shown = false; ///< it has been drawn on the plane
    int width = 0;      ///< upright size in pixels, 0 until it has been drawn
    int height = 0;
    std::string colour_profile = {}; ///< name of the one that was applied, or empty
};

/** The status of the picture that was made last; all defaults once it has been destroyed. */
PictureStatus current_picture_status();

} // namespace platform
