/** How a picture lies on the panel: upright, turned, fitted, with black bars. Any thread. */
#pragma once

#include "base/orientation.h"
#include "still_picture/image.h"
#include "video_plane/video_plane.h"

namespace platform {

/**
 * The size in which a decoded picture is kept: enough for the panel at every angle, never more than
 * the picture has.
 *
 * @param stored the picture as it is in the file, not upright
 * @param panel  native size
 */
Size size_to_keep(const Size &stored, const Size &panel);

/**
 * Lays a picture onto a plane's buffer, as large as fits.
 *
 * @param stored the picture's own size in the file, which has the exact proportions
 */
void compose(const Image &image, const Size &stored, const Orientation &turn, PlaneBuffer &out);

} // namespace platform
