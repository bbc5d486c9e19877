/**
 * The first popup would have to load fonts, pictures, drawings and classes while somebody waits for
 * it. So a popup and a toast are drawn soon after the window has come up, on a canvas of their own
 * in memory, and deleted again. What they needed stays in the caches. Main-loop thread only.
 */
#pragma once

#include <Elementary.h>

#include "base/toolkit_handles.h"

namespace platform {

class PopupPrerender {
  public:
    /**
     * Waits for the window's first frame, for the busy time after it, and for an idle moment.
     *
     * @param window outlives this
     */
    explicit PopupPrerender(Evas_Object *window);
    ~PopupPrerender();
    PopupPrerender(const PopupPrerender &) = delete;
    PopupPrerender &operator=(const PopupPrerender &) = delete;

    /** Whether it has taken place, and nothing of it is left but the caches. */
    bool done() const { return done_; }

  private:
    void wait();
    bool step();
    bool make_offscreen_window();
    void make_popup();
    void make_toast();
    void draw();
    void stop();

    static void on_frame(void *data, Evas *canvas, void *event);
    static void on_language(void *data, Evas_Object *window, void *event);
    static Eina_Bool on_time(void *data);
    static Eina_Bool on_idle(void *data);

    Evas_Object *const window_;
    TimerPtr timer_;
    IdlerPtr idler_;
    CanvasPtr canvas_;
    ObjectPtr offscreen_window_; ///< a window on that canvas
    ObjectPtr popup_;
    Evas_Object *list_ = nullptr;
    int step_ = 0;
    bool done_ = false;
};

} // namespace platform
