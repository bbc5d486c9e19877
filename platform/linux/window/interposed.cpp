// Functions of the toolkit that an application calls on its window, and that the toolkit could not
// answer for content drawn into an image. The program's own definitions go before the libraries';
// for every other window they pass the question on.

#include <dlfcn.h>

#include <Ecore_Evas.h>
#include <Elementary.h>

#include "efl_on_tv.h"
#include "panel/panel_model.h"
#include "window/tv_window.h"

namespace platform {

namespace {

template <typename Function> Function toolkits_own(const char *name)
{
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

/** The set's window when the question is about it, else null. */
template <typename Handle> TvWindow *set_window(const Handle *handle)
{
    TvWindow *window = TvWindow::current();
    return window && window->is(handle) ? window : nullptr;
}

} // namespace

} // namespace platform

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
