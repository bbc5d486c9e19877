// When an interlaced film goes on with one picture a frame, and when with two again.

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

    int fail() { return second(50) + second(50) + second(50); }

    /** Pictures in time, one a frame, until two are tried. */
    int pictures_until_tried()
    {
        constexpr int ENOUGH = 1000000;
        int pictures = 0;
        while (pace_.is_halved() && pictures < ENOUGH) {
            pace_.on_picture(-5ms);
            pictures++;
        }
        return pictures;
    }

    FieldPace pace_;
};

TEST_F(FieldPaceTest, PicturesInTimeAreAllShown)
{
    for (int i = 0; i < 100; i++)
        EXPECT_EQ(second(50, 10ms), 0) << i;
    EXPECT_FALSE(pace_.is_halved());
}

TEST_F(FieldPaceTest, ThreeLateSecondsInARowAreDecisive)
{
    EXPECT_EQ(second(11), 0);
    EXPECT_EQ(second(11), 0);
    EXPECT_FALSE(pace_.is_halved());
    EXPECT_EQ(second(11), 1);
    EXPECT_TRUE(pace_.is_halved());
}

TEST_F(FieldPaceTest, BothFieldsAreTriedAgainEachTimeAfterTwiceAsLong)
{
    int told = fail();
    for (const int pictures : {750, 1500, 3000, 6000, 12000, 24000, 48000, 90000, 90000}) {
        EXPECT_EQ(pictures_until_tried(), pictures);
        told += fail();
        EXPECT_TRUE(pace_.is_halved());
    }
    EXPECT_EQ(told, 1);
}

TEST_F(FieldPaceTest, APaceThatWasKeptForLongIsSoonTriedAgain)
{
    fail();
    pictures_until_tried();
    for (int i = 0; i < 140; i++)
        second(0);
    fail();
    EXPECT_EQ(pictures_until_tried(), 1500);
    for (int i = 0; i < 300; i++)
        second(0);
    fail();
    EXPECT_EQ(pictures_until_tried(), 750);
}

TEST_F(FieldPaceTest, AMachineThatIsTooSlowForOnePictureAFrameDoesNotTryTwo)
{
    fail();
    for (int i = 0; i < 100; i++) {
        second(11);
        EXPECT_TRUE(pace_.is_halved()) << i;
    }
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
