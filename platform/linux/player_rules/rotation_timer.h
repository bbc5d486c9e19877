/**
 * The player's timer of timed rotation, followed from outside: it asks nothing of the platform
 * until it fires, but the player starts it anew whenever it writes certain configuration keys,
 * after turns and after launch requests. Values that others write to the keys count when the player
 * reads them next, and here no sooner. Times are arguments, in seconds of any clock. Any thread,
 * one at a time.
 */
#pragma once

#include <array>
#include <optional>
#include <string>

namespace platform {

/** What the stored timer indices stand for. */
inline constexpr std::array<int, 10> ROTATION_INTERVALS_S = {300, 330, 360, 390, 420,
                                                             450, 480, 540, 600, 900};

/** Seconds of a stored index; an unknown one counts as the first. */
int rotation_interval_s(int index);

class RotationTimerModel {
  public:
    /** Whether the player has timed rotation switched on. */
    bool on() const { return on_; }

    /** The player was launched, for the first time or again. @param stored the switch's key */
    void launched(bool stored);

    /** The player wrote a key. @return whether it starts its timer anew after that */
    bool wrote(const std::string &key, int value, bool portrait);

    /** The player starts its timer anew; it runs only when it is switched on and launched. */
    void restart(double now, int interval_s);

    /** The timer does not run until the next start. */
    void give_up() { end_.reset(); }

    /** Seconds until the panel is turned; nothing while the timer does not run or is over. */
    std::optional<double> left_s(double now) const;

  private:
    bool on_ = false;
    bool launched_ = false;
    std::optional<double> end_;
};

} // namespace platform
