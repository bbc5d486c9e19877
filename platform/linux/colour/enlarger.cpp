#include "colour/enlarger.h"

#include <algorithm>

namespace platform {

namespace {

// Written out because libyuv's own, which is as fast, makes white a little darker.

/** Columns at a time: two rows of them, and their weights, stay in the nearest cache. */
constexpr int COLUMNS = 1024;
constexpr int CHANNELS = 4;

/** The distance of two pixels, as weights count it. */
constexpr int ONE = 256;

/** Where a pixel of the larger picture lies in the smaller one. */
struct Place {
    int before;
    int after;       ///< the same at the last one
    uint16_t weight; ///< of the one after, of ONE
};

Place place_of(int at, int from, int to)
{
    const int64_t centre = ((2 * int64_t{at} + 1) * from * ONE / to - ONE + 1) / 2;
    const int place = static_cast<int>(std::clamp<int64_t>(centre, 0, int64_t{from - 1} * ONE));
    const int before = place / ONE;
    return {before, std::min(before + 1, from - 1), static_cast<uint16_t>(place % ONE)};
}

/** @param weight of `after` at an index of a channel */
template <typename Weight>
void blend(const uint32_t *before, const uint32_t *after, Weight weight, int pixels, uint32_t *to)
{
    const auto *a = reinterpret_cast<const uint8_t *>(before);
    const auto *b = reinterpret_cast<const uint8_t *>(after);
    auto *mixed = reinterpret_cast<uint8_t *>(to);
    // In 16 bits, which the largest sum just fits.
    for (int i = 0; i < CHANNELS * pixels; ++i) {
        const uint16_t share = weight(i);
        const auto rest = static_cast<uint16_t>(ONE - share);
        mixed[i] = static_cast<uint8_t>(static_cast<uint16_t>(static_cast<uint16_t>(a[i] * rest) +
                                                              static_cast<uint16_t>(b[i] * share) +
                                                              ONE / 2) /
                                        ONE);
    }
}

/** Up to COLUMNS columns of the larger picture. */
class Columns {
  public:
    Columns(int first, int count, int from, int to) : count_(count)
    {
        for (int x = 0; x < count; ++x) {
            const Place place = place_of(first + x, from, to);
            before_[x] = place.before;
            after_[x] = place.after;
            std::fill_n(weights_ + ptrdiff_t{CHANNELS} * x, CHANNELS, place.weight);
        }
    }

    void enlarge(const uint32_t *row, uint32_t *to)
    {
        for (int x = 0; x < count_; ++x) {
            pixels_before_[x] = row[before_[x]];
            pixels_after_[x] = row[after_[x]];
        }
        blend(
            pixels_before_, pixels_after_, [weights = weights_](int i) { return weights[i]; },
            count_, to);
    }

  private:
    const int count_;
    int before_[COLUMNS] = {};
    int after_[COLUMNS] = {};
    uint16_t weights_[CHANNELS * COLUMNS] = {};
    uint32_t pixels_before_[COLUMNS] = {};
    uint32_t pixels_after_[COLUMNS] = {};
};

} // namespace

void enlarge(const Pixels &from, const Pixels &to, int first, int count)
{
    for (int x = 0; x < to.size.width; x += COLUMNS) {
        const int width = std::min(COLUMNS, to.size.width - x);
        Columns columns(x, width, from.size.width, to.size.width);
        // Rows that are wide already; several rows of the larger picture lie between the same two.
        uint32_t wide[2][COLUMNS] = {};
        int rows[2] = {-1, -1};
        const auto widened = [&](int row) -> const uint32_t * {
            if (rows[row % 2] != row)
                columns.enlarge(from.row(row), wide[row % 2]);
            rows[row % 2] = row;
            return wide[row % 2];
        };
        for (int y = first; y < first + count; ++y) {
            const Place place = place_of(y, from.size.height, to.size.height);
            const uint32_t *before = widened(place.before);
            const uint32_t *after = widened(place.after);
            blend(
                before, after, [weight = place.weight](int) { return weight; }, width,
                to.row(y) + x);
        }
    }
}

} // namespace platform
