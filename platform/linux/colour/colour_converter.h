/**
 * Decoded pictures to the pixels of the screen: luma and colour differences to red, green and blue,
 * each exact to half a code, and films of high dynamic range to what an ordinary screen can show.
 */
#pragma once

#include <cstddef>
#include <cstdint>
#include <variant>

#include "base/geometry.h"
#include "colour/colour_space.h"
#include "colour/hdr_curves.h"
#include "colour/rows.h"

namespace platform {

/** A picture's planes in memory. */
struct YuvImage {
    Size size;
    const uint8_t *planes[3]; ///< luma; the differences, of blue and of red or both in the second
    ptrdiff_t strides[3];     ///< bytes from row to row
};

/** One kind of picture to the screen's pixels. Any thread, also several at a time. */
class ColourConverter {
  public:
    /**
     * @param white   of PQ and HLG: the light that becomes the screen's white, cd/m²
     * @param version of the loops; the best that the processor has
     */
    explicit ColourConverter(const ColourSpace &space, rows::Format format,
                             double white = REFERENCE_WHITE,
                             const rows::Version &version = best_version());

    /**
     * Converts some rows of a picture. Differences are those of the nearest pixels, by distance.
     *
     * @param image in the format that it was made for
     * @param first of the rows
     * @param to    32-bit XRGB in host byte order, with the byte that is not used full
     * @param pixels_per_row from row to row of `to`
     */
    void convert(const YuvImage &image, int first, int count, uint32_t *to,
                 ptrdiff_t pixels_per_row) const;

    /** Whether light is mapped, which takes several times as long. */
    bool maps_light() const { return std::holds_alternative<rows::Mapping>(formula_); }

    static const rows::Version &best_version();

  private:
    void convert_row(const YuvImage &image, int row, uint32_t *to) const;
    void convert_stretch(const rows::Stretch &stretch, int pixels, uint32_t *to) const;

    rows::Format format_;
    std::variant<rows::Linear, rows::Mapping> formula_;
    const rows::Version &version_;
};

} // namespace platform
