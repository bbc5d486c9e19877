/** A decoded picture in memory, and how it fits a box. */
#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>

#include "base/geometry.h"

namespace platform {

/** The largest size of these proportions inside a box; at least one pixel each way. */
inline Size fit(const Size &picture, const Size &box)
{
    const int64_t by_width = static_cast<int64_t>(picture.height) * box.width;
    const int64_t by_height = static_cast<int64_t>(picture.width) * box.height;
    Size fitted = box;
    if (by_width > by_height)
        fitted.width = static_cast<int>((by_height + picture.height / 2) / picture.height);
    else
        fitted.height = static_cast<int>((by_width + picture.width / 2) / picture.width);
    return {std::max(1, fitted.width), std::max(1, fitted.height)};
}

/** Pixels in the video plane's format, rows without gaps. */
struct Image {
    Image() = default;
    explicit Image(const Size &image_size)
        : size(image_size), pixels(new uint32_t[static_cast<size_t>(image_size.area())])
    {
    }

    uint32_t *row(int y) { return pixels.get() + static_cast<size_t>(y) * size.width; }
    const uint32_t *row(int y) const { return pixels.get() + static_cast<size_t>(y) * size.width; }

    Size size;
    std::unique_ptr<uint32_t[]> pixels;
};

} // namespace platform
