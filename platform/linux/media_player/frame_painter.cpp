#include "media_player/frame_painter.h"

#include <algorithm>

#include "colour/enlarger.h"
#include "media_player/colour_tags.h"
#include "media_player/mapped_frame.h"
#include "video_plane/plane_drawing.h"

namespace platform {
namespace {

constexpr int PIXEL_BYTES = 4;

/** What mapping light takes, beside other conversions. */
constexpr int64_t COST_OF_MAPPING = 6;
/** Pixels, of other conversions, for which waking another thread is worth it. */
constexpr int64_t WORTH_A_BAND = int64_t{1920} * 1080 * 2;

/** Rows of a turned picture that are converted at a time: caches hold them until they are laid. */
constexpr int TURNED_ROWS = 16;

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

/** @param pixels of conversions that map no light */
int bands_for(int64_t pixels)
{
    return static_cast<int>(1 + pixels / WORTH_A_BAND);
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
    const MappedFrame frame(info_, buffer, GST_MAP_READ);
    if (!frame)
        return false;
    const Pixels target = pixels_of(picture).part(area);
    if (converter_) {
        const Size size = {GST_VIDEO_INFO_WIDTH(&info_), GST_VIDEO_INFO_HEIGHT(&info_)};
        paint_yuv(yuv_image(*yuv_format_of(info_), size, *frame), orientation, target);
        return true;
    }
    return paint_other(*frame, orientation, target);
}

void FramePainter::paint_yuv(const YuvImage &frame, const Orientation &orientation,
                             const Pixels &target)
{
    const Size upright = orientation.of(target.size);
    const Size size = converter_->size_for(frame.size, upright);
    const YuvImage image = scaler_.scaled(frame, size);
    if (size == upright) {
        convert(image, orientation, target);
        return;
    }
    const Size laid = orientation.of(size);
    mapped_.resize(static_cast<size_t>(laid.area()));
    const Pixels mapped = {mapped_.data(), laid.width, laid};
    convert(image, orientation, mapped);
    bands_.run(target.size.height, bands_for(target.size.area()),
               [&](int, int first, int count) { enlarge(mapped, target, first, count); });
}

void FramePainter::convert(const YuvImage &image, const Orientation &orientation,
                           const Pixels &target)
{
    const int wanted =
        bands_for(image.size.area() * (converter_->maps_light() ? COST_OF_MAPPING : 1));
    if (orientation == Orientation()) {
        bands_.run(image.size.height, wanted, [&](int, int first, int count) {
            converter_->convert(image, first, count, target.row(first), target.stride);
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
            const Rect part = {0, first, image.size.width, height};
            copy_turned(rows, orientation, target.part(orientation.place(part, target.size)));
        }
    });
}

bool FramePainter::paint_other(const GstVideoFrame &frame, const Orientation &orientation,
                               const Pixels &target)
{
    const auto convert_to = [&](const Pixels &pixels) {
        return other_.convert(info_, frame, reinterpret_cast<uint8_t *>(pixels.first), pixels.size,
                              static_cast<int>(pixels.stride) * PIXEL_BYTES);
    };
    if (orientation == Orientation())
        return convert_to(target);
    const Size upright = orientation.of(target.size);
    scratch_.resize(static_cast<size_t>(upright.area()));
    if (!convert_to({scratch_.data(), upright.width, upright}))
        return false;
    copy_turned(scratch_.data(), orientation, target);
    return true;
}

} // namespace platform
