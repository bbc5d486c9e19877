// When an interlaced film goes on with one picture a frame.

#include <gtest/gtest.h>

#include "media_player/field_pace.h"

namespace {

using namespace std::chrono_literals;
using platform::FieldPace;

class FieldPaceTest : public testing::Test {
  protected:
    /** A second of pictures, some of which come late. @return how often it has decided */
    int second(int late_ones, std::chrono::milliseconds late = 11ms)
    {
        int decided = 0;
        for (int i = 0; i < 50; i++)
            decided += pace_.on_picture(i < late_ones ? late : -5ms) ? 1 : 0;
        return decided;
    }

    FieldPace pace_;
};

TEST_F(FieldPaceTest, PicturesInTimeAreAllShown)
{
    for (int i = 0; i < 100; i++)
        EXPECT_EQ(second(50, 10ms), 0) << i;
    EXPECT_FALSE(pace_.is_halved());
}

TEST_F(FieldPaceTest, ThreeLateSecondsInARowAreDecisiveOnceAndForAll)
{
    EXPECT_EQ(second(11), 0);
    EXPECT_EQ(second(11), 0);
    EXPECT_FALSE(pace_.is_halved());
    EXPECT_EQ(second(11), 1);
    EXPECT_TRUE(pace_.is_halved());

    for (int i = 0; i < 100; i++)
        EXPECT_EQ(second(i % 2 ? 50 : 0), 0) << i;
    EXPECT_TRUE(pace_.is_halved());
}

TEST_F(FieldPaceTest, AFewLateOnesInEachSecondAreBorne)
{
    for (int i = 0; i < 100; i++)
        second(10, 1h);
    EXPECT_FALSE(pace_.is_halved());
}

TEST_F(FieldPaceTest, BurstsOfTwoSecondsAreForgotten)
{
    for (int i = 0; i < 100; i++) {
        second(50);
        second(50);
        second(0);
    }
    EXPECT_FALSE(pace_.is_halved());
}

} // namespace
