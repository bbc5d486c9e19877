#include "media_player/frame_painter.h"

#include <algorithm>

#include "media_player/colour_tags.h"
#include "video_plane/plane_drawing.h"

namespace platform {
namespace {

constexpr int PIXEL_BYTES = 4;

constexpr Orientation MIRRORED = {false, true, false};

// The proportions a frame is shown with, as whole numbers that are good for products of 64 bits.
struct Proportions {
    int64_t width;
    int64_t height;
};

Proportions proportions_of(const GstVideoInfo &info, const Orientation &orientation)
{
    const int64_t pixel_width = std::max(GST_VIDEO_INFO_PAR_N(&info), 1);
    const int64_t pixel_height = std::max(GST_VIDEO_INFO_PAR_D(&info), 1);
    Proportions shown = {GST_VIDEO_INFO_WIDTH(&info) * pixel_width,
                         GST_VIDEO_INFO_HEIGHT(&info) * pixel_height};
    if (orientation.transposed)
        std::swap(shown.width, shown.height);
    return shown;
}

/** What mapping light takes, beside other conversions. */
constexpr int64_t COST_OF_MAPPING = 6;
/** Pixels, of other conversions, for which waking another thread is worth it. */
constexpr int64_t WORTH_A_BAND = int64_t{1920} * 1080 * 2;

/** A turned picture is converted this many rows at a time, which caches hold until they are laid.
 */
constexpr int TURNED_ROWS = 16;

/** Where an area of a picture begins. */
uint8_t *pixels_of(PlaneBuffer &picture, const Rect &area)
{
    return picture.pixels() + static_cast<ptrdiff_t>(area.y) * picture.stride() +
           static_cast<ptrdiff_t>(area.x) * PIXEL_BYTES;
}

/** A frame's memory, to be read. */
class MappedFrame {
  public:
    MappedFrame(const GstVideoInfo &info, GstBuffer *buffer)
        : is_mapped_(gst_video_frame_map(&frame_, &info, buffer, GST_MAP_READ))
    {
    }
    ~MappedFrame()
    {
        if (is_mapped_)
            gst_video_frame_unmap(&frame_);
    }
    MappedFrame(const MappedFrame &) = delete;
    MappedFrame &operator=(const MappedFrame &) = delete;

    explicit operator bool() const { return is_mapped_; }
    const GstVideoFrame &operator*() const { return frame_; }

  private:
    GstVideoFrame frame_ = {};
    bool is_mapped_;
};

std::optional<YuvFormat> yuv_format_of(const GstVideoInfo &info)
{
    switch (GST_VIDEO_INFO_FORMAT(&info)) {
    case GST_VIDEO_FORMAT_I420:
    case GST_VIDEO_FORMAT_YV12:
        return YuvFormat::I420;
    case GST_VIDEO_FORMAT_NV12:
        return YuvFormat::NV12;
    case GST_VIDEO_FORMAT_I420_10LE:
        return YuvFormat::I420_10;
    case GST_VIDEO_FORMAT_P010_10LE:
        return YuvFormat::P010;
    default:
        return {};
    }
}

/** @param size of the frame, of which decoders may have more in memory */
YuvImage yuv_image(YuvFormat format, const Size &size, const GstVideoFrame &frame)
{
    YuvImage image = {format, size, {}, {}};
    for (guint part = 0; part < GST_VIDEO_FRAME_N_PLANES(&frame); ++part) {
        image.planes[part] = static_cast<const uint8_t *>(GST_VIDEO_FRAME_COMP_DATA(&frame, part));
        image.strides[part] = GST_VIDEO_FRAME_COMP_STRIDE(&frame, part);
    }
    return image;
}

} // namespace

Orientation orientation_of(GstVideoOrientationMethod method)
{
    switch (method) {
    case GST_VIDEO_ORIENTATION_90R:
        return Orientation::clockwise(90);
    case GST_VIDEO_ORIENTATION_180:
        return Orientation::clockwise(180);
    case GST_VIDEO_ORIENTATION_90L:
        return Orientation::clockwise(270);
    case GST_VIDEO_ORIENTATION_HORIZ:
        return MIRRORED;
    case GST_VIDEO_ORIENTATION_VERT:
        return MIRRORED.then_clockwise(180);
    case GST_VIDEO_ORIENTATION_UL_LR:
        return MIRRORED.then_clockwise(270);
    case GST_VIDEO_ORIENTATION_UR_LL:
        return MIRRORED.then_clockwise(90);
    default:
        return {};
    }
}

Orientation viewer_orientation(const GstVideoInfo &info, const Orientation &stored,
                               const DisplayView &view)
{
    const Proportions upright = proportions_of(info, stored);
    int turn = view.rotation;
    if (upright.height > upright.width && view.panel_angle != 0)
        turn = 360 - view.panel_angle;
    return stored.then_clockwise(turn);
}

Rect fitted_area(const GstVideoInfo &info, const Orientation &orientation, const Rect &area)
{
    const Proportions shown = proportions_of(info, orientation);
    if (area.empty() || shown.width <= 0 || shown.height <= 0)
        return {area.x, area.y, 0, 0};
    return centred(fit(shown.width, shown.height, area.size()), area);
}

void FramePainter::set_format(const GstVideoInfo &info, double peak)
{
    info_ = info;
    converter_.reset();
    if (const std::optional<YuvFormat> format = yuv_format_of(info))
        converter_.emplace(colour_space_of(info.colorimetry, peak), depth_of(*format), sdr_white_);
}

bool FramePainter::paint(GstBuffer *buffer, const Orientation &stored, const DisplayView &view,
                         PlaneBuffer &picture)
{
    const Orientation orientation = viewer_orientation(info_, stored, view);
    const Rect area = fitted_area(info_, orientation, view.area);
    if (!whole({picture.width(), picture.height()}).covers(area))
        return false;
    black_out_around(area, picture);
    if (area.empty())
        return true;
    const MappedFrame frame(info_, buffer);
    if (!frame)
        return false;
    // The chroma of woven fields lies elsewhere, which hurts less than light that is not mapped.
    const bool woven = GST_BUFFER_FLAG_IS_SET(buffer, GST_VIDEO_BUFFER_FLAG_INTERLACED);
    if (converter_ && (!woven || converter_->maps_light())) {
        const Size size = {GST_VIDEO_INFO_WIDTH(&info_), GST_VIDEO_INFO_HEIGHT(&info_)};
        paint_yuv(yuv_image(*yuv_format_of(info_), size, *frame), orientation, area, picture);
        return true;
    }
    return paint_other(*frame, orientation, area, picture);
}

void FramePainter::paint_yuv(const YuvImage &frame, const Orientation &orientation,
                             const Rect &area, PlaneBuffer &picture)
{
    const YuvImage image = scaler_.scaled(frame, orientation.of(area.size()));
    const int64_t cost = image.size.area() * (converter_->maps_light() ? COST_OF_MAPPING : 1);
    const int wanted = static_cast<int>(1 + cost / WORTH_A_BAND);
    if (orientation == Orientation()) {
        auto *pixels = reinterpret_cast<uint32_t *>(pixels_of(picture, area));
        const ptrdiff_t stride = picture.stride() / PIXEL_BYTES;
        bands_.run(image.size.height, wanted, [&](int, int first, int count) {
            converter_->convert(image, first, count, pixels + first * stride, stride);
        });
        return;
    }
    const size_t strip = static_cast<size_t>(image.size.width) * TURNED_ROWS;
    scratch_.resize(strip * static_cast<size_t>(bands_.count(wanted)));
    bands_.run(image.size.height, wanted, [&](int band, int first, int count) {
        uint32_t *rows = scratch_.data() + strip * static_cast<size_t>(band);
        for (const int end = first + count; first < end; first += TURNED_ROWS) {
            const int height = std::min(TURNED_ROWS, end - first);
            converter_->convert(image, first, height, rows, image.size.width);
            Rect laid = orientation.place(Rect{0, first, image.size.width, height}, area.size());
            laid.x += area.x;
            laid.y += area.y;
            copy_turned(rows, orientation, laid, picture);
        }
    });
}

bool FramePainter::paint_other(const GstVideoFrame &frame, const Orientation &orientation,
                               const Rect &area, PlaneBuffer &picture)
{
    if (orientation == Orientation())
        return other_.convert(info_, frame, pixels_of(picture, area), area.size(),
                              picture.stride());
    const Size upright = orientation.of(area.size());
    scratch_.resize(static_cast<size_t>(upright.area()));
    if (!other_.convert(info_, frame, reinterpret_cast<uint8_t *>(scratch_.data()), upright,
                        upright.width * PIXEL_BYTES))
        return false;
    copy_turned(scratch_.data(), orientation, area, picture);
    return true;
}

} // namespace platform
