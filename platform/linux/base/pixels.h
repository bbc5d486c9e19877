/** Pixels in somebody's memory, for whoever draws into a part of a picture. Any thread. */
#pragma once

#include <cstddef>
#include <cstdint>

#include "base/geometry.h"

namespace platform {

/** 32-bit XRGB in host byte order, row by row. */
struct Pixels {
    uint32_t *first;
    ptrdiff_t stride; ///< pixels from row to row
    Size size;

    uint32_t *row(int y) const { return first + y * stride; }

    /** @param area inside the picture */
    Pixels part(const Rect &area) const { return {row(area.y) + area.x, stride, area.size()}; }
};

} // namespace platform
