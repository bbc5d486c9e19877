// What is seen: proportions, turns, colours, and when.

#include <atomic>

#include <gmock/gmock.h>

#include "panel/panel_model.h"
#include "player_fixture.h"

namespace player_test {
namespace {

/** The usual clip with frames of another size. */
Clip clip_of_size(int width, int height)
{
    Clip facts;
    facts.width = width;
    facts.height = height;
    return facts;
}

/** A plane whose window has gone, and that counts the pictures which it is asked for. */
class ClosedPlane : public platform::VideoPlane {
  public:
    int acquired() const { return acquired_; }
    int width() const override { return behind_->width(); }
    int height() const override { return behind_->height(); }
    platform::PlaneBufferPtr acquire() override
    {
        ++acquired_;
        return behind_->acquire();
    }
    bool present(const platform::PlaneBufferPtr &) override { return false; }

  private:
    std::shared_ptr<VideoPlane> behind_ = offscreen(64, 36);
    std::atomic<int> acquired_{0};
};

// The clip's quarters from the top left clockwise are red, green, blue and white: "rgbw".
class PictureTest : public PlayerTest {
  protected:
    /** Shows the first frame of a clip with the plane's present settings. */
    testing::AssertionResult show(const std::string &file)
    {
        player_->unprepare();
        if (const auto result = playing(file); !result)
            return result;
        if (const int result = player_->pause())
            return testing::AssertionFailure() << "pausing answers " << result;
        return testing::AssertionSuccess();
    }

    void use_plane(int width, int height)
    {
        plane_width_ = width;
        plane_height_ = height;
        make_player();
    }

    /** Whether a rectangle is all of one colour. */
    static bool is_filled(const Picture &picture, char colour, int x, int y, int width, int height)
    {
        for (int row = y; row < y + height; row++)
            for (int column = x; column < x + width; column++)
                if (picture.colour(column, row) != colour)
                    return false;
        return true;
    }
};

TEST_F(PictureTest, AFrameOfThePanelsProportionsFillsIt)
{
    ASSERT_TRUE(show(clip("a.mp4")));

    EXPECT_EQ(picture().quarters(), "rgbw");
    EXPECT_EQ(picture().colour(2, 2), 'r');
    EXPECT_EQ(picture().colour(317, 177), 'b');
}

TEST_F(PictureTest, EachTurnIsClockwise)
{
    const std::string file = clip("a.mp4");
    const std::pair<int, const char *> turns[] = {
        {0, "rgbw"}, {90, "wrgb"}, {180, "bwrg"}, {270, "gbwr"}};
    for (const auto &[degrees, expected] : turns) {
        SCOPED_TRACE(degrees);
        player_->set_rotation(degrees);
        ASSERT_TRUE(show(file));
        // A quarter turn of 16:9 on 16:9 is 101 wide, in the middle.
        const bool upright = degrees % 180 == 0;
        EXPECT_EQ(upright ? picture().quarters() : picture().quarters(109, 0, 102, 180), expected);
    }
}

TEST_F(PictureTest, AQuarterTurnLeavesBlackAtTheSides)
{
    player_->set_rotation(90);
    ASSERT_TRUE(show(clip("a.mp4")));

    const Picture shown = picture();
    EXPECT_TRUE(is_filled(shown, 'k', 0, 0, 108, 180));
    EXPECT_TRUE(is_filled(shown, 'k', 212, 0, 108, 180));
}

TEST_F(PictureTest, ATurnSetWhenPreparedHoldsFromTheFirstFrame)
{
    ASSERT_TRUE(prepared(clip("a.mp4")));
    player_->set_rotation(180);
    player_->start();
    ASSERT_TRUE(wait_for([this] { return shown() == 1; }));

    EXPECT_EQ(picture().quarters(), "bwrg");
}

TEST_F(PictureTest, ATurnWhilePausedIsSeenAtOnce)
{
    ASSERT_TRUE(show(clip("a.mp4")));

    player_->set_rotation(180);

    EXPECT_TRUE(wait_for([this] { return picture().quarters() == "bwrg"; }));
}

TEST_F(PictureTest, AWideFrameOnATurnedPanelIsTurnedAsTold)
{
    platform::PanelModel::get().set_first_angle(90);
    ASSERT_TRUE(show(clip("a.mp4")));
    EXPECT_EQ(picture().quarters(), "rgbw");

    player_->set_rotation(180);

    EXPECT_TRUE(wait_for([this] { return picture().quarters() == "bwrg"; }));
}

TEST_F(PictureTest, AHighFrameOnATurnedPanelStandsUprightForTheViewer)
{
    const Clip high = clip_of_size(90, 160);
    const std::string file = clip("a.mp4", high);
    // On a panel turned clockwise the picture has to be turned back by as much.
    const std::pair<int, const char *> angles[] = {{90, "gbwr"}, {270, "wrgb"}};
    for (const auto &[angle, expected] : angles) {
        SCOPED_TRACE(angle);
        platform::PanelModel::get().set_first_angle(angle);
        ASSERT_TRUE(show(file));
        EXPECT_EQ(picture().quarters(), expected);
    }
}

TEST_F(PictureTest, AHighFrameOnAPanelThatIsNotTurnedStandsBetweenBars)
{
    const Clip high = clip_of_size(90, 160);
    ASSERT_TRUE(show(clip("a.mp4", high)));

    EXPECT_EQ(picture().quarters(110, 0, 101, 180), "rgbw");
    EXPECT_TRUE(is_filled(picture(), 'k', 0, 0, 108, 180));
}

TEST_F(PictureTest, OtherProportionsGetBars)
{
    const Clip square_like = clip_of_size(160, 120);
    ASSERT_TRUE(show(clip("a.mp4", square_like)));
    EXPECT_EQ(picture().quarters(40, 0, 240, 180), "rgbw");
    EXPECT_TRUE(is_filled(picture(), 'k', 0, 0, 39, 180));

    const Clip cinema = clip_of_size(168, 72);
    ASSERT_TRUE(show(clip("b.mp4", cinema)));
    EXPECT_EQ(picture().quarters(0, 22, 320, 137), "rgbw");
    EXPECT_TRUE(is_filled(picture(), 'k', 0, 0, 320, 20));
}

TEST_F(PictureTest, PixelsThatAreNotSquareAreShownInTheirProportions)
{
    // 128 by 144 of 2:1 pixels is 256 by 144, which is 16:9.
    Clip anamorphic = clip_of_size(128, 144);
    anamorphic.pixel_width = 2;
    ASSERT_TRUE(show(clip("a.mp4", anamorphic)));

    EXPECT_EQ(picture().colour(3, 3), 'r');
    EXPECT_EQ(picture().colour(316, 176), 'b');
}

TEST_F(PictureTest, AFrameThatIsHighOnlyInItsPixelsCountsAsWide)
{
    Clip anamorphic = clip_of_size(80, 96);
    anamorphic.pixel_width = 2;
    platform::PanelModel::get().set_first_angle(90);
    ASSERT_TRUE(show(clip("a.mp4", anamorphic)));

    EXPECT_EQ(picture().quarters(20, 0, 280, 180), "rgbw");
}

TEST_F(PictureTest, AFilmFromAPhoneIsTurnedAsItsTagSays)
{
    Clip phone;
    phone.turn = 90;
    phone.sound = false;
    ASSERT_TRUE(show(clip("a.mp4", phone)));

    EXPECT_EQ(picture().quarters(109, 0, 102, 180), "wrgb");
}

TEST_F(PictureTest, LargeFramesAndDeepColoursAreBroughtDownToThePanel)
{
    Clip large = clip_of_size(3840, 2160);
    large.frames = 3;
    large.sound = false;
    ASSERT_TRUE(show(clip("a.mkv", large)));
    EXPECT_EQ(picture().quarters(), "rgbw");

    Clip deep;
    deep.format = "I420_10LE";
    ASSERT_TRUE(show(clip("b.mkv", deep)));
    EXPECT_EQ(picture().quarters(), "rgbw");
}

TEST_F(PictureTest, InterlacedFilmsHaveTheirColours)
{
    Clip interlaced;
    interlaced.height = 96;
    interlaced.filter = "interlace field-pattern=1:1";
    interlaced.encoder_options = "interlaced=true";
    ASSERT_TRUE(playing(clip("a.mkv", interlaced)));

    ASSERT_TRUE(wait_for_event("completed"));

    EXPECT_EQ(picture().quarters(10, 0, 300, 180), "rgbw");
}

TEST_F(PictureTest, APictureIsConfinedToARectangle)
{
    player_->set_area({160, 90, 160, 90});
    ASSERT_TRUE(show(clip("a.mp4")));

    EXPECT_EQ(picture().quarters(160, 90, 160, 90), "rgbw");
    EXPECT_TRUE(is_filled(picture(), 'k', 0, 0, 320, 89));
    EXPECT_TRUE(is_filled(picture(), 'k', 0, 90, 159, 90));
}

TEST_F(PictureTest, TheSizeOfATurnedWindowMeansTheWholePanel)
{
    platform::PanelModel::get().set_first_angle(90);
    player_->set_area({0, 0, 180, 320});
    ASSERT_TRUE(show(clip("a.mp4")));

    EXPECT_EQ(picture().colour(2, 2), 'r');
    EXPECT_EQ(picture().colour(317, 177), 'b');
}

TEST_F(PictureTest, ARectangleOutsideThePanelShowsBlack)
{
    player_->set_area({5000, 5000, 100, 100});
    ASSERT_TRUE(show(clip("a.mp4")));

    EXPECT_TRUE(is_filled(picture(), 'k', 0, 0, 320, 180));
}

TEST_F(PictureTest, OddSizesOfPanelAndFrameFit)
{
    use_plane(333, 187);
    const Clip odd = clip_of_size(158, 94);
    for (const int degrees : {0, 90, 180, 270}) {
        SCOPED_TRACE(degrees);
        player_->set_rotation(degrees);
        ASSERT_TRUE(show(clip("a.mp4", odd)));
        EXPECT_NE(picture().colour(130, 40), 'k');
    }
}

TEST_F(PictureTest, TheLastFrameStaysUntilTheNextFilesFirst)
{
    Clip turned;
    turned.turn = 180;
    turned.sound = false;
    const std::string next = clip("b.mp4", turned);
    ASSERT_TRUE(playing(clip("a.mp4")));
    ASSERT_TRUE(wait_for_event("completed"));
    const uint64_t before = shown();

    player_->unprepare();
    ASSERT_TRUE(prepared(next));
    EXPECT_EQ(shown(), before);
    EXPECT_EQ(picture().quarters(), "rgbw");
    player_->start();

    ASSERT_TRUE(wait_for([&] { return shown() > before; }));
    EXPECT_EQ(picture().quarters(), "bwrg");
}

TEST_F(PictureTest, AFileThatWaitsToBeStartedTakesNoMemoryOfThePlane)
{
    const auto plane = std::make_shared<ClosedPlane>();
    player_->set_plane(plane);
    ASSERT_TRUE(prepared(clip("a.mp4")));
    EXPECT_EQ(plane->acquired(), 0);

    player_->start();

    EXPECT_TRUE(wait_for([&] { return plane->acquired() > 0; }));
}

TEST_F(PictureTest, APlaneThatIsGoneIsAnInterruption)
{
    player_->set_plane(std::make_shared<ClosedPlane>());
    ASSERT_TRUE(prepared(clip("a.mp4")));
    testing::internal::CaptureStderr();

    player_->start();

    EXPECT_TRUE(wait_for_event("interrupted 4"));
    EXPECT_THAT(testing::internal::GetCapturedStderr(),
                testing::HasSubstr("a.mp4 was interrupted: the video plane is gone"));
    EXPECT_EQ(player_->state(), PLAYER_STATE_IDLE);
}

} // namespace
} // namespace player_test
