/** How a picture lies on the panel: upright, turned, fitted, with black bars. Any thread. */
#pragma once

#include "still_picture/image.h"
#include "video_plane/video_plane.h"

namespace platform {

/** One of the eight ways to lay a rectangle: transposed first, then mirrored each way. */
struct Turn {
    bool transpose = false;
    bool mirror_x = false;
    bool mirror_y = false;

    /** What brings a picture upright. @param orientation the EXIF value, 1 to 8 */
    static Turn upright(int orientation);

    /** This, then clockwise by 0, 90, 180 or 270 degrees. */
    Turn then_clockwise(int degrees) const;

    Size of(const Size &size) const { return transpose ? size.turned() : size; }
};

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
void compose(const Image &image, const Size &stored, const Turn &turn, PlaneBuffer &out);

} // namespace platform
