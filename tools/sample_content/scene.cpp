#include "scene.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace sample {

namespace {

constexpr uint32_t WHITE = 0xFFFFFF;
constexpr uint32_t BLACK = 0x000000;
constexpr int LAYER_COUNT = 3;

uint32_t packed(Colour colour)
{
    return static_cast<uint32_t>(colour.red) << 16 | static_cast<uint32_t>(colour.green) << 8 |
           colour.blue;
}

/** A number between 0 and 1 that belongs to a place of a layer. */
double scattered(int place, int depth)
{
    const double value = std::sin(place * 127.1 + depth * 311.7) * 43758.5453;
    return value - std::floor(value);
}

double triangle(double x)
{
    return std::fabs(x - std::floor(x) - 0.5) * 2;
}

/** Height of a landscape's outline, 0 to 1; x counts in panel heights. */
double outline(Motif motif, double x, int depth)
{
    switch (motif) {
    case Motif::waves:
        return 0.4 + 0.12 * std::sin(x * 9 + depth * 2) + 0.08 * std::sin(x * 17 - depth);
    case Motif::peaks:
        return 0.75 * triangle(x * 1.3 + depth * 0.37) + 0.22 * triangle(x * 4.1 + depth * 0.61);
    case Motif::skyline: {
        const double houses = x * (5 + depth);
        return 0.25 + 0.75 * scattered(static_cast<int>(std::floor(houses)), depth);
    }
    case Motif::bushes:
        return 0.3 + 0.35 * std::fabs(std::sin(x * 3.1 + depth * 1.3)) +
               0.2 * std::fabs(std::sin(x * 7.7 + depth));
    case Motif::hills:
        break;
    }
    return 0.5 + 0.3 * std::sin(x * 2.2 + depth * 2.1) + 0.15 * std::sin(x * 5.3 + depth);
}

std::string tagged(const char *format, double a, double b, double c, const std::string &text)
{
    char tags[160];
    std::snprintf(tags, sizeof tags, format, a, b, c);
    return tags + text;
}

std::string clock_text(double time)
{
    // Rounded first: a time a hair under a full second must not show the second before.
    const auto hundredths = static_cast<int>(std::lround(time * 100));
    char text[32];
    std::snprintf(text, sizeof text, "%d:%02d.%02d", hundredths / 6000, hundredths / 100 % 60,
                  hundredths % 100);
    return text;
}

/** An upward arrow as a drawing around the point that \pos names, one unit wide and high. */
std::string arrow(double x, double y, double size)
{
    char text[256];
    const auto part = [size](double share) { return static_cast<int>(std::lround(size * share)); };
    std::snprintf(
        text, sizeof text,
        "{\\an7\\pos(%.0f,%.0f)\\bord0\\shad0\\p1}m %d %d l %d %d %d %d %d %d %d %d %d %d %d %d", x,
        y, 0, part(-0.5), part(0.5), part(0.0), part(0.2), part(0.0), part(0.2), part(0.5),
        part(-0.2), part(0.5), part(-0.2), part(0.0), part(-0.5), part(0.0));
    return text;
}

} // namespace

Scene::Scene(const Item &item, double seconds)
    : item_(item), seconds_(seconds),
      colour_(packed(item.colour)), panel_{item.width * 6 / 100, item.height * 17 / 100,
                                           item.width - item.width * 6 / 100,
                                           item.height - item.height * 11 / 100},
      image_(item.width, item.height), painter_(item.width, item.height)
{
}

const Image &Scene::at(double time)
{
    std::fill(image_.pixels.begin(), image_.pixels.end(), colour_);
    paint_landscape(time);
    paint_rounded_corners();
    if (seconds_ > 0)
        paint_progress(time);
    painter_.draw(image_, texts(time));
    return image_;
}

void Scene::paint_landscape(double time)
{
    const uint32_t zenith = mixed(colour_, BLACK, 0.30);
    const uint32_t horizon = mixed(colour_, WHITE, 0.80);
    for (int y = panel_.top; y < panel_.bottom; ++y) {
        const double depth = static_cast<double>(y - panel_.top) / (panel_.bottom - panel_.top);
        std::fill(image_.row(y) + panel_.left, image_.row(y) + panel_.right,
                  mixed(zenith, horizon, depth));
    }
    paint_sun(time);
    for (int depth = 0; depth < LAYER_COUNT; ++depth)
        paint_layer(depth, time);
}

void Scene::paint_sun(double time)
{
    const double height = panel_.bottom - panel_.top;
    const double side = std::min<double>(panel_.right - panel_.left, height);
    const double radius = side * 0.11;
    const double rise = seconds_ > 0 ? time / seconds_ : 0.5;
    // Beside the name in a wide picture, above it in a high one: white letters need a dark ground.
    const bool wide = item_.width > item_.height;
    const double cx = panel_.left + (panel_.right - panel_.left) * (wide ? 0.89 : 0.76);
    const double cy = panel_.top + height * (wide ? 0.55 - 0.33 * rise : 0.20 - 0.08 * rise);
    const double glow = radius * 2.4;
    const int top = std::max(panel_.top, static_cast<int>(cy - glow));
    const int bottom = std::min(panel_.bottom, static_cast<int>(cy + glow) + 1);
    const int left = std::max(panel_.left, static_cast<int>(cx - glow));
    const int right = std::min(panel_.right, static_cast<int>(cx + glow) + 1);
    for (int y = top; y < bottom; ++y) {
        for (int x = left; x < right; ++x) {
            const double distance = std::hypot(x + 0.5 - cx, y + 0.5 - cy);
            const double disc = std::clamp(radius - distance + 0.5, 0.0, 1.0);
            const double halo = std::max(0.0, 1 - distance / glow) * 0.45;
            uint32_t &pixel = image_.row(y)[x];
            pixel = mixed(pixel, 0xFFF6DC, std::max(disc, halo));
        }
    }
}

void Scene::paint_layer(int depth, double time)
{
    const double height = panel_.bottom - panel_.top;
    const uint32_t shade = mixed(colour_, BLACK, 0.22 + 0.20 * depth);
    const double base = 0.22 - 0.06 * depth;
    const double relief = 0.30 - 0.05 * depth;
    const double drift = time * 0.05 * (depth + 1);
    for (int x = panel_.left; x < panel_.right; ++x) {
        const double place = (x - panel_.left) / height + drift + depth * 1.7;
        const double top =
            panel_.bottom - height * (base + relief * outline(item_.motif, place, depth));
        const int first = std::max(panel_.top, static_cast<int>(std::floor(top)));
        for (int y = first; y < panel_.bottom; ++y) {
            const double cover = std::clamp(y + 1 - top, 0.0, 1.0);
            uint32_t &pixel = image_.row(y)[x];
            pixel = cover < 1 ? mixed(pixel, shade, cover) : shade;
        }
    }
}

void Scene::paint_rounded_corners()
{
    const int radius = std::min(item_.width, item_.height) / 24;
    for (int dy = 0; dy < radius; ++dy) {
        for (int dx = 0; dx < radius; ++dx) {
            const double outside = std::hypot(radius - dx - 0.5, radius - dy - 0.5) - radius;
            const double cover = std::clamp(outside + 0.5, 0.0, 1.0);
            for (const int x : {panel_.left + dx, panel_.right - 1 - dx}) {
                for (const int y : {panel_.top + dy, panel_.bottom - 1 - dy})
                    image_.row(y)[x] = mixed(image_.row(y)[x], colour_, cover);
            }
        }
    }
}

void Scene::paint_progress(double time)
{
    const int thickness = std::max(2, std::min(item_.width, item_.height) / 120);
    const int bottom = panel_.bottom - std::min(item_.width, item_.height) / 24;
    const int left = panel_.left + (panel_.right - panel_.left) / 20;
    const int right = panel_.right - (panel_.right - panel_.left) / 20;
    const int now = left + static_cast<int>((right - left) * std::min(time / seconds_, 1.0));
    for (int y = bottom - thickness; y < bottom; ++y) {
        uint32_t *row = image_.row(y);
        for (int x = left; x < right; ++x)
            row[x] = mixed(row[x], WHITE, x < now ? 1.0 : 0.3);
    }
}

std::vector<std::string> Scene::texts(double time) const
{
    const double width = item_.width;
    const double height = item_.height;
    const double side = std::min(width, height);
    const double room = (panel_.right - panel_.left) * 0.92;
    // Bold sans-serif letters are on average less than half as wide as their line is high.
    const auto fitting = [room](const std::string &text, double largest) {
        return std::min(largest, room / (0.42 * static_cast<double>(text.size())));
    };
    const double name_size = fitting(item_.name, side * 0.19);
    const std::string size = std::to_string(item_.width) + " × " + std::to_string(item_.height);
    const double note_size = fitting(item_.note, side * 0.062);
    const double outline_width = side / 240;
    const double middle = panel_.top + (panel_.bottom - panel_.top) * 0.30;

    char tags[64];
    std::snprintf(tags, sizeof tags, "\\bord%.1f}", outline_width);
    const std::string border = tags;
    std::vector<std::string> result = {
        arrow(width * 0.5, height * 0.085, height > width ? width * 0.13 : height * 0.12),
        tagged("{\\an4\\pos(%.0f,%.0f)\\fs%.0f", width * 0.5 + side * 0.085, height * 0.085,
               side * 0.085, border + "UP"),
        tagged("{\\pos(%.0f,%.0f)\\fs%.0f", width / 2, middle, name_size, border + item_.name),
        tagged("{\\pos(%.0f,%.0f)\\fs%.0f", width / 2, middle + name_size * 0.5 + note_size * 0.8,
               note_size, border + item_.note),
        tagged("{\\pos(%.0f,%.0f)\\fs%.0f", width / 2, middle + name_size * 0.5 + note_size * 1.95,
               note_size, border + size),
    };
    if (seconds_ > 0)
        result.push_back(tagged("{\\pos(%.0f,%.0f)\\fs%.0f", width / 2,
                                middle + name_size * 0.5 + note_size * 2.5 + side * 0.13,
                                side * 0.17, border + clock_text(time)));
    return result;
}

} // namespace sample
