#include "still_picture/picture_test.h"

namespace platform_test {
namespace {

using testing::ElementsAre;

using ShowingAPicture = PictureTest;

TEST_F(ShowingAPicture, TellsItsUprightSizeOnceParsed)
{
    open({48, 32, plain(RED)});
    EXPECT_EQ(picture_->width, 0);
    pictrel_parse(picture_);
    application_.events(1);
    EXPECT_EQ(picture_->width, 48);
    EXPECT_EQ(picture_->height, 32);

    JpegOrder turned{48, 32, plain(RED)};
    turned.app1 = {exif_with_orientation(6)};
    open(turned);
    pictrel_parse(picture_);
    application_.events(1);
    EXPECT_EQ(picture_->width, 32);
    EXPECT_EQ(picture_->height, 48);
}

TEST_F(ShowingAPicture, ReportsEachStepOnce)
{
    show({64, 64, plain(BLUE)});
    EXPECT_THAT(application_.events(3), ElementsAre(PARSED, DECODED, RENDERED));
    EXPECT_EQ(pictrel_rotate(picture_, 180), 0);
    EXPECT_THAT(application_.events(4), ElementsAre(PARSED, DECODED, RENDERED, TURNED));
    EXPECT_EQ(screen_.pictures, 2);
}

TEST_F(ShowingAPicture, FitsAWidePictureBetweenBarsAboveAndBelow)
{
    show({640, 160, quarters(640, 160)}); // 160 x 40 on the panel

    EXPECT_EQ(quarters_of(0, 25, 160, 40), "RGBW");
    EXPECT_EQ(screen_.at(80, 24), 0u);
    EXPECT_EQ(screen_.at(80, 65), 0u);
    EXPECT_THAT(screen_.at(0, 25), LooksLike(RED));
    EXPECT_THAT(screen_.at(159, 64), LooksLike(WHITE));
}

TEST_F(ShowingAPicture, FitsATallPictureBetweenBarsLeftAndRight)
{
    show({90, 180, quarters(90, 180)}); // 45 x 90 on the panel

    EXPECT_EQ(quarters_of(57, 0, 45, 90), "RGBW");
    EXPECT_EQ(screen_.at(56, 45), 0u);
    EXPECT_EQ(screen_.at(102, 45), 0u);
}

TEST_F(ShowingAPicture, EnlargesASmallOne)
{
    show({16, 9, quarters(16, 9)});
    EXPECT_THAT(screen_.at(2, 2), LooksLike(RED));
    EXPECT_THAT(screen_.at(157, 2), LooksLike(GREEN));
}

TEST_F(ShowingAPicture, TakesTheOddestSizes)
{
    show({1, 1, plain(GREEN)});
    EXPECT_THAT(screen_.at(80, 45), LooksLike(GREEN));
}

TEST_F(ShowingAPicture, TakesTheWidestStrip)
{
    show({65500, 1, plain(GREEN)});
    EXPECT_THAT(screen_.at(0, 44), LooksLike(GREEN));
    EXPECT_THAT(screen_.at(159, 44), LooksLike(GREEN));
    EXPECT_EQ(screen_.at(80, 43), 0u);
    EXPECT_EQ(screen_.at(80, 45), 0u);
}

TEST_F(ShowingAPicture, TakesTheTallestStrip)
{
    show({1, 65500, plain(GREEN)});
    EXPECT_THAT(screen_.at(79, 0), LooksLike(GREEN));
    EXPECT_THAT(screen_.at(79, 89), LooksLike(GREEN));
    EXPECT_EQ(screen_.at(78, 45), 0u);
    EXPECT_EQ(screen_.at(80, 45), 0u);
}

TEST_F(ShowingAPicture, KeepsTheColourOfEachKindOfFile)
{
    for (const auto space : {JCS_YCbCr, JCS_RGB, JCS_CMYK, JCS_YCCK}) {
        for (const bool progressive : {false, true}) {
            JpegOrder order{32, 18, plain(0xc06020)};
            order.space = space;
            order.progressive = progressive;
            show(order);
            EXPECT_THAT(screen_.at(80, 45), LooksLike(0xc06020u)) << "space " << space;
        }
    }
}

TEST_F(ShowingAPicture, ShowsGreyAsGrey)
{
    JpegOrder order{32, 18, plain(0x9a9a9a)};
    order.space = JCS_GRAYSCALE;
    show(order);
    EXPECT_THAT(screen_.at(80, 45), LooksLike(0x9a9a9au));
}

TEST_F(ShowingAPicture, ReadsInkThatIsNotAdobesTheOtherWayRound)
{
    JpegOrder order{32, 18, plain(0xc06020)};
    order.space = JCS_CMYK;
    order.adobe_mark = false;
    show(order);
    EXPECT_THAT(screen_.at(80, 45), LooksLike(0xc06020u));
}

TEST_F(ShowingAPicture, ReadsRestartMarkers)
{
    JpegOrder order{320, 180, quarters(320, 180)};
    order.restart_rows = 1;
    show(order);
    EXPECT_EQ(quarters_of(0, 0, 160, 90), "RGBW");
}

TEST_F(ShowingAPicture, ReadsArithmeticCoding)
{
    JpegOrder order{320, 180, quarters(320, 180)};
    order.arithmetic = true;
    show(order);
    EXPECT_EQ(quarters_of(0, 0, 160, 90), "RGBW");
}

class EveryOrientation : public PictureTest, public testing::WithParamInterface<int> {
  protected:
    /** Red and green above blue and white, laid as EXIF says. */
    static constexpr const char *EXPECTED[] = {"RGBW", "RGBW", "GRWB", "WBGR", "BWRG",
                                               "RBGW", "BRWG", "WGBR", "GWRB"};
};

TEST_P(EveryOrientation, IsBroughtUpright)
{
    use_panel(120, 120);
    JpegOrder order{240, 160, quarters(240, 160)};
    order.app1 = {exif_with_orientation(static_cast<uint8_t>(GetParam()))};
    show(order);

    const std::string expected = EXPECTED[GetParam()];
    if (GetParam() < 5) {
        EXPECT_EQ(quarters_of(0, 20, 120, 80), expected);
    } else {
        EXPECT_EQ(quarters_of(20, 0, 80, 120), expected);
    }
}

INSTANTIATE_TEST_SUITE_P(Exif, EveryOrientation, testing::Range(1, 9));

using ExifData = PictureTest;

TEST_F(ExifData, ThatIsDamagedCountsAsUpright)
{
    JpegOrder order{320, 180, quarters(320, 180)};
    auto cut = exif_with_orientation(3);
    cut.resize(20);
    auto noise = exif_with_orientation(3);
    for (size_t i = 8; i < noise.size(); ++i)
        noise[i] = static_cast<uint8_t>(i * 151);
    auto unknown_value = exif_with_orientation(9);
    for (const auto &exif : {cut, noise, unknown_value, {'E', 'x', 'i', 'f', 0, 0}}) {
        order.app1 = {exif};
        show(order);
        EXPECT_EQ(quarters_of(0, 0, 160, 90), "RGBW");
    }
}

TEST_F(ExifData, CountsAmongHugeSegmentsOfOtherKinds)
{
    std::vector<uint8_t> other(65533, 'x');
    auto huge = exif_with_orientation(3);
    huge.resize(65533, 0xa5);
    JpegOrder order{320, 180, quarters(320, 180)};
    order.app1 = {other, other, huge, exif_with_orientation(1), other};
    show(order);
    EXPECT_EQ(quarters_of(0, 0, 160, 90), "WBGR");
}

using OnATurnedPanel = PictureTest;

TEST_F(OnATurnedPanel, ATallPictureFillsIt)
{
    show_turned({360, 640, quarters(360, 640)}, 270);
    EXPECT_EQ(quarters_of(0, 0, 160, 90), "GWRB");
    EXPECT_THAT(screen_.at(0, 0), LooksLike(GREEN));
    EXPECT_THAT(application_.events(3), ElementsAre(PARSED, DECODED, TURNED));
}

TEST_F(OnATurnedPanel, AWidePictureLiesAcross)
{
    show_turned({640, 360, quarters(640, 360)}, 90); // 51 x 90 on the panel
    EXPECT_EQ(quarters_of(54, 0, 51, 90), "BRWG");
    EXPECT_EQ(screen_.at(53, 45), 0u);
    EXPECT_EQ(screen_.at(105, 45), 0u);
}

TEST_F(OnATurnedPanel, HalfATurnStandsOnItsHead)
{
    show_turned({640, 360, quarters(640, 360)}, 180);
    EXPECT_EQ(quarters_of(0, 0, 160, 90), "WBGR");
}

TEST_F(OnATurnedPanel, TheTurnComesOnTopOfTheFilesOrientation)
{
    JpegOrder order{640, 360, quarters(640, 360)};
    order.app1 = {exif_with_orientation(6)}; // upright it is tall: "BRWG"
    show_turned(order, 270);                 // which undoes it
    EXPECT_EQ(quarters_of(0, 0, 160, 90), "RGBW");
}

} // namespace
} // namespace platform_test
