/** ICC profiles to order, written with Little CMS, and how a JPEG file holds them. */
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace platform_test {

using Bytes = std::vector<uint8_t>;

/** What phones write: "Display P3". */
Bytes display_p3();

/** What cameras write: "Adobe RGB (1998)". */
Bytes adobe_rgb();

/** The widest there is, with green beyond all colours: "ProPhoto RGB", its curves as tables. */
Bytes prophoto_rgb();

/** "sRGB", its primaries a little off, as in the profiles of some makers. */
Bytes srgb();

/** One whose numbers cannot be looked at one by one, and whose black is not black: "Table of
 * colours". */
Bytes rgb_table();

/** "Grey of gamma 1.8". */
Bytes grey_of_gamma_1_8();

/** Cyan, magenta, yellow and black of the test's own printer, see InkLight: "Ink". */
Bytes ink();

/** What light of the sRGB primaries an amount of ink, 0 to 1, leaves of white; without black. */
struct InkLight {
    static double red(double cyan) { return 1 - 0.85 * cyan; }
    static double green(double magenta) { return 1 - 0.80 * magenta; }
    static double blue(double yellow) { return 1 - 0.90 * yellow; }
};

/** The payloads of APP2 segments for a profile, of so many of its bytes each. */
std::vector<Bytes> in_chunks(const Bytes &profile, size_t most = 65519);

/** One such payload. */
Bytes chunk(uint8_t number, uint8_t count, const Bytes &part);

} // namespace platform_test
