#include <gmock/gmock.h>

#include "still_picture/compose.h"
#include "still_picture/row_scaler.h"

namespace platform {
namespace {

constexpr uint32_t OPAQUE = 0xff000000;

Image filled(const Size &size, uint32_t color)
{
    Image image(size);
    std::fill_n(image.pixels.get(), size.area(), color);
    return image;
}

TEST(Scaling, KeepsThePlainestAreasExact)
{
    for (const Size &from : {Size{7, 5}, Size{100, 3}, Size{1, 1}, Size{640, 480}}) {
        for (const Size &to : {Size{1, 1}, Size{3, 4}, Size{99, 50}, Size{101, 7}}) {
            const Image scaled = RowScaler::scale(filled(from, 0xff35c7ff), to);
            for (int64_t i = 0; i < to.area(); ++i)
                ASSERT_EQ(scaled.pixels[static_cast<size_t>(i)], 0xff35c7ffu)
                    << from.width << "x" << from.height << " to " << to.width << "x" << to.height;
        }
    }
}

TEST(Scaling, AveragesWhatGoesIntoOnePixel)
{
    Image image(Size{4, 2});
    for (int y = 0; y < 2; ++y) {
        for (int x = 0; x < 4; ++x)
            image.row(y)[x] = OPAQUE | static_cast<uint32_t>(x < 2 ? 0 : y == 0 ? 200 : 100);
    }
    const Image scaled = RowScaler::scale(image, {2, 1});
    EXPECT_EQ(scaled.row(0)[0], OPAQUE);
    EXPECT_EQ(scaled.row(0)[1], OPAQUE | 150);
}

TEST(Scaling, GrowsWithoutSteps)
{
    Image image(Size{2, 1});
    image.row(0)[0] = OPAQUE;
    image.row(0)[1] = OPAQUE | 240;
    const Image scaled = RowScaler::scale(image, {6, 1});
    for (int x = 1; x < 6; ++x)
        EXPECT_GE(scaled.row(0)[x], scaled.row(0)[x - 1]);
    EXPECT_EQ(scaled.row(0)[0], OPAQUE);
    EXPECT_EQ(scaled.row(0)[5], OPAQUE | 240);
    EXPECT_NEAR(static_cast<double>(scaled.row(0)[2] & 0xff), 80, 2);
}

TEST(Scaling, IsDoneWithTheLastRow)
{
    Image into(Size{10, 4});
    RowScaler scaler({10, 9}, into);
    const Image row = filled({10, 1}, OPAQUE);
    for (int y = 0; y < 9; ++y) {
        EXPECT_LT(scaler.rows_done(), 4);
        scaler.push(row.row(0));
    }
    EXPECT_EQ(scaler.rows_done(), 4);
}

TEST(KeptSize, IsEnoughForThePanelAtEveryAngleAndNeverMoreThanTheFileHas)
{
    const Size panel{1920, 1080};
    EXPECT_EQ(size_to_keep({4000, 3000}, panel), (Size{1440, 1080}));
    EXPECT_EQ(size_to_keep({2160, 3840}, panel), (Size{1080, 1920})) << "fills a turned panel";
    EXPECT_EQ(size_to_keep({3840, 2160}, panel), (Size{1920, 1080}));
    EXPECT_EQ(size_to_keep({640, 480}, panel), (Size{640, 480}));
}

} // namespace
} // namespace platform
