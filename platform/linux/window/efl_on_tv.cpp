// What the set's EFL has beyond the stock one, and stock functions that have to answer otherwise
// than the toolkit does. The linker sends our own objects' calls of those to the functions named
// __wrap_ here; the toolkit's own are named __real_. DESIGN.md tells more.

#include "efl_on_tv.h"

#include <clocale>
#include <cstdlib>

#include <Ecore.h>
#include <Efreet.h>

#include "base/toolkit_handles.h"
#include "window/ecore_wl2_more.h"
#include "window/tv_window.h"

using platform::TvWindow;

int ECORE_EVENT_DEVICE_ADD = 0;

extern "C" {

Ecore_Wl2_Window *__real_ecore_evas_wayland2_window_get(const Ecore_Evas *canvas);
Ecore_Wl2_Input *__real_ecore_wl2_input_default_input_get(const Ecore_Wl2_Display *display);
wl_seat *__real_ecore_wl2_input_seat_get(Ecore_Wl2_Input *input);

// The content is drawn into an image, which has no window of Wayland's; the outer window has.
Ecore_Wl2_Window *__wrap_ecore_evas_wayland2_window_get(const Ecore_Evas *canvas)
{
    const TvWindow *window = TvWindow::current();
    return __real_ecore_evas_wayland2_window_get(
        window && window->is(canvas) ? window->outer_canvas() : canvas);
}

// The toolkit takes a compositor without a seat for a mistake of the caller's and says so at
// length. A set whose only input is the control service is nothing to complain about.
Ecore_Wl2_Input *__wrap_ecore_wl2_input_default_input_get(const Ecore_Wl2_Display *display)
{
    if (!display)
        return nullptr;
    const platform::IteratorPtr inputs(
        ecore_wl2_display_inputs_get(const_cast<Ecore_Wl2_Display *>(display)));
    void *first = nullptr;
    const bool any = inputs && eina_iterator_next(inputs.get(), &first);
    return any ? __real_ecore_wl2_input_default_input_get(display) : nullptr;
}

wl_seat *__wrap_ecore_wl2_input_seat_get(Ecore_Wl2_Input *input)
{
    return input ? __real_ecore_wl2_input_seat_get(input) : nullptr;
}

void ecore_wl2_sync(void)
{
    if (TvWindow *window = TvWindow::current())
        window->sync();
}

// No Linux compositor knows the set's hints; they are taken and come to nothing.
Eina_Bool elm_win_aux_hint_add(Evas_Object *window, const char *hint, const char *value)
{
    const TvWindow *tv_window = TvWindow::current();
    return tv_window && tv_window->is(window) && hint && value;
}

} // extern "C"

namespace platform {

void prepare_toolkit()
{
    constexpr int KEEP_USERS_CHOICE = 0;
    // Modules that watch the battery and the host name; a demo has no use for either.
    setenv("ECORE_NO_SYSTEM_MODULES", "1", KEEP_USERS_CHOICE);
    // The video lies on a plane below the window, which only the software engine leaves in peace on
    // machines without a graphics processor.
    if (!getenv("ELM_ENGINE") && !getenv("ELM_DISPLAY")) {
        setenv("ELM_DISPLAY", "wl", KEEP_USERS_CHOICE);
        setenv("ELM_ENGINE", "wayland_shm", KEEP_USERS_CHOICE);
    }
    // The cache of desktop files costs a daemon and a fifth of the start.
    efreet_cache_disable();

    // Its value comes later, but its place has to be there: another variable more would move them
    // all from under a thread that reads one.
    setenv("LANGUAGE", "", KEEP_USERS_CHOICE);

    setlocale(LC_ALL, "");
    setlocale(LC_NUMERIC, "C");
}

void announce_device_events()
{
    if (ECORE_EVENT_DEVICE_ADD == 0)
        ECORE_EVENT_DEVICE_ADD = ecore_event_type_new();
}

} // namespace platform
