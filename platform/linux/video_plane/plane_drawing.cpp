#include "video_plane/plane_drawing.h"

#include <algorithm>

namespace platform {

namespace {

/** The unused byte is full, as the decoders leave it: some readers take it for alpha. */
constexpr uint32_t BLACK = 0xff000000;
/** Rows become columns in squares of this edge, so that both sides stay in the nearest cache. */
constexpr int TILE = 32;

void copy_rows(const uint32_t *pixels, const Orientation &orientation, const Pixels &out)
{
    for (int y = 0; y < out.size.height; ++y) {
        const int row = orientation.mirrored_y ? out.size.height - 1 - y : y;
        const uint32_t *from = pixels + static_cast<size_t>(row) * out.size.width;
        if (orientation.mirrored_x)
            std::reverse_copy(from, from + out.size.width, out.row(y));
        else
            std::copy_n(from, out.size.width, out.row(y));
    }
}

void copy_transposed(const uint32_t *pixels, const Orientation::Walk &walk, const Pixels &out)
{
    const auto copy_tile = [&](int left, int top) {
        const int right = std::min(left + TILE, out.size.width);
        const int bottom = std::min(top + TILE, out.size.height);
        for (int y = top; y < bottom; ++y) {
            uint32_t *to = out.row(y);
            const uint32_t *from = pixels + walk.first + y * walk.down + left * walk.right;
            for (int x = left; x < right; ++x, from += walk.right)
                to[x] = *from;
        }
    };
    for (int top = 0; top < out.size.height; top += TILE) {
        for (int left = 0; left < out.size.width; left += TILE)
            copy_tile(left, top);
    }
}

} // namespace

Pixels pixels_of(PlaneBuffer &buffer)
{
    constexpr int PIXEL_BYTES = 4;
    return {reinterpret_cast<uint32_t *>(buffer.pixels()),
            buffer.stride() / PIXEL_BYTES,
            {buffer.width(), buffer.height()}};
}

void copy_turned(const uint32_t *pixels, const Orientation &orientation, const Pixels &out)
{
    if (orientation.transposed)
        copy_transposed(pixels, orientation.walk(out.size), out);
    else
        copy_rows(pixels, orientation, out);
}

void black_out_around(const Rect &area, PlaneBuffer &out)
{
    const Pixels pixels = pixels_of(out);
    for (int y = 0; y < out.height(); ++y) {
        uint32_t *row = pixels.row(y);
        if (y < area.y || y >= area.bottom()) {
            std::fill_n(row, out.width(), BLACK);
        } else {
            std::fill(row, row + area.x, BLACK);
            std::fill(row + area.right(), row + out.width(), BLACK);
        }
    }
}

} // namespace platform
