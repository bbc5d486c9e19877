/**
 * What the numbers of a picture mean as colours, and the way from them to the red, green and blue
 * of an ordinary screen: BT.709 primaries, gamma as the picture has it. Any thread.
 */
#pragma once

#include <array>

namespace platform {

/** A row of rows. */
using Matrix3 = std::array<std::array<double, 3>, 3>;

Matrix3 product(const Matrix3 &left, const Matrix3 &right);

/** A colour, as the two coordinates of CIE 1931. */
struct Chromaticity {
    double x;
    double y;
};

/** The colours of the lights a picture was made for. Its white is taken for the screen's. */
struct Primaries {
    Chromaticity red;
    Chromaticity green;
    Chromaticity blue;
};

/** ITU-R BT.709, table 1.4; sRGB has the same. */
constexpr Primaries BT709_PRIMARIES = {{0.640, 0.330}, {0.300, 0.600}, {0.150, 0.060}};
/** ITU-R BT.2020, table 2. */
constexpr Primaries BT2020_PRIMARIES = {{0.708, 0.292}, {0.170, 0.797}, {0.131, 0.046}};

enum class Transfer {
    SDR, ///< some gamma, as the screen has it
    PQ,  ///< SMPTE ST 2084
    HLG, ///< ITU-R BT.2100, hybrid log-gamma
};

struct ColourSpace {
    double kr = 0.2126; ///< share of red in luma; BT.709's
    double kb = 0.0722; ///< share of blue
    bool full_range = false;
    Primaries primaries = BT709_PRIMARIES;
    Transfer transfer = Transfer::SDR;
    /** Of PQ: the brightest that the film has, in cd/m². */
    double peak = 1000;
};

/** From luma, of 0 to 1, and chroma, of -0.5 to 0.5, to red, green and blue. */
Matrix3 rgb_from_yuv(const ColourSpace &space);

/** From red, green and blue of some primaries to BT.709's, in light. White stays white. */
Matrix3 to_bt709(const Primaries &primaries);

/** How the numbers of a depth are spread over 0 to 1, and -0.5 to 0.5 for chroma. */
struct Quantization {
    double black;  ///< the luma number that is 0
    double range;  ///< from it to the number that is 1
    double centre; ///< the chroma number that is no colour
    double span;   ///< from the largest chroma number to the smallest
};

/** @param depth bits of each number, 8 or more */
Quantization quantization(const ColourSpace &space, int depth);

} // namespace platform
