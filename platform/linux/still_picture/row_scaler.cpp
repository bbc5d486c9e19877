#include "still_picture/row_scaler.h"

#include <cmath>
#include <cstring>

namespace platform {

namespace {

// Weights have 14 fractional bits, rows between the two passes 8: a sum fits into 32 bits.
constexpr uint32_t ONE = 1 << 14;
constexpr int ACROSS_SHIFT = 6;
constexpr int DOWN_SHIFT = 22;
constexpr int CHANNELS = 4;

} // namespace

RowScaler::Axis::Axis(int from, int to)
{
    taps.reserve(static_cast<size_t>(to));
    if (to < from)
        shrink(from, to);
    else
        grow(from, to);
}

void RowScaler::Axis::shrink(int from, int to)
{
    const double step = static_cast<double>(from) / to;
    std::vector<double> covered;
    for (int i = 0; i < to; ++i) {
        const double begin = i * step;
        const double end = std::min<double>(begin + step, from);
        const int first = static_cast<int>(begin);
        covered.clear();
        for (int at = first; at < end && at < from; ++at)
            covered.push_back(std::min<double>(at + 1, end) - std::max<double>(at, begin));
        add(first, covered);
    }
}

void RowScaler::Axis::grow(int from, int to)
{
    const double step = static_cast<double>(from) / to;
    for (int i = 0; i < to; ++i) {
        const double center = std::clamp((i + 0.5) * step - 0.5, 0.0, from - 1.0);
        const int first = std::min(static_cast<int>(center), std::max(0, from - 2));
        if (from == 1)
            add(0, {1.0});
        else
            add(first, {1.0 - (center - first), center - first});
    }
}

void RowScaler::Axis::add(int first, const std::vector<double> &amounts)
{
    double sum = 0;
    for (const double amount : amounts)
        sum += amount;
    const size_t start = weights.size();
    uint32_t given = 0;
    size_t largest = start;
    for (const double amount : amounts) {
        weights.push_back(static_cast<uint32_t>(std::floor(amount / sum * ONE)));
        given += weights.back();
        if (weights.back() > weights[largest])
            largest = weights.size() - 1;
    }
    // What rounding has left over: a plain area must keep its exact colour.
    weights[largest] += ONE - given;
    const int count = static_cast<int>(amounts.size());
    taps.push_back({first, count, start});
    most_taps = std::max(most_taps, count);
}

RowScaler::RowScaler(const Size &from, Image &into)
    : from_(from), into_(into), copy_(from == into.size), across_(from.width, into.size.width),
      down_(from.height, into.size.height), kept_rows_(down_.most_taps),
      kept_(copy_ ? 0 : static_cast<size_t>(kept_rows_) * into.size.width * CHANNELS),
      sums_(copy_ ? 0 : static_cast<size_t>(into.size.width) * CHANNELS)
{
}

uint16_t *RowScaler::kept_row(int y)
{
    return kept_.data() + static_cast<size_t>(y % kept_rows_) * into_.size.width * CHANNELS;
}

void RowScaler::push(const uint32_t *row)
{
    if (copy_) {
        if (next_out_ < into_.size.height)
            memcpy(into_.row(next_out_++), row, static_cast<size_t>(from_.width) * CHANNELS);
        return;
    }
    filter_across(row, kept_row(next_in_));
    ++next_in_;
    while (next_out_ < into_.size.height) {
        const Axis::Taps &taps = down_.taps[static_cast<size_t>(next_out_)];
        if (taps.first + taps.count > next_in_)
            break;
        filter_down(taps, into_.row(next_out_++));
    }
}

void RowScaler::filter_across(const uint32_t *row, uint16_t *out) const
{
    const auto *bytes = reinterpret_cast<const uint8_t *>(row);
    for (const Axis::Taps &taps : across_.taps) {
        const uint8_t *pixel = bytes + static_cast<size_t>(taps.first) * CHANNELS;
        const uint32_t *weight = across_.weights.data() + taps.weight;
        uint32_t sum[CHANNELS] = {};
        for (int tap = 0; tap < taps.count; ++tap, pixel += CHANNELS) {
            for (int channel = 0; channel < CHANNELS; ++channel)
                sum[channel] += weight[tap] * pixel[channel];
        }
        for (int channel = 0; channel < CHANNELS; ++channel)
            *out++ = static_cast<uint16_t>(sum[channel] >> ACROSS_SHIFT);
    }
}

void RowScaler::filter_down(const Axis::Taps &taps, uint32_t *out)
{
    const size_t values = sums_.size();
    uint32_t *const sums = sums_.data();
    std::fill(sums_.begin(), sums_.end(), 1u << (DOWN_SHIFT - 1));
    for (int tap = 0; tap < taps.count; ++tap) {
        const uint32_t weight = down_.weights[taps.weight + static_cast<size_t>(tap)];
        const uint16_t *row = kept_row(taps.first + tap);
        for (size_t i = 0; i < values; ++i)
            sums[i] += weight * row[i];
    }
    auto *bytes = reinterpret_cast<uint8_t *>(out);
    for (size_t i = 0; i < values; ++i)
        bytes[i] = static_cast<uint8_t>(sums[i] >> DOWN_SHIFT);
}

Image RowScaler::scale(const Image &picture, const Size &to)
{
    Image result(to);
    RowScaler scaler(picture.size, result);
    for (int y = 0; y < picture.size.height; ++y)
        scaler.push(picture.row(y));
    return result;
}

} // namespace platform
