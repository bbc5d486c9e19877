// Functions of the toolkit that an application calls on its window, and that the toolkit could not
// answer for content drawn into an image. The program's own definitions go before the libraries';
// for every other window they pass the question on.

#include <Ecore_Evas.h>
#include <Elementary.h>

#include "efl_on_tv.h"
#include "panel/panel_model.h"
#include "window/ecore_wl2_more.h"
#include "window/toolkits_own.h"
#include "window/tv_window.h"

namespace platform {

namespace {

/** The set's window when the question is about it, else null. */
template <typename Handle> TvWindow *set_window(const Handle *handle)
{
    TvWindow *window = TvWindow::current();
    return window && window->is(handle) ? window : nullptr;
}

} // namespace

} // namespace platform

using platform::InputFeed;
using platform::PanelModel;
using platform::set_window;
using platform::TvWindow;

int ECORE_EVENT_DEVICE_ADD = 0;

extern "C" {

int elm_win_rotation_get(const Evas_Object *object)
{
    static const auto own =
        platform::toolkits_own<int (*)(const Evas_Object *)>("elm_win_rotation_get");
    return set_window(object) ? PanelModel::get().angle() : own(object);
}

void elm_win_screen_size_get(const Elm_Win *object, int *x, int *y, int *w, int *h)
{
    static const auto own =
        platform::toolkits_own<void (*)(const Elm_Win *, int *, int *, int *, int *)>(
            "elm_win_screen_size_get");
    const TvWindow *window = set_window(object);
    if (!window) {
        own(object, x, y, w, h);
        return;
    }
    const platform::Size size = window->content_size();
    if (x)
        *x = 0;
    if (y)
        *y = 0;
    if (w)
        *w = size.width;
    if (h)
        *h = size.height;
}

Ecore_Wl2_Window *ecore_evas_wayland2_window_get(const Ecore_Evas *canvas)
{
    static const auto own = platform::toolkits_own<Ecore_Wl2_Window *(*)(const Ecore_Evas *)>(
        "ecore_evas_wayland2_window_get");
    const TvWindow *window = set_window(canvas);
    return own(window ? window->outer_canvas() : canvas);
}

// The toolkit takes a compositor without a seat for a mistake of the caller's and says so at
// length. A set whose only input is the control service is nothing to complain about.
Ecore_Wl2_Input *ecore_wl2_input_default_input_get(const Ecore_Wl2_Display *display)
{
    static const auto own = platform::toolkits_own<Ecore_Wl2_Input *(*)(const Ecore_Wl2_Display *)>(
        "ecore_wl2_input_default_input_get");
    if (!display)
        return nullptr;
    Eina_Iterator *inputs = ecore_wl2_display_inputs_get(const_cast<Ecore_Wl2_Display *>(display));
    void *first = nullptr;
    const bool any = inputs && eina_iterator_next(inputs, &first);
    eina_iterator_free(inputs);
    return any ? own(display) : nullptr;
}

wl_seat *ecore_wl2_input_seat_get(Ecore_Wl2_Input *input)
{
    static const auto own =
        platform::toolkits_own<wl_seat *(*)(Ecore_Wl2_Input *)>("ecore_wl2_input_seat_get");
    return input ? own(input) : nullptr;
}

void evas_object_event_callback_add(Evas_Object *object, Evas_Callback_Type type,
                                    Evas_Object_Event_Cb callback, const void *data)
{
    static const auto own =
        platform::toolkits_own<void (*)(Evas_Object *, Evas_Callback_Type, Evas_Object_Event_Cb,
                                        const void *)>("evas_object_event_callback_add");
    const TvWindow *window = set_window(object);
    if (window && window->input() && InputFeed::takes(type))
        window->input()->observe(type, callback, const_cast<void *>(data));
    else
        own(object, type, callback, data);
}

void *evas_object_event_callback_del(Evas_Object *object, Evas_Callback_Type type,
                                     Evas_Object_Event_Cb callback)
{
    static const auto own =
        platform::toolkits_own<void *(*)(Evas_Object *, Evas_Callback_Type, Evas_Object_Event_Cb)>(
            "evas_object_event_callback_del");
    const TvWindow *window = set_window(object);
    return window && window->input() && InputFeed::takes(type)
               ? window->input()->ignore(type, callback)
               : own(object, type, callback);
}

void *evas_object_event_callback_del_full(Evas_Object *object, Evas_Callback_Type type,
                                          Evas_Object_Event_Cb callback, const void *data)
{
    static const auto own =
        platform::toolkits_own<void *(*)(Evas_Object *, Evas_Callback_Type, Evas_Object_Event_Cb,
                                         const void *)>("evas_object_event_callback_del_full");
    const TvWindow *window = set_window(object);
    return window && window->input() && InputFeed::takes(type)
               ? window->input()->ignore(type, callback, data)
               : own(object, type, callback, data);
}

void ecore_wl2_sync(void)
{
    if (TvWindow *window = TvWindow::current())
        window->sync();
}

Eina_Bool elm_win_aux_hint_add(Evas_Object *window, const char *hint, const char *value)
{
    TvWindow *tv_window = set_window(window);
    if (!tv_window || !hint || !value)
        return EINA_FALSE;
    tv_window->keep_hint(hint, value);
    return EINA_TRUE;
}

} // extern "C"

namespace platform {

void announce_device_events()
{
    if (ECORE_EVENT_DEVICE_ADD == 0)
        ECORE_EVENT_DEVICE_ADD = ecore_event_type_new();
}

} // namespace platform
