/**
 * What is to be drawn over a picture, ready for drawing: libass's coloured masks, merged, turned
 * and reduced to the runs of pixels that are not wholly transparent. Making one costs some
 * milliseconds, drawing it touches only the pixels of the letters.
 */
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include <ass/ass.h>

namespace platform {

class Overlay {
  public:
    /**
     * Takes over what libass has rendered.
     *
     * @param images  libass's list, made for a picture that stands upright; may be null
     * @param width   pixels of the picture that is drawn into
     * @param height  likewise
     * @param degrees clockwise turn of the text: 0, 90, 180 or 270
     */
    void compose(const ASS_Image *images, int width, int height, int degrees);

    bool empty() const { return runs_.empty(); }

    /** Blends into XRGB pixels of the size given to compose(); `stride` in bytes. */
    void blend(uint8_t *pixels, int stride) const;

  private:
    struct Run {
        int x;
        int y;
        int length;
        size_t first; ///< index into colours_
    };

    std::vector<Run> runs_;
    std::vector<uint32_t> colours_; ///< ARGB, premultiplied
};

} // namespace platform
