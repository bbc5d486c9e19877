/**
 * Colours and size of a frame in one pass by GStreamer's converter, for the formats that the colour
 * folder does not know. It obeys range and matrix, to within five codes, and neither transfer nor
 * primaries.
 */
#pragma once

#include <cstdint>

#include "base/geometry.h"
#include "media_player/gst_ptr.h"

namespace platform {

/** One thread at a time. */
class GstConversion {
  public:
    /**
     * @param info   of the frame; its colorimetry is taken from here
     * @param from   mapped for reading
     * @param pixels BGRx
     * @param size   in pixels, of what is written
     * @param stride bytes from row to row
     * @return false when there is no such conversion
     */
    bool convert(const GstVideoInfo &info, const GstVideoFrame &from, uint8_t *pixels,
                 const Size &size, int stride);

  private:
    bool prepare(const GstVideoInfo &info, const Size &size, int stride);

    ConverterPtr converter_;
    GstVideoInfo from_ = {};
    GstVideoInfo to_ = {};
};

} // namespace platform
