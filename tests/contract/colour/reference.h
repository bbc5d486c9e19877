/**
 * What a film's numbers are to become on the screen, in doubles and step by step: written from the
 * standards, and of the code that is tested only the names of what a film may be.
 */
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>

#include "colour/colour_space.h"

namespace platform {

/** Of 0 to 255. */
struct Rgb {
    double red;
    double green;
    double blue;
};

inline ColourSpace bt601()
{
    ColourSpace space;
    space.kr = 0.299;
    space.kb = 0.114;
    return space;
}

/** @param peak of PQ, in cd/m² */
inline ColourSpace bt2020(Transfer transfer = Transfer::SDR, double peak = 1000)
{
    ColourSpace space;
    space.kr = 0.2627;
    space.kb = 0.0593;
    space.primaries = {{0.708, 0.292}, {0.170, 0.797}, {0.131, 0.046}};
    space.transfer = transfer;
    space.peak = peak;
    return space;
}

inline ColourSpace in_full_range(ColourSpace space)
{
    space.full_range = true;
    return space;
}

/** What light of so many cd/m² is multiplied by, so that 1 is the screen's white. */
using Tone = std::function<double(double light)>;

namespace by_the_standards {

/** SMPTE ST 2084, 5.1 and 5.2, with the constants as decimals. */
inline double pq_light(double code)
{
    const double power = std::pow(code, 1 / 78.84375);
    return 10000 * std::pow(std::max(power - 0.8359375, 0.0) / (18.8515625 - 18.6875 * power),
                            1 / 0.1593017578125);
}

inline double pq_code(double light)
{
    const double power = std::pow(light / 10000, 0.1593017578125);
    return std::pow((0.8359375 + 18.8515625 * power) / (1 + 18.6875 * power), 78.84375);
}

/** ITU-R BT.2100, table 5: light of the scene, of 0 to 1. */
inline double hlg_scene(double code)
{
    const double a = 0.17883277;
    const double b = 1 - 4 * a;
    const double c = 0.5 - a * std::log(4 * a);
    return code <= 0.5 ? code * code / 3 : (std::exp((code - c) / a) + b) / 12;
}

/** ITU-R BT.2390, 5.4.1, for blacks of no light: of light in cd/m², to light. */
inline double eetf(double light, double film_peak, double screen_peak)
{
    const double e1 = pq_code(std::min(light, film_peak)) / pq_code(film_peak);
    const double most = pq_code(screen_peak) / pq_code(film_peak);
    const double start = 1.5 * most - 0.5;
    double e2 = e1;
    if (e1 >= start && start < 1) {
        const double t = (e1 - start) / (1 - start);
        e2 = (2 * std::pow(t, 3) - 3 * std::pow(t, 2) + 1) * start +
             (std::pow(t, 3) - 2 * std::pow(t, 2) + t) * (1 - start) +
             (-2 * std::pow(t, 3) + 3 * std::pow(t, 2)) * most;
    }
    return pq_light(e2 * pq_code(film_peak));
}

using Column = std::array<double, 3>;

inline double determinant(const Column &a, const Column &b, const Column &c)
{
    return a[0] * (b[1] * c[2] - b[2] * c[1]) - b[0] * (a[1] * c[2] - a[2] * c[1]) +
           c[0] * (a[1] * b[2] - a[2] * b[1]);
}

/** How much of three columns makes a fourth: Cramer's rule. */
inline Column solved(const std::array<Column, 3> &of, const Column &wanted)
{
    const double all = determinant(of[0], of[1], of[2]);
    return {determinant(wanted, of[1], of[2]) / all, determinant(of[0], wanted, of[2]) / all,
            determinant(of[0], of[1], wanted) / all};
}

/** SMPTE RP 177: X, Y and Z of the three lights that make D65 together. */
inline std::array<Column, 3> lights(const Primaries &primaries)
{
    const auto xyz = [](double x, double y) { return Column{x / y, 1, (1 - x - y) / y}; };
    std::array<Column, 3> all = {xyz(primaries.red.x, primaries.red.y),
                                 xyz(primaries.green.x, primaries.green.y),
                                 xyz(primaries.blue.x, primaries.blue.y)};
    const Column strengths = solved(all, xyz(0.3127, 0.3290));
    for (size_t light = 0; light < 3; ++light) {
        for (double &part : all[light])
            part *= strengths[light];
    }
    return all;
}

/** The same colour by the lights of BT.709. */
inline Rgb by_bt709(const Primaries &primaries, const Rgb &colour)
{
    const std::array<Column, 3> own = lights(primaries);
    Column xyz = {};
    for (size_t i = 0; i < 3; ++i)
        xyz[i] = own[0][i] * colour.red + own[1][i] * colour.green + own[2][i] * colour.blue;
    const Column rgb = solved(lights({{0.64, 0.33}, {0.30, 0.60}, {0.15, 0.06}}), xyz);
    return {rgb[0], rgb[1], rgb[2]};
}

/** ITU-R BT.601, 709 and 2020: R', G' and B' of luma and chroma, from 0 to 1. */
inline Rgb decoded(const ColourSpace &space, int depth, double y, double u, double v)
{
    const double unit = std::pow(2, depth - 8);
    const double largest = std::pow(2, depth) - 1;
    const double luma = space.full_range ? y / largest : (y / unit - 16) / 219;
    const auto chroma = [&](double number) {
        return space.full_range ? (number - 128 * unit) / largest : (number / unit - 128) / 224;
    };
    const double red = luma + chroma(v) * 2 * (1 - space.kr);
    const double blue = luma + chroma(u) * 2 * (1 - space.kb);
    return {red, (luma - space.kr * red - space.kb * blue) / (1 - space.kr - space.kb), blue};
}

} // namespace by_the_standards

inline double encoded(double light)
{
    return 255 * std::pow(std::clamp(light, 0.0, 1.0), 1 / 2.4);
}

/** The tone of a film whose brightest is `peak` on a screen whose white is `white`, both cd/m². */
inline Tone bt2390(double peak, double white)
{
    return [peak, white](double light) {
        return by_the_standards::eetf(light, peak, white) / light / white;
    };
}

/**
 * @param depth bits of the three numbers
 * @param tone  of light above white; BT.2390 for the film's peak if there is none
 */
inline Rgb reference(const ColourSpace &space, int depth, double y, double u, double v,
                     Tone tone = {})
{
    using namespace by_the_standards;
    const Rgb code = decoded(space, depth, y, u, v);
    if (space.transfer == Transfer::SDR) {
        const Rgb c = by_bt709(space.primaries, code);
        const auto byte = [](double x) { return 255 * std::clamp(x, 0.0, 1.0); };
        return {byte(c.red), byte(c.green), byte(c.blue)};
    }
    const bool scene = space.transfer == Transfer::HLG;
    const double peak = scene ? 1000 : space.peak;
    const auto light = [&](double x) {
        const double inside = std::clamp(x, 0.0, 1.0);
        return scene ? hlg_scene(inside) : std::min(pq_light(inside), peak);
    };
    Rgb c = {light(code.red), light(code.green), light(code.blue)};
    double factor = 1;
    if (scene) {
        const double luminance = 0.2627 * c.red + 0.6780 * c.green + 0.0593 * c.blue;
        factor = peak * std::pow(std::max(luminance, 1e-9), 0.2);
    }
    const double largest = factor * std::max({c.red, c.green, c.blue, 1e-6});
    factor *= tone ? tone(largest) : bt2390(peak, 203)(largest);
    c = by_bt709(space.primaries, {c.red * factor, c.green * factor, c.blue * factor});
    return {encoded(c.red), encoded(c.green), encoded(c.blue)};
}

} // namespace platform
