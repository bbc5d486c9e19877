/** Pictures for what reads them. */
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "colour/yuv_image.h"

namespace platform {

/** A picture in memory of each format, made of numbers. Rows have something behind their end. */
class Picture {
  public:
    Picture(YuvFormat format, const Size &size)
        : format_(format), size_(size), chroma_size_{(size.width + 1) / 2, (size.height + 1) / 2},
          luma_(area(size)), first_(area(chroma_size_)), second_(area(chroma_size_))
    {
        // What lies behind an edge must not be seen.
        const int rubbish = is_wide(format) ? 0xffff : 0xff;
        for (auto *plane : {&luma_, &first_, &second_})
            std::fill(plane->begin(), plane->end(), static_cast<uint16_t>(rubbish));
    }

    void set_luma(int x, int y, int value) { put(luma_, size_, x, y, value, 1, 0); }
    void set_chroma(int x, int y, int u, int v)
    {
        if (is_interleaved(format_)) {
            put(first_, chroma_size_, x, y, u, 2, 0);
            put(first_, chroma_size_, x, y, v, 2, 1);
        } else {
            put(first_, chroma_size_, x, y, u, 1, 0);
            put(second_, chroma_size_, x, y, v, 1, 0);
        }
    }

    YuvImage image() const
    {
        const auto *first = reinterpret_cast<const uint8_t *>(first_.data());
        return {format_,
                size_,
                {reinterpret_cast<const uint8_t *>(luma_.data()), first,
                 reinterpret_cast<const uint8_t *>(second_.data())},
                {stride(size_), stride(chroma_size_), stride(chroma_size_)}};
    }

    const Size &size() const { return size_; }
    const Size &chroma_size() const { return chroma_size_; }

  private:
    static constexpr int BEHIND = 3;

    static size_t area(const Size &size)
    {
        return static_cast<size_t>(2 * size.width + BEHIND) * static_cast<size_t>(size.height);
    }

    static ptrdiff_t stride(const Size &size) { return 2 * (2 * size.width + BEHIND); }

    void put(std::vector<uint16_t> &plane, const Size &size, int x, int y, int value, int step,
             int which) const
    {
        auto *row = reinterpret_cast<uint8_t *>(plane.data()) + y * stride(size);
        const int index = x * step + which;
        const int stored = format_ == YuvFormat::P010 ? value << 6 : value;
        if (is_wide(format_))
            reinterpret_cast<uint16_t *>(row)[index] = static_cast<uint16_t>(stored);
        else
            row[index] = static_cast<uint8_t>(stored);
    }

    const YuvFormat format_;
    const Size size_;
    const Size chroma_size_;
    std::vector<uint16_t> luma_;
    std::vector<uint16_t> first_;
    std::vector<uint16_t> second_;
};

} // namespace platform
