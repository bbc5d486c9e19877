/**
 * Scales pictures before their colours are converted, when they have the fewest bytes. One thread
 * at a time.
 */
#pragma once

#include <cstdint>
#include <vector>

#include "colour/yuv_image.h"

namespace platform {

class PlaneScaler {
  public:
    /**
     * A picture in another size: averaged where it gets much smaller, between two neighbours
     * otherwise.
     *
     * @param size at least one pixel each way
     * @return the picture itself if it has that size; the same planes, doubled, if it is exactly
     *         twice that; else one with each kind of sample in a plane of its own, which is good
     *         until the next call
     */
    YuvImage scaled(const YuvImage &image, const Size &size);

  private:
    std::vector<uint8_t> planar_;
    std::vector<uint8_t> scaled_;
};

} // namespace platform
