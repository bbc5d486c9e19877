#include "media_player/frame_painter.h"

#include <algorithm>

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

bool FramePainter::paint(const GstVideoInfo &info, GstBuffer *frame, const Orientation &stored,
                         const DisplayView &view, PlaneBuffer &picture)
{
    const Orientation orientation = viewer_orientation(info, stored, view);
    const Rect area = fitted_area(info, orientation, view.area);
    if (!whole({picture.width(), picture.height()}).covers(area))
        return false;
    black_out_around(area, picture);
    if (area.empty())
        return true;
    if (orientation == Orientation())
        return convert(info, frame,
                       picture.pixels() + static_cast<size_t>(area.y) * picture.stride() +
                           static_cast<size_t>(area.x) * PIXEL_BYTES,
                       area.width, area.height, picture.stride());

    const Size upright = orientation.of(area.size());
    scratch_.resize(static_cast<size_t>(upright.area()));
    if (!convert(info, frame, reinterpret_cast<uint8_t *>(scratch_.data()), upright.width,
                 upright.height, upright.width * PIXEL_BYTES))
        return false;
    copy_turned(scratch_.data(), orientation, area, picture);
    return true;
}

bool FramePainter::prepare_converter(const GstVideoInfo &info, int width, int height, int stride)
{
    const bool fits = converter_ && gst_video_info_is_equal(&from_, &info) &&
                      GST_VIDEO_INFO_WIDTH(&to_) == width && GST_VIDEO_INFO_HEIGHT(&to_) == height;
    if (!fits) {
        converter_.reset();
        from_ = info;
        if (!gst_video_info_set_format(&to_, GST_VIDEO_FORMAT_BGRx, static_cast<guint>(width),
                                       static_cast<guint>(height)))
            return false;
        // The converter neither changes the frame rate nor weaves fields, and insists on it.
        to_.fps_n = info.fps_n;
        to_.fps_d = info.fps_d;
        to_.interlace_mode = info.interlace_mode;
        GstStructure *options = gst_structure_new(
            "options", GST_VIDEO_CONVERTER_OPT_THREADS, G_TYPE_UINT, 2u,
            GST_VIDEO_CONVERTER_OPT_RESAMPLER_METHOD, GST_TYPE_VIDEO_RESAMPLER_METHOD,
            GST_VIDEO_RESAMPLER_METHOD_LINEAR, GST_VIDEO_CONVERTER_OPT_RESAMPLER_TAPS, G_TYPE_UINT,
            2u, GST_VIDEO_CONVERTER_OPT_CHROMA_RESAMPLER_METHOD, GST_TYPE_VIDEO_RESAMPLER_METHOD,
            GST_VIDEO_RESAMPLER_METHOD_LINEAR, nullptr);
        converter_.reset(gst_video_converter_new(&from_, &to_, options));
    }
    to_.stride[0] = stride;
    to_.size = static_cast<gsize>(stride) * (height - 1) + static_cast<gsize>(width) * PIXEL_BYTES;
    return converter_ != nullptr;
}

bool FramePainter::convert(const GstVideoInfo &info, GstBuffer *frame, uint8_t *pixels, int width,
                           int height, int stride)
{
    if (!prepare_converter(info, width, height, stride))
        return false;
    GstVideoFrame from;
    if (!gst_video_frame_map(&from, &from_, frame, GST_MAP_READ))
        return false;
    const BufferPtr target(gst_buffer_new_wrapped_full(static_cast<GstMemoryFlags>(0), pixels,
                                                       to_.size, 0, to_.size, nullptr, nullptr));
    gsize offset[GST_VIDEO_MAX_PLANES] = {};
    gint strides[GST_VIDEO_MAX_PLANES] = {stride};
    gst_buffer_add_video_meta_full(target.get(), GST_VIDEO_FRAME_FLAG_NONE, GST_VIDEO_FORMAT_BGRx,
                                   static_cast<guint>(width), static_cast<guint>(height), 1, offset,
                                   strides);
    GstVideoFrame to;
    const bool mapped = gst_video_frame_map(&to, &to_, target.get(), GST_MAP_WRITE);
    if (mapped) {
        gst_video_converter_frame(converter_.get(), &from, &to);
        gst_video_frame_unmap(&to);
    }
    gst_video_frame_unmap(&from);
    return mapped;
}

} // namespace platform
