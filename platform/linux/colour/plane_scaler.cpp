#include "colour/plane_scaler.h"

#include <libyuv/convert.h>
#include <libyuv/planar_functions.h>
#include <libyuv/scale.h>

namespace platform {

namespace {

// Averages below half the size each way, and is the same as the linear one above that.
constexpr libyuv::FilterMode FILTER = libyuv::kFilterBox;

constexpr int PLANES = 3;

Size plane_size(const YuvImage &image, int plane)
{
    return plane == 0 ? image.size : image.chroma_size();
}

/** Planes from one on, one behind the other in memory that is made large enough. */
YuvImage laid_out(YuvFormat format, const Size &size, std::vector<uint8_t> &memory, int first = 0)
{
    YuvImage image = {format, size, {}, {}};
    const auto bytes = [&image](int plane) {
        return image.strides[plane] * plane_size(image, plane).height;
    };
    ptrdiff_t sum = 0;
    for (int plane = first; plane < PLANES; ++plane) {
        image.strides[plane] =
            (is_wide(format) ? 2 : 1) * ptrdiff_t{plane_size(image, plane).width};
        sum += bytes(plane);
    }
    memory.resize(static_cast<size_t>(sum));
    const uint8_t *next = memory.data();
    for (int plane = first; plane < PLANES; ++plane) {
        image.planes[plane] = next;
        next += bytes(plane);
    }
    return image;
}

/** A plane as the library takes it: numbers, and rows counted in them. */
template <typename Sample> struct Plane {
    Plane(const YuvImage &image, int plane)
        : from(reinterpret_cast<const Sample *>(image.planes[plane])),
          to(const_cast<Sample *>(from)),
          stride(static_cast<int>(image.strides[plane] / static_cast<ptrdiff_t>(sizeof(Sample))))
    {
    }
    const Sample *from;
    Sample *to; ///< for planes of laid_out() only
    int stride;
};

// The library scales interleaved chroma for some sizes only.
YuvImage planar(const YuvImage &image, std::vector<uint8_t> &memory)
{
    const Size chroma = image.chroma_size();
    if (image.format == YuvFormat::NV12) {
        YuvImage result = laid_out(YuvFormat::I420, image.size, memory, 1);
        const Plane<uint8_t> both(image, 1);
        const Plane<uint8_t> u(result, 1);
        const Plane<uint8_t> v(result, 2);
        libyuv::SplitUVPlane(both.from, both.stride, u.to, u.stride, v.to, v.stride, chroma.width,
                             chroma.height);
        result.planes[0] = image.planes[0];
        result.strides[0] = image.strides[0];
        return result;
    }
    if (image.format == YuvFormat::P010) {
        const YuvImage result = laid_out(YuvFormat::I420_10, image.size, memory);
        const Plane<uint16_t> luma(image, 0);
        const Plane<uint16_t> both(image, 1);
        const Plane<uint16_t> y(result, 0);
        const Plane<uint16_t> u(result, 1);
        const Plane<uint16_t> v(result, 2);
        libyuv::P010ToI010(luma.from, luma.stride, both.from, both.stride, y.to, y.stride, u.to,
                           u.stride, v.to, v.stride, image.size.width, image.size.height);
        return result;
    }
    return image;
}

template <typename Sample, typename Scale>
void scale_planes(const YuvImage &from, const YuvImage &to, Scale scale)
{
    for (int i = 0; i < PLANES; ++i) {
        const Size from_size = plane_size(from, i);
        const Size to_size = plane_size(to, i);
        const Plane<Sample> source(from, i);
        const Plane<Sample> target(to, i);
        scale(source.from, source.stride, from_size.width, from_size.height, target.to,
              target.stride, to_size.width, to_size.height, FILTER);
    }
}

} // namespace

YuvImage PlaneScaler::scaled(const YuvImage &image, const Size &size)
{
    if (image.size == size)
        return image;
    if (image.size == Size{2 * size.width, 2 * size.height}) {
        YuvImage half = image;
        half.size = size;
        half.doubled = true;
        return half;
    }
    const YuvImage from = planar(image, planar_);
    const YuvImage to = laid_out(from.format, size, scaled_);
    if (is_wide(from.format))
        scale_planes<uint16_t>(from, to, libyuv::ScalePlane_16);
    else
        scale_planes<uint8_t>(from, to, libyuv::ScalePlane);
    return to;
}

} // namespace platform
