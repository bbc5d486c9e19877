#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "colour/colour_converter.h"
#include "colour/picture.h"
#include "colour/reference.h"

namespace platform {

namespace {

std::vector<const rows::Version *> versions()
{
    std::vector<const rows::Version *> all = {&rows::BASE};
    if (&ColourConverter::best_version() != &rows::BASE)
        all.push_back(&ColourConverter::best_version());
    return all;
}

const char *name_of(const rows::Version &version)
{
    return &version == &rows::BASE ? "base" : "best";
}

std::vector<uint32_t> converted(const ColourConverter &converter, const Picture &picture)
{
    const Size &size = picture.size();
    std::vector<uint32_t> pixels(static_cast<size_t>(size.area()));
    converter.convert(picture.image(), 0, size.height, pixels.data(), size.width);
    return pixels;
}

/** Collects how far pixels are from what they are to be. */
struct Errors {
    double worst = 0;
    double sum = 0;
    int count = 0;
    int over = 0; ///< beyond 2.5 codes

    void add(uint32_t pixel, const Rgb &wanted)
    {
        EXPECT_EQ(pixel >> 24, 0xffU);
        for (double error : {(pixel >> 16 & 0xff) - wanted.red, (pixel >> 8 & 0xff) - wanted.green,
                             (pixel & 0xff) - wanted.blue}) {
            worst = std::max(worst, std::fabs(error));
            sum += std::fabs(error);
            over += std::fabs(error) > 2.5;
            ++count;
        }
    }
    double mean() const { return sum / count; }
};

class EachFormat : public testing::TestWithParam<YuvFormat> {
  protected:
    const YuvFormat format_ = GetParam();
    const int depth_ = depth_of(GetParam());
    std::mt19937 random_{7};

    int number() { return static_cast<int>(random_() % (1U << depth_)); }

    /** Random colours, each of a block that no neighbour reaches into: the pixel looked at. */
    Errors errors_of_random_colours(const ColourSpace &space, const rows::Version &version,
                                    const std::function<Rgb()> &yuv, int count)
    {
        constexpr int BLOCK = 6;
        const int columns = 100;
        Picture picture(format_, {BLOCK * columns, BLOCK * (count / columns)});
        std::vector<Rgb> colours;
        for (int i = 0; i < count; ++i) {
            const Rgb colour = yuv();
            colours.push_back(colour);
            const int left = i % columns * BLOCK;
            const int top = i / columns * BLOCK;
            for (int at = 0; at < BLOCK * BLOCK; ++at)
                picture.set_luma(left + at % BLOCK, top + at / BLOCK, static_cast<int>(colour.red));
            for (int at = 0; at < BLOCK * BLOCK / 4; ++at)
                picture.set_chroma((left + at % (BLOCK / 2) * 2) / 2,
                                   (top + at / (BLOCK / 2) * 2) / 2, static_cast<int>(colour.green),
                                   static_cast<int>(colour.blue));
        }
        const auto pixels =
            converted(ColourConverter(space, depth_, REFERENCE_WHITE, version), picture);
        Errors errors;
        for (int i = 0; i < count; ++i) {
            const int x = i % columns * BLOCK + 2;
            const int y = i / columns * BLOCK + 2;
            const Rgb &c = colours[static_cast<size_t>(i)];
            errors.add(pixels[static_cast<size_t>(y) * picture.size().width + x],
                       reference(space, depth_, c.red, c.green, c.blue));
        }
        return errors;
    }
};

const char *name_of(YuvFormat format)
{
    constexpr const char *NAMES[] = {"I420", "NV12", "I420_10", "P010"};
    return NAMES[static_cast<size_t>(format)];
}

INSTANTIATE_TEST_SUITE_P(Colours, EachFormat,
                         testing::Values(YuvFormat::I420, YuvFormat::NV12, YuvFormat::I420_10,
                                         YuvFormat::P010),
                         [](const auto &tested) { return name_of(tested.param); });

TEST_P(EachFormat, IsExactInEveryColourSpace)
{
    for (const rows::Version *version : versions()) {
        for (const ColourSpace &space :
             {ColourSpace(), in_full_range({}), bt601(), in_full_range(bt601()), bt2020(),
              in_full_range(bt2020())}) {
            const Errors errors = errors_of_random_colours(
                space, *version,
                [&] {
                    return Rgb{double(number()), double(number()), double(number())};
                },
                2000);
            EXPECT_LT(errors.worst, 0.65)
                << name_of(*version) << ", kr " << space.kr << ", full range " << space.full_range;
        }
    }
}

TEST_P(EachFormat, HasItsBlackAndItsWhite)
{
    const int unit = 1 << (depth_ - 8);
    for (const rows::Version *version : versions()) {
        for (const auto &[luma, wanted] : {std::pair(16, 0xff000000U), {235, 0xffffffffU}}) {
            Picture picture(format_, {2, 2});
            for (int i = 0; i < 4; ++i)
                picture.set_luma(i % 2, i / 2, luma * unit);
            picture.set_chroma(0, 0, 128 * unit, 128 * unit);
            EXPECT_THAT(converted(ColourConverter({}, depth_, REFERENCE_WHITE, *version), picture),
                        testing::Each(wanted))
                << name_of(*version);
        }
    }
}

TEST_P(EachFormat, TakesColoursBetweenTheirSamplesByDistance)
{
    // Samples of chroma lie on every other column, and between two rows.
    const auto weights = [](int at, int samples, bool between) {
        const int nearer = at / 2;
        const int other = between ? (at % 2 ? nearer + 1 : nearer - 1) : nearer + at % 2;
        return std::pair(nearer, std::clamp(other, 0, samples - 1));
    };
    const ColourSpace space = in_full_range({});
    for (const rows::Version *version : versions()) {
        for (const Size &size : {Size{1, 1}, Size{3, 5}, Size{258, 4}, Size{321, 7}}) {
            Picture picture(format_, size);
            std::vector<int> luma(static_cast<size_t>(size.area()));
            std::vector<int> u(static_cast<size_t>(picture.chroma_size().area()));
            std::vector<int> v(u.size());
            for (size_t i = 0; i < luma.size(); ++i) {
                luma[i] = number();
                picture.set_luma(static_cast<int>(i) % size.width, static_cast<int>(i) / size.width,
                                 luma[i]);
            }
            for (size_t i = 0; i < u.size(); ++i) {
                u[i] = number();
                v[i] = number();
                picture.set_chroma(static_cast<int>(i) % picture.chroma_size().width,
                                   static_cast<int>(i) / picture.chroma_size().width, u[i], v[i]);
            }
            const auto pixels =
                converted(ColourConverter(space, depth_, REFERENCE_WHITE, *version), picture);
            Errors errors;
            for (int y = 0; y < size.height; ++y) {
                const auto [row, other_row] = weights(y, picture.chroma_size().height, true);
                for (int x = 0; x < size.width; ++x) {
                    const auto [column, other_column] =
                        weights(x, picture.chroma_size().width, false);
                    const auto mixed = [&](const std::vector<int> &plane) {
                        const auto at = [&](int px, int py) {
                            return double(
                                plane[static_cast<size_t>(py) * picture.chroma_size().width + px]);
                        };
                        return (3 * (at(column, row) + at(other_column, row)) +
                                at(column, other_row) + at(other_column, other_row)) /
                               8;
                    };
                    const size_t i = static_cast<size_t>(y) * size.width + x;
                    errors.add(pixels[i], reference(space, depth_, luma[i], mixed(u), mixed(v)));
                }
            }
            EXPECT_LT(errors.worst, 0.7) << name_of(*version) << ", width " << size.width;
        }
    }
}

TEST_P(EachFormat, MakesAPixelOfFourWherePlanesAreDoubled)
{
    const ColourSpace space = in_full_range({});
    for (const rows::Version *version : versions()) {
        for (const Size &size : {Size{1, 1}, Size{3, 5}, Size{256, 2}, Size{321, 3}}) {
            Picture picture(format_, {2 * size.width, 2 * size.height});
            const auto at = [&size](int x, int y) {
                return static_cast<size_t>(y) * size.width + x;
            };
            std::vector<double> luma(static_cast<size_t>(size.area()));
            std::vector<int> u(luma.size());
            std::vector<int> v(luma.size());
            for (int y = 0; y < size.height; ++y) {
                for (int x = 0; x < size.width; ++x) {
                    for (int i = 0; i < 4; ++i) {
                        const int value = number();
                        picture.set_luma(2 * x + i % 2, 2 * y + i / 2, value);
                        luma[at(x, y)] += value / 4.0;
                    }
                    u[at(x, y)] = number();
                    v[at(x, y)] = number();
                    picture.set_chroma(x, y, u[at(x, y)], v[at(x, y)]);
                }
            }
            YuvImage image = picture.image();
            image.size = size;
            image.doubled = true;
            std::vector<uint32_t> pixels(luma.size());
            ColourConverter(space, depth_, REFERENCE_WHITE, *version)
                .convert(image, 0, size.height, pixels.data(), size.width);
            Errors errors;
            for (int y = 0; y < size.height; ++y) {
                for (int x = 0; x < size.width; ++x) {
                    // Samples of chroma lie below the left pixels of each four.
                    const size_t next = at(std::min(x + 1, size.width - 1), y);
                    const auto mixed = [&](const std::vector<int> &plane) {
                        return (3 * plane[at(x, y)] + plane[next]) / 4.0;
                    };
                    errors.add(pixels[at(x, y)],
                               reference(space, depth_, luma[at(x, y)], mixed(u), mixed(v)));
                }
            }
            EXPECT_LT(errors.worst, 0.7) << name_of(*version) << ", width " << size.width;
        }
    }
}

TEST_P(EachFormat, ConvertsSomeRowsAsItConvertsAll)
{
    Picture picture(format_, {34, 9});
    for (int i = 0; i < 34 * 9; ++i)
        picture.set_luma(i % 34, i / 34, number());
    for (int i = 0; i < 17 * 5; ++i)
        picture.set_chroma(i % 17, i / 17, number(), number());
    const ColourConverter converter({}, depth_);
    const std::vector<uint32_t> all = converted(converter, picture);

    constexpr uint32_t UNTOUCHED = 0x12345678;
    constexpr int WIDER = 40;
    std::vector<uint32_t> some(WIDER * 3, UNTOUCHED);
    converter.convert(picture.image(), 4, 3, some.data(), WIDER);
    for (int y = 0; y < 3; ++y) {
        for (int x = 0; x < WIDER; ++x)
            ASSERT_EQ(some[static_cast<size_t>(y * WIDER + x)],
                      x < 34 ? all[static_cast<size_t>((y + 4) * 34 + x)] : UNTOUCHED)
                << x << ", " << y;
    }
}

struct Hdr {
    const char *name;
    Transfer transfer;
    double peak;
};

class HighDynamicRange : public testing::TestWithParam<Hdr> {
  protected:
    const ColourSpace space_ = bt2020(GetParam().transfer, GetParam().peak);
    const Quantization q_ = quantization(space_, 10);
    const double top_ = space_.transfer == Transfer::HLG ? 1 : pq_of_light(space_.peak);

    /** A row of colours, one a pair of pixels of a picture of one row. */
    Errors errors_of(const std::vector<Rgb> &codes, const rows::Version &version) const
    {
        const int count = static_cast<int>(codes.size());
        Picture picture(YuvFormat::I420_10, {4 * count, 1});
        const Matrix3 rgb = rgb_from_yuv(space_);
        std::vector<Rgb> numbers;
        for (int i = 0; i < count; ++i) {
            const Rgb &c = codes[static_cast<size_t>(i)];
            const double luma =
                space_.kr * c.red + (1 - space_.kr - space_.kb) * c.green + space_.kb * c.blue;
            const Rgb yuv = {std::round(q_.black + q_.range * luma),
                             std::round(q_.centre + q_.span * (c.blue - luma) / rgb[2][1]),
                             std::round(q_.centre + q_.span * (c.red - luma) / rgb[0][2])};
            numbers.push_back(yuv);
            for (int x = 0; x < 4; ++x)
                picture.set_luma(4 * i + x, 0, static_cast<int>(yuv.red));
            for (int x = 0; x < 2; ++x)
                picture.set_chroma(2 * i + x, 0, static_cast<int>(yuv.green),
                                   static_cast<int>(yuv.blue));
        }
        const auto pixels =
            converted(ColourConverter(space_, 10, REFERENCE_WHITE, version), picture);
        Errors errors;
        for (int i = 0; i < count; ++i) {
            const Rgb &c = numbers[static_cast<size_t>(i)];
            errors.add(pixels[static_cast<size_t>(4 * i)],
                       reference(space_, 10, c.red, c.green, c.blue));
        }
        return errors;
    }
};

INSTANTIATE_TEST_SUITE_P(Films, HighDynamicRange,
                         testing::Values(Hdr{"Pq300", Transfer::PQ, 300},
                                         Hdr{"Pq1000", Transfer::PQ, 1000},
                                         Hdr{"Pq4000", Transfer::PQ, 4000},
                                         Hdr{"Pq10000", Transfer::PQ, 10000},
                                         Hdr{"Hlg", Transfer::HLG, 0}),
                         [](const auto &film) { return film.param.name; });

TEST_P(HighDynamicRange, HasItsGreysToACodeAndAHalf)
{
    std::vector<Rgb> greys;
    for (int i = 0; i <= 876; ++i)
        greys.push_back({i / 876.0, i / 876.0, i / 876.0});
    for (const rows::Version *version : versions()) {
        const Errors errors = errors_of(greys, *version);
        EXPECT_LE(errors.worst, 1.5) << name_of(*version);
    }
}

TEST_P(HighDynamicRange, HasItsColoursAsTheyAreComputedStepByStep)
{
    std::mt19937 random(11);
    std::uniform_real_distribution<double> code(0, top_);
    std::vector<Rgb> colours;
    for (int i = 0; i < 20000; ++i)
        colours.push_back({code(random), code(random), code(random)});
    for (const rows::Version *version : versions()) {
        const Errors errors = errors_of(colours, *version);
        EXPECT_LT(errors.mean(), 0.3) << name_of(*version);
        EXPECT_LT(errors.over, errors.count / 100) << name_of(*version);
        // Where a part of BT.709 is next to nothing, one number of the film moves it as much.
        EXPECT_LT(errors.worst, 30) << name_of(*version);
    }
}

TEST_P(HighDynamicRange, RisesWithTheFilmAndEndsInWhite)
{
    for (const rows::Version *version : versions()) {
        Picture ramp(YuvFormat::I420_10, {1024, 1});
        for (int i = 0; i < 1024; ++i)
            ramp.set_luma(i, 0, i);
        for (int i = 0; i < 512; ++i)
            ramp.set_chroma(i, 0, 512, 512);
        const auto pixels = converted(ColourConverter(space_, 10, REFERENCE_WHITE, *version), ramp);
        for (size_t i = 1; i < pixels.size(); ++i)
            ASSERT_GE(pixels[i] & 0xff, pixels[i - 1] & 0xff) << name_of(*version) << " at " << i;
        EXPECT_EQ(pixels.front(), 0xff000000U);
        EXPECT_EQ(pixels.back(), 0xffffffffU);
    }
}

} // namespace
} // namespace platform
