/**
 * The application's window as the set has it: full screen, borderless, with an alpha channel, its
 * content standing upright whichever way the panel is turned. Made and kept by the application
 * framework. Main-loop thread only.
 *
 * Two Elementary windows make one. The outer window is the real one and never turns; the inner one,
 * which the application gets, has the turned size, is drawn into an image of the outer one, and is
 * shown, hidden and deleted by the application as if it were real. It comes onto the screen when
 * there is something to see in it, or below it; the application is told that it is visible as soon
 * as it could be. A window that was hidden and has left the screen cannot be shown again: the
 * toolkit never draws on its surface again once it has been unmapped. What the toolkit cannot
 * answer for the inner window is answered by efl_on_tv.cpp.
 */
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include <Ecore.h>
#include <Elementary.h>

#include "base/geometry.h"
#include "base/toolkit_handles.h"
#include "panel/panel_model.h"
#include "wayland/idle_inhibitor.h"
#include "window/ecore_wl2_more.h"
#include "window/input_feed.h"
#include "window/pointer_hider.h"
#include "window/wayland_sync.h"
#include "window/window_mapping.h"

namespace platform {

class TvWindow {
  public:
    /** None may be empty; one that is not set does nothing. */
    struct Listener {
        /** The user asked for the window to be closed. */
        std::function<void()> closed = [] {};
        /** Iconified (false) or back on the screen (true). */
        std::function<void(bool)> seen = [](bool) {};
        /** The application's window has something to show (true), or is all transparent. */
        std::function<void(bool)> content_seen = [](bool) {};
        /** About to come with nothing to see in it. */
        std::function<void()> without_picture = [] {};
        /** The connection broke for good. */
        std::function<void()> compositor_gone = [] {};
        /** From the screen; maybe after this object's end. */
        std::function<void()> gone = [] {};
    };

    /** @return null when no compositor answers; the reason is logged */
    static std::unique_ptr<TvWindow> create(const std::string &name, Listener listener);
    ~TvWindow();
    TvWindow(const TvWindow &) = delete;
    TvWindow &operator=(const TvWindow &) = delete;

    /** The window of this process, or null. */
    static TvWindow *current();

    /** The window, handed out once; null after that. The application owns it from then on. */
    Evas_Object *take();

    /** Whether this is the application's window. */
    bool is(const Evas_Object *window) const { return window && window == inner_; }
    bool is(const Ecore_Evas *canvas) const { return canvas && canvas == inner_canvas_; }

    /** The application's window; null when it has been deleted. */
    Evas_Object *content() const { return inner_; }

    /** The real window's canvas. */
    Ecore_Evas *outer_canvas() const { return outer_canvas_; }

    /** The real window, for tests. */
    Evas_Object *outer() const { return outer_.get(); }

    /**
     * Puts the window onto the screen when it has been shown, or as soon as it is: there is a
     * picture below it.
     */
    void reveal();

    /** Waits for the compositor where that can be done without a deadlock. */
    void sync();

  private:
    /** Ends the connection, and with it the toolkit's Wayland part. */
    struct ConnectionEnd {
        void operator()(Ecore_Wl2_Display *display) const;
    };
    using ConnectionPtr = std::unique_ptr<Ecore_Wl2_Display, ConnectionEnd>;

    TvWindow(ConnectionPtr display, const std::string &name, Listener listener);

    void make_outer(const std::string &name);
    void make_inner(const std::string &name);
    void follow_events();

    void turn();
    void place_content();
    void place_frame();
    void fit_frame(Size content);
    void fit();
    void shown();
    void look();
    void give_up_waiting();
    void hidden();
    void leave_screen();
    void inner_deleted();
    void frame_drawn();
    void content_drawn();
    void announce_visibility(bool visible);
    void delete_outer();

    const ConnectionPtr display_; ///< outlives all below
    Listener listener_;
    ObjectPtr outer_;
    Evas_Object *inner_ = nullptr; ///< the application's, once it has taken it
    Evas_Object *image_ = nullptr;
    Evas_Object *frame_ = nullptr; ///< clips the image
    Rect drawn_part_;              ///< of the content
    Ecore_Evas *outer_canvas_ = nullptr;
    Ecore_Evas *inner_canvas_ = nullptr;
    std::unique_ptr<WindowMapping> mapping_;
    std::unique_ptr<InputFeed> input_;
    std::unique_ptr<PointerHider> pointer_;
    std::unique_ptr<IdleInhibitor> idle_inhibitor_;
    std::unique_ptr<ConnectionWatch> connection_watch_;
    EventHandlerPtr device_;
    PanelModel::Subscription angle_;
    TimerPtr look_timer_;
    TimerPtr reveal_timer_;
    TimerPtr hide_timer_;
    JobPtr visible_job_;
    JobPtr delete_job_;
    bool taken_ = false;
    bool awaiting_frame_ = false;
    bool visible_ = false;
    std::optional<bool> content_seen_;
    bool announced_visible_ = false;
};

/**
 * Sets the toolkit up for a program that is alone on the screen, and the locale; before either is
 * used, and while there is no other thread.
 */
void prepare_toolkit();

/** Gives ECORE_EVENT_DEVICE_ADD its number; once, before the application starts. */
void announce_device_events();

} // namespace platform
