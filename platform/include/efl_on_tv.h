/**
 * What the set's EFL has beyond the stock one, and the few Wayland calls of Ecore that C++ code
 * cannot reach otherwise: the stock <Ecore_Wl2.h> asks for beta API, types an enumeration ahead of
 * its definition and lacks C linkage. Main-loop thread only.
 *
 * A window of the set raises two smart events that stock Elementary does not know:
 *  - "visibility,changed" after its first frame is on the screen and whenever it is hidden or shown
 *    again; the event information is the visibility itself, 1 or 0, cast to a pointer;
 *  - "wm,rotation,changed" after the window's content has been turned.
 */
#pragma once

#include <Ecore_Evas.h>
#include <Eina.h>
#include <Evas.h>

struct wl_display;
struct wl_registry;
struct wl_seat;
struct wl_surface;

#ifdef __cplusplus
extern "C" {
#endif

typedef struct _Ecore_Wl2_Display Ecore_Wl2_Display;
typedef struct _Ecore_Wl2_Input Ecore_Wl2_Input;

/** One global of the compositor's registry; layout as in Ecore's own header. */
typedef struct _Ecore_Wl2_Global {
    Eina_Stringshare *interface;
    unsigned int id, version;
    Ecore_Wl2_Display *display;
} Ecore_Wl2_Global;

/* Stock functions. Their results are owned by Ecore, but for the iterator, which the caller frees
 * with eina_iterator_free(). */
Ecore_Wl2_Display *ecore_wl2_connected_display_get(const char *name);
struct wl_display *ecore_wl2_display_get(Ecore_Wl2_Display *display);
Eina_Iterator *ecore_wl2_display_globals_get(Ecore_Wl2_Display *display);
struct wl_registry *ecore_wl2_display_registry_get(Ecore_Wl2_Display *display);
Ecore_Wl2_Input *ecore_wl2_input_default_input_get(const Ecore_Wl2_Display *display);
struct wl_seat *ecore_wl2_input_seat_get(Ecore_Wl2_Input *input);
struct wl_surface *ecore_wl2_window_surface_get(Ecore_Wl2_Window *window);

/** Returns when the compositor has handled every request made so far. */
void ecore_wl2_sync(void);

/**
 * Tells the window manager something about a window.
 *
 * @return EINA_TRUE when the hint was taken
 */
Eina_Bool elm_win_aux_hint_add(Evas_Object *window, const char *hint, const char *value);

/** An input device was plugged in. The event's record is of no use to applications. */
extern int ECORE_EVENT_DEVICE_ADD;

#ifdef __cplusplus
}
#endif
