// How a frame is laid: what a stream's tag means, and what the panel makes of it.

#include <string>

#include <gtest/gtest.h>

#include "media_player/frame_painter.h"
#include "video_plane/video_plane.h"

namespace platform {
namespace {

GstVideoInfo frame_of(int width, int height)
{
    GstVideoInfo info;
    gst_video_info_set_format(&info, GST_VIDEO_FORMAT_I420, static_cast<guint>(width),
                              static_cast<guint>(height));
    return info;
}

TEST(FramePainter, EveryTagLaysThePictureAsItIsNamed)
{
    // Of three columns and two rows:  a b c
    //                                 d e f
    const std::string pixels = "abcdef";
    const std::pair<GstVideoOrientationMethod, const char *> cases[] = {
        {GST_VIDEO_ORIENTATION_IDENTITY, "abcdef"}, {GST_VIDEO_ORIENTATION_90R, "daebfc"},
        {GST_VIDEO_ORIENTATION_180, "fedcba"},      {GST_VIDEO_ORIENTATION_90L, "cfbead"},
        {GST_VIDEO_ORIENTATION_HORIZ, "cbafed"},    {GST_VIDEO_ORIENTATION_VERT, "defabc"},
        {GST_VIDEO_ORIENTATION_UL_LR, "adbecf"},    {GST_VIDEO_ORIENTATION_UR_LL, "fcebda"},
    };
    for (const auto &[tag, expected] : cases) {
        const Orientation orientation = orientation_of(tag);
        const Size laid = orientation.of(Size{3, 2});
        const Orientation::Walk walk = orientation.walk(laid);
        std::string seen;
        for (int y = 0; y < laid.height; y++)
            for (int x = 0; x < laid.width; x++)
                seen += pixels[static_cast<size_t>(walk.first + y * walk.down + x * walk.right)];
        EXPECT_EQ(seen, expected) << "tag " << tag;
    }
}

TEST(FramePainter, OnlyAFrameHigherThanWideStandsUprightOnATurnedPanel)
{
    DisplayView view;
    view.rotation = 180;
    view.panel_angle = 90;
    EXPECT_EQ(viewer_orientation(frame_of(90, 91), {}, view), Orientation::clockwise(270));
    EXPECT_EQ(viewer_orientation(frame_of(90, 90), {}, view), Orientation::clockwise(180));
}

TEST(FramePainter, AnAreaThatThePictureDoesNotHoldIsNotPainted)
{
    const auto plane = VideoPlane::offscreen(32, 18);
    const PlaneBufferPtr picture = plane->acquire();
    DisplayView view;
    view.area = {0, 0, 64, 36};
    FramePainter painter(REFERENCE_WHITE);
    painter.set_format(frame_of(32, 18), 0);
    EXPECT_FALSE(painter.paint(nullptr, {}, view, *picture));
}

} // namespace
} // namespace platform
