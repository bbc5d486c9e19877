#include "subtitles/overlay.h"

#include <algorithm>
#include <cstring>

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

struct Box {
    int left;
    int top;
    int right;
    int bottom;
    int width() const { return right - left; }
    int height() const { return bottom - top; }
    bool empty() const { return left >= right || top >= bottom; }
};

Box clipped_box(const ASS_Image &image, int width, int height)
{
    return {std::max(image.dst_x, 0), std::max(image.dst_y, 0),
            std::min(image.dst_x + image.w, width), std::min(image.dst_y + image.h, height)};
}

Box bounds(const ASS_Image *images, int width, int height)
{
    Box all = {width, height, 0, 0};
    for (const ASS_Image *image = images; image; image = image->next) {
        const Box box = clipped_box(*image, width, height);
        if (box.empty())
            continue;
        all.left = std::min(all.left, box.left);
        all.top = std::min(all.top, box.top);
        all.right = std::max(all.right, box.right);
        all.bottom = std::max(all.bottom, box.bottom);
    }
    return all;
}

/** A part of the upright picture, with the images drawn into it one over the other. */
class Canvas {
  public:
    Canvas(const Box &box)
        : box_(box), pixels_(static_cast<size_t>(box.width()) * static_cast<size_t>(box.height()))
    {
    }

    void draw(const ASS_Image &image, const Box &box)
    {
        // libass counts transparency: 0 is opaque.
        const uint32_t opacity = 255 - (image.color & 0xFF);
        const uint32_t solid = 0xFF000000 | (image.color >> 8);
        for (int y = box.top; y < box.bottom; ++y) {
            const unsigned char *mask =
                image.bitmap + static_cast<ptrdiff_t>(y - image.dst_y) * image.stride;
            uint32_t *row = &pixels_[offset(0, y)];
            for (int x = box.left; x < box.right; ++x) {
                const uint32_t cover = mask[x - image.dst_x];
                if (cover != 0) {
                    uint32_t &pixel = row[x - box_.left];
                    pixel = over(scaled(solid, (cover * opacity + 127) / 255), pixel);
                }
            }
        }
    }

    uint32_t at(int x, int y) const { return pixels_[offset(x - box_.left, y)]; }

  private:
    size_t offset(int column, int y) const
    {
        return static_cast<size_t>(y - box_.top) * static_cast<size_t>(box_.width()) +
               static_cast<size_t>(column);
    }

    Box box_;
    std::vector<uint32_t> pixels_;
};

/** Places of a turned picture and of the upright one, told from each other. */
struct Turn {
    int width; ///< of the turned picture
    int height;
    int degrees;

    Box to_turned(const Box &b) const
    {
        switch (degrees) {
        case 90:
            return {width - b.bottom, b.left, width - b.top, b.right};
        case 180:
            return {width - b.right, height - b.bottom, width - b.left, height - b.top};
        case 270:
            return {b.top, height - b.right, b.bottom, height - b.left};
        default:
            return b;
        }
    }

    uint32_t pixel(const Canvas &canvas, int x, int y) const
    {
        switch (degrees) {
        case 90:
            return canvas.at(y, width - 1 - x);
        case 180:
            return canvas.at(width - 1 - x, height - 1 - y);
        case 270:
            return canvas.at(height - 1 - y, x);
        default:
            return canvas.at(x, y);
        }
    }
};

} // namespace

void Overlay::compose(const ASS_Image *images, int width, int height, int degrees)
{
    runs_.clear();
    colours_.clear();
    const bool lying = degrees == 90 || degrees == 270;
    const int upright_width = lying ? height : width;
    const int upright_height = lying ? width : height;
    const Box box = bounds(images, upright_width, upright_height);
    if (box.empty())
        return;

    Canvas canvas(box);
    for (const ASS_Image *image = images; image; image = image->next) {
        const Box part = clipped_box(*image, upright_width, upright_height);
        if (!part.empty())
            canvas.draw(*image, part);
    }

    const Turn turn = {width, height, degrees};
    const Box turned = turn.to_turned(box);
    for (int y = turned.top; y < turned.bottom; ++y) {
        bool in_run = false;
        for (int x = turned.left; x < turned.right; ++x) {
            const uint32_t colour = turn.pixel(canvas, x, y);
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
