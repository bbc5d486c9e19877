/**
 * Pixels onto a buffer of the video plane, for those who have a finished picture in memory: turned,
 * in an area of the buffer, with black around it. Any thread.
 */
#pragma once

#include "base/orientation.h"
#include "video_plane/video_plane.h"

namespace platform {

/**
 * Copies a picture into an area of a buffer.
 *
 * @param pixels      in the plane's format, row by row without gaps, of the area's size before the
 *                    turn
 * @param orientation how the picture is laid
 * @param area        of the picture as it is laid; inside the buffer
 */
void copy_turned(const uint32_t *pixels, const Orientation &orientation, const Rect &area,
                 PlaneBuffer &out);

/** Makes all black but an area, which lies inside the buffer. */
void black_out_around(const Rect &area, PlaneBuffer &out);

} // namespace platform
