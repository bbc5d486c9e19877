#include "still_picture/compose.h"

#include <algorithm>

#include "still_picture/row_scaler.h"

namespace platform {

namespace {

/** The unused byte is full, as the decoder leaves it: some readers take it for alpha. */
constexpr uint32_t BLACK = 0xff000000;
/** Turned copies go in squares of this edge, so that both sides stay in the cache. */
constexpr int BLOCK = 32;

uint32_t *row_of(PlaneBuffer &buffer, int y)
{
    return reinterpret_cast<uint32_t *>(buffer.pixels() + static_cast<size_t>(y) * buffer.stride());
}

void copy_straight(const Image &image, const Orientation &turn, PlaneBuffer &out, int left, int top)
{
    const Size size = image.size;
    for (int y = 0; y < size.height; ++y) {
        const uint32_t *from = image.row(turn.mirrored_y ? size.height - 1 - y : y);
        uint32_t *to = row_of(out, top + y) + left;
        if (turn.mirrored_x)
            std::reverse_copy(from, from + size.width, to);
        else
            std::copy_n(from, size.width, to);
    }
}

void copy_transposed(const Image &image, const Orientation &turn, PlaneBuffer &out, int left,
                     int top)
{
    const Size size = turn.of(image.size); // as it will lie
    const auto copy_block = [&](int x_begin, int y_begin) {
        const int x_end = std::min(x_begin + BLOCK, size.width);
        const int y_end = std::min(y_begin + BLOCK, size.height);
        for (int y = y_begin; y < y_end; ++y) {
            uint32_t *to = row_of(out, top + y) + left;
            const int column = turn.mirrored_y ? size.height - 1 - y : y;
            for (int x = x_begin; x < x_end; ++x)
                to[x] = image.row(turn.mirrored_x ? size.width - 1 - x : x)[column];
        }
    };
    for (int y = 0; y < size.height; y += BLOCK) {
        for (int x = 0; x < size.width; x += BLOCK)
            copy_block(x, y);
    }
}

void draw_bars(PlaneBuffer &out, const Rect &picture)
{
    for (int y = 0; y < out.height(); ++y) {
        uint32_t *row = row_of(out, y);
        if (y < picture.y || y >= picture.bottom()) {
            std::fill_n(row, out.width(), BLACK);
        } else {
            std::fill(row, row + picture.x, BLACK);
            std::fill(row + picture.right(), row + out.width(), BLACK);
        }
    }
}

} // namespace

Orientation upright_orientation(int exif_orientation)
{
    switch (exif_orientation) {
    case 2:
        return {false, true, false};
    case 3:
        return {false, true, true};
    case 4:
        return {false, false, true};
    case 5:
        return {true, false, false};
    case 6:
        return {true, true, false};
    case 7:
        return {true, true, true};
    case 8:
        return {true, false, true};
    default:
        return {};
    }
}

Size size_to_keep(const Size &stored, const Size &panel)
{
    const Size straight = fit(stored, panel);
    const Size turned = fit(stored, panel.turned());
    const Size larger = straight.area() >= turned.area() ? straight : turned;
    return stored.holds(larger) ? larger : stored;
}

void compose(const Image &image, const Size &stored, const Orientation &turn, PlaneBuffer &out)
{
    const Size plane = {out.width(), out.height()};
    const Rect area = centred(fit(turn.of(stored), plane), whole(plane));

    const Size wanted = turn.of(area.size()); // in the file's own orientation
    Image scaled;
    if (image.size != wanted)
        scaled = RowScaler::scale(image, wanted);
    const Image &exact = image.size != wanted ? scaled : image;
    if (turn.transposed)
        copy_transposed(exact, turn, out, area.x, area.y);
    else
        copy_straight(exact, turn, out, area.x, area.y);
    draw_bars(out, area);
}

} // namespace platform
