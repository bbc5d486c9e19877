/**
 * What an item looks like: a flat frame in its own colour, a landscape in the middle, the item's
 * name in large letters, an arrow that points up, and in videos a running clock.
 *
 * The frame is flat to a depth of at least a tenth of the picture's height at the top and at the
 * bottom, so that a few pixels in the corners tell an item. The arrow's white body covers the
 * point at half the width and a twelfth of the height.
 */
#pragma once

#include <string>
#include <vector>

#include "catalogue.h"
#include "image.h"
#include "text_painter.h"

namespace sample {

class Scene {
  public:
    /** @param seconds length of a video; 0 for a photo, which has no clock */
    Scene(const Item &item, double seconds);

    /** The picture at a time; the same object at the next call. */
    const Image &at(double time);

  private:
    struct Box {
        int left;
        int top;
        int right;
        int bottom;
    };

    void paint_landscape(double time);
    void paint_sun(double time);
    void paint_layer(int depth, double time);
    void paint_rounded_corners();
    void paint_progress(double time);
    std::vector<std::string> texts(double time) const;

    Item item_;
    double seconds_;
    uint32_t colour_;
    Box panel_;
    Image image_;
    TextPainter painter_;
};

} // namespace sample
