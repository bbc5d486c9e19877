#include "colour/field_picture.h"

#include <cstring>

#include "colour/rows.h"

namespace platform {
namespace {

// Of 8 bits, how far the mean of two fields may be from each of them: they differ by twice as much.
// What coding leaves in a picture that stands still is less, and a row that is off by it shows no
// comb.
constexpr int NOISE = 6;

// Nothing tells that a frame stands still which is all there is: its fields may differ in time, or
// in what they show.
constexpr int NEVER_STILL = -1;

/** A row of a frame or, beyond an edge, the nearest one of the same field. */
const uint8_t *row_of(const WovenPlanes &planes, const uint8_t *frame, ptrdiff_t stride, int row)
{
    if (row < 0)
        row = row % 2 == 0 ? 0 : 1;
    if (row >= planes.rows)
        row = planes.rows - 1 - (row - planes.rows + 1) % 2;
    if (row >= planes.rows || row < 0)
        row = 0;
    return frame + row * stride;
}

} // namespace

const field_rows::FieldVersion &best_field_rows()
{
#if defined(__x86_64__)
    if (rows::has_avx2())
        return field_rows::AVX2;
#endif
    return field_rows::BASE;
}

void fill_field(const WovenPlanes &planes, const Field &field, int first, int count, uint8_t *to,
                ptrdiff_t stride, const field_rows::FieldVersion &version)
{
    const auto fill = planes.sample_bytes == 1 ? version.fill_8 : version.fill_16;
    const bool alone = planes.before == planes.frame && planes.after == planes.frame;
    const int noise =
        alone ? NEVER_STILL : static_cast<int>((NOISE * (int64_t{planes.largest} + 1)) >> 8);
    const size_t bytes = static_cast<size_t>(planes.samples) * planes.sample_bytes;
    const auto own = [&](int row) { return row_of(planes, planes.frame, planes.strides[1], row); };
    const auto before = [&](int row) {
        return row_of(planes, planes.before, planes.strides[0], row);
    };
    const auto after = [&](int row) {
        return row_of(planes, planes.after, planes.strides[2], row);
    };

    for (int row = first; row < first + count; ++row) {
        uint8_t *filled = to + row * stride;
        if (row % 2 == (field.bottom ? 1 : 0)) {
            memcpy(filled, own(row), bytes);
            continue;
        }
        field_rows::Rows around = {};
        for (int i = 0; i < 4; ++i)
            around.own[i] = own(row + 2 * i - 3);
        for (int i = 0; i < 2; ++i) {
            around.earlier_own[i] = before(row + 2 * i - 1);
            around.later_own[i] = after(row + 2 * i - 1);
        }
        // One of the fields beside it is in the same frame.
        for (int i = 0; i < 5; ++i) {
            const int other = row + 2 * i - 4;
            around.before[i] = field.first ? before(other) : own(other);
            around.after[i] = field.first ? own(other) : after(other);
        }
        fill(around, planes.samples, noise, planes.largest, filled);
    }
}

} // namespace platform
