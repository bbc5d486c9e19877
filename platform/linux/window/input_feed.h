/**
 * Brings pointer and keys from the real window into the turned content. Main-loop thread only.
 */
#pragma once

#include <Ecore.h>
#include <Evas.h>

#include "window/turned_geometry.h"

namespace platform {

/**
 * A transparent rectangle over the whole real window takes the pointer and hands it on turned; keys
 * are handed on as they come. The rectangle belongs to the real window's canvas and goes with it.
 */
class InputFeed {
  public:
    /**
     * @param from the canvas that gets the events
     * @param to   the canvas of the content; must outlive the feed
     */
    InputFeed(Evas *from, Evas *to);
    ~InputFeed();
    InputFeed(const InputFeed &) = delete;
    InputFeed &operator=(const InputFeed &) = delete;

    /** From now on the panel has this native size and angle. */
    void turn(Size panel, int degrees);

  private:
    static void on_move(void *data, Evas *, Evas_Object *, void *info);
    static void on_down(void *data, Evas *, Evas_Object *, void *info);
    static void on_up(void *data, Evas *, Evas_Object *, void *info);
    static void on_in(void *data, Evas *, Evas_Object *, void *info);
    static void on_out(void *data, Evas *, Evas_Object *, void *info);
    static void on_wheel(void *data, Evas *, Evas_Object *, void *info);
    static Eina_Bool on_key_down(void *data, int type, void *event);
    static Eina_Bool on_key_up(void *data, int type, void *event);

    void move_to(int x, int y, unsigned int timestamp);

    Evas *to_;
    Evas_Object *catcher_;
    Ecore_Event_Handler *key_down_;
    Ecore_Event_Handler *key_up_;
    Size panel_;
    int degrees_ = 0;
};

} // namespace platform
