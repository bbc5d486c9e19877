/** The sound of a sample video: one soft tone that comes and goes gently. */
#pragma once

#include <cstdint>
#include <vector>

namespace sample {

class Tone {
  public:
    static constexpr int RATE = 48000; ///< samples in a second
    static constexpr int CHANNELS = 2;

    /**
     * @param pitch   in hertz
     * @param seconds length with both fades
     */
    Tone(double pitch, double seconds);

    /** Interleaved 16-bit samples of a stretch of the tone, counted in samples of one channel. */
    std::vector<int16_t> samples(int64_t first, int64_t count) const;

  private:
    double pitch_;
    double seconds_;
};

} // namespace sample
