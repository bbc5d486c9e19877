// The arithmetic of a turned panel.

#include <gtest/gtest.h>

#include "window/turned_geometry.h"

namespace platform {
namespace {

constexpr Size PANEL = {1920, 1080};

TEST(TurnedGeometryTest, AQuarterTurnSwapsTheSides)
{
    for (const int degrees : {0, 180}) {
        EXPECT_EQ(turned_size(PANEL, degrees).width, 1920);
        EXPECT_EQ(turned_size(PANEL, degrees).height, 1080);
    }
    for (const int degrees : {90, 270}) {
        EXPECT_EQ(turned_size(PANEL, degrees).width, 1080);
        EXPECT_EQ(turned_size(PANEL, degrees).height, 1920);
    }
}

TEST(TurnedGeometryTest, ThePanelsTopLeftIsThatCornerOfTheContentThatWasTurnedThere)
{
    const Point origin = {0, 0};
    EXPECT_EQ(turned_point(origin, PANEL, 0).x, 0);
    EXPECT_EQ(turned_point(origin, PANEL, 0).y, 0);
    EXPECT_EQ(turned_point(origin, PANEL, 90).x, 1079);
    EXPECT_EQ(turned_point(origin, PANEL, 90).y, 0);
    EXPECT_EQ(turned_point(origin, PANEL, 180).x, 1919);
    EXPECT_EQ(turned_point(origin, PANEL, 180).y, 1079);
    EXPECT_EQ(turned_point(origin, PANEL, 270).x, 0);
    EXPECT_EQ(turned_point(origin, PANEL, 270).y, 1919);
}

TEST(TurnedGeometryTest, EveryPixelOfThePanelIsOneOfTheContent)
{
    constexpr Size SMALL = {4, 3};
    for (const int degrees : {0, 90, 180, 270}) {
        const Size content = turned_size(SMALL, degrees);
        bool hit[4][4] = {};
        for (int y = 0; y < SMALL.height; ++y) {
            for (int x = 0; x < SMALL.width; ++x) {
                const Point point = turned_point({x, y}, SMALL, degrees);
                ASSERT_TRUE(point.x >= 0 && point.x < content.width) << degrees;
                ASSERT_TRUE(point.y >= 0 && point.y < content.height) << degrees;
                EXPECT_FALSE(hit[point.y][point.x]) << "twice at " << degrees;
                hit[point.y][point.x] = true;
            }
        }
    }
}

} // namespace
} // namespace platform
