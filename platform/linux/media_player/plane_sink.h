/**
 * The pipeline's end for pictures: a GStreamer sink that gives each frame to a FrameOutput, painted
 * ahead of its time and shown at its time. Takes every raw format in plain memory; converting in
 * the sink saves the copy from a converter's buffers and the conversion of frames that are late.
 */
#pragma once

#include <memory>

#include "media_player/frame_output.h"
#include "media_player/gst_ptr.h"

namespace platform {

/** Frames later than this are left out. A frame shown a little late is better than one left out. */
constexpr GstClockTime MAX_LATENESS = 30 * GST_MSECOND;

/** Makes a sink. When the plane is gone it posts an error RESOURCE/BUSY. */
ElementPtr make_plane_sink(std::shared_ptr<FrameOutput> output);

} // namespace platform
