/**
 * Draws decoded frames into pictures of the plane: scaled to fit with their proportions kept,
 * colours converted, turned, black around them.
 *
 * One thread at a time.
 */
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "base/bands.h"
#include "base/orientation.h"
#include "base/pixels.h"
#include "colour/colour_converter.h"
#include "colour/plane_scaler.h"
#include "media_player/display_settings.h"
#include "media_player/gst_conversion.h"

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
    /** @param sdr_white of films of high dynamic range: the light that becomes white, cd/m² */
    explicit FramePainter(double sdr_white) : sdr_white_(sdr_white) {}

    /**
     * What the frames are.
     *
     * @param info of which every part of the colorimetry is known
     * @param peak of a film of high dynamic range, cd/m²
     */
    void set_format(const GstVideoInfo &info, double peak);

    /**
     * Draws a frame over the whole of a picture.
     *
     * @return false when the frame cannot be read or converted; the picture is undefined then
     */
    bool paint(GstBuffer *buffer, const Orientation &stored, const DisplayView &view,
               PlaneBuffer &picture);

    /** Whether frames are converted by our own loops, which are exact, and not by GStreamer. */
    bool is_exact() const { return converter_.has_value(); }

  private:
    void paint_yuv(const YuvImage &frame, const Orientation &orientation, const Pixels &target);
    void convert(const YuvImage &image, const Orientation &orientation, const Pixels &target);
    bool paint_other(const GstVideoFrame &frame, const Orientation &orientation,
                     const Pixels &target);

    const double sdr_white_;
    GstVideoInfo info_ = {};
    std::optional<ColourConverter> converter_; ///< if the frames are of a YuvFormat
    PlaneScaler scaler_;
    Bands bands_;
    GstConversion other_;           ///< for all other frames
    std::vector<uint32_t> mapped_;  ///< a picture before it is enlarged
    std::vector<uint32_t> scratch_; ///< rows of a picture before they are turned
};

} // namespace platform
