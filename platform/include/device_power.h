/**
 * Power events of the set. The application shell subscribes once at start. All calls are for the
 * main-loop thread, and callbacks arrive there.
 */
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

/** States reported by device_power_subscribe_state_changed_event(). */
typedef enum {
    DEVICE_POWER_STATE_OFF = 0,
    DEVICE_POWER_STATE_STANDBY = 1,
    DEVICE_POWER_STATE_NORMAL = 2,
} device_power_state_e;

/** One power event; `user_data` is what the subscription gave. */
typedef void (*device_power_cb)(void *user_data);

/** The set moved to another power state. */
typedef void (*device_power_state_changed_cb)(device_power_state_e state, void *user_data);

/**
 * Subscribe to one kind of event: the set is being switched off, goes to standby, or woke up.
 * The same callback may serve several kinds.
 *
 * @return 0, or -1 for a null callback; where no power service runs, nothing ever arrives
 */
int device_power_subscribe_poweroff(device_power_cb callback, void *user_data);
int device_power_subscribe_standby(device_power_cb callback, void *user_data);
int device_power_subscribe_wakeup(device_power_cb callback, void *user_data);
int device_power_subscribe_state_changed_event(device_power_state_changed_cb callback,
                                               void *user_data);

/** End a subscription of one kind. @return 0, or -1 when there was none. */
int device_power_unsubscribe_poweroff(device_power_cb callback);
int device_power_unsubscribe_standby(device_power_cb callback);
int device_power_unsubscribe_wakeup(device_power_cb callback);

#ifdef __cplusplus
}
#endif
