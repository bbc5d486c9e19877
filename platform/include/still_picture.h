/**
 * The set's still-picture library: JPEG files, shown on the same video plane as the media player's
 * frames. Showing one is a chain of calls, each reported by a callback: parse (read the header),
 * decode (in the background), render. The functions are for the main-loop thread; the callbacks may
 * come from another one, and none comes after pictrel_destroy() has returned.
 *
 * Anything wrong with the file is told by the parse or decode callback, never by the call itself,
 * so that one bad picture can be skipped. Every function returns 0, or a negative value.
 */
#pragma once

#include <Evas.h>

#ifdef __cplusplus
extern "C" {
#endif

/**
 * A picture. The library allocates it; the application may write the first and the fourth field.
 */
typedef struct _pictrel_s {
    void *user_data; /**< given to callbacks that were registered without data of their own */
    int width;       /**< upright size in pixels, 0 until parsed */
    int height;
    int render_state; /**< the application's own mark: 0 set up, 1 rendered */
} _pictrel_s;

typedef enum {
    PICTREL_EVENT_PARSE = 0,
    PICTREL_EVENT_DECODE = 1,
    PICTREL_EVENT_RENDER = 2,
    PICTREL_EVENT_ROTATE = 3,
    PICTREL_EVENT_RESOURCE_CONFLICT = 4,
} pictrel_event_type_e;

typedef enum {
    PICTREL_RESULT_PARSED = 0,
    PICTREL_RESULT_PARSE_FAILED = 1,
    PICTREL_RESULT_DONE = 2, /**< rendered, or turned */
    PICTREL_RESULT_DECODED = 3,
    PICTREL_RESULT_DECODE_FAILED = 4,
    /** The picture lost its place on the video plane for good. */
    PICTREL_RESULT_RESOURCE_LOST = 10,
} pictrel_event_result_e;

/** How a picture fills the panel. */
enum { PICTREL_GEOMETRY_FIT = 4 /**< as large as fits, its proportions kept, black bars */ };

typedef void (*pictrel_event_cb)(void *user_data, pictrel_event_type_e type,
                                 pictrel_event_result_e result);

/** Makes the video plane under `window` ready for pictures; once before the first picture. */
int pictrel_init_display(Evas_Object *window);

/** Lets go of it and writes 0 to `*display`. The last frame stays on the plane. */
int pictrel_destroy_display(int *display);

/** Makes a picture. @param path a full path, any bytes but null. @param picture receives it. */
int pictrel_create_from_url(const char *path, _pictrel_s **picture);

/** Releases a picture in any state, writes null to `*picture`; the plane keeps what it showed. */
int pictrel_destroy(_pictrel_s **picture);

/** Chooses the display. @param display 1, after pictrel_init_display(). */
int pictrel_set_window(_pictrel_s *picture, int display);

/** Chooses how the picture fills the panel. @param geometry PICTREL_GEOMETRY_FIT. */
int pictrel_set_geometry_size(_pictrel_s *picture, int geometry);

/**
 * Reports one kind of event. One callback per kind; a later one replaces it.
 *
 * @param user_data first argument of the callback; null means the record's `user_data` at the time
 *                  of the call
 */
int pictrel_add_event_callback(_pictrel_s *picture, pictrel_event_type_e type,
                               pictrel_event_cb callback, void *user_data);

/**
 * Reads the header, in the background; one PICTREL_EVENT_PARSE follows. A failure is told no sooner
 * than 200 ms after the call: a folder of broken pictures must not keep the set busy.
 */
int pictrel_parse(_pictrel_s *picture);

/**
 * Decodes the picture to the panel's size, in the background; one PICTREL_EVENT_DECODE follows. A
 * failure is told no sooner than 200 ms after the call, as by pictrel_parse().
 *
 * @param flags 0
 */
int pictrel_decode(_pictrel_s *picture, int flags);

/**
 * Shows a decoded picture. While the mixer is on, the picture is only composed; it appears with
 * the pictrel_rotate() that must follow, so that it is never seen in the wrong position. Scales and
 * copies the whole picture on the caller's thread.
 */
int pictrel_render(_pictrel_s *picture);

/** Switches the mixer: 1 on, 0 off. */
int pictrel_set_mixer_render(_pictrel_s *picture, int on);

/**
 * Shows a rendered picture turned clockwise. Scales and copies it on the caller's thread.
 *
 * @param degrees 90, 180 or 270
 */
int pictrel_rotate(_pictrel_s *picture, int degrees);

#ifdef __cplusplus
}
#endif
