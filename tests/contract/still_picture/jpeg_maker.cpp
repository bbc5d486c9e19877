#include "still_picture/jpeg_maker.h"

#include <algorithm>
#include <cstdlib>
#include <memory>

namespace platform_test {

namespace {

/** Samples of one pixel as the file has them, before the encoder's own conversion. */
void put_pixel(const JpegOrder &order, uint32_t color, JSAMPLE *samples)
{
    const auto red = static_cast<JSAMPLE>(color >> 16);
    const auto green = static_cast<JSAMPLE>(color >> 8);
    const auto blue = static_cast<JSAMPLE>(color);
    switch (order.space) {
    case JCS_GRAYSCALE:
        samples[0] = green;
        break;
    case JCS_CMYK:
    case JCS_YCCK: {
        // Adobe's files hold what the ink leaves of the light, others the ink.
        const JSAMPLE flip = order.adobe_mark ? 0 : 255;
        samples[0] = red ^ flip;
        samples[1] = green ^ flip;
        samples[2] = blue ^ flip;
        samples[3] = static_cast<JSAMPLE>(~(color >> 24)) ^ flip;
        break;
    }
    default:
        samples[0] = red;
        samples[1] = green;
        samples[2] = blue;
    }
}

int samples_of(J_COLOR_SPACE space)
{
    if (space == JCS_GRAYSCALE)
        return 1;
    return space == JCS_CMYK || space == JCS_YCCK ? 4 : 3;
}

/** Every coefficient first without its last bit, then that bit: allowed, and of no use to anybody.
 */
std::vector<jpeg_scan_info> one_scan_for_each_bit()
{
    std::vector<jpeg_scan_info> scans;
    scans.push_back({3, {0, 1, 2, 0}, 0, 0, 0, 0});
    for (const int bits_before : {0, 1}) {
        for (int component = 0; component < 3; ++component) {
            for (int coefficient = 1; coefficient < DCTSIZE2; ++coefficient)
                scans.push_back({1,
                                 {component, 0, 0, 0},
                                 coefficient,
                                 coefficient,
                                 bits_before,
                                 1 - bits_before});
        }
    }
    return scans;
}

J_COLOR_SPACE input_of(J_COLOR_SPACE space)
{
    switch (space) {
    case JCS_GRAYSCALE:
        return JCS_GRAYSCALE;
    case JCS_CMYK:
    case JCS_YCCK:
        return JCS_CMYK;
    default:
        return JCS_RGB;
    }
}

} // namespace

void write_jpeg(const std::string &path, const JpegOrder &order)
{
    const std::unique_ptr<FILE, int (*)(FILE *)> file(fopen(path.c_str(), "wb"), fclose);
    if (!file)
        std::abort();
    jpeg_compress_struct codec = {};
    jpeg_error_mgr errors = {};
    codec.err = jpeg_std_error(&errors); // which ends the test program on any error
    jpeg_create_compress(&codec);
    jpeg_stdio_dest(&codec, file.get());
    codec.image_width = static_cast<JDIMENSION>(order.width);
    codec.image_height = static_cast<JDIMENSION>(order.height);
    codec.input_components = samples_of(order.space);
    codec.in_color_space = input_of(order.space);
    jpeg_set_defaults(&codec);
    jpeg_set_colorspace(&codec, order.space);
    jpeg_set_quality(&codec, 95, TRUE);
    if (!order.adobe_mark)
        codec.write_Adobe_marker = FALSE;
    if (order.progressive)
        jpeg_simple_progression(&codec);
    const std::vector<jpeg_scan_info> scans = one_scan_for_each_bit();
    if (order.scan_each_bit) {
        codec.scan_info = scans.data();
        codec.num_scans = static_cast<int>(scans.size());
    }
    codec.arith_code = order.arithmetic ? TRUE : FALSE;
    codec.restart_in_rows = static_cast<int>(order.restart_rows);
    jpeg_start_compress(&codec, TRUE);
    const auto write_segments = [&codec](int mark, const auto &segments) {
        for (const std::vector<uint8_t> &segment : segments)
            jpeg_write_marker(&codec, mark, segment.data(),
                              static_cast<unsigned int>(segment.size()));
    };
    write_segments(JPEG_APP0 + 1, order.app1);
    write_segments(JPEG_APP0 + 2, order.app2);
    const auto samples = static_cast<size_t>(codec.input_components);
    std::vector<JSAMPLE> row(static_cast<size_t>(order.width) * samples);
    for (int y = 0; y < order.height; ++y) {
        for (int x = 0; x < order.width; ++x)
            put_pixel(order, order.color(x, y), row.data() + static_cast<size_t>(x) * samples);
        JSAMPROW rows[] = {row.data()};
        jpeg_write_scanlines(&codec, rows, 1);
    }
    jpeg_finish_compress(&codec);
    jpeg_destroy_compress(&codec);
}

std::vector<uint8_t> exif_with_orientation(uint8_t orientation)
{
    return {
        'E',         'x',  'i', 'f', 0, 0,       // the segment's mark
        'I',         'I',  42,  0,   8, 0, 0, 0, // little-endian, first directory at 8
        1,           0,                          // one entry:
        0x12,        0x01, 3,   0,   1, 0, 0, 0, // orientation, one short,
        orientation, 0,    0,   0,               // its value
        0,           0,    0,   0,               // no further directory
    };
}

std::function<uint32_t(int, int)> plain(uint32_t color)
{
    return [color](int, int) { return color; };
}

std::function<uint32_t(int, int)> quarters(int width, int height)
{
    return [width, height](int x, int y) {
        if (y < height / 2)
            return x < width / 2 ? RED : GREEN;
        return x < width / 2 ? BLUE : WHITE;
    };
}

} // namespace platform_test
