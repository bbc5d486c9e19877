/**
 * Decoded pictures to the pixels of the screen: luma and chroma to red, green and blue, each within
 * one code, and films of high dynamic range to what an ordinary screen can show.
 */
#pragma once

#include <cstddef>
#include <cstdint>
#include <variant>

#include "colour/colour_space.h"
#include "colour/hdr_curves.h"
#include "colour/rows.h"
#include "colour/yuv_image.h"

namespace platform {

/** One kind of picture to the screen's pixels. Any thread, also several at a time. */
class ColourConverter {
  public:
    /**
     * @param depth   bits of a sample, 8 or 10
     * @param white   of PQ and HLG: the light that becomes the screen's white, cd/m²
     * @param version of the loops; the best that the processor has
     */
    explicit ColourConverter(const ColourSpace &space, int depth, double white = REFERENCE_WHITE,
                             const rows::Version &version = best_version());

    /**
     * Converts some rows of a picture. Chroma is that of the nearest samples, by distance.
     *
     * @param image of the depth that it was made for
     * @param first of the rows
     * @param to    32-bit XRGB in host byte order, with the byte that is not used full
     * @param pixels_per_row from row to row of `to`
     */
    void convert(const YuvImage &image, int first, int count, uint32_t *to,
                 ptrdiff_t pixels_per_row) const;

    /**
     * The size to convert a picture in that is shown in another: what is larger is made smaller
     * before, and what is smaller larger afterwards where light is mapped, for which there are to
     * be few pixels.
     */
    Size size_for(const Size &picture, const Size &shown) const;

    /** Whether light is mapped, which takes several times as long. */
    bool maps_light() const { return std::holds_alternative<rows::Mapping>(formula_); }

    static const rows::Version &best_version();

  private:
    void convert_row(const YuvImage &image, int row, uint32_t *to) const;

    std::variant<rows::Linear, rows::Mapping> formula_;
    const rows::Version &version_;
};

} // namespace platform
