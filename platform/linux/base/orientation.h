/**
 * The eight ways to lay a picture: turned by quarters, and seen from the back or not. Which pixel
 * comes to lie where, for whoever turns pictures, text or a pointer. Any thread.
 */
#pragma once

#include <array>
#include <cstddef>
#include <utility>

#include "base/geometry.h"

namespace platform {

/** Whether degrees are 0, 90, 180 or 270. */
constexpr bool is_quarter_turn(int degrees)
{
    return degrees >= 0 && degrees < 360 && degrees % 90 == 0;
}

/** Whether a landscape panel stands upright when it is turned by 0, 90, 180 or 270 degrees. */
constexpr bool is_portrait(int degrees)
{
    return degrees % 180 != 0;
}

/** Names of how a panel stands that is turned clockwise by 0, 90, 180 and 270 degrees. */
inline constexpr std::array<const char *, 4> PANEL_ORIENTATIONS = {
    "landscape", "portrait", "landscape-reverse", "portrait-reverse"};

/** First transposed, rows for columns, then mirrored each way. The default changes nothing. */
struct Orientation {
    bool transposed = false;
    bool mirrored_x = false; ///< left to right
    bool mirrored_y = false; ///< upside down

    bool operator==(const Orientation &other) const
    {
        return transposed == other.transposed && mirrored_x == other.mirrored_x &&
               mirrored_y == other.mirrored_y;
    }

    /** @param degrees 0, 90, 180 or 270 */
    static Orientation clockwise(int degrees) { return Orientation().then_clockwise(degrees); }

    /** This, then clockwise by 0, 90, 180, 270 or 360 degrees. */
    Orientation then_clockwise(int degrees) const
    {
        Orientation turned = *this;
        for (int quarter = degrees / 90; quarter > 0; --quarter)
            turned = {!turned.transposed, !turned.mirrored_y, turned.mirrored_x};
        return turned;
    }

    /** The size of a picture after it. */
    Size of(const Size &size) const { return transposed ? size.turned() : size; }

    /** Where a part of a picture comes to lie. @param laid the picture's size after it */
    Rect place(const Rect &part, const Size &laid) const
    {
        Rect placed = transposed ? Rect{part.y, part.x, part.height, part.width} : part;
        if (mirrored_x)
            placed.x = laid.width - placed.right();
        if (mirrored_y)
            placed.y = laid.height - placed.bottom();
        return placed;
    }
    Point place(const Point &pixel, const Size &laid) const
    {
        const Rect placed = place(Rect{pixel.x, pixel.y, 1, 1}, laid);
        return {placed.x, placed.y};
    }

    /** The pixel that comes to lie at a place. @param laid as for place() */
    Point origin(Point place, const Size &laid) const
    {
        if (mirrored_x)
            place.x = laid.width - 1 - place.x;
        if (mirrored_y)
            place.y = laid.height - 1 - place.y;
        if (transposed)
            std::swap(place.x, place.y);
        return place;
    }

    /** The way through a picture's pixels, which lie row by row without gaps. */
    struct Walk {
        ptrdiff_t first; ///< the one that comes to lie at the top left
        ptrdiff_t right; ///< from one to that which comes to lie to the right of it
        ptrdiff_t down;  ///< from one to that which comes to lie below it
    };

    /** The way that reads the picture as it is laid. @param laid as for place() */
    Walk walk(const Size &laid) const
    {
        const ptrdiff_t width = of(laid).width;
        const auto index = [&](const Point &place) {
            const Point pixel = origin(place, laid);
            return pixel.y * width + pixel.x;
        };
        const ptrdiff_t first = index({0, 0});
        return {first, index({1, 0}) - first, index({0, 1}) - first};
    }
};

} // namespace platform
