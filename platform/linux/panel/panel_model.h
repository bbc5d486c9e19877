/**
 * The panel of the set as this machine imitates it: its native size, the angle it has been turned
 * to, and a turn under way. The window service tells the size, the display rotator and the virtual
 * key start turns, the video plane and the media player ask for the angle.
 *
 * Main-loop thread only, but for angle(), width() and height().
 */
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <vector>

#include <Ecore.h>

#include "base/toolkit_handles.h"

namespace platform {

class PanelModel {
  public:
    /** The one panel. */
    static PanelModel &get();

    /**
     * Size in the units that windows are measured in, never turned; 0 until the window knows its
     * output. Any thread.
     */
    int width() const { return width_; }
    int height() const { return height_; }

    /** Pixels per unit: above 1 where the compositor enlarges what windows draw. Any thread. */
    double scale() const { return scale_; }

    /** The same size in the panel's own pixels. Any thread. */
    int pixel_width() const;
    int pixel_height() const;

    /** Tells size and scale; those who listen are told when one of them has changed. */
    void set_size(int width, int height, double scale = 1.0);

    /** Degrees clockwise the panel has been turned: 0, 90, 180 or 270. Any thread. */
    int angle() const { return angle_; }

    /** Whether the set has a rotator. */
    bool can_turn() const;

    /** Whether a turn is under way. */
    bool turning() const { return target_ >= 0; }

    /** Degrees that the turn under way ends at; -1 without one. */
    int target() const { return target_; }

    /** Standing still or turning, and where to: a display_rotator_state_e value. */
    int status() const;

    /**
     * Starts a turn: status 1 or 2, after the configured time the angle changes, then status 0. A
     * turn asked for during a turn, or to the present angle, is ignored with a log line.
     *
     * @return false when there is no rotator
     */
    bool turn_to(int degrees);

    /** Turns to the other orientation: landscape to 90, portrait to 0. */
    bool toggle();

    /** Sets the angle at start, without a turn. */
    void set_first_angle(int degrees);

    /** The panel stands so: another program has turned it. */
    void follow(int degrees);

    /** Gives up a turn under way, without a report; the angle stays. For the end of the program. */
    void stop();

    /** A function is called for as long as this is kept; it may let go of it itself. */
    using Subscription = std::shared_ptr<const void>;

    /** Called with status() on each change of it. */
    [[nodiscard]] Subscription on_status(std::function<void(int)> listener);

    /** Called when size or scale have changed; read them from here. */
    [[nodiscard]] Subscription on_size(std::function<void()> listener);

    /** Called when the angle has changed and the window's content has to follow. */
    [[nodiscard]] Subscription on_angle(std::function<void(int)> listener);

  private:
    template <typename... Values>
    using Listeners = std::vector<std::weak_ptr<const std::function<void(Values...)>>>;

    PanelModel() = default;
    void finish_turn();

    std::atomic<int> width_{0};
    std::atomic<int> height_{0};
    std::atomic<double> scale_{1.0};
    std::atomic<int> angle_{0};
    int target_ = -1;
    TimerPtr timer_;
    Listeners<int> status_listeners_;
    Listeners<int> angle_listeners_;
    Listeners<> size_listeners_;
};

} // namespace platform
