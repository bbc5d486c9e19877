/**
 * The arithmetic of a turned panel: where a point of the panel lies in the turned content. Any
 * thread.
 */
#pragma once

#include "base/orientation.h"

namespace platform {

/**
 * The size of content that stands upright on a turned panel.
 *
 * @param panel   native size in pixels
 * @param degrees clockwise turn of the panel: 0, 90, 180 or 270
 */
inline Size turned_size(const Size &panel, int degrees)
{
    return Orientation::clockwise(degrees).of(panel);
}

/**
 * The content's pixel that is shown at a pixel of the panel.
 *
 * @param point counted from the panel's native top left corner
 */
inline Point turned_point(const Point &point, const Size &panel, int degrees)
{
    return Orientation::clockwise(degrees).place(point, turned_size(panel, degrees));
}

} // namespace platform
