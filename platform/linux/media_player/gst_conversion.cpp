#include "media_player/gst_conversion.h"

namespace platform {
namespace {

constexpr int PIXEL_BYTES = 4;

} // namespace

bool GstConversion::prepare(const GstVideoInfo &info, const Size &size, int stride)
{
    const bool fits = converter_ && gst_video_info_is_equal(&from_, &info) &&
                      GST_VIDEO_INFO_WIDTH(&to_) == size.width &&
                      GST_VIDEO_INFO_HEIGHT(&to_) == size.height;
    if (!fits) {
        converter_.reset();
        from_ = info;
        if (!gst_video_info_set_format(&to_, GST_VIDEO_FORMAT_BGRx, static_cast<guint>(size.width),
                                       static_cast<guint>(size.height)))
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
    to_.size = static_cast<gsize>(stride) * (size.height - 1) +
               static_cast<gsize>(size.width) * PIXEL_BYTES;
    return converter_ != nullptr;
}

bool GstConversion::convert(const GstVideoInfo &info, const GstVideoFrame &from, uint8_t *pixels,
                            const Size &size, int stride)
{
    if (!prepare(info, size, stride))
        return false;
    const BufferPtr target(gst_buffer_new_wrapped_full(static_cast<GstMemoryFlags>(0), pixels,
                                                       to_.size, 0, to_.size, nullptr, nullptr));
    gsize offset[GST_VIDEO_MAX_PLANES] = {};
    gint strides[GST_VIDEO_MAX_PLANES] = {stride};
    gst_buffer_add_video_meta_full(target.get(), GST_VIDEO_FRAME_FLAG_NONE, GST_VIDEO_FORMAT_BGRx,
                                   static_cast<guint>(size.width), static_cast<guint>(size.height),
                                   1, offset, strides);
    GstVideoFrame to;
    const bool mapped = gst_video_frame_map(&to, &to_, target.get(), GST_MAP_WRITE);
    if (mapped) {
        gst_video_converter_frame(converter_.get(), &from, &to);
        gst_video_frame_unmap(&to);
    }
    return mapped;
}

} // namespace platform
