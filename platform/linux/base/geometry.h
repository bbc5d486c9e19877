/** Sizes and points, in whatever unit their user counts. Any thread. */
#pragma once

#include <cstdint>

namespace platform {

struct Size {
    int width = 0;
    int height = 0;

    bool operator==(const Size &other) const
    {
        return width == other.width && height == other.height;
    }
    bool operator!=(const Size &other) const { return !(*this == other); }
    Size turned() const { return {height, width}; }
    int64_t area() const { return static_cast<int64_t>(width) * height; }
    bool holds(const Size &other) const { return other.width <= width && other.height <= height; }
};

struct Point {
    int x = 0;
    int y = 0;
};

} // namespace platform
