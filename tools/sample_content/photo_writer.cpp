#include "photo_writer.h"

#include <memory>
#include <stdexcept>
#include <string>

#include <turbojpeg.h>

namespace sample {

namespace {

constexpr int QUALITY = 92;

struct CompressorDeleter {
    void operator()(void *handle) const { tjDestroy(handle); }
};
struct BufferDeleter {
    void operator()(unsigned char *buffer) const { tjFree(buffer); }
};

/** An application segment with one EXIF entry: orientation 6, turn clockwise by a quarter. */
const unsigned char EXIF_SEGMENT[] = {
    0xFF, 0xE1, 0x00, 0x22,                         // marker, length of what follows
    'E',  'x',  'i',  'f',  0x00, 0x00,             //
    'M',  'M',  0x00, 0x2A, 0x00, 0x00, 0x00, 0x08, // big-endian TIFF, directory at 8
    0x00, 0x01,                                     // one entry:
    0x01, 0x12, 0x00, 0x03, 0x00, 0x00, 0x00, 0x01, // orientation, one short number,
    0x00, 0x06, 0x00, 0x00,                         // six
    0x00, 0x00, 0x00, 0x00,                         // no further directory
};

Image turned_to_the_left(const Image &image)
{
    Image lying(image.height, image.width);
    for (int y = 0; y < lying.height; ++y) {
        for (int x = 0; x < lying.width; ++x)
            lying.row(y)[x] = image.row(x)[image.width - 1 - y];
    }
    return lying;
}

} // namespace

std::vector<unsigned char> jpeg_of(const Image &image, bool turned)
{
    if (turned) {
        const std::vector<unsigned char> plain = jpeg_of(turned_to_the_left(image), false);
        constexpr size_t START_MARKER = 2;
        std::vector<unsigned char> result(plain.begin(), plain.begin() + START_MARKER);
        result.insert(result.end(), std::begin(EXIF_SEGMENT), std::end(EXIF_SEGMENT));
        result.insert(result.end(), plain.begin() + START_MARKER, plain.end());
        return result;
    }

    const std::unique_ptr<void, CompressorDeleter> compressor(tjInitCompress());
    if (!compressor)
        throw std::runtime_error("The JPEG encoder cannot be started.");
    unsigned char *data = nullptr;
    unsigned long size = 0;
    // XRGB in host byte order is BGRX in memory on the little-endian machines that we build for.
    const int status = tjCompress2(
        compressor.get(), reinterpret_cast<const unsigned char *>(image.pixels.data()), image.width,
        0, image.height, TJPF_BGRX, &data, &size, TJSAMP_444, QUALITY, TJFLAG_ACCURATEDCT);
    const std::unique_ptr<unsigned char, BufferDeleter> owner(data);
    if (status != 0)
        throw std::runtime_error(std::string("JPEG encoding: ") + tjGetErrorStr2(compressor.get()));
    return {data, data + size};
}

} // namespace sample
