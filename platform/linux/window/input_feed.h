/**
 * Brings pointer and keys from the real window into the turned content. Main-loop thread only.
 */
#pragma once

#include <Ecore.h>
#include <Evas.h>

#include "base/orientation.h"
#include "base/toolkit_handles.h"

namespace platform {

/**
 * A transparent rectangle over the whole real window takes the pointer and hands it on turned; keys
 * are handed on as they come.
 *
 * A real window sees all that the pointer does on its canvas, whichever object it is meant for. The
 * toolkit does not give a window events that a program feeds, so the content's canvas has a
 * rectangle above everything that forwards them to the window and keeps them from nobody.
 */
class InputFeed {
  public:
    /**
     * @param from   the canvas that gets the events
     * @param window the window of the content, which must outlive the feed
     */
    InputFeed(Evas *from, Evas_Object *window);
    InputFeed(const InputFeed &) = delete;
    InputFeed &operator=(const InputFeed &) = delete;

    /** From now on the panel has this native size and angle. */
    void turn(Size panel, int degrees);

    /**
     * Takes the pointer out of the content until it is moved or pressed again, as after it has
     * entered: what nobody sees must not take the focus when something comes to stand below it.
     */
    void leave();

  private:
    static void on_move(void *data, Evas *, Evas_Object *, void *info);
    static void on_down(void *data, Evas *, Evas_Object *, void *info);
    static void on_up(void *data, Evas *, Evas_Object *, void *info);
    static void on_out(void *data, Evas *, Evas_Object *, void *info);
    static void on_wheel(void *data, Evas *, Evas_Object *, void *info);
    static Eina_Bool on_enter(void *data, int type, void *event);
    static Eina_Bool on_key_down(void *data, int type, void *event);
    static Eina_Bool on_key_up(void *data, int type, void *event);

    void move_to(int x, int y, unsigned int timestamp);
    void come_back(unsigned int timestamp);

    Evas *const to_;
    Orientation turn_;
    Size content_;
    bool away_ = true;
    Point last_{-1, -1}; // of the pointer, on the panel
    // Behind what their callbacks use, and the rectangles outlive the handlers.
    const ObjectPtr observer_;
    const ObjectPtr catcher_;
    const EventHandlerPtr enter_;
    const EventHandlerPtr key_up_;
    const EventHandlerPtr key_down_;
};

} // namespace platform
