// How a frame is laid: what a stream's tag means, and what the panel makes of it; and every pixel
// of frames that are painted, against the same frame converted by itself.

#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "colour/enlarger.h"
#include "media_player/colour_tags.h"
#include "media_player/frame_painter.h"
#include "video_plane/plane_drawing.h"

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

/** A frame of random numbers as a decoder may give it: rows and planes with gaps behind them. */
class Frame {
  public:
    Frame(GstVideoFormat format, const Size &size)
    {
        gst_init(nullptr, nullptr);
        gst_video_info_set_format(&info_, format, static_cast<guint>(size.width),
                                  static_cast<guint>(size.height));
        buffer_.reset(make_buffer(size));
    }

    const GstVideoInfo &info() const { return info_; }
    GstVideoInfo &info() { return info_; }
    GstBuffer *buffer() { return buffer_.get(); }

    /** Its memory is told to hold more than the frame, as that of decoders does. */
    void have_rows_below(int rows)
    {
        GstVideoMeta *meta = gst_buffer_get_video_meta(buffer_.get());
        meta->height += static_cast<guint>(rows);
    }

    /** The frame as it is to be understood, whatever its buffer says. */
    YuvImage image() const
    {
        YuvImage image = {
            YuvFormat::I420,
            {GST_VIDEO_INFO_WIDTH(&info_), GST_VIDEO_INFO_HEIGHT(&info_)},
            {bytes_.data() + offsets_[0], bytes_.data() + offsets_[1], bytes_.data() + offsets_[2]},
            {strides_[0], strides_[1], strides_[2]}};
        switch (GST_VIDEO_INFO_FORMAT(&info_)) {
        case GST_VIDEO_FORMAT_YV12:
            std::swap(image.planes[1], image.planes[2]);
            break;
        case GST_VIDEO_FORMAT_NV12:
            image.format = YuvFormat::NV12;
            break;
        case GST_VIDEO_FORMAT_I420_10LE:
            image.format = YuvFormat::I420_10;
            break;
        case GST_VIDEO_FORMAT_P010_10LE:
            image.format = YuvFormat::P010;
            break;
        default:
            break;
        }
        return image;
    }

  private:
    static constexpr int GAP = 6;        // bytes behind a row
    static constexpr int ROWS_BELOW = 8; // of each plane

    GstBuffer *make_buffer(const Size &size)
    {
        gsize end = 0;
        for (guint plane = 0; plane < GST_VIDEO_INFO_N_PLANES(&info_); ++plane) {
            offsets_[plane] = end;
            strides_[plane] = GST_VIDEO_INFO_PLANE_STRIDE(&info_, plane) + GAP;
            const int rows = (plane == 0 ? size.height : (size.height + 1) / 2) + ROWS_BELOW;
            end += static_cast<gsize>(strides_[plane]) * static_cast<gsize>(rows);
        }
        std::mt19937 random(5);
        bytes_.resize(end);
        const bool wide = is_wide(image().format);
        const int shift = image().format == YuvFormat::P010 ? 6 : 0;
        for (size_t i = 0; i < end; i += wide ? 2 : 1) {
            const auto number = (random() & (wide ? 0x3ff : 0xff)) << shift;
            bytes_[i] = static_cast<uint8_t>(number);
            if (wide)
                bytes_[i + 1] = static_cast<uint8_t>(number >> 8);
        }
        GstBuffer *buffer =
            gst_buffer_new_wrapped_full(GST_MEMORY_FLAG_READONLY, bytes_.data(), bytes_.size(), 0,
                                        bytes_.size(), nullptr, nullptr);
        gst_buffer_add_video_meta_full(
            buffer, GST_VIDEO_FRAME_FLAG_NONE, GST_VIDEO_INFO_FORMAT(&info_),
            static_cast<guint>(size.width), static_cast<guint>(size.height),
            GST_VIDEO_INFO_N_PLANES(&info_), offsets_, strides_);
        return buffer;
    }

    GstVideoInfo info_;
    gsize offsets_[GST_VIDEO_MAX_PLANES] = {};
    gint strides_[GST_VIDEO_MAX_PLANES] = {};
    std::vector<uint8_t> bytes_;
    BufferPtr buffer_;
};

// Of films of high dynamic range; neither is the usual.
constexpr double PEAK = 800;
constexpr double WHITE = 400;

constexpr GstVideoOrientationMethod ALL_TAGS[] = {
    GST_VIDEO_ORIENTATION_IDENTITY, GST_VIDEO_ORIENTATION_90R,   GST_VIDEO_ORIENTATION_180,
    GST_VIDEO_ORIENTATION_90L,      GST_VIDEO_ORIENTATION_HORIZ, GST_VIDEO_ORIENTATION_VERT,
    GST_VIDEO_ORIENTATION_UL_LR,    GST_VIDEO_ORIENTATION_UR_LL};

/** The pixels of a film's frame, upright. */
std::vector<uint32_t> converted(const Frame &frame)
{
    const YuvImage image = frame.image();
    std::vector<uint32_t> pixels(static_cast<size_t>(image.size.area()));
    ColourConverter(colour_space_of(frame.info().colorimetry, PEAK), depth_of(image.format), WHITE)
        .convert(image, 0, image.size.height, pixels.data(), image.size.width);
    return pixels;
}

/** What a frame is to be in an area of its own size or a larger one: upright, turned, enlarged. */
std::vector<uint32_t> expected(const Frame &frame, const Orientation &orientation, const Size &size)
{
    const std::vector<uint32_t> upright = converted(frame);
    const Size from = frame.image().size;
    const Size laid = orientation.of(from);
    std::vector<uint32_t> turned;
    for (int y = 0; y < laid.height; ++y) {
        for (int x = 0; x < laid.width; ++x) {
            const Point at = orientation.origin({x, y}, laid);
            turned.push_back(upright[static_cast<size_t>(at.y) * static_cast<size_t>(from.width) +
                                     static_cast<size_t>(at.x)]);
        }
    }
    if (size == laid)
        return turned;
    std::vector<uint32_t> larger(static_cast<size_t>(size.area()));
    enlarge({turned.data(), laid.width, laid}, {larger.data(), size.width, size}, 0, size.height);
    return larger;
}

/** Paints a frame so many times as large into a picture, and looks at each pixel of that. */
void expect_exact(Frame &frame, GstVideoOrientationMethod tag, int times = 1)
{
    const Orientation orientation = orientation_of(tag);
    const Size laid = orientation.of(frame.image().size);
    DisplayView view;
    view.area = {5, 3, laid.width * times, laid.height * times};
    const auto plane = VideoPlane::offscreen(view.area.width + 12, view.area.height + 7);
    const PlaneBufferPtr picture = plane->acquire();
    FramePainter painter(WHITE);
    painter.set_format(frame.info(), PEAK);
    ASSERT_TRUE(painter.paint(frame.buffer(), orientation, view, *picture));

    const std::vector<uint32_t> pixels = expected(frame, orientation, view.area.size());
    for (int y = 0; y < picture->height(); ++y) {
        const uint32_t *row = pixels_of(*picture).row(y);
        for (int x = 0; x < picture->width(); ++x) {
            const Point place = {x - view.area.x, y - view.area.y};
            const bool inside = view.area.covers({x, y, 1, 1});
            ASSERT_EQ(row[x], inside ? pixels[static_cast<size_t>(place.y * view.area.width) +
                                              static_cast<size_t>(place.x)]
                                     : 0xff000000)
                << "at " << x << ", " << y << " of " << laid.width << "x" << laid.height << ", tag "
                << tag;
        }
    }
}

TEST(FramePainter, PaintsEveryPixelOfEveryFormatAndOrientation)
{
    for (const GstVideoFormat format :
         {GST_VIDEO_FORMAT_I420, GST_VIDEO_FORMAT_YV12, GST_VIDEO_FORMAT_NV12,
          GST_VIDEO_FORMAT_I420_10LE, GST_VIDEO_FORMAT_P010_10LE}) {
        SCOPED_TRACE(gst_video_format_to_string(format));
        for (const Size &size : {Size{37, 51}, Size{66, 20}}) {
            Frame frame(format, size);
            for (const GstVideoOrientationMethod tag : ALL_TAGS)
                expect_exact(frame, tag);
        }
    }
}

// Mapping light is so much work that a frame of this size is divided among the cores.
TEST(FramePainter, PaintsEveryPixelOfAFrameThatIsDivided)
{
    Frame frame(GST_VIDEO_FORMAT_I420_10LE, {1025, 701});
    gst_video_colorimetry_from_string(&frame.info().colorimetry, GST_VIDEO_COLORIMETRY_BT2100_PQ);
    for (const GstVideoOrientationMethod tag :
         {GST_VIDEO_ORIENTATION_IDENTITY, GST_VIDEO_ORIENTATION_180, GST_VIDEO_ORIENTATION_90R})
        expect_exact(frame, tag);
}

TEST(FramePainter, EnlargesAFilmsPixelsAfterItsLightHasBeenMapped)
{
    Frame frame(GST_VIDEO_FORMAT_P010_10LE, {47, 32});
    gst_video_colorimetry_from_string(&frame.info().colorimetry, GST_VIDEO_COLORIMETRY_BT2100_HLG);
    for (const GstVideoOrientationMethod tag : ALL_TAGS)
        expect_exact(frame, tag, 2);
}

TEST(FramePainter, LeavesOutWhatADecoderHasBelowAFrame)
{
    Frame frame(GST_VIDEO_FORMAT_NV12, {32, 18});
    frame.have_rows_below(6);
    expect_exact(frame, GST_VIDEO_ORIENTATION_IDENTITY);
    expect_exact(frame, GST_VIDEO_ORIENTATION_90R);
}

} // namespace
} // namespace platform
