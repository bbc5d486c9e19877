/** A decoded picture in memory: luma, and a pair of chroma samples, Cb and Cr, for two by two
 * pixels. */
#pragma once

#include <cstddef>
#include <cstdint>

#include "base/geometry.h"

namespace platform {

/** How its samples lie, with the names that the field has for them. */
enum class YuvFormat {
    I420,    ///< 8 bits, each kind in a plane of its own
    NV12,    ///< 8 bits, Cb and Cr in turns
    I420_10, ///< 10 bits in the lower ones of 16, each kind in a plane of its own
    P010,    ///< 10 bits in the upper ones of 16, Cb and Cr in turns
};

inline bool is_wide(YuvFormat format)
{
    return format == YuvFormat::I420_10 || format == YuvFormat::P010;
}

inline bool is_interleaved(YuvFormat format)
{
    return format == YuvFormat::NV12 || format == YuvFormat::P010;
}

/** Bits of a sample. */
inline int depth_of(YuvFormat format)
{
    return is_wide(format) ? 10 : 8;
}

struct YuvImage {
    YuvFormat format;
    Size size;
    const uint8_t *planes[3]; ///< luma; Cb and Cr, or both in the second
    ptrdiff_t strides[3];     ///< bytes from row to row
    /** The planes are those of a picture twice as wide and high: a pixel is the mean of four. */
    bool doubled = false;

    Size chroma_size() const
    {
        return doubled ? size : Size{(size.width + 1) / 2, (size.height + 1) / 2};
    }
};

} // namespace platform
