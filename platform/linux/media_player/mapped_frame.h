/** A frame's memory, mapped for as long as this lives. */
#pragma once

#include <cstddef>
#include <cstdint>

#include <gst/video/video.h>

namespace platform {

class MappedFrame {
  public:
    MappedFrame(const GstVideoInfo &info, GstBuffer *buffer, GstMapFlags flags)
        : is_mapped_(gst_video_frame_map(&frame_, &info, buffer, flags))
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
    uint8_t *plane(guint index) const
    {
        return static_cast<uint8_t *>(GST_VIDEO_FRAME_PLANE_DATA(&frame_, index));
    }
    ptrdiff_t stride(guint index) const { return GST_VIDEO_FRAME_PLANE_STRIDE(&frame_, index); }

  private:
    GstVideoFrame frame_ = {};
    bool is_mapped_;
};

} // namespace platform
