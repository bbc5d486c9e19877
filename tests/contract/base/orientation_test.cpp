// Every way to lay a picture, tried on one of three columns and two rows:  a b c
//                                                                          d e f

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/orientation.h"

namespace platform {
namespace {

constexpr Size STORED = {3, 2};
constexpr char PIXELS[] = "abcdef";
constexpr Orientation MIRRORED = {false, true, false};

struct Case {
    Orientation orientation;
    std::string laid; ///< row by row
};

std::vector<Case> cases()
{
    return {
        {Orientation::clockwise(0), "abcdef"},    {Orientation::clockwise(90), "daebfc"},
        {Orientation::clockwise(180), "fedcba"},  {Orientation::clockwise(270), "cfbead"},
        {MIRRORED.then_clockwise(0), "cbafed"},   {MIRRORED.then_clockwise(90), "fcebda"},
        {MIRRORED.then_clockwise(180), "defabc"}, {MIRRORED.then_clockwise(270), "adbecf"},
    };
}

TEST(OrientationTest, AQuarterTurnSwapsTheSides)
{
    for (const int degrees : {0, 180})
        EXPECT_EQ(Orientation::clockwise(degrees).of(STORED), STORED);
    for (const int degrees : {90, 270})
        EXPECT_EQ(Orientation::clockwise(degrees).of(STORED), STORED.turned());
}

TEST(OrientationTest, QuarterTurnsAreFourAndTwoOfThemStandUpright)
{
    std::vector<int> turns;
    std::vector<int> upright;
    for (int degrees = -360; degrees <= 450; degrees += 45) {
        if (!is_quarter_turn(degrees))
            continue;
        turns.push_back(degrees);
        if (is_portrait(degrees))
            upright.push_back(degrees);
    }
    EXPECT_EQ(turns, (std::vector<int>{0, 90, 180, 270}));
    EXPECT_EQ(upright, (std::vector<int>{90, 270}));
}

TEST(OrientationTest, FourQuartersAreNoTurn)
{
    for (const Case &one : cases())
        EXPECT_EQ(one.orientation.then_clockwise(360), one.orientation) << one.laid;
}

TEST(OrientationTest, EachPlaceHasItsOrigin)
{
    for (const auto &[orientation, expected] : cases()) {
        const Size laid = orientation.of(STORED);
        std::string found;
        for (int y = 0; y < laid.height; ++y) {
            for (int x = 0; x < laid.width; ++x) {
                const Point pixel = orientation.origin({x, y}, laid);
                found += PIXELS[pixel.y * STORED.width + pixel.x];
            }
        }
        EXPECT_EQ(found, expected);
    }
}

TEST(OrientationTest, APixelIsPlacedWhereItIsTheOrigin)
{
    for (const auto &[orientation, expected] : cases()) {
        const Size laid = orientation.of(STORED);
        for (int y = 0; y < STORED.height; ++y) {
            for (int x = 0; x < STORED.width; ++x) {
                const Point place = orientation.place(Point{x, y}, laid);
                EXPECT_EQ(orientation.origin(place, laid), (Point{x, y})) << expected;
            }
        }
    }
}

TEST(OrientationTest, APartIsPlacedAsAWhole)
{
    const Rect lower_right = {1, 1, 2, 1}; // e f
    EXPECT_EQ(Orientation().place(lower_right, STORED), lower_right);
    EXPECT_EQ(Orientation::clockwise(90).place(lower_right, {2, 3}), (Rect{0, 1, 1, 2}));
    EXPECT_EQ(Orientation::clockwise(180).place(lower_right, STORED), (Rect{0, 0, 2, 1}));
    EXPECT_EQ(Orientation::clockwise(270).place(lower_right, {2, 3}), (Rect{1, 0, 1, 2}));
    EXPECT_EQ(MIRRORED.place(lower_right, STORED), (Rect{0, 1, 2, 1}));
}

TEST(OrientationTest, AWalkReadsThePictureAsItIsLaid)
{
    for (const auto &[orientation, expected] : cases()) {
        const Size laid = orientation.of(STORED);
        const Orientation::Walk walk = orientation.walk(laid);
        std::string found;
        for (int y = 0; y < laid.height; ++y) {
            for (int x = 0; x < laid.width; ++x)
                found += PIXELS[walk.first + y * walk.down + x * walk.right];
        }
        EXPECT_EQ(found, expected);
    }
}

} // namespace
} // namespace platform
