#include <gmock/gmock.h>

#include "colour/colour_space.h"

namespace platform {
namespace {

void expect_near(const Matrix3 &matrix, const Matrix3 &wanted, double distance)
{
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column)
            EXPECT_NEAR(matrix[row][column], wanted[row][column], distance)
                << "row " << row << ", column " << column;
    }
}

TEST(ColourSpaces, OfBt709HaveTheFactorsOfTheRecommendation)
{
    expect_near(rgb_from_yuv({}), {{{1, 0, 1.5748}, {1, -0.1873, -0.4681}, {1, 1.8556, 0}}}, 5e-5);
}

TEST(ColourSpaces, OfBt2020BecomeBt709AsItsReportSays)
{
    // ITU-R BT.2087 has the inverse; this is the matrix of BT.2407, 2.2.
    expect_near(
        to_bt709(BT2020_PRIMARIES),
        {{{1.6605, -0.5876, -0.0728}, {-0.1246, 1.1329, -0.0083}, {-0.0182, -0.1006, 1.1187}}},
        1e-4);
}

TEST(ColourSpaces, OfTheScreenStayAsTheyAre)
{
    expect_near(to_bt709(BT709_PRIMARIES), {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}}, 1e-12);
}

TEST(ColourSpaces, AreSpreadOverTheNumbersOfTheirDepth)
{
    const Quantization limited = quantization({}, 10);
    EXPECT_EQ(limited.black, 64);
    EXPECT_EQ(limited.range, 876);
    EXPECT_EQ(limited.centre, 512);
    EXPECT_EQ(limited.span, 896);

    ColourSpace full;
    full.full_range = true;
    EXPECT_EQ(quantization(full, 8).black, 0);
    EXPECT_EQ(quantization(full, 8).range, 255);
    EXPECT_EQ(quantization(full, 8).span, 255);
}

} // namespace
} // namespace platform
