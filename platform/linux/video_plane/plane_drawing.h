/**
 * Pixels onto a buffer of the video plane, for those who have a finished picture in memory: turned,
 * in an area of the buffer, with black around it. Any thread.
 */
#pragma once

#include "base/orientation.h"
#include "base/pixels.h"
#include "video_plane/video_plane.h"

namespace platform {

Pixels pixels_of(PlaneBuffer &buffer);

/**
 * Copies a picture.
 *
 * @param pixels      row by row without gaps, of the size of `out` before the turn
 * @param orientation how the picture is laid
 * @param out         where, as it is laid
 */
void copy_turned(const uint32_t *pixels, const Orientation &orientation, const Pixels &out);

/** Makes all black but an area, which lies inside the buffer. */
void black_out_around(const Rect &area, PlaneBuffer &out);

} // namespace platform
