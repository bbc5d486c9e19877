/** JPEG files to order, written with libjpeg row by row. */
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include <cstdio>

#include <jpeglib.h>

namespace platform_test {

/** What a file shall be like. */
struct JpegOrder {
    int width = 0;
    int height = 0;
    /** Colour at a place, 0xrrggbb; of CMYK and YCCK 0xkkrrggbb, black ink above what the other
     * three leave. */
    std::function<uint32_t(int x, int y)> color;
    J_COLOR_SPACE space = JCS_YCbCr; ///< of the file; also grey, RGB, CMYK and YCCK
    bool adobe_mark = true;          ///< CMYK and YCCK: Adobe's mark, and hence inverted values
    bool progressive = false;
    bool scan_each_bit = false; ///< progressive, two scans for every coefficient
    bool arithmetic = false;
    unsigned int restart_rows = 0;
    std::vector<std::vector<uint8_t>> app1 = {}; ///< payloads of APP1 segments
    std::vector<std::vector<uint8_t>> app2 = {}; ///< of APP2 segments
};

void write_jpeg(const std::string &path, const JpegOrder &order);

/** The payload of an EXIF segment that says how the picture lies. */
std::vector<uint8_t> exif_with_orientation(uint8_t orientation);

/** One colour everywhere. */
std::function<uint32_t(int, int)> plain(uint32_t color);

/** Red and green in the upper quarters, blue and white in the lower ones. */
std::function<uint32_t(int, int)> quarters(int width, int height);

constexpr uint32_t RED = 0xff0000;
constexpr uint32_t GREEN = 0x00ff00;
constexpr uint32_t BLUE = 0x0000ff;
constexpr uint32_t WHITE = 0xffffff;

} // namespace platform_test
