/**
 * Whether a machine shows both fields of each frame of an interlaced film in time. It decides only,
 * from how late pictures are, and knows no clock. The streaming thread of one pipeline at a time.
 */
#pragma once

#include <chrono>

namespace platform {

class FieldPace {
  public:
    /**
     * One of two pictures a frame has come to the screen, or was left out for being late.
     *
     * @param late how long after its time; negative: before it
     * @return true, once, when too many have been late for too long
     */
    bool on_picture(std::chrono::nanoseconds late);

    /** Whether the film is to go on with one picture a frame; once so, always so. */
    bool is_halved() const { return bad_stretches_ >= BAD_STRETCHES; }

  private:
    static constexpr int BAD_STRETCHES = 3;

    int pictures_ = 0; ///< in the present stretch
    int late_ = 0;     ///< of them
    int bad_stretches_ = 0;
};

} // namespace platform
