/**
 * Whether a machine shows both fields of each frame of an interlaced film in time. It decides only,
 * from how late pictures are, and knows no clock: a while is so many pictures.
 */
#pragma once

#include <atomic>
#include <chrono>

namespace platform {

class FieldPace {
  public:
    /**
     * A picture of an interlaced frame has come to the screen, or was left out for being late. The
     * streaming thread of one pipeline at a time.
     *
     * @param late how long after its time; negative: before it
     * @return true, once, when too many have been late for too long for the first time
     */
    bool on_picture(std::chrono::nanoseconds late);

    /**
     * Whether the film is to have one picture a frame for a while. Each time that two are too many
     * again soon after it stays so for twice as long. Any thread.
     */
    bool is_halved() const { return halved_; }

    /** Whether there were any such frames; the caps of some films do not say so. Any thread. */
    bool had_fields() const { return had_fields_; }

  private:
    bool halve();

    std::atomic<bool> had_fields_{false};
    std::atomic<bool> halved_{false};
    int pictures_ = 0;      ///< in the present stretch
    int late_ = 0;          ///< of them
    int stretches_ = 0;     ///< since the last change, of the halved ones the good
    int bad_stretches_ = 0; ///< in a row, at full pace
    int rest_ = 0;          ///< halved stretches until full pace is tried again; 0: never halved
};

} // namespace platform
