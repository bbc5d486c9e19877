#include "tone.h"

#include <algorithm>
#include <cmath>

namespace sample {

namespace {

constexpr double FULL_TURN = 6.28318530717959;
constexpr double LOUDNESS = 0.12;
constexpr double LONGEST_FADE = 1.0; // seconds

} // namespace

Tone::Tone(double pitch, double seconds) : pitch_(pitch), seconds_(seconds) {}

std::vector<int16_t> Tone::samples(int64_t first, int64_t count) const
{
    std::vector<int16_t> result;
    result.reserve(static_cast<size_t>(count) * CHANNELS);
    const double fade = std::min(LONGEST_FADE, seconds_ / 4);
    for (int64_t i = first; i < first + count; ++i) {
        const double time = static_cast<double>(i) / RATE;
        const double edge = std::clamp(std::min(time, seconds_ - time) / fade, 0.0, 1.0);
        // The octave above, quietly, takes the test-signal character from the plain sine.
        const double wave = 0.85 * std::sin(FULL_TURN * pitch_ * time) +
                            0.15 * std::sin(FULL_TURN * 2 * pitch_ * time);
        const auto value = static_cast<int16_t>(std::lround(32767 * LOUDNESS * edge * edge * wave));
        result.insert(result.end(), CHANNELS, value);
    }
    return result;
}

} // namespace sample
