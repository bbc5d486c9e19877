#include <gmock/gmock.h>

#include <cmath>
#include <random>
#include <vector>

#include "colour/enlarger.h"

namespace platform {
namespace {

std::vector<uint32_t> enlarged(std::vector<uint32_t> pixels, const Size &from, const Size &to)
{
    std::vector<uint32_t> larger(static_cast<size_t>(to.area()));
    enlarge({pixels.data(), from.width, from}, {larger.data(), to.width, to}, 0, to.height);
    return larger;
}

std::vector<uint32_t> random_pixels(const Size &size)
{
    std::mt19937 random(3);
    std::vector<uint32_t> pixels(static_cast<size_t>(size.area()));
    for (uint32_t &pixel : pixels)
        pixel = static_cast<uint32_t>(random()) | 0xff000000;
    return pixels;
}

/** A channel of a picture between its pixels; beyond the middle of the outermost it goes on. */
double between(const std::vector<uint32_t> &pixels, const Size &size, double x, double y, int shift)
{
    x = std::clamp(x, 0.0, size.width - 1.0);
    y = std::clamp(y, 0.0, size.height - 1.0);
    const auto channel = [&](double column, double row) {
        const auto i = static_cast<size_t>(row) * static_cast<size_t>(size.width) +
                       static_cast<size_t>(column);
        return double(pixels[i] >> shift & 0xff);
    };
    const double left = std::floor(x);
    const double top = std::floor(y);
    const auto across = [&](double row) {
        return channel(left, row) * (left + 1 - x) +
               channel(std::min(left + 1, size.width - 1.0), row) * (x - left);
    };
    return across(top) * (top + 1 - y) + across(std::min(top + 1, size.height - 1.0)) * (y - top);
}

TEST(Enlarging, MixesTheNeighboursOfEachPixelByDistance)
{
    const std::pair<Size, Size> cases[] = {
        {{40, 30}, {80, 60}}, {{37, 11}, {1300, 50}}, {{640, 8}, {1920, 9}},
        {{9, 7}, {9, 15}},    {{1, 1}, {5, 3}},       {{2, 1}, {3, 1}},
    };
    for (const auto &[from, to] : cases) {
        const std::vector<uint32_t> pixels = random_pixels(from);
        const std::vector<uint32_t> larger = enlarged(pixels, from, to);
        for (int y = 0; y < to.height; ++y) {
            for (int x = 0; x < to.width; ++x) {
                const uint32_t own = larger[static_cast<size_t>(y * to.width + x)];
                for (const int shift : {0, 8, 16, 24})
                    ASSERT_NEAR(own >> shift & 0xff,
                                between(pixels, from, (x + 0.5) * from.width / to.width - 0.5,
                                        (y + 0.5) * from.height / to.height - 0.5, shift),
                                2)
                        << from.width << "x" << from.height << " to " << to.width << "x"
                        << to.height << ", at " << x << ", " << y;
            }
        }
    }
}

TEST(Enlarging, LeavesAPlainColourAsItIs)
{
    for (const uint32_t colour : {0xffffffffU, 0xff000000U, 0xff0180feU})
        EXPECT_THAT(enlarged(std::vector<uint32_t>(33 * 21, colour), {33, 21}, {100, 95}),
                    testing::Each(colour));
}

TEST(Enlarging, OfSomeRowsDrawsThemAsInTheWholePictureAndNothingElse)
{
    constexpr uint32_t UNTOUCHED = 0x12345678;
    const Size from = {20, 10};
    const Size to = {50, 27};
    std::vector<uint32_t> pixels = random_pixels(from);
    const std::vector<uint32_t> whole = enlarged(pixels, from, to);
    std::vector<uint32_t> some(60 * 27, UNTOUCHED);
    enlarge({pixels.data(), from.width, from}, {some.data(), 60, to}, 9, 8);
    for (int y = 0; y < 27; ++y) {
        for (int x = 0; x < 60; ++x)
            ASSERT_EQ(some[static_cast<size_t>(y * 60 + x)],
                      y >= 9 && y < 17 && x < 50 ? whole[static_cast<size_t>(y * 50 + x)]
                                                 : UNTOUCHED)
                << x << ", " << y;
    }
}

} // namespace
} // namespace platform
