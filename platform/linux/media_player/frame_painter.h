/**
 * Draws one decoded frame into a picture of the plane: colours converted, scaled to fit with its
 * proportions kept, turned, black around it. Colours and size are done in one pass straight into
 * the plane's memory; only a turned picture takes a second one.
 *
 * One thread at a time.
 */
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "base/orientation.h"
#include "media_player/display_settings.h"
#include "media_player/gst_ptr.h"

namespace platform {

/** What a stream's tag means. */
Orientation orientation_of(GstVideoOrientationMethod method);

/**
 * How a frame has to be turned for a viewer.
 *
 * A frame wider than high is turned as the caller told. A frame higher than wide on a turned panel
 * stands upright for the viewer instead.
 *
 * @param info   the frame as it is stored
 * @param stored how the stream says it is to be turned to be upright
 */
Orientation viewer_orientation(const GstVideoInfo &info, const Orientation &stored,
                               const DisplayView &view);

/** Where in the view's area the turned frame goes, as large as fits. */
Rect fitted_area(const GstVideoInfo &info, const Orientation &orientation, const Rect &area);

class FramePainter {
  public:
    /**
     * Draws a frame over the whole of a picture.
     *
     * @return false when the frame cannot be read or converted; the picture is undefined then
     */
    bool paint(const GstVideoInfo &info, GstBuffer *frame, const Orientation &stored,
               const DisplayView &view, PlaneBuffer &picture);

  private:
    bool convert(const GstVideoInfo &info, GstBuffer *frame, uint8_t *pixels, int width, int height,
                 int stride);
    bool prepare_converter(const GstVideoInfo &info, int width, int height, int stride);

    ConverterPtr converter_;
    GstVideoInfo from_ = {};
    GstVideoInfo to_ = {};
    std::vector<uint32_t> scratch_; ///< the picture before it is turned
};

} // namespace platform
