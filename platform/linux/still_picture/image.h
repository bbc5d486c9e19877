/** A decoded picture in memory. */
#pragma once

#include <cstdint>
#include <memory>

#include "base/geometry.h"

namespace platform {

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
