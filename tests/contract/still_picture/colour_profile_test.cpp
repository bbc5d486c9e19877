// Photos whose numbers are not those of sRGB.

#include <cmath>
#include <memory>

#include <lcms2.h>

#include "still_picture/colour_profile.h"
#include "still_picture/picture_ahead.h"
#include "still_picture/picture_status.h"
#include "still_picture/picture_test.h"
#include "still_picture/profile_maker.h"
#include "store_support/captured_log.h"

namespace platform_test {
namespace {

using platform::ColourProfile;
using testing::HasSubstr;
using Content = ColourProfile::Content;
using Color = std::array<double, 3>; // red, green, blue in codes

constexpr double CLOSE = 1.5;

Color codes_of(uint32_t pixel)
{
    return {static_cast<double>(pixel >> 16 & 0xff), static_cast<double>(pixel >> 8 & 0xff),
            static_cast<double>(pixel & 0xff)};
}

/** How far apart two colours are in the number where they are furthest apart. */
double distance(const Color &one, const Color &other)
{
    double most = 0;
    for (size_t i = 0; i < one.size(); ++i)
        most = std::max(most, std::abs(one[i] - other[i]));
    return most;
}

double light(double code)
{
    const double value = code / 255;
    return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
}

double code(double light)
{
    const double value = std::clamp(light, 0.0, 1.0);
    return 255 * (value <= 0.0031308 ? 12.92 * value : 1.055 * std::pow(value, 1 / 2.4) - 0.055);
}

Color of_display_p3(const Color &color)
{
    const double red = light(color[0]);
    const double green = light(color[1]);
    const double blue = light(color[2]);
    return {code(1.2249402 * red - 0.2249402 * green), code(-0.0420570 * red + 1.0420570 * green),
            code(-0.0196376 * red - 0.0786360 * green + 1.0982736 * blue)};
}

Color of_adobe_rgb(const Color &color)
{
    const auto bare = [](double value) { return std::pow(value / 255, 563.0 / 256); };
    const double red = bare(color[0]);
    const double green = bare(color[1]);
    const double blue = bare(color[2]);
    return {code(1.3983557 * red - 0.3983557 * green), code(green),
            code(-0.0429290 * green + 1.0429290 * blue)};
}

class PhotoWithAProfile : public PictureTest {
  protected:
    static constexpr int PATCH = 8;
    static constexpr int ACROSS = WIDTH / PATCH;
    static constexpr int DOWN = HEIGHT / PATCH;

    void TearDown() override
    {
        platform::PictureAhead::get().drop();
        PictureTest::TearDown();
    }

    /** As large as the panel, in patches that JPEG loses nothing of. */
    static JpegOrder patches(const std::vector<Bytes> &app2, J_COLOR_SPACE space = JCS_RGB)
    {
        JpegOrder order{WIDTH, HEIGHT, [](int x, int y) { return patch(x / PATCH, y / PATCH); }};
        order.space = space;
        order.app2 = app2;
        return order;
    }

    /** Six steps of red, green and blue. */
    static uint32_t patch(int column, int row)
    {
        const int number = row * ACROSS + column;
        return static_cast<uint32_t>(number % 6 * 51 << 16 | number / 6 % 6 * 51 << 8 |
                                     number / 36 % 6 * 51);
    }

    template <typename Expected> void expect_patches(const Expected &expected, double tolerance)
    {
        for (int row = 0; row < DOWN; ++row) {
            for (int column = 0; column < ACROSS; ++column) {
                const Color wanted = expected(codes_of(patch(column, row)));
                const uint32_t seen = screen_.at(column * PATCH + 4, row * PATCH + 4);
                EXPECT_LE(distance(codes_of(seen), wanted), tolerance)
                    << std::hex << seen << " of " << patch(column, row);
            }
        }
    }

    /** Name of the profile that the picture on the screen went through. */
    static std::string applied() { return platform::current_picture_status().colour_profile; }

    /** The pixels of the same picture without any profile. */
    std::vector<uint32_t> unchanged(JpegOrder order)
    {
        order.app2.clear();
        show(order);
        return screen_.pixels;
    }
};

TEST_F(PhotoWithAProfile, OfDisplayP3HasItsOwnColours)
{
    show(patches(in_chunks(display_p3())));
    expect_patches(of_display_p3, CLOSE);
    EXPECT_EQ(applied(), "Display P3");
}

TEST_F(PhotoWithAProfile, OfAdobeRgbHasItsOwnColours)
{
    show(patches(in_chunks(adobe_rgb())));
    expect_patches(of_adobe_rgb, CLOSE);
    EXPECT_EQ(applied(), "Adobe RGB (1998)");
}

TEST_F(PhotoWithAProfile, OfGreyHasItsOwnGreys)
{
    show(patches(in_chunks(grey_of_gamma_1_8()), JCS_GRAYSCALE));
    expect_patches(
        [](const Color &color) {
            const double grey = code(std::pow(color[1] / 255, 1.8));
            return Color{grey, grey, grey};
        },
        CLOSE);
    EXPECT_EQ(applied(), "Grey of gamma 1.8");
}

TEST_F(PhotoWithAProfile, OfInkHasItsOwnColoursInEachKindOfFile)
{
    struct Kind {
        J_COLOR_SPACE space;
        bool adobe_mark;
        double tolerance;
    };
    // The ends of the table: what is between is left to Little CMS. Y, Cb and Cr lose a code of
    // ink, which is more in the dark.
    const auto corner = [](int x, int y) {
        const int number = x / PATCH % 4 + y / PATCH % 4 * 4;
        return (number & 1 ? 0xffu : 0) | (number & 2 ? 0xff00u : 0) |
               (number & 4 ? 0xff0000u : 0) | (number & 8 ? 0xff000000u : 0);
    };
    for (const Kind &kind :
         {Kind{JCS_CMYK, true, CLOSE}, {JCS_CMYK, false, CLOSE}, {JCS_YCCK, true, 5}}) {
        JpegOrder order = patches(in_chunks(ink()), kind.space);
        order.adobe_mark = kind.adobe_mark;
        order.color = corner;
        show(order);
        EXPECT_EQ(applied(), "Ink");
        for (int row = 0; row < 4; ++row) {
            for (int column = 0; column < 4; ++column) {
                const uint32_t rest = corner(column * PATCH, row * PATCH);
                const Color left = codes_of(rest);
                const double white = 1 - (rest >> 24) / 255.0;
                const Color wanted = {code(white * InkLight::red(1 - left[0] / 255)),
                                      code(white * InkLight::green(1 - left[1] / 255)),
                                      code(white * InkLight::blue(1 - left[2] / 255))};
                const uint32_t seen = screen_.at(column * PATCH + 4, row * PATCH + 4);
                EXPECT_LE(distance(codes_of(seen), wanted), kind.tolerance)
                    << std::hex << seen << " of " << rest << ", space " << kind.space;
            }
        }
    }
}

TEST_F(PhotoWithAProfile, OfSrgbIsShownAsOneWithout)
{
    const std::vector<uint32_t> wanted = unchanged(patches({}));
    show(patches(in_chunks(srgb())));
    EXPECT_EQ(screen_.pixels, wanted);
    EXPECT_EQ(applied(), "");
}

TEST_F(PhotoWithAProfile, OrWithoutAnyShowsTheNumbersOfTheFile)
{
    show(patches({}));
    expect_patches([](const Color &color) { return color; }, 0);
    EXPECT_EQ(applied(), "");
}

TEST_F(PhotoWithAProfile, MayHaveItInPiecesInAnyOrderAmongOtherSegments)
{
    auto pieces = in_chunks(display_p3(), 100);
    ASSERT_GE(pieces.size(), 4u);
    std::swap(pieces.front(), pieces.back());
    pieces.insert(pieces.begin() + 2, {'M', 'P', 'F', 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12});
    pieces.insert(pieces.begin(), {'I', 'C'});
    show(patches(pieces));
    expect_patches(of_display_p3, CLOSE);
}

TEST_F(PhotoWithAProfile, ThatCannotBeUsedIsShownAsSrgbWithOneWarning)
{
    const auto quarters_of_p3 = in_chunks(display_p3(), display_p3().size() / 3);
    const auto with = [&](const std::function<void(std::vector<Bytes> &)> &change) {
        auto pieces = quarters_of_p3;
        change(pieces);
        return pieces;
    };
    Bytes half = display_p3();
    half.resize(half.size() / 2);
    const auto last_byte_of_mark = 12;
    struct Case {
        std::vector<Bytes> app2;
        const char *reason;
        J_COLOR_SPACE space = JCS_YCbCr;
    };
    const Case cases[] = {
        {{chunk(1, 1, Bytes(500, 'x'))}, "not an ICC profile"},
        {{chunk(1, 1, {})}, "a piece of it is missing"},
        {{chunk(1, 0, Bytes(500, 'x'))}, "its pieces are numbered wrongly"},
        {in_chunks(half), "Couldn't link the profiles"},
        {with([](auto &p) { p.erase(p.begin() + 1); }), "a piece of it is missing"},
        {with([](auto &p) { p.push_back(p.front()); }), "its pieces are numbered wrongly"},
        {with([&](auto &p) { p[1][last_byte_of_mark] = 0; }), "its pieces are numbered wrongly"},
        {with([&](auto &p) { p[1][last_byte_of_mark] = 9; }), "its pieces are numbered wrongly"},
        {with([&](auto &p) { ++p[1][last_byte_of_mark + 1]; }), "its pieces are numbered wrongly"},
        {in_chunks(Bytes(65 * 1000, 'x'), 1000), "it is too large"},
        {in_chunks(ink()), "it is for another colour space than the picture"},
        {in_chunks(display_p3()), "it is for another colour space than the picture", JCS_GRAYSCALE},
        {in_chunks(display_p3()), "it is for another colour space than the picture", JCS_CMYK},
    };
    for (const Case &bad : cases) {
        const JpegOrder order = patches(bad.app2, bad.space);
        const std::vector<uint32_t> wanted = unchanged(order);
        const store_test::CapturedLog log;
        show(order);
        EXPECT_EQ(screen_.pixels, wanted) << bad.reason;
        EXPECT_EQ(applied(), "");
        const std::string text = log.text();
        EXPECT_THAT(text, HasSubstr(bad.reason));
        EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 1) << text;
    }
}

TEST_F(PhotoWithAProfile, OpenedAheadGoesTheSameWay)
{
    show(patches(in_chunks(display_p3())));
    const std::vector<uint32_t> usual = screen_.pixels;

    auto &ahead = platform::PictureAhead::get();
    ahead.open(file("picture.jpg"), {WIDTH, HEIGHT});
    ahead.wait_until_done();
    open(file("picture.jpg"));
    ASSERT_NO_FATAL_FAILURE(decode());
    ASSERT_EQ(pictrel_render(picture_), 0);

    EXPECT_EQ(screen_.pixels, usual);
    EXPECT_EQ(applied(), "Display P3");
}

TEST_F(PhotoWithAProfile, OpenedAheadIsWarnedOfWhenItIsWanted)
{
    write_jpeg(file("picture.jpg"), patches(in_chunks(ink())));
    const store_test::CapturedLog log;
    auto &ahead = platform::PictureAhead::get();
    ahead.open(file("picture.jpg"), {WIDTH, HEIGHT});
    ahead.wait_until_done();
    EXPECT_EQ(log.text(), "");

    open(file("picture.jpg"));
    ASSERT_NO_FATAL_FAILURE(decode());
    EXPECT_THAT(log.text(), HasSubstr("it is for another colour space than the picture"));
}

/** What Little CMS makes of numbers, in doubles. */
class Reference {
  public:
    Reference(const Bytes &icc, cmsUInt32Number format)
        : from_(cmsOpenProfileFromMem(icc.data(), static_cast<cmsUInt32Number>(icc.size()))),
          to_(cmsCreate_sRGBProfile()),
          transform_(cmsCreateTransform(from_, format, to_, TYPE_RGB_DBL,
                                        INTENT_RELATIVE_COLORIMETRIC,
                                        cmsFLAGS_BLACKPOINTCOMPENSATION | cmsFLAGS_NOOPTIMIZE))
    {
    }
    ~Reference()
    {
        cmsDeleteTransform(transform_);
        cmsCloseProfile(to_);
        cmsCloseProfile(from_);
    }
    Reference(const Reference &) = delete;
    Reference &operator=(const Reference &) = delete;

    Color of(const std::array<double, 4> &numbers) const
    {
        Color color;
        cmsDoTransform(transform_, numbers.data(), color.data(), 1);
        for (double &value : color)
            value = std::clamp(value, 0.0, 1.0) * 255;
        return color;
    }

  private:
    cmsHPROFILE from_;
    cmsHPROFILE to_;
    cmsHTRANSFORM transform_;
};

class ColoursOfAProfile : public testing::Test {
  protected:
    /** Compares every colour of a grid that meets the darkest codes and the brightest. */
    static void expect_close(const Bytes &icc, Content content)
    {
        const bool ink = content == Content::Ink;
        const Reference reference(icc, ink ? TYPE_CMYK_DBL : TYPE_RGB_DBL);
        const ColourProfile profile(icc, content);
        ASSERT_TRUE(profile.differs()) << profile.use().fault;
        constexpr int LEVELS[] = {0,  1,   3,   7,   12,  20,  33,  51,
                                  76, 102, 140, 177, 203, 230, 254, 255};
        double furthest = 0;
        for (const int first : LEVELS) {
            for (const int second : LEVELS) {
                for (const int third : LEVELS) {
                    for (const int fourth : {0, 30, 128, 255}) {
                        uint32_t pixel = static_cast<uint32_t>(first << 16 | second << 8 | third) |
                                         static_cast<uint32_t>(fourth) << 24;
                        // Of ink the lowest byte is cyan, of light it is blue.
                        const Color wanted =
                            ink ? reference.of(
                                      {third / 2.55, second / 2.55, first / 2.55, fourth / 2.55})
                                : reference.of({first / 255.0, second / 255.0, third / 255.0, 0});
                        profile.convert(&pixel, 1);
                        furthest = std::max(furthest, distance(codes_of(pixel), wanted));
                        if (!ink)
                            break;
                    }
                }
            }
        }
        EXPECT_LE(furthest, CLOSE) << profile.use().applied;
    }
};

TEST_F(ColoursOfAProfile, AreThoseOfLittleCms)
{
    for (const Bytes &icc : {display_p3(), adobe_rgb(), prophoto_rgb(), rgb_table()})
        expect_close(icc, Content::Rgb);
    expect_close(ink(), Content::Ink);
}

TEST_F(ColoursOfAProfile, AreTheSameInPlaceOfInvertedInk)
{
    const ColourProfile as_it_is(ink(), Content::Ink);
    const ColourProfile inverted(ink(), Content::Inverted);
    for (uint32_t i = 0; i < 1000; ++i) {
        const uint32_t pixel = i * 2654435761;
        uint32_t one = pixel;
        uint32_t other = ~pixel;
        as_it_is.convert(&one, 1);
        inverted.convert(&other, 1);
        ASSERT_LE(distance(codes_of(one), codes_of(other)), 1) << std::hex << pixel;
    }
}

TEST_F(ColoursOfAProfile, ThatIsDamagedAreUsedOrRefused)
{
    int refused = 0;
    uint32_t random = 1;
    for (const Bytes &icc : {display_p3(), adobe_rgb(), prophoto_rgb()}) {
        for (int round = 0; round < 150; ++round) {
            Bytes damaged = icc;
            for (int i = 0; i < 4; ++i) {
                random = random * 1664525 + 1013904223;
                damaged[(random >> 8) % damaged.size()] = static_cast<uint8_t>(random >> 3);
            }
            const ColourProfile profile(damaged, Content::Rgb);
            ASSERT_NE(profile.differs(), profile.use().applied.empty());
            ASSERT_TRUE(profile.use().fault.empty() || !profile.differs());
            refused += !profile.use().fault.empty();
            if (profile.differs()) {
                std::vector<uint32_t> pixels(4096);
                for (size_t i = 0; i < pixels.size(); ++i)
                    pixels[i] = static_cast<uint32_t>(i * 4099);
                profile.convert(pixels.data(), static_cast<int>(pixels.size()));
            }
        }
    }
    EXPECT_GT(refused, 50);
    EXPECT_LT(refused, 450);
}

} // namespace
} // namespace platform_test
