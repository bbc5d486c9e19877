// Subtitles: drawn into the picture, told when they appear, and never in the way of the video.

#include <gmock/gmock.h>

#include "panel/panel_model.h"
#include "player_fixture.h"

using testing::ElementsAre;

namespace player_test {
namespace {

class Subtitles : public PlayerTest {
  protected:
    void SetUp() override
    {
        plane_width_ = 640;
        plane_height_ = 360;
        PlayerTest::SetUp();
    }

    /**
     * How many pixels are another colour than the clip has there, in a part of the picture. Where
     * its halves meet they are mixed.
     */
    int strange_pixels(int x, int y, int width, int height) const
    {
        const Picture shown = picture();
        int strange = 0;
        for (int row = y; row < y + height; row++)
            for (int column = x; column < x + width; column++)
                strange +=
                    std::abs(column - plane_width_ / 2) > 1 && shown.colour(column, row) == 'k';
        return strange;
    }

    std::string subtitle() const
    {
        write_file(path("a.srt"), "1\n00:00:00,300 --> 00:00:00,900\nHello shop\n\n"
                                  "2\n00:00:01,200 --> 00:00:01,700\nGoodbye\n");
        return path("a.srt");
    }
};

TEST_F(Subtitles, EachTextIsToldOnceWhenItAppears)
{
    player_->set_subtitle_path(subtitle());
    ASSERT_TRUE(playing(clip("a.mp4")));

    ASSERT_TRUE(wait_for_event("completed"));

    EXPECT_THAT(events(), ElementsAre("prepared", "subtitle 600 Hello shop", "subtitle 500 Goodbye",
                                      "completed"));
}

TEST_F(Subtitles, ATextIsDrawnAtTheBottomWhileItLasts)
{
    player_->set_subtitle_path(subtitle());
    ASSERT_TRUE(playing(clip("a.mp4")));
    EXPECT_EQ(strange_pixels(100, 240, 440, 110), 0);

    EXPECT_TRUE(wait_for([this] { return strange_pixels(100, 240, 440, 110) > 100; }));
    EXPECT_EQ(strange_pixels(100, 10, 440, 160), 0);

    EXPECT_TRUE(
        wait_for([this] { return position() > 900 && strange_pixels(100, 240, 440, 110) == 0; }));
    EXPECT_TRUE(player_->status().has_subtitle);
}

TEST_F(Subtitles, ATextStandsUprightOnATurnedPanel)
{
    platform::PanelModel::get().set_first_angle(90);
    player_->set_subtitle_path(subtitle());
    ASSERT_TRUE(playing(clip("a.mp4")));

    // The viewer's bottom is the panel's right side.
    EXPECT_EQ(strange_pixels(500, 20, 130, 150), 0);
    EXPECT_TRUE(wait_for([this] { return strange_pixels(500, 20, 130, 150) > 50; }));
    EXPECT_EQ(strange_pixels(20, 20, 260, 150), 0);
}

TEST_F(Subtitles, AMissingOrBrokenFileIsNoReasonNotToPlay)
{
    const std::string file = clip("a.mp4");
    write_file(path("broken.srt"), std::string(1000, '\1'));
    write_file(path("empty.srt"), "");
    for (const char *name : {"missing.srt", "broken.srt", "empty.srt"}) {
        SCOPED_TRACE(name);
        player_->unprepare();
        player_->set_subtitle_path(path(name));
        EXPECT_TRUE(playing(file));
        EXPECT_FALSE(player_->status().has_subtitle);
    }
}

TEST_F(Subtitles, TheNextFileDoesNotInheritThem)
{
    const std::string file = clip("a.mp4");
    player_->set_subtitle_path(subtitle());
    ASSERT_TRUE(playing(file));
    player_->unprepare();

    ASSERT_TRUE(playing(file));

    EXPECT_FALSE(player_->status().has_subtitle);
}

} // namespace
} // namespace player_test
