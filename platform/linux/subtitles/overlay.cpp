#include "subtitles/overlay.h"

#include <cstring>

#include "base/orientation.h"

namespace platform {

namespace {

/** All four channels of a colour times factor / 255, rounded. */
uint32_t scaled(uint32_t colour, uint32_t factor)
{
    constexpr uint32_t MASK = 0x00FF00FF;
    uint32_t even = (colour & MASK) * factor + 0x00800080;
    uint32_t odd = ((colour >> 8) & MASK) * factor + 0x00800080;
    even = ((even + ((even >> 8) & MASK)) >> 8) & MASK;
    odd = (odd + ((odd >> 8) & MASK)) & ~MASK;
    return even | odd;
}

uint32_t over(uint32_t above, uint32_t below)
{
    return above + scaled(below, 255 - (above >> 24));
}

Rect place_of(const ASS_Image &image, const Size &picture)
{
    return clipped({image.dst_x, image.dst_y, image.w, image.h}, picture);
}

/** A part of the upright picture, with the images drawn into it one over the other. */
class Canvas {
  public:
    explicit Canvas(const Rect &box) : box_(box), pixels_(static_cast<size_t>(box.size().area())) {}

    void draw(const ASS_Image &image, const Rect &part)
    {
        if (part.empty())
            return;
        // libass counts transparency: 0 is opaque.
        const uint32_t opacity = 255 - (image.color & 0xFF);
        const uint32_t solid = 0xFF000000 | (image.color >> 8);
        for (int y = part.y; y < part.bottom(); ++y) {
            const unsigned char *mask =
                image.bitmap + static_cast<ptrdiff_t>(y - image.dst_y) * image.stride;
            uint32_t *row = &pixels_[static_cast<size_t>(y - box_.y) * box_.width];
            for (int x = part.x; x < part.right(); ++x) {
                const uint32_t cover = mask[x - image.dst_x];
                if (cover != 0) {
                    uint32_t &pixel = row[x - box_.x];
                    pixel = over(scaled(solid, (cover * opacity + 127) / 255), pixel);
                }
            }
        }
    }

    const uint32_t *pixels() const { return pixels_.data(); }

  private:
    Rect box_;
    std::vector<uint32_t> pixels_;
};

} // namespace

void Overlay::compose(const ASS_Image *images, int width, int height, int degrees)
{
    runs_.clear();
    colours_.clear();
    const Orientation turn = Orientation::clockwise(degrees);
    const Size picture = {width, height};
    const Size upright = turn.of(picture);
    Rect box;
    for (const ASS_Image *image = images; image; image = image->next)
        box = united(box, place_of(*image, upright));
    if (box.empty())
        return;

    Canvas canvas(box);
    for (const ASS_Image *image = images; image; image = image->next)
        canvas.draw(*image, place_of(*image, upright));

    const Rect turned = turn.place(box, picture);
    const Orientation::Walk walk = turn.walk(turned.size());
    for (int y = turned.y; y < turned.bottom(); ++y) {
        const uint32_t *from = canvas.pixels() + walk.first + (y - turned.y) * walk.down;
        bool in_run = false;
        for (int x = turned.x; x < turned.right(); ++x, from += walk.right) {
            const uint32_t colour = *from;
            const bool visible = (colour >> 24) != 0;
            if (visible && !in_run)
                runs_.push_back({x, y, 0, colours_.size()});
            if (visible) {
                ++runs_.back().length;
                colours_.push_back(colour);
            }
            in_run = visible;
        }
    }
}

void Overlay::blend(uint8_t *pixels, int stride) const
{
    for (const Run &run : runs_) {
        uint8_t *place = pixels + static_cast<ptrdiff_t>(run.y) * stride + ptrdiff_t{run.x} * 4;
        const uint32_t *colour = &colours_[run.first];
        for (int i = 0; i < run.length; ++i, ++colour, place += sizeof *colour) {
            // The copies leave the rows free to begin at any byte; they compile to plain moves.
            uint32_t pixel = *colour;
            if ((pixel >> 24) != 0xFF) {
                std::memcpy(&pixel, place, sizeof pixel);
                pixel = over(*colour, pixel);
            }
            std::memcpy(place, &pixel, sizeof pixel);
        }
    }
}

} // namespace platform
