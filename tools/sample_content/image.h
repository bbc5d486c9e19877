/** A picture in memory, 32-bit XRGB in host byte order, rows without gaps. */
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace sample {

struct Image {
    Image(int image_width, int image_height)
        : width(image_width), height(image_height),
          pixels(static_cast<size_t>(image_width) * static_cast<size_t>(image_height))
    {
    }
    uint32_t *row(int y)
    {
        return pixels.data() + static_cast<size_t>(y) * static_cast<size_t>(width);
    }
    const uint32_t *row(int y) const
    {
        return pixels.data() + static_cast<size_t>(y) * static_cast<size_t>(width);
    }
    size_t bytes() const { return pixels.size() * sizeof(uint32_t); }

    int width;
    int height;
    std::vector<uint32_t> pixels;
};

/** A colour between two, weight 0 for the first and 1 for the second. */
inline uint32_t mixed(uint32_t first, uint32_t second, double weight)
{
    uint32_t result = 0;
    for (int shift = 0; shift < 24; shift += 8) {
        const double a = first >> shift & 0xFF;
        const double b = second >> shift & 0xFF;
        result |= static_cast<uint32_t>(std::lround(a + (b - a) * weight)) << shift;
    }
    return result;
}

} // namespace sample
