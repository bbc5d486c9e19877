/**
 * The first popup would have to load fonts, pictures, drawings and classes while somebody waits for
 * it. A rehearsal does that soon after the window has come up: it puts on a popup and a toast on a
 * canvas of its own, in memory, and takes them away again. What they needed stays in the caches.
 * Main-loop thread only.
 */
#pragma once

#include <memory>

#include <Elementary.h>

namespace platform {

class Rehearsal {
  public:
    /** Waits for the window's first frame, for the busy time after it, and for an idle moment. */
    explicit Rehearsal(Evas_Object *window);
    ~Rehearsal();
    Rehearsal(const Rehearsal &) = delete;
    Rehearsal &operator=(const Rehearsal &) = delete;

    /** The window is being deleted: ends what there is. */
    void window_gone();

    /** Whether it has taken place, and nothing of it is left but the caches. */
    bool done() const { return done_; }

  private:
    struct TimerEnd {
        void operator()(Ecore_Timer *timer) const { ecore_timer_del(timer); }
    };
    struct IdlerEnd {
        void operator()(Ecore_Idler *idler) const { ecore_idler_del(idler); }
    };
    struct CanvasEnd {
        void operator()(Ecore_Evas *canvas) const { ecore_evas_free(canvas); }
    };
    struct ObjectEnd {
        void operator()(Evas_Object *object) const { evas_object_del(object); }
    };

    void wait();
    bool step();
    bool open_stage();
    void put_on_popup();
    void put_on_toast();
    void draw();
    void stop();

    static void on_frame(void *data, Evas *canvas, void *event);
    static void on_language(void *data, Evas_Object *window, void *event);
    static Eina_Bool on_time(void *data);
    static Eina_Bool on_idle(void *data);

    Evas_Object *window_;
    std::unique_ptr<Ecore_Timer, TimerEnd> timer_;
    std::unique_ptr<Ecore_Idler, IdlerEnd> idler_;
    std::unique_ptr<Ecore_Evas, CanvasEnd> canvas_;
    std::unique_ptr<Evas_Object, ObjectEnd> stage_; ///< a window on that canvas
    Evas_Object *popup_ = nullptr;
    Evas_Object *list_ = nullptr;
    int step_ = 0;
    bool done_ = false;
};

} // namespace platform
