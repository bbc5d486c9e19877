/** Sizes, points and rectangles, in whatever unit their user counts. Any thread. */
#pragma once

#include <algorithm>
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

    bool operator==(const Point &other) const { return x == other.x && y == other.y; }
};

struct Rect {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;

    bool operator==(const Rect &other) const
    {
        return x == other.x && y == other.y && width == other.width && height == other.height;
    }
    int right() const { return x + width; }   ///< the first column behind it
    int bottom() const { return y + height; } ///< the first row below it
    Size size() const { return {width, height}; }
    bool empty() const { return width <= 0 || height <= 0; }
    bool covers(const Rect &other) const
    {
        return x <= other.x && y <= other.y && right() >= other.right() &&
               bottom() >= other.bottom();
    }
};

/** The whole of something. */
inline Rect whole(const Size &size)
{
    return {0, 0, size.width, size.height};
}

/** What of a rectangle lies inside something of a size; empty when nothing does. */
inline Rect clipped(const Rect &rect, const Size &size)
{
    const int left = std::clamp(rect.x, 0, size.width);
    const int top = std::clamp(rect.y, 0, size.height);
    const int right = std::clamp(rect.right(), left, size.width);
    const int bottom = std::clamp(rect.bottom(), top, size.height);
    return {left, top, right - left, bottom - top};
}

/** The smallest rectangle around two; an empty one adds nothing. */
inline Rect united(const Rect &one, const Rect &other)
{
    if (one.empty() || other.empty())
        return one.empty() ? other : one;
    const int left = std::min(one.x, other.x);
    const int top = std::min(one.y, other.y);
    return {left, top, std::max(one.right(), other.right()) - left,
            std::max(one.bottom(), other.bottom()) - top};
}

/**
 * The largest size of these proportions inside a box; at least one pixel each way.
 *
 * @param width  above 0, and low enough for a product with the box
 * @param height likewise
 */
inline Size fit(int64_t width, int64_t height, const Size &box)
{
    Size fitted = box;
    if (height * box.width > width * box.height)
        fitted.width = static_cast<int>((width * box.height + height / 2) / height);
    else
        fitted.height = static_cast<int>((height * box.width + width / 2) / width);
    return {std::max(1, fitted.width), std::max(1, fitted.height)};
}

inline Size fit(const Size &picture, const Size &box)
{
    return fit(picture.width, picture.height, box);
}

/** A rectangle of a size in the middle of an area that holds it. */
inline Rect centred(const Size &size, const Rect &area)
{
    return {area.x + (area.width - size.width) / 2, area.y + (area.height - size.height) / 2,
            size.width, size.height};
}

} // namespace platform
