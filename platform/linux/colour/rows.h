/**
 * The inner loops of colour conversion, in as many versions as the processor may have instruction
 * sets. They work on a stretch of a row at a time, which the nearest cache holds. Any thread.
 */
#pragma once

#include <cstdint>

#include "colour/yuv_image.h"

namespace platform::rows {

constexpr int STRETCH = 256; ///< pixels at a time; even

/** A stretch as numbers that fill 16 bits, whatever the picture had; one of each for a pixel. */
struct Stretch {
    int16_t y[STRETCH]; ///< over 2^15
    int16_t u[STRETCH]; ///< chroma over 2^16 around 0
    int16_t v[STRETCH];
};

/** Where the samples of a stretch begin. */
struct Sources {
    const void *y[2]; ///< of a doubled picture the row and the one below it
    /** The nearer row of chroma and the farther one; of interleaved chroma v is not used. */
    const void *u[2];
    const void *v[2];
    int chroma; ///< how many pairs of it there are up to the end of the row
};

/** The steps in a code of 0 to 255 with which sums are made. */
constexpr int STEPS = 32;

/** Blue, green and red in steps, from the numbers of a Stretch over 2^16. */
struct Linear {
    int16_t y;
    int16_t offset; ///< of each, half a code for rounding among it
    int16_t u[3];
    int16_t v[3];
};

/** The same for light above white; colour_converter.cpp says how each is found. */
struct Mapping {
    bool scene; ///< codes are the scene's light (HLG), else the screen's (PQ)
    float y;    ///< to codes from -1 to 1
    float y_offset;
    float u[3]; ///< for red, green and blue
    float v[3];
    float light[11];  ///< of light over the code: fourth root, or of the scene's the square root
    float bright[7];  ///< scene to screen, over the fourth root of luminance
    float gain[8];    ///< over what is beyond the knee
    float gain_scale; ///< to that from the code or, of the scene, from the fourth root of light
    float gain_offset;
    float white;     ///< what the scene's light is multiplied by
    float out[3][3]; ///< to blue, green and red of the screen, from red, green and blue
    float code[6];   ///< 0 to 255 over the fourth root of light
};

/** One version of all of it. */
struct Version {
    void (*unpack)(YuvFormat format, const Sources &from, int pixels, Stretch &to);
    void (*unpack_doubled)(YuvFormat format, const Sources &from, int pixels, Stretch &to);
    void (*convert)(const Linear &linear, const Stretch &from, int pixels, uint32_t *to);
    void (*map)(const Mapping &mapping, const Stretch &from, int pixels, uint32_t *to);
};

/** The one that every processor of this kind has. */
extern const Version BASE;
#if defined(__x86_64__)
extern const Version AVX2; ///< with FMA

/** Whether the processor has what the versions of that name need, of these loops and of others. */
inline bool has_avx2()
{
    return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma");
}
#endif

} // namespace platform::rows
