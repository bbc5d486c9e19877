#include "colour/plane_scaler.h"

#include <libyuv/convert.h>
#include <libyuv/planar_functions.h>
#include <libyuv/scale.h>

namespace platform {

namespace {

// Averages from half the size on, and is the same as the linear one above that.
constexpr libyuv::FilterMode FILTER = libyuv::kFilterBox;

/** Three planes, one behind the other in memory that is made large enough. */
YuvImage laid_out(YuvFormat format, const Size &size, std::vector<uint8_t> &memory)
{
    YuvImage image = {format, size, {}, {}};
    const Size half = image.half();
    const ptrdiff_t sample = is_wide(format) ? 2 : 1;
    const size_t luma = static_cast<size_t>(sample * size.area());
    const size_t differences = static_cast<size_t>(sample * half.area());
    memory.resize(luma + 2 * differences);
    image.planes[0] = memory.data();
    image.planes[1] = memory.data() + luma;
    image.planes[2] = memory.data() + luma + differences;
    image.strides[0] = sample * size.width;
    image.strides[1] = sample * half.width;
    image.strides[2] = sample * half.width;
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

// The library scales interleaved differences for some sizes only.
YuvImage planar(const YuvImage &image, std::vector<uint8_t> &memory)
{
    const Size half = image.half();
    if (image.format == YuvFormat::NV12) {
        YuvImage result = laid_out(YuvFormat::I420, image.size, memory);
        const Plane<uint8_t> both(image, 1);
        const Plane<uint8_t> u(result, 1);
        const Plane<uint8_t> v(result, 2);
        libyuv::SplitUVPlane(both.from, both.stride, u.to, u.stride, v.to, v.stride, half.width,
                             half.height);
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
    for (int i = 0; i < 3; ++i) {
        const Size from_size = i == 0 ? from.size : from.half();
        const Size to_size = i == 0 ? to.size : to.half();
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
    const YuvImage from = planar(image, planar_);
    const YuvImage to = laid_out(from.format, size, scaled_);
    if (is_wide(from.format))
        scale_planes<uint16_t>(from, to, libyuv::ScalePlane_16);
    else
        scale_planes<uint8_t>(from, to, libyuv::ScalePlane);
    return to;
}

} // namespace platform
