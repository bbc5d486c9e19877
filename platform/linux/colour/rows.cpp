/*
 * Compiled once for each instruction set, as the Version of the name ROWS_VERSION. No function of
 * the standard library is used: one that is compiled here for a newer processor might be the one
 * that all of the program gets.
 */
#include "colour/rows.h"

#include <cstring>

#if defined(__SSE__)
#include <immintrin.h>
#endif

#ifndef ROWS_VERSION
#define ROWS_VERSION BASE
#endif

namespace platform::rows {

namespace {

// Of loops over 16-bit numbers, and of shifts by numbers that it knows, the compiler makes vectors
// by itself.

template <typename Sample, int SHIFT> void unpack_luma(const void *from, int pixels, int16_t *to)
{
    constexpr int UP = sizeof(Sample) == 1 ? 7 : 5;
    const auto *y = static_cast<const Sample *>(from);
    for (int x = 0; x < pixels; ++x)
        to[x] = static_cast<int16_t>((y[x] >> SHIFT) << UP);
}

/** What lies a quarter of the way from one sample to another, around 0. */
template <typename Sample> inline int16_t difference(int nearer, int farther)
{
    constexpr int UP = sizeof(Sample) == 1 ? 6 : 4;
    constexpr int CENTRE = 1 << 15;
    return static_cast<int16_t>(((3 * nearer + farther) << UP) ^ CENTRE);
}

template <typename Sample> void unpack_planar(const void *const (&rows)[2], int count, int16_t *to)
{
    const auto *c0 = static_cast<const Sample *>(rows[0]);
    const auto *c1 = static_cast<const Sample *>(rows[1]);
    for (int i = 0; i < count; ++i)
        to[i] = difference<Sample>(c0[i], c1[i]);
}

// Pairs are read as one number of twice the width: what has vectors has shifts, but few ways to
// take every other sample.
template <typename Sample, typename Pair, int SHIFT>
void unpack_interleaved(const void *const (&rows)[2], int count, Stretch &to)
{
    constexpr int BITS = 8 * sizeof(Sample);
    // Rows of pairs need not lie where their numbers would.
    const auto pair = [&rows](int row, int i) {
        Pair read;
        memcpy(&read, static_cast<const Pair *>(rows[row]) + i, sizeof read);
        return read;
    };
    const auto lower = [](Pair both) { return static_cast<Sample>(both) >> SHIFT; };
    const auto upper = [](Pair both) { return static_cast<int>(both >> (BITS + SHIFT)); };
    for (int i = 0; i < count; ++i) {
        to.u[i] = difference<Sample>(lower(pair(0, i)), lower(pair(1, i)));
        to.v[i] = difference<Sample>(upper(pair(0, i)), upper(pair(1, i)));
    }
}

void unpack(YuvFormat format, const Sources &from, int pixels, Stretch &to)
{
    constexpr int P010_SHIFT = 6;
    const int wanted = pixels / 2 + 1;
    const int count = wanted < from.differences ? wanted : from.differences;
    switch (format) {
    case YuvFormat::I420:
        unpack_luma<uint8_t, 0>(from.y, pixels, to.y);
        unpack_planar<uint8_t>(from.u, count, to.u);
        unpack_planar<uint8_t>(from.v, count, to.v);
        break;
    case YuvFormat::NV12:
        unpack_luma<uint8_t, 0>(from.y, pixels, to.y);
        unpack_interleaved<uint8_t, uint16_t, 0>(from.u, count, to);
        break;
    case YuvFormat::I420_10:
        unpack_luma<uint16_t, 0>(from.y, pixels, to.y);
        unpack_planar<uint16_t>(from.u, count, to.u);
        unpack_planar<uint16_t>(from.v, count, to.v);
        break;
    case YuvFormat::P010:
        unpack_luma<uint16_t, P010_SHIFT>(from.y, pixels, to.y);
        unpack_interleaved<uint16_t, uint32_t, P010_SHIFT>(from.u, count, to);
        break;
    }
    // Beyond the picture's edge its last colour goes on.
    for (int i = count; i < wanted; ++i) {
        to.u[i] = to.u[count - 1];
        to.v[i] = to.v[count - 1];
    }
}

/** The upper half of a product. */
inline int16_t upper_half(int16_t a, int16_t b)
{
    return static_cast<int16_t>((int32_t{a} * b) >> 16);
}

inline int16_t in_byte(int16_t value)
{
    return value < 0 ? int16_t{0} : value > 255 ? int16_t{255} : value;
}

inline int16_t code_of(int16_t steps)
{
    return in_byte(static_cast<int16_t>(steps >> 5));
}

/** A number for each pixel from one for two: a pixel between two of them gets their middle. */
inline void spread(const int16_t *from, int pixels, int16_t *to)
{
    for (ptrdiff_t i = 0; i < (pixels + 1) / 2; ++i) {
        to[2 * i] = from[i];
        to[2 * i + 1] = static_cast<int16_t>((from[i] + from[i + 1]) >> 1);
    }
}

void convert(const Linear &linear, const Stretch &from, int pixels, uint32_t *to)
{
    int16_t added[3][STRETCH];
    for (int part = 0; part < 3; ++part) {
        int16_t own[STRETCH / 2 + 1];
        for (int i = 0; i < pixels / 2 + 1; ++i)
            own[i] = static_cast<int16_t>(upper_half(linear.u[part], from.u[i]) +
                                          upper_half(linear.v[part], from.v[i]));
        spread(own, pixels, added[part]);
    }
    for (int x = 0; x < pixels; ++x) {
        const auto y = static_cast<int16_t>(upper_half(linear.y, from.y[x]) + linear.offset);
        const int16_t blue = code_of(static_cast<int16_t>(y + added[0][x]));
        const int16_t green = code_of(static_cast<int16_t>(y + added[1][x]));
        const int16_t red = code_of(static_cast<int16_t>(y + added[2][x]));
        // Halves of a pixel, so that what is summed stays in 16 bits.
        const auto lower = static_cast<uint16_t>(blue | green << 8);
        const auto upper = static_cast<uint16_t>(red | 0xff00);
        to[x] = lower | uint32_t{upper} << 16;
    }
}

/** The byte that is not used is full, as other decoders leave it. */
constexpr int32_t OPAQUE = -0x1000000;

#if defined(__AVX2__)
constexpr int LANES = 8;
#else
constexpr int LANES = 4;
#endif

using Reals = float __attribute__((vector_size(4 * LANES)));
using Wholes = int32_t __attribute__((vector_size(4 * LANES)));
using Shorts = int16_t __attribute__((vector_size(2 * LANES)));

inline Reals all(float value)
{
    return value - Reals{};
}

// What the compiler has no word for, or does not see through.
#if defined(__AVX2__)
inline Reals least(Reals a, Reals b)
{
    return static_cast<Reals>(_mm256_min_ps(a, b));
}
inline Reals most(Reals a, Reals b)
{
    return static_cast<Reals>(_mm256_max_ps(a, b));
}
/** To 12 bits, which is more than the eight of the outcome. */
inline Reals one_by_root(Reals value)
{
    return static_cast<Reals>(_mm256_rsqrt_ps(value));
}
inline Reals load(const int16_t *from)
{
    const __m128i shorts = _mm_loadu_si128(reinterpret_cast<const __m128i *>(from));
    return static_cast<Reals>(_mm256_cvtepi32_ps(_mm256_cvtepi16_epi32(shorts)));
}
inline Wholes rounded(Reals value)
{
    return reinterpret_cast<Wholes>(_mm256_cvtps_epi32(value));
}
#elif defined(__SSE2__)
inline Reals least(Reals a, Reals b)
{
    return static_cast<Reals>(_mm_min_ps(a, b));
}
inline Reals most(Reals a, Reals b)
{
    return static_cast<Reals>(_mm_max_ps(a, b));
}
inline Reals one_by_root(Reals value)
{
    return static_cast<Reals>(_mm_rsqrt_ps(value));
}
#else
inline Reals least(Reals a, Reals b)
{
    return a < b ? a : b;
}
inline Reals most(Reals a, Reals b)
{
    return a > b ? a : b;
}
inline Reals one_by_root(Reals value)
{
    Reals root = {};
    for (int lane = 0; lane < LANES; ++lane)
        root[lane] = 1 / __builtin_sqrtf(value[lane]);
    return root;
}
#endif

#if !defined(__AVX2__)
inline Reals load(const int16_t *from)
{
    Shorts shorts;
    memcpy(&shorts, from, sizeof shorts);
    return __builtin_convertvector(__builtin_convertvector(shorts, Wholes), Reals);
}

inline Wholes rounded(Reals value)
{
    return __builtin_convertvector(value + 0.5F, Wholes);
}
#endif

/** Of z from -1 to 1. Even and odd powers apart are two short chains instead of a long one. */
template <int COUNT> inline Reals polynomial(const float (&factors)[COUNT], Reals z)
{
    constexpr int LAST_EVEN = (COUNT - 1) / 2 * 2;
    constexpr int LAST_ODD = (COUNT - 2) / 2 * 2 + 1;
    const Reals square = z * z;
    Reals even = all(factors[LAST_EVEN]);
    for (int i = LAST_EVEN - 2; i >= 0; i -= 2)
        even = even * square + factors[i];
    Reals odd = all(factors[LAST_ODD]);
    for (int i = LAST_ODD - 2; i >= 1; i -= 2)
        odd = odd * square + factors[i];
    return odd * z + even;
}

/** What is 0 to 1 as what a polynomial takes. */
inline Reals centred(Reals unit)
{
    return unit * 2.0F - 1.0F;
}

inline Reals fourth_root(Reals value)
{
    constexpr float TINY = 1e-12F;
    return one_by_root(one_by_root(most(least(value, all(1)), all(TINY))));
}

struct Colours {
    Reals red;
    Reals green;
    Reals blue;
};

inline Reals largest(const Colours &c)
{
    return most(most(c.red, c.green), c.blue);
}

/** @param code from -1, which is black, to 1 */
template <bool SCENE> inline Reals light(const Mapping &mapping, Reals code)
{
    const Reals root = polynomial(mapping.light, code);
    return SCENE ? root * root : root * root * (root * root);
}

inline Reals gain(const Mapping &mapping, Reals at)
{
    return polynomial(mapping.gain, most(at * mapping.gain_scale + mapping.gain_offset, all(-1)));
}

template <bool SCENE> inline Colours on_screen(const Mapping &mapping, const Colours &code)
{
    Colours c = {light<SCENE>(mapping, code.red), light<SCENE>(mapping, code.green),
                 light<SCENE>(mapping, code.blue)};
    Reals factor;
    if constexpr (SCENE) {
        const Reals luminance = c.red * 0.2627F + c.green * 0.6780F + c.blue * 0.0593F;
        const Reals bright = polynomial(mapping.bright, centred(fourth_root(luminance)));
        factor = bright * gain(mapping, fourth_root(bright * largest(c))) * mapping.white;
    } else {
        factor = gain(mapping, largest(code));
    }
    return {c.red * factor, c.green * factor, c.blue * factor};
}

/** The polynomial is less than half a code below 0 at its lowest, and above 255 at its highest. */
inline Wholes byte_of(const Mapping &mapping, const float (&row)[3], const Colours &c)
{
    const Reals value = c.red * row[0] + c.green * row[1] + c.blue * row[2];
    return rounded(polynomial(mapping.code, centred(fourth_root(value))));
}

template <bool SCENE>
void map_all(const Mapping &shared, const int16_t *u, const int16_t *v, const int16_t *y,
             int pixels, uint32_t *to)
{
    const Mapping mapping =
        shared; // of which the compiler knows that writing pixels leaves it alone
    for (int x = 0; x < pixels; x += LANES) {
        const Reals luma = load(y + x) * mapping.y + mapping.y_offset;
        const Reals cb = load(u + x);
        const Reals cr = load(v + x);
        const auto code = [&](int part) {
            const Reals value = luma + cb * mapping.u[part] + cr * mapping.v[part];
            return least(most(value, all(-1)), all(1));
        };
        const Colours c = on_screen<SCENE>(mapping, {code(0), code(1), code(2)});
        const Wholes pixel = byte_of(mapping, mapping.out[0], c) |
                             byte_of(mapping, mapping.out[1], c) << 8 |
                             byte_of(mapping, mapping.out[2], c) << 16 | OPAQUE;
        memcpy(to + x, &pixel, sizeof pixel);
    }
}

void map(const Mapping &mapping, const Stretch &from, int pixels, uint32_t *to)
{
    int16_t u[STRETCH];
    int16_t v[STRETCH];
    spread(from.u, pixels, u);
    spread(from.v, pixels, v);
    if (mapping.scene)
        map_all<true>(mapping, u, v, from.y, pixels, to);
    else
        map_all<false>(mapping, u, v, from.y, pixels, to);
}

} // namespace

const Version ROWS_VERSION = {unpack, convert, map};

} // namespace platform::rows
