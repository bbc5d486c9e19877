/**
 * The application framework: it owns the main loop, calls the application's lifecycle functions and
 * brings launch requests. Only src/main.cpp and the two operations that exit or fetch the prepared
 * window call it. Everything here is for the main-loop thread, unless said otherwise.
 */
#pragma once

#include <stdbool.h>

#include <Evas.h>

#ifdef __cplusplus
extern "C" {
#endif

/** A launch request; owned by the framework and valid only inside the callback that received it. */
typedef struct app_control_s *app_control_h;

/** What an event handler is told; valid only inside the callback. */
typedef struct app_event_info_s *app_event_info_h;

/** A registered event handler; the framework owns it until the application has terminated. */
typedef struct app_event_handler_s *app_event_handler_h;

/** System events that an application can follow. */
typedef enum {
    APP_EVENT_LOW_MEMORY = 0,
    APP_EVENT_LOW_BATTERY = 1,
    APP_EVENT_LANGUAGE_CHANGED = 2,
    APP_EVENT_DEVICE_ORIENTATION_CHANGED = 3,
    APP_EVENT_REGION_FORMAT_CHANGED = 4,
} app_event_type_e;

typedef void (*app_event_cb)(app_event_info_h event_info, void *user_data);

/** Lifecycle functions of an application; each may be null. */
typedef struct {
    /** Before the first launch request. Returning false ends the application at once. */
    bool (*create)(void *user_data);
    /**
     * After the main loop has ended, once; the last call the application gets: timers and idlers
     * that it leaves are not called any more.
     */
    void (*terminate)(void *user_data);
    /** The application's window is no longer visible to anybody. */
    void (*pause)(void *user_data);
    /** It is visible again. */
    void (*resume)(void *user_data);
    /** A launch request: the first right after create, a later one for each relaunch. */
    void (*app_control)(app_control_h app_control, void *user_data);
} ui_app_lifecycle_callback_s;

/**
 * Runs the application: create, the first launch request, the main loop, terminate. Returns when
 * the application has terminated. Where an instance already runs, hands the launch request to it
 * and returns at once without any callback.
 *
 * @param user_data handed to every lifecycle callback; stays the caller's
 * @return the process's exit status: 0 after an ordinary end or a handed-over request, 2 for a
 *         command line that could not be read, 1 when the application could not run
 */
int ui_app_main(int argc, char **argv, ui_app_lifecycle_callback_s *callbacks, void *user_data);

/**
 * Asks the main loop to end; returns at once. Asking again while it ends changes nothing. Any
 * thread: callbacks of the other services come from threads of their own.
 */
void ui_app_exit(void);

/**
 * Calls `callback` for each system event of one kind. May be called before ui_app_main().
 *
 * @param handler receives the handler; owned by the framework
 * @return 0, or -1 for a null argument
 */
int ui_app_add_event_handler(app_event_handler_h *handler, app_event_type_e event_type,
                             app_event_cb callback, void *user_data);

/**
 * Reads one extra of a launch request.
 *
 * @param value receives a text that the caller releases with free(); untouched on failure
 * @return 0, or -1 when the request has no such extra
 */
int app_control_get_extra_data(app_control_h app_control, const char *key, char **value);

/**
 * The window that the framework prepared for the application before it started: full screen, with
 * an alpha channel, not shown. The caller owns it from then on.
 *
 * @return the window, or null when none was prepared or it was fetched before
 */
Evas_Object *app_get_preinitialized_window(const char *window_name);

#ifdef __cplusplus
}
#endif
