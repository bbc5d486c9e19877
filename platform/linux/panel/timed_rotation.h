/**
 * When the application turns the panel next by itself. The timer is the application's own and asks
 * nothing of the platform until it fires, so this follows what is seen of it: the configuration
 * keys that the application writes when it starts its timer anew, the panel's turns and the launch
 * requests, after which it starts it too, and the panel key, at which it gives it up. Values that
 * others write to the keys count when the application reads them next, and here no sooner.
 * Main-loop thread only.
 */
#pragma once

#include <optional>
#include <string>

#include <Ecore.h>

#include "base/toolkit_handles.h"

namespace platform {

class TimedRotation {
  public:
    /** The one of this process. */
    static TimedRotation &get();

    /** Follows the application until stop(). */
    void start();
    void stop();

    /** A launch request has started the application's playback, or started it anew. */
    void launched();

    /** Whether the application has timed rotation switched on. */
    bool on() const { return on_; }

    /**
     * Seconds until the panel is turned; nothing while timed rotation is off or the panel turns,
     * and when the time is over without a turn: there was nothing to play on the other side.
     */
    std::optional<double> left_s() const;

    /** Seconds of the interval that is stored for an orientation. */
    static int interval_s(bool portrait);

  private:
    TimedRotation() = default;
    void wrote(const std::string &key, int value);
    void arm();
    static Eina_Bool on_key(void *data, int type, void *event);

    bool on_ = false;
    bool launched_ = false;
    bool following_ = false;
    int running_s_ = 0;
    std::optional<double> armed_at_;
    EventHandlerPtr keys_;
};

} // namespace platform
