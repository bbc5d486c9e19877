/**
 * Further functions and events of Ecore's Wayland library that the window service and its tests
 * need and C++ code cannot get from the stock header; see efl_on_tv.h. Main-loop thread only.
 */
#pragma once

#include "efl_on_tv.h"

extern "C" {

int ecore_wl2_init(void);
int ecore_wl2_shutdown(void);
Ecore_Wl2_Display *ecore_wl2_display_connect(const char *name);
void ecore_wl2_display_disconnect(Ecore_Wl2_Display *display);
void ecore_wl2_display_flush(Ecore_Wl2_Display *display);
void ecore_wl2_display_screen_size_get(Ecore_Wl2_Display *display, int *width, int *height);
Eina_Iterator *ecore_wl2_display_inputs_get(Ecore_Wl2_Display *display); // the caller frees it
void ecore_wl2_input_pointer_set(Ecore_Wl2_Input *input, struct wl_surface *surface, int hot_x,
                                 int hot_y);
void ecore_wl2_window_free(Ecore_Wl2_Window *window);
void ecore_wl2_window_hide(Ecore_Wl2_Window *window);
Ecore_Wl2_Display *ecore_wl2_window_display_get(const Ecore_Wl2_Window *window);
void ecore_wl2_window_buffer_attach(Ecore_Wl2_Window *window, void *buffer, int x, int y,
                                    Eina_Bool implicit);

extern int ECORE_WL2_EVENT_DEVICE_ADDED;
extern int ECORE_WL2_EVENT_FOCUS_IN; // the window has got the keyboard
}
