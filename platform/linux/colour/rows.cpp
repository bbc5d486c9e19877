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

/** How the samples of a format lie. */
template <typename SampleType, typename PairType, bool IS_INTERLEAVED, int SAMPLE_SHIFT>
struct Layout {
    using Sample = SampleType;
    using Pair = PairType; ///< two samples
    static constexpr bool INTERLEAVED = IS_INTERLEAVED;
    static constexpr int SHIFT = SAMPLE_SHIFT; ///< of what is stored to what is meant
    static constexpr int BITS = 8 * sizeof(Sample);
    static constexpr int DEPTH = sizeof(Sample) == 1 ? 8 : 10;
};

template <typename Function> void with_layout(YuvFormat format, Function function)
{
    constexpr int P010_SHIFT = 6;
    switch (format) {
    case YuvFormat::I420:
        return function(Layout<uint8_t, uint16_t, false, 0>());
    case YuvFormat::NV12:
        return function(Layout<uint8_t, uint16_t, true, 0>());
    case YuvFormat::I420_10:
        return function(Layout<uint16_t, uint32_t, false, 0>());
    case YuvFormat::P010:
        return function(Layout<uint16_t, uint32_t, true, P010_SHIFT>());
    }
}

/** Reads two samples that lie side by side, wherever that is, and keeps them in one number. */
template <typename Layout> inline typename Layout::Pair pair_at(const void *row, int i)
{
    typename Layout::Pair read;
    memcpy(&read, static_cast<const typename Layout::Pair *>(row) + i, sizeof read);
    return read;
}

// What has vectors has shifts, but few ways to take every other sample: hence pairs.
template <typename Layout> inline int lower(typename Layout::Pair pair)
{
    return static_cast<typename Layout::Sample>(pair) >> Layout::SHIFT;
}

template <typename Layout> inline int upper(typename Layout::Pair pair)
{
    return static_cast<int>(pair >> (Layout::BITS + Layout::SHIFT));
}

template <typename Layout> void unpack_luma(const void *row, int pixels, int16_t *to)
{
    const auto *y = static_cast<const typename Layout::Sample *>(row);
    for (int x = 0; x < pixels; ++x)
        to[x] = static_cast<int16_t>((y[x] >> Layout::SHIFT) << (15 - Layout::DEPTH));
}

/** The mean of four. */
template <typename Layout>
void unpack_doubled_luma(const void *const (&rows)[2], int pixels, int16_t *to)
{
    for (int x = 0; x < pixels; ++x) {
        const auto above = pair_at<Layout>(rows[0], x);
        const auto below = pair_at<Layout>(rows[1], x);
        const int sum = lower<Layout>(above) + upper<Layout>(above) + lower<Layout>(below) +
                        upper<Layout>(below);
        to[x] = static_cast<int16_t>(sum << (13 - Layout::DEPTH));
    }
}

/** What lies a quarter of the way from one sample to another, over 2^16. */
template <typename Layout> inline uint16_t mixed(int nearer, int farther)
{
    return static_cast<uint16_t>((3 * nearer + farther) << (14 - Layout::DEPTH));
}

template <typename Layout>
void unpack_plane(const void *nearer, const void *farther, int count, uint16_t *to)
{
    const auto *c0 = static_cast<const typename Layout::Sample *>(nearer);
    const auto *c1 = static_cast<const typename Layout::Sample *>(farther);
    for (int i = 0; i < count; ++i)
        to[i] = mixed<Layout>(c0[i], c1[i]);
}

/** Chroma between the nearer and the farther samples of `from`. */
template <typename Layout>
void unpack_chroma(const Sources &from, int count, uint16_t *u, uint16_t *v)
{
    if constexpr (Layout::INTERLEAVED) {
        for (int i = 0; i < count; ++i) {
            const auto nearer = pair_at<Layout>(from.u[0], i);
            const auto farther = pair_at<Layout>(from.u[1], i);
            u[i] = mixed<Layout>(lower<Layout>(nearer), lower<Layout>(farther));
            v[i] = mixed<Layout>(upper<Layout>(nearer), upper<Layout>(farther));
        }
    } else {
        unpack_plane<Layout>(from.u[0], from.u[1], count, u);
        unpack_plane<Layout>(from.v[0], from.v[1], count, v);
    }
}

inline int16_t around_zero(int chroma)
{
    constexpr int CENTRE = 1 << 15;
    return static_cast<int16_t>(chroma ^ CENTRE);
}

/**
 * A number for each pixel from one for two: a pixel between two of them gets their middle.
 * Processors have an instruction for that of numbers without a sign, rounded up.
 */
inline void spread(const uint16_t *from, int pixels, int16_t *to)
{
    for (ptrdiff_t i = 0; i < (pixels + 1) / 2; ++i) {
        // There is one at least, which the analyzer cannot know.
        to[2 * i] = around_zero(from[i]); // NOLINT(clang-analyzer-core.CallAndMessage)
        to[2 * i + 1] = around_zero((from[i] + from[i + 1] + 1) >> 1);
    }
}

void unpack(YuvFormat format, const Sources &from, int pixels, Stretch &to)
{
    // One behind the last, which the last pixel may lie before.
    uint16_t u[STRETCH / 2 + 1];
    uint16_t v[STRETCH / 2 + 1];
    const int wanted = (pixels + 1) / 2 + 1;
    const int count = wanted < from.chroma ? wanted : from.chroma;
    with_layout(format, [&](auto layout) {
        using Layout = decltype(layout);
        unpack_luma<Layout>(from.y[0], pixels, to.y);
        unpack_chroma<Layout>(from, count, u, v);
    });
    // Beyond the picture's edge its last colour goes on.
    for (int i = count; i < wanted; ++i) {
        u[i] = u[count - 1];
        v[i] = v[count - 1];
    }
    spread(u, pixels, to.u);
    spread(v, pixels, to.v);
}

void unpack_doubled(YuvFormat format, const Sources &from, int pixels, Stretch &to)
{
    uint16_t chroma_u[STRETCH];
    uint16_t chroma_v[STRETCH];
    with_layout(format, [&](auto layout) {
        using Layout = decltype(layout);
        unpack_doubled_luma<Layout>(from.y, pixels, to.y);
        // The four lie around their row of chroma, and a quarter of the way to the next sample.
        const auto between = [&from](ptrdiff_t nearer, ptrdiff_t farther) -> Sources {
            constexpr int STEP = sizeof(typename Layout::Sample) * (Layout::INTERLEAVED ? 2 : 1);
            const auto *u = static_cast<const uint8_t *>(from.u[0]);
            const auto *v = static_cast<const uint8_t *>(from.v[0]);
            return {{},
                    {u + nearer * STEP, u + farther * STEP},
                    {v + nearer * STEP, v + farther * STEP},
                    from.chroma};
        };
        const int count = pixels < from.chroma ? pixels : from.chroma - 1;
        unpack_chroma<Layout>(between(0, 1), count, chroma_u, chroma_v);
        if (count < pixels)
            unpack_chroma<Layout>(between(count, count), 1, chroma_u + count, chroma_v + count);
    });
    for (int x = 0; x < pixels; ++x) {
        to.u[x] = around_zero(chroma_u[x]);
        to.v[x] = around_zero(chroma_v[x]);
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

void convert(const Linear &linear, const Stretch &from, int pixels, uint32_t *to)
{
    for (int x = 0; x < pixels; ++x) {
        const auto part = [&](int i) {
            return code_of(static_cast<int16_t>(upper_half(linear.y, from.y[x]) + linear.offset +
                                                upper_half(linear.u[i], from.u[x]) +
                                                upper_half(linear.v[i], from.v[x])));
        };
        // Halves of a pixel, so that what is summed stays in 16 bits.
        const auto lower = static_cast<uint16_t>(part(0) | part(1) << 8);
        const auto upper = static_cast<uint16_t>(part(2) | 0xff00);
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
void map_all(const Mapping &shared, const Stretch &from, int pixels, uint32_t *to)
{
    // The compiler knows of its own that writing pixels leaves it alone.
    const Mapping mapping = shared;
    const auto mapped = [&](int x) {
        const Reals luma = load(from.y + x) * mapping.y + mapping.y_offset;
        const Reals cb = load(from.u + x);
        const Reals cr = load(from.v + x);
        const auto code = [&](int part) {
            const Reals value = luma + cb * mapping.u[part] + cr * mapping.v[part];
            return least(most(value, all(-1)), all(1));
        };
        const Colours c = on_screen<SCENE>(mapping, {code(0), code(1), code(2)});
        return byte_of(mapping, mapping.out[0], c) | byte_of(mapping, mapping.out[1], c) << 8 |
               byte_of(mapping, mapping.out[2], c) << 16 | OPAQUE;
    };
    const int whole = pixels / LANES * LANES;
    for (int x = 0; x < whole; x += LANES) {
        const Wholes pixel = mapped(x);
        memcpy(to + x, &pixel, sizeof pixel);
    }
    // A stretch has room for whole lanes.
    static_assert(STRETCH % LANES == 0);
    if (whole < pixels) {
        const Wholes pixel = mapped(whole);
        memcpy(to + whole, &pixel, sizeof *to * static_cast<size_t>(pixels - whole));
    }
}

void map(const Mapping &mapping, const Stretch &from, int pixels, uint32_t *to)
{
    if (mapping.scene)
        map_all<true>(mapping, from, pixels, to);
    else
        map_all<false>(mapping, from, pixels, to);
}

} // namespace

const Version ROWS_VERSION = {unpack, unpack_doubled, convert, map};

} // namespace platform::rows
