/**
 * When the application turns the panel next by itself: feeds the model of the application's timer
 * with what is seen of it, its writes to the configuration, the panel's turns, the launch requests
 * and the panel key. Main-loop thread only.
 */
#pragma once

#include <optional>
#include <string>

#include <Ecore.h>

#include "base/toolkit_handles.h"
#include "panel/panel_model.h"
#include "player_rules/rotation_timer.h"

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
    bool on() const { return timer_.on(); }

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
    void restart();
    static Eina_Bool on_key(void *data, int type, void *event);

    RotationTimerModel timer_;
    EventHandlerPtr keys_;
    PanelModel::Subscription angle_;
};

} // namespace platform
