// A plane on a panel whose size changes, or whose pixels are finer than the window's units.

#include <algorithm>

#include "panel/panel_model.h"
#include "video_plane/video_plane.h"
#include "video_plane/weston.h"

namespace platform {
namespace {

using platform_test::SCREEN_HEIGHT;
using platform_test::SCREEN_WIDTH;

constexpr uint32_t LEFT = 0xd01030;
constexpr uint32_t RIGHT = 0x20c040;

class PlaneSizeTest : public platform_test::WestonTest {
  protected:
    void TearDown() override
    {
        WestonTest::TearDown();
        PanelModel::get().set_size(0, 0);
    }

    /** A picture of two halves, so that one that is cut off is told from one that is shrunk. */
    static PlaneBufferPtr two_halves(VideoPlane &plane)
    {
        PlaneBufferPtr picture = plane.acquire();
        if (!picture)
            return nullptr;
        auto *pixel = reinterpret_cast<uint32_t *>(picture->pixels());
        for (int y = 0; y < picture->height(); ++y, pixel += picture->width()) {
            const int middle = picture->width() / 2;
            std::fill_n(pixel, middle, 0xff000000 | LEFT);
            std::fill_n(pixel + middle, picture->width() - middle, 0xff000000 | RIGHT);
        }
        return picture;
    }

    /** Waits until the two halves cover exactly this part of the screen, from its top left. */
    void expect_covered(int width, int height)
    {
        EXPECT_TRUE(run([&] {
            return colour_at(3, height - 4) == LEFT && colour_at(width / 2 - 4, 3) == LEFT &&
                   colour_at(width / 2 + 4, height - 4) == RIGHT &&
                   colour_at(width - 4, 3) == RIGHT;
        })) << "left "
            << std::hex << colour_at(width / 2 - 4, 3) << ", right " << colour_at(width - 4, 3);
    }
};

TEST_F(PlaneSizeTest, PanelThatBecameLargerIsCoveredAtOnceAndThenPixelForPixel)
{
    PanelModel &panel = PanelModel::get();
    panel.set_size(SCREEN_WIDTH / 2, SCREEN_HEIGHT / 2);
    const auto plane = VideoPlane::for_window(window_);
    ASSERT_TRUE(plane);
    ASSERT_TRUE(plane->present(two_halves(*plane)));
    expect_covered(SCREEN_WIDTH / 2, SCREEN_HEIGHT / 2);

    const PlaneBufferPtr drawn_before = two_halves(*plane);
    panel.set_size(SCREEN_WIDTH, SCREEN_HEIGHT);
    expect_covered(SCREEN_WIDTH, SCREEN_HEIGHT);
    EXPECT_EQ(plane->width(), SCREEN_WIDTH);
    EXPECT_EQ(plane->height(), SCREEN_HEIGHT);

    ASSERT_TRUE(plane->present(drawn_before)) << "a picture that was on its way";
    expect_covered(SCREEN_WIDTH, SCREEN_HEIGHT);

    const PlaneBufferPtr next = two_halves(*plane);
    ASSERT_TRUE(next);
    EXPECT_EQ(next->width(), SCREEN_WIDTH);
    EXPECT_EQ(next->height(), SCREEN_HEIGHT);
    ASSERT_TRUE(plane->present(next));
    expect_covered(SCREEN_WIDTH, SCREEN_HEIGHT);
}

TEST_F(PlaneSizeTest, PictureOfTheFormerSizeThatIsShownAgainIsNotWrittenBeyondItsEnd)
{
    PanelModel &panel = PanelModel::get();
    panel.set_size(SCREEN_WIDTH, SCREEN_HEIGHT);
    const auto plane = VideoPlane::for_window(window_);
    ASSERT_TRUE(plane);
    const PlaneBufferPtr first = two_halves(*plane);
    const PlaneBufferPtr second = two_halves(*plane);
    ASSERT_TRUE(plane->present(first));
    ASSERT_TRUE(plane->present(second));
    panel.set_size(SCREEN_WIDTH / 4, SCREEN_HEIGHT / 4);
    // Neither has been given back by the compositor for sure, so it may have to be copied.
    EXPECT_TRUE(plane->present(first));
    EXPECT_TRUE(plane->present(second));
    expect_covered(SCREEN_WIDTH / 4, SCREEN_HEIGHT / 4);
}

TEST_F(PlaneSizeTest, FinerPanelGetsPicturesOfItsOwnPixels)
{
    PanelModel::get().set_size(SCREEN_WIDTH, SCREEN_HEIGHT, 2.0);
    const auto plane = VideoPlane::for_window(window_);
    ASSERT_TRUE(plane);
    const PlaneBufferPtr picture = two_halves(*plane);
    ASSERT_TRUE(picture);
    EXPECT_EQ(picture->width(), 2 * SCREEN_WIDTH);
    EXPECT_EQ(picture->height(), 2 * SCREEN_HEIGHT);
    ASSERT_TRUE(plane->present(picture));
    expect_covered(SCREEN_WIDTH, SCREEN_HEIGHT);
}

} // namespace
} // namespace platform
