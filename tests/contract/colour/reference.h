/** What a film's numbers are to become on the screen, computed in doubles and step by step. */
#pragma once

#include <algorithm>
#include <cmath>

#include "colour/hdr_curves.h"

namespace platform {

/** Of 0 to 255. */
struct Rgb {
    double red;
    double green;
    double blue;
};

inline double encoded(double light)
{
    return 255 * std::pow(std::clamp(light, 0.0, 1.0), 1 / SCREEN_GAMMA);
}

inline Rgb times(const Matrix3 &m, double a, double b, double c)
{
    const auto row = [&](int i) { return m[i][0] * a + m[i][1] * b + m[i][2] * c; };
    return {row(0), row(1), row(2)};
}

/** @param depth bits of the three numbers */
inline Rgb reference(const ColourSpace &space, int depth, double y, double u, double v)
{
    const Quantization q = quantization(space, depth);
    const Rgb code = times(rgb_from_yuv(space), (y - q.black) / q.range, (u - q.centre) / q.span,
                           (v - q.centre) / q.span);
    if (space.transfer == Transfer::SDR) {
        const Rgb c = times(to_bt709(space.primaries), code.red, code.green, code.blue);
        const auto byte = [](double x) { return 255 * std::clamp(x, 0.0, 1.0); };
        return {byte(c.red), byte(c.green), byte(c.blue)};
    }
    const bool scene = space.transfer == Transfer::HLG;
    const double peak = scene ? HLG_PEAK : space.peak;
    const auto light = [&](double x) {
        const double inside = std::clamp(x, 0.0, 1.0);
        return scene ? scene_of_hlg(inside) : std::min(light_of_pq(inside), peak);
    };
    Rgb c = {light(code.red), light(code.green), light(code.blue)};
    double factor = 1;
    if (scene) {
        const double luminance = 0.2627 * c.red + 0.6780 * c.green + 0.0593 * c.blue;
        factor = peak * std::pow(std::max(luminance, 1e-9), HLG_SYSTEM_GAMMA - 1);
    }
    const double largest = factor * std::max({c.red, c.green, c.blue, 1e-6});
    factor *= ToneCurve(peak, REFERENCE_WHITE).gain(largest) / REFERENCE_WHITE;
    c = times(to_bt709(space.primaries), c.red * factor, c.green * factor, c.blue * factor);
    return {encoded(c.red), encoded(c.green), encoded(c.blue)};
}

} // namespace platform
