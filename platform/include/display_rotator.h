/**
 * The motor that turns the panel between landscape and portrait. The player asks whether there is
 * one and whether it is turning just now; it never drives the motor itself but sends the panel key
 * (key_router.h). Main-loop thread only, and status callbacks arrive there.
 */
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

/** Values of display_rotator_status_t::status. */
typedef enum {
    DISPLAY_ROTATOR_ERROR_NOT_SUPPORTED = -3,
    DISPLAY_ROTATOR_ERROR_NO_DEVICE = -2,
    DISPLAY_ROTATOR_ERROR = -1,
    DISPLAY_ROTATOR_IDLE = 0,
    DISPLAY_ROTATOR_TURNING_TO_LANDSCAPE = 1,
    DISPLAY_ROTATOR_TURNING_TO_PORTRAIT = 2,
} display_rotator_state_e;

typedef struct {
    int status; /**< a display_rotator_state_e */
    int angle;  /**< the panel's angle in degrees clockwise: 0, 90, 180 or 270 */
} display_rotator_status_t;

/** The status changed; `status` is valid only inside the call. The result is not used. */
typedef int (*display_rotator_cb)(display_rotator_status_t *status, void *user_data);

/**
 * Reads the present status.
 *
 * @param status receives the status; untouched on failure
 * @return 0, or a negative value on a set that cannot turn its panel
 */
int display_rotator_get_status(display_rotator_status_t *status);

/** Reports each change of status from now on. @return 0, or a negative value as above. */
int display_rotator_add_cb(display_rotator_cb callback, void *user_data);

/** Ends it. @return 0, or a negative value when the callback was not registered. */
int display_rotator_remove_cb(display_rotator_cb callback);

#ifdef __cplusplus
}
#endif
