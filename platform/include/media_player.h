/**
 * The set's media player: one file at a time, shown on the video plane under a window. The player
 * calls it from the main loop; the callbacks come from a thread of the media player's own, one at a
 * time, and none comes after player_unprepare() or player_destroy() has returned.
 *
 * States: NONE (no player), IDLE (created; nothing prepared, or a preparation under way), READY
 * (prepared, stopped or played to the end), PLAYING, PAUSED. A call that does not fit the state
 * returns PLAYER_ERROR_INVALID_STATE and changes nothing. Every function returns PLAYER_ERROR_NONE
 * (0) or a negative error code.
 */
#pragma once

#include <stdbool.h>

#include <Evas.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct player_s *player_h;

typedef enum {
    PLAYER_STATE_NONE = 0,
    PLAYER_STATE_IDLE = 1,
    PLAYER_STATE_READY = 2,
    PLAYER_STATE_PLAYING = 3,
    PLAYER_STATE_PAUSED = 4,
} player_state_e;

typedef enum {
    PLAYER_ERROR_NONE = 0,
    PLAYER_ERROR_INVALID_PARAMETER = -22,
    PLAYER_ERROR_OUT_OF_MEMORY = -12,
    PLAYER_ERROR_NO_SUCH_FILE = -2,
    PLAYER_ERROR_PERMISSION_DENIED = -13,
    PLAYER_ERROR_INVALID_OPERATION = -38,
    PLAYER_ERROR_INVALID_STATE = -26476542,
    PLAYER_ERROR_NOT_SUPPORTED_FILE = -26476541,
    PLAYER_ERROR_RESOURCE_LIMIT = -26476532,
    /** The sound has no decoder; the picture plays on without it. */
    PLAYER_ERROR_NOT_SUPPORTED_AUDIO_CODEC = -26476496,
    PLAYER_ERROR_NOT_SUPPORTED_VIDEO_CODEC = -26476495,
} player_error_e;

typedef enum {
    PLAYER_INTERRUPTED_COMPLETED = 0,
    PLAYER_INTERRUPTED_BY_MEDIA = 1,
    PLAYER_INTERRUPTED_BY_CALL = 2,
    PLAYER_INTERRUPTED_BY_EARJACK_UNPLUG = 3,
    /** Something else took the decoder, the display or the sound device. */
    PLAYER_INTERRUPTED_BY_RESOURCE_CONFLICT = 4,
} player_interrupted_code_e;

/** Where the picture goes. */
typedef enum {
    PLAYER_DISPLAY_TYPE_OVERLAY = 0, /**< the video plane under the window */
    PLAYER_DISPLAY_TYPE_NONE = 3,
} player_display_type_e;

/** Clockwise turn of the picture. */
typedef enum {
    PLAYER_DISPLAY_ROTATION_NONE = 0,
    PLAYER_DISPLAY_ROTATION_90 = 1,
    PLAYER_DISPLAY_ROTATION_180 = 2,
    PLAYER_DISPLAY_ROTATION_270 = 3,
} player_display_rotation_e;

/** One formatted run of a subtitle text; offsets in bytes from the text's start. */
typedef struct {
    unsigned int type;
    unsigned int start;
    unsigned int stop;
} MMSubAttribute;

typedef void (*player_prepared_cb)(void *user_data);
typedef void (*player_completed_cb)(void *user_data);
typedef void (*player_interrupted_cb)(player_interrupted_code_e code, void *user_data);
typedef void (*player_error_cb)(int error_code, void *user_data);

/**
 * A subtitle appeared.
 *
 * @param duration        how long it stays, in milliseconds
 * @param subtitle        its text, UTF-8, null-terminated; valid only inside the call
 * @param type            0 = text
 * @param attribute_count entries of `attributes`
 * @param attributes      formatted runs, or null when there are none
 */
typedef void (*player_subtitle_updated_cb_ex)(unsigned long duration, void *subtitle,
                                              unsigned int type, unsigned int attribute_count,
                                              MMSubAttribute **attributes, void *user_data);

/** Makes a player in state IDLE. @param player receives it; release with player_destroy(). */
int player_create(player_h *player);

/**
 * Releases a player in any state. What it showed last stays on the video plane. Waits for the files
 * in hand to be closed, so that the program can end after it, and so may hold up the main loop for
 * two seconds where a disk does not answer; mostly it takes some tens of milliseconds.
 */
int player_destroy(player_h player);

/* Callbacks, in any state. `user_data` stays the caller's. */
int player_set_completed_cb(player_h player, player_completed_cb callback, void *user_data);
/**
 * An interruption ends the file, and the player is in state IDLE. A lost sound device is none: the
 * picture plays on in silence.
 */
int player_set_interrupted_cb(player_h player, player_interrupted_cb callback, void *user_data);
/**
 * The error callback tells a failed preparation, after which the player is in state IDLE. An
 * unplayable sound track is told just before the prepared callback.
 */
int player_set_error_cb(player_h player, player_error_cb callback, void *user_data);
int player_set_subtitle_updated_cb_ex(player_h player, player_subtitle_updated_cb_ex callback,
                                      void *user_data);

/**
 * Names the file to play; state IDLE. Nothing is opened yet.
 *
 * @param uri a full path, any bytes but null, or a URI with a scheme
 */
int player_set_uri(player_h player, const char *uri);

/**
 * Names a subtitle file for the next preparation; state IDLE. It is read while the video is opened.
 * A file that turns out to be missing or unreadable, or that is still not read three seconds after
 * the video's first frame is there, is logged and the video plays without it.
 */
int player_set_subtitle_path(player_h player, const char *path);

/** Chooses the display; any state. @param window the window whose video plane is meant. */
int player_set_display(player_h player, player_display_type_e type, Evas_Object *window);

/**
 * Turns the picture; any state, at once. A frame wider than high is turned exactly so. A frame
 * higher than wide on a turned panel is turned to stand upright for the viewer instead.
 */
int player_set_display_rotation(player_h player, player_display_rotation_e rotation);

/** Confines the picture to a rectangle of the panel, in pixels; any state. */
int player_resize_video_render_rect(player_h player, int x, int y, int width, int height);

/**
 * Opens the file and decodes up to its first frame, in state IDLE. Exactly one of `callback` (the
 * player is READY) and the error callback with the reason why it could not follows, unless
 * player_unprepare() comes first. It comes no sooner than the main loop has returned from the
 * callback that made this call, so the caller may still set its own fields after it. A sound track
 * that cannot be played is told through the error callback besides. A file whose first frame does
 * not come within 15 seconds has failed, and so has one that the machine has no thread for.
 *
 * A set may pass over files that cannot be opened instead: such a one becomes READY too, with
 * nothing to show, and completes once it is started, looping or not.
 *
 * @return PLAYER_ERROR_NONE when it was started; INVALID_OPERATION without a uri or while one runs;
 *         no callback follows on an error here, so that it is for mistakes of the caller alone
 */
int player_prepare_async(player_h player, player_prepared_cb callback, void *user_data);

/** Lets go of the file and forgets uri and subtitle; any state. The last frame stays on screen. */
int player_unprepare(player_h player);

/** Plays from READY (from the start), resumes from PAUSED; in PLAYING it changes nothing. */
int player_start(player_h player);

/** Ends playing, back to READY at the file's start; states READY, PLAYING, PAUSED. */
int player_stop(player_h player);

/** Holds the picture; state PLAYING. */
int player_pause(player_h player);

/** Reads the state. @param state receives it; untouched on failure. */
int player_get_state(player_h player, player_state_e *state);

/**
 * Plays over and over without a seam, and does not complete; any state. A file that breaks in the
 * middle is begun anew each time. One that breaks within its first second, or cannot be opened
 * again, completes.
 */
int player_set_looping(player_h player, bool looping);

/**
 * Sets the speed: 1.0 normal, above it fast forward, below 0 backwards; states READY, PLAYING,
 * PAUSED. Anything but 1.0 is silent. Backwards play that reaches the start goes on forward at 1.0.
 *
 * @param rate from -5.0 to 5.0, not 0
 */
int player_set_playback_rate(player_h player, float rate);

/** Reads the speed in force. @param rate receives it; untouched on failure. */
int player_get_playback_rate(player_h player, float *rate);

#ifdef __cplusplus
}
#endif
