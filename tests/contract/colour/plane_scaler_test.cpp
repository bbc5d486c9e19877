#include <gmock/gmock.h>

#include "colour/colour_converter.h"
#include "colour/picture.h"
#include "colour/plane_scaler.h"

namespace platform {
namespace {

constexpr YuvFormat FORMATS[] = {YuvFormat::I420, YuvFormat::NV12, YuvFormat::I420_10,
                                 YuvFormat::P010};

/** Whatever is between two numbers, in both directions, of luma and of chroma. */
Picture sloping(YuvFormat format, const Size &size)
{
    const int unit = 1 << (depth_of(format) - 8);
    Picture picture(format, size);
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x)
            picture.set_luma(x, y, (40 + 100 * x / size.width + 60 * y / size.height) * unit);
    }
    for (int y = 0; y < picture.chroma_size().height; ++y) {
        for (int x = 0; x < picture.chroma_size().width; ++x)
            picture.set_chroma(x, y, (90 + 60 * x / picture.chroma_size().width) * unit,
                               (170 - 60 * y / picture.chroma_size().height) * unit);
    }
    return picture;
}

std::vector<uint32_t> converted(const YuvImage &image, YuvFormat format)
{
    std::vector<uint32_t> pixels(static_cast<size_t>(image.size.area()));
    ColourConverter({}, depth_of(format))
        .convert(image, 0, image.size.height, pixels.data(), image.size.width);
    return pixels;
}

TEST(APlaneScaler, LeavesAPictureOfTheRightSizeWhereItIs)
{
    const Picture picture(YuvFormat::I420, {16, 8});
    PlaneScaler scaler;
    EXPECT_EQ(scaler.scaled(picture.image(), {16, 8}).planes[0], picture.image().planes[0]);
}

TEST(APlaneScaler, ShowsTheSamePictureInEverySize)
{
    constexpr int TOLERANCE = 6;
    for (const YuvFormat format : FORMATS) {
        const Size size = {200, 120};
        const Picture picture = sloping(format, size);
        const std::vector<uint32_t> original = converted(picture.image(), format);
        PlaneScaler scaler;
        for (const Size &to : {Size{400, 240}, Size{100, 60}, Size{333, 71}, Size{41, 201}}) {
            const YuvImage image = scaler.scaled(picture.image(), to);
            ASSERT_EQ(image.size, to);
            const std::vector<uint32_t> pixels = converted(image, format);
            for (int y = to.height / 8; y < to.height * 7 / 8; ++y) {
                for (int x = to.width / 8; x < to.width * 7 / 8; ++x) {
                    const auto own = pixels[static_cast<size_t>(y * to.width + x)];
                    const int from_x = (2 * x + 1) * size.width / (2 * to.width);
                    const int from_y = (2 * y + 1) * size.height / (2 * to.height);
                    const auto from = original[static_cast<size_t>(from_y * size.width + from_x)];
                    for (int shift : {0, 8, 16})
                        ASSERT_NEAR(static_cast<int>(own >> shift & 0xff),
                                    static_cast<int>(from >> shift & 0xff), TOLERANCE)
                            << "format " << static_cast<int>(format) << ", " << to.width << "x"
                            << to.height << ", at " << x << ", " << y;
                }
            }
        }
    }
}

TEST(APlaneScaler, AveragesWhatGoesIntoOnePixel)
{
    for (const YuvFormat format : FORMATS) {
        const int unit = 1 << (depth_of(format) - 8);
        Picture chequered(format, {64, 64});
        for (int i = 0; i < 64 * 64; ++i)
            chequered.set_luma(i % 64, i / 64, (i + i / 64) % 2 ? 200 * unit : 100 * unit);
        for (int i = 0; i < 32 * 32; ++i)
            chequered.set_chroma(i % 32, i / 32, 128 * unit, 128 * unit);
        Picture grey(format, {16, 16});
        for (int i = 0; i < 16 * 16; ++i)
            grey.set_luma(i % 16, i / 16, 150 * unit);
        for (int i = 0; i < 8 * 8; ++i)
            grey.set_chroma(i % 8, i / 8, 128 * unit, 128 * unit);
        PlaneScaler scaler;
        EXPECT_EQ(converted(scaler.scaled(chequered.image(), {16, 16}), format),
                  converted(grey.image(), format))
            << "format " << static_cast<int>(format);
    }
}

TEST(APlaneScaler, TakesTheOddestSizes)
{
    for (const YuvFormat format : FORMATS) {
        PlaneScaler scaler;
        for (const Size &from : {Size{1, 1}, Size{2, 3}, Size{5, 1}}) {
            Picture picture(format, from);
            for (int64_t i = 0; i < from.area(); ++i)
                picture.set_luma(static_cast<int>(i) % from.width, static_cast<int>(i) / from.width,
                                 16 << (depth_of(format) - 8));
            for (int64_t i = 0; i < picture.chroma_size().area(); ++i)
                picture.set_chroma(static_cast<int>(i) % picture.chroma_size().width,
                                   static_cast<int>(i) / picture.chroma_size().width,
                                   128 << (depth_of(format) - 8), 128 << (depth_of(format) - 8));
            for (const Size &to : {Size{1, 1}, Size{3, 7}, Size{640, 1}, Size{1, 480}})
                EXPECT_THAT(converted(scaler.scaled(picture.image(), to), format),
                            testing::Each(0xff000000U))
                    << "format " << static_cast<int>(format) << ", from " << from.width << "x"
                    << from.height << " to " << to.width << "x" << to.height;
        }
    }
}

} // namespace
} // namespace platform
