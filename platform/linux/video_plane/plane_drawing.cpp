#include "video_plane/plane_drawing.h"

#include <algorithm>

namespace platform {

namespace {

/** The unused byte is full, as the decoders leave it: some readers take it for alpha. */
constexpr uint32_t BLACK = 0xff000000;
/** Rows become columns in squares of this edge, so that both sides stay in the nearest cache. */
constexpr int TILE = 32;

uint32_t *row_of(PlaneBuffer &buffer, int y)
{
    return reinterpret_cast<uint32_t *>(buffer.pixels() + static_cast<size_t>(y) * buffer.stride());
}

void copy_rows(const uint32_t *pixels, const Orientation &orientation, const Rect &area,
               PlaneBuffer &out)
{
    for (int y = 0; y < area.height; ++y) {
        const int row = orientation.mirrored_y ? area.height - 1 - y : y;
        const uint32_t *from = pixels + static_cast<size_t>(row) * area.width;
        uint32_t *to = row_of(out, area.y + y) + area.x;
        if (orientation.mirrored_x)
            std::reverse_copy(from, from + area.width, to);
        else
            std::copy_n(from, area.width, to);
    }
}

void copy_transposed(const uint32_t *pixels, const Orientation::Walk &walk, const Rect &area,
                     PlaneBuffer &out)
{
    const auto copy_tile = [&](int left, int top) {
        const int right = std::min(left + TILE, area.width);
        const int bottom = std::min(top + TILE, area.height);
        for (int y = top; y < bottom; ++y) {
            uint32_t *to = row_of(out, area.y + y) + area.x;
            const uint32_t *from = pixels + walk.first + y * walk.down + left * walk.right;
            for (int x = left; x < right; ++x, from += walk.right)
                to[x] = *from;
        }
    };
    for (int top = 0; top < area.height; top += TILE) {
        for (int left = 0; left < area.width; left += TILE)
            copy_tile(left, top);
    }
}

} // namespace

void copy_turned(const uint32_t *pixels, const Orientation &orientation, const Rect &area,
                 PlaneBuffer &out)
{
    if (orientation.transposed)
        copy_transposed(pixels, orientation.walk(area.size()), area, out);
    else
        copy_rows(pixels, orientation, area, out);
}

void black_out_around(const Rect &area, PlaneBuffer &out)
{
    for (int y = 0; y < out.height(); ++y) {
        uint32_t *row = row_of(out, y);
        if (y < area.y || y >= area.bottom()) {
            std::fill_n(row, out.width(), BLACK);
        } else {
            std::fill(row, row + area.x, BLACK);
            std::fill(row + area.right(), row + out.width(), BLACK);
        }
    }
}

} // namespace platform
