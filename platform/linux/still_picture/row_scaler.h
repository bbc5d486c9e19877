/**
 * Brings a picture to another size while its rows arrive, so that the whole of a large picture
 * never has to be in memory: area averages when it shrinks, bilinear when it grows. One thread at a
 * time.
 */
#pragma once

#include <vector>

#include "still_picture/image.h"

namespace platform {

class RowScaler {
  public:
    /** @param into receives the result; has its final size already; must outlive the scaler */
    RowScaler(const Size &from, Image &into);

    /** Takes the next row, from the top, of `from.width` pixels. */
    void push(const uint32_t *row);

    /** How many rows of the result have been written. */
    int rows_done() const { return next_out_; }

    /** Brings a whole picture to another size. */
    static Image scale(const Image &picture, const Size &to);

  private:
    /** For each output position, which input positions count how much; weights sum up to one. */
    struct Axis {
        struct Taps {
            int first;
            int count;
            size_t weight; ///< index of the first one's weight
        };
        Axis(int from, int to);
        void shrink(int from, int to);
        void grow(int from, int to);
        void add(int first, const std::vector<double> &amounts);

        std::vector<Taps> taps;
        std::vector<uint32_t> weights;
        int most_taps = 1;
    };

    void filter_across(const uint32_t *row, uint16_t *out) const;
    void filter_down(const Axis::Taps &taps, uint32_t *out);
    uint16_t *kept_row(int y);

    const Size from_;
    Image &into_;
    const bool copy_;
    const Axis across_;
    const Axis down_;
    const int kept_rows_;
    std::vector<uint16_t> kept_; // the last rows, filtered across, in a ring
    std::vector<uint32_t> sums_;
    int next_in_ = 0;
    int next_out_ = 0;
};

} // namespace platform
