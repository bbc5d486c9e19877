#include "colour/colour_converter.h"

#include <algorithm>
#include <cmath>

namespace platform {

namespace {

constexpr double LARGEST_BYTE = 255;

/** Of rows::Stretch: what a number of 1 is there, before quantization(). */
constexpr double LUMA_ONE = 1 << 15;
constexpr double CHROMA_ONE = 1 << 16;

/** Quantization of a Stretch's numbers; its chroma is around 0. */
Quantization in_stretch(const ColourSpace &space, int depth)
{
    const double luma = LUMA_ONE / (1 << depth);
    const double chroma = CHROMA_ONE / (1 << depth);
    const Quantization own = quantization(space, depth);
    return {own.black * luma, own.range * luma, 0, own.span * chroma};
}

rows::Linear linear_of(const ColourSpace &space, int depth)
{
    constexpr double ONE = LARGEST_BYTE * rows::STEPS * (1 << 16);
    constexpr double HALF_CODE = rows::STEPS / 2.0;
    // Three products are cut off, which takes half a step from each in the mean.
    constexpr double CUT_OFF = 1.5;
    const Quantization q = in_stretch(space, depth);
    const Matrix3 rgb = product(to_bt709(space.primaries), rgb_from_yuv(space));
    rows::Linear linear = {};
    linear.y = static_cast<int16_t>(std::lround(ONE / q.range));
    linear.offset = static_cast<int16_t>(
        std::lround(HALF_CODE + CUT_OFF - LARGEST_BYTE * rows::STEPS * q.black / q.range));
    for (int part = 0; part < 3; ++part) {
        const auto &row = rgb[2 - part];
        linear.u[part] = static_cast<int16_t>(std::lround(row[1] * ONE / q.span));
        linear.v[part] = static_cast<int16_t>(std::lround(row[2] * ONE / q.span));
    }
    return linear;
}

// A function by a polynomial of z = -1 to 1 over an interval, through the places where that of
// Chebyshev is largest: nearly the least error that its degree can have, and none at the two ends,
// so that black stays black.
template <int COUNT, typename Function>
void fit(float (&factors)[COUNT], double from, double to, Function function)
{
    constexpr int DEGREE = COUNT - 1;
    const double pi = std::acos(-1.0);
    double before[COUNT] = {0, 1}; // z: 2z less it is the second polynomial, z again
    double current[COUNT] = {1};
    double sum[COUNT] = {};
    for (int degree = 0; degree <= DEGREE; ++degree) {
        double share = 0;
        for (int k = 0; k <= DEGREE; ++k) {
            const double angle = pi * k / DEGREE;
            const double weight = k == 0 || k == DEGREE ? 0.5 : 1;
            share += weight * function(from + (to - from) * (std::cos(angle) + 1) / 2) *
                     std::cos(angle * degree);
        }
        share *= (degree == 0 || degree == DEGREE ? 1.0 : 2.0) / DEGREE;
        for (int i = 0; i < COUNT; ++i)
            sum[i] += share * current[i];
        for (int i = DEGREE; i >= 0; --i) {
            const double next = (i ? 2 * current[i - 1] : 0) - before[i];
            before[i] = current[i];
            current[i] = next;
        }
    }
    std::transform(sum, sum + COUNT, factors,
                   [](double factor) { return static_cast<float>(factor); });
}

rows::Mapping mapping_of(const ColourSpace &space, int depth, double white)
{
    const bool scene = space.transfer == Transfer::HLG;
    const double peak = scene ? HLG_PEAK : space.peak;
    const ToneCurve curve(peak, white);
    // Codes are counted from the peak's, so that polynomials are good where there is something.
    const double top = scene ? 1 : pq_of_light(peak);
    const auto fourth_power = [](double x) { return x * x * x * x; };

    rows::Mapping mapping = {};
    mapping.scene = scene;
    const Quantization q = in_stretch(space, depth);
    const double unit = 2 / top; // of codes from -1 to 1
    mapping.y = static_cast<float>(unit / q.range);
    mapping.y_offset = static_cast<float>(-q.black / q.range * unit - 1);
    const Matrix3 rgb = rgb_from_yuv(space);
    for (int part = 0; part < 3; ++part) {
        mapping.u[part] = static_cast<float>(rgb[part][1] / q.span * unit);
        mapping.v[part] = static_cast<float>(rgb[part][2] / q.span * unit);
    }

    fit(mapping.light, 0, 1, [&](double code) {
        return scene ? std::sqrt(scene_of_hlg(code))
                     : std::pow(light_of_pq(code * top) / white, 0.25);
    });
    fit(mapping.bright, 0, 1,
        [&](double root) { return std::pow(root, 4 * (HLG_SYSTEM_GAMMA - 1)); });
    // A curve without a knee is a knee at the end, which light does not get beyond.
    constexpr double LAST_KNEE = 0.999;
    const double knee = std::min(
        LAST_KNEE, scene ? std::pow(light_of_pq(curve.knee() * pq_of_light(peak)) / peak, 0.25)
                         : curve.knee());
    fit(mapping.gain, knee, 1, [&](double at) {
        return curve.gain(scene ? peak * fourth_power(at) : light_of_pq(at * top));
    });
    // The scene's argument is 0 to 1, the code -1 to 1.
    mapping.gain_scale = static_cast<float>((scene ? 2 : 1) / (1 - knee));
    mapping.gain_offset = static_cast<float>(scene ? -(1 + knee) / (1 - knee) : -knee / (1 - knee));
    mapping.white = static_cast<float>(peak / white);

    const Matrix3 screen = to_bt709(space.primaries);
    for (int part = 0; part < 3; ++part) {
        for (int i = 0; i < 3; ++i)
            mapping.out[part][i] = static_cast<float>(screen[2 - part][i]);
    }
    fit(mapping.code, 0, 1,
        [](double root) { return LARGEST_BYTE * std::pow(root, 4 / SCREEN_GAMMA); });
    return mapping;
}

} // namespace

ColourConverter::ColourConverter(const ColourSpace &space, int depth, double white,
                                 const rows::Version &version)
    : version_(version)
{
    if (space.transfer == Transfer::SDR)
        formula_ = linear_of(space, depth);
    else
        formula_ = mapping_of(space, depth, white);
}

const rows::Version &ColourConverter::best_version()
{
#if defined(__x86_64__)
    if (rows::has_avx2())
        return rows::AVX2;
#endif
    return rows::BASE;
}

Size ColourConverter::size_for(const Size &picture, const Size &shown) const
{
    if (!maps_light())
        return shown;
    return {std::min(picture.width, shown.width), std::min(picture.height, shown.height)};
}

void ColourConverter::convert(const YuvImage &image, int first, int count, uint32_t *to,
                              ptrdiff_t pixels_per_row) const
{
    for (int row = first; row < first + count; ++row, to += pixels_per_row)
        convert_row(image, row, to);
}

void ColourConverter::convert_row(const YuvImage &image, int row, uint32_t *to) const
{
    const auto sample_row = [&image](int plane, int at) {
        return image.planes[plane] + at * image.strides[plane];
    };
    const ptrdiff_t sample = is_wide(image.format) ? 2 : 1;
    const ptrdiff_t pair = is_interleaved(image.format) ? 2 * sample : sample;
    const int last = is_interleaved(image.format) ? 1 : 2;
    const Size chroma = image.chroma_size();
    const int times = image.doubled ? 2 : 1;
    const int nearer = image.doubled ? row : row / 2;
    const int farther = std::clamp(row % 2 ? nearer + 1 : nearer - 1, 0, chroma.height - 1);
    const uint8_t *y[] = {sample_row(0, times * row), sample_row(0, times * (row + 1) - 1)};
    const uint8_t *u[] = {sample_row(1, nearer), sample_row(1, farther)};
    const uint8_t *v[] = {sample_row(last, nearer), sample_row(last, farther)};

    rows::Stretch stretch = {};
    for (int x = 0; x < image.size.width; x += rows::STRETCH) {
        const int pixels = std::min(rows::STRETCH, image.size.width - x);
        const int pairs = image.doubled ? x : x / 2;
        const ptrdiff_t luma = x * sample * times;
        const rows::Sources from = {{y[0] + luma, y[1] + luma},
                                    {u[0] + pairs * pair, u[1] + pairs * pair},
                                    {v[0] + pairs * pair, v[1] + pairs * pair},
                                    chroma.width - pairs};
        (image.doubled ? version_.unpack_doubled : version_.unpack)(image.format, from, pixels,
                                                                    stretch);
        if (const auto *linear = std::get_if<rows::Linear>(&formula_))
            version_.convert(*linear, stretch, pixels, to + x);
        else
            version_.map(std::get<rows::Mapping>(formula_), stretch, pixels, to + x);
    }
}

} // namespace platform
