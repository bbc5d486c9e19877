/**
 * The set's configuration store: named integers shared by all processes of the set. Keys under
 * "db/" survive a power cut, keys under "memory/" live until the set is switched off. The player
 * reads, writes and watches keys here; other services change them at any time.
 *
 * All functions are for the main-loop thread, and change callbacks arrive there.
 */
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

/** A changed key, valid only inside the callback that received it. */
typedef struct _keynode_t keynode_t;

/** Reports that the key's value was written, by any process including this one. */
typedef void (*vconf_callback_fn)(keynode_t *node, void *user_data);

/**
 * Reads an integer key.
 *
 * @param value receives the value; untouched on failure
 * @return 0, or -1 when the key does not exist, cannot be read or holds no integer
 */
int vconf_get_int(const char *key, int *value);

/**
 * Writes an integer key, creating it when it does not exist. A "db/" key is on the medium when the
 * call returns, unless the medium is so slow that the main loop must not wait for it. Such a value
 * is read as any other and follows in the order of the calls; until it is there, a crash leaves the
 * old one, and when it cannot be written in the end, the old one stands again.
 *
 * @return 0, or -1 when it could not be written; the old value then stands
 */
int vconf_set_int(const char *key, int value);

/**
 * Calls `callback` on the main loop after each write to `key`, or its removal, from now on; writes
 * that follow each other at once may be told as one. Registering the same key and callback again
 * replaces the user data and keeps one registration. The key need not exist. The callback may call
 * every function of this header.
 *
 * @param user_data handed to the callback; stays the caller's
 * @return 0, or -1 when the key cannot be watched
 */
int vconf_notify_key_changed(const char *key, vconf_callback_fn callback, void *user_data);

/**
 * Ends a registration. Changes that were not yet delivered are dropped.
 *
 * @return 0, or -1 when there was no such registration
 */
int vconf_ignore_key_changed(const char *key, vconf_callback_fn callback);

/** The changed key's full name, owned by the node; null for a null node. */
const char *vconf_keynode_get_name(keynode_t *node);

#ifdef __cplusplus
}
#endif
