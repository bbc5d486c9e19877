/**
 * The arithmetic of a turned panel: where a point of the panel lies in the turned content. Any
 * thread.
 */
#pragma once

#include "base/geometry.h"

namespace platform {

/**
 * The size of content that stands upright on a turned panel.
 *
 * @param panel   native size in pixels
 * @param degrees clockwise turn of the panel: 0, 90, 180 or 270
 */
inline Size turned_size(Size panel, int degrees)
{
    return degrees % 180 != 0 ? panel.turned() : panel;
}

/**
 * The content's pixel that is shown at a pixel of the panel.
 *
 * @param point counted from the panel's native top left corner
 */
inline Point turned_point(Point point, Size panel, int degrees)
{
    switch (degrees) {
    case 90:
        return {panel.height - 1 - point.y, point.x};
    case 180:
        return {panel.width - 1 - point.x, panel.height - 1 - point.y};
    case 270:
        return {point.y, panel.width - 1 - point.x};
    default:
        return point;
    }
}

} // namespace platform
