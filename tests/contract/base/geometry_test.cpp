#include <ostream>

#include <gtest/gtest.h>

#include "base/geometry.h"

namespace platform {

void PrintTo(const Rect &rect, std::ostream *out)
{
    *out << rect.width << "x" << rect.height << " at " << rect.x << "," << rect.y;
}

namespace {

constexpr Size FULL_HD = {1920, 1080};

TEST(Fitting, KeepsTheProportionsAndFillsOneSide)
{
    EXPECT_EQ(fit({4000, 3000}, FULL_HD), (Size{1440, 1080}));
    EXPECT_EQ(fit({3000, 4000}, FULL_HD), (Size{810, 1080}));
    EXPECT_EQ(fit(FULL_HD, FULL_HD), FULL_HD);
    EXPECT_EQ(fit({3, 2}, {100, 100}), (Size{100, 67})) << "rounded, not cut off";
    EXPECT_EQ(fit({2, 3}, {100, 100}), (Size{67, 100})) << "rounded, not cut off";
}

TEST(Fitting, LeavesAPixelEachWay)
{
    EXPECT_EQ(fit({65500, 1}, FULL_HD), (Size{1920, 1}));
    EXPECT_EQ(fit({1, 65500}, FULL_HD), (Size{1, 1080}));
}

TEST(Fitting, TakesProportionsThatNoSizeHas)
{
    EXPECT_EQ(fit(int64_t{16} << 40, int64_t{9} << 40, FULL_HD), FULL_HD);
}

TEST(Centring, LeavesTheSameOnBothSides)
{
    EXPECT_EQ(centred({1440, 1080}, whole(FULL_HD)), (Rect{240, 0, 1440, 1080}));
    EXPECT_EQ(centred({100, 56}, {1000, 20, 100, 100}), (Rect{1000, 42, 100, 56}));
}

TEST(Clipping, LeavesWhatLiesInside)
{
    EXPECT_EQ(clipped({10, 20, 30, 40}, FULL_HD), (Rect{10, 20, 30, 40}));
    EXPECT_EQ(clipped({-10, -20, 30, 40}, FULL_HD), (Rect{0, 0, 20, 20}));
    EXPECT_EQ(clipped({1900, 1070, 30, 40}, FULL_HD), (Rect{1900, 1070, 20, 10}));
}

TEST(Clipping, LeavesNothingOfWhatLiesOutside)
{
    for (const Rect &outside : {Rect{-30, 0, 30, 40}, Rect{1920, 0, 30, 40}, Rect{0, -40, 30, 40},
                                Rect{0, 1080, 30, 40}, Rect{10, 10, -5, 40}})
        EXPECT_TRUE(clipped(outside, FULL_HD).empty()) << testing::PrintToString(outside);
}

TEST(Covering, NeedsEachSide)
{
    const Rect area = {10, 20, 30, 40};
    EXPECT_TRUE(area.covers(area));
    EXPECT_TRUE((Rect{0, 0, 100, 100}).covers(area));
    for (const Rect &smaller :
         {Rect{11, 20, 29, 40}, Rect{10, 21, 30, 39}, Rect{10, 20, 29, 40}, Rect{10, 20, 30, 39}})
        EXPECT_FALSE(smaller.covers(area)) << testing::PrintToString(smaller);
}

TEST(Uniting, GoesAroundBoth)
{
    const Rect one = {10, 20, 30, 40};
    const Rect other = {0, 50, 20, 60};
    EXPECT_EQ(united(one, other), (Rect{0, 20, 40, 90}));
    EXPECT_EQ(united(other, one), (Rect{0, 20, 40, 90}));
    EXPECT_EQ(united(one, {}), one);
    EXPECT_EQ(united({500, 500, 0, 10}, one), one);
}

} // namespace
} // namespace platform
