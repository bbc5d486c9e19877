/**
 * Who gets the keys of the remote control, and keys that a program presses itself.
 *
 * The key router hands a window every key of a list, whatever else on the set would like to have
 * it. A list is built in a buffer of the caller's: reset, add all, take out those that the set is
 * to keep, hand over. The virtual-key service injects a key as if the remote control had sent it.
 * Main-loop thread only.
 */
#pragma once

#include <stdbool.h>

struct wl_display;
struct wl_registry;
struct wl_seat;
struct wl_surface;

#ifdef __cplusplus
extern "C" {
#endif

/** Modes of a grab. */
enum {
    KEY_ROUTER_MODE_NONE = 0,
    /** The window gets the key and nothing else does, while the window is visible. */
    KEY_ROUTER_MODE_EXCLUSIVE = 5,
};

enum { KEY_ROUTER_MAX_KEYS = 256, KEY_ROUTER_NAME_SIZE = 32 };

/** One key of a list. `name` is null-terminated. */
typedef struct {
    char name[KEY_ROUTER_NAME_SIZE];
    int mode;
} KeyRouter_Key;

/** A key list: the first `count` entries are in use. Owned by the caller, about 9 KiB. */
typedef struct {
    int count;
    KeyRouter_Key keys[KEY_ROUTER_MAX_KEYS];
} KeyRouter_KeyList;

/** Connects to the router. @param id the global's name in the registry, 0 when it has none. */
void KeyRouter_Initialize(struct wl_display *display, struct wl_registry *registry,
                          struct wl_seat *seat, unsigned int id);

/** Empties a list; a fresh buffer must be reset before use. */
void KeyRouter_Reset_KeyList(KeyRouter_KeyList *list);

/** Puts every key of the set into the list, with `mode`. */
void KeyRouter_Add_All_Key(int mode, KeyRouter_KeyList *list);

/** Takes a key out. @return false when the list does not hold it with this mode. */
bool KeyRouter_Remove_Key(const char *name, int mode, KeyRouter_KeyList *list);

/** Grabs the list's keys for the surface. @return false when the router refused. */
bool KeyRouter_Set_KeyList(struct wl_surface *surface, const KeyRouter_KeyList *list);

/** Releases the list's keys. @return false when the router refused. */
bool KeyRouter_UnSet_KeyList(struct wl_surface *surface, const KeyRouter_KeyList *list);

/** Disconnects; all grabs end. */
void KeyRouter_Finalize(void);

enum {
    /** The key that turns the panel to its other orientation. */
    VIRTUAL_KEY_CODE_ROTATE_PANEL = 569,
    /** Press and release in one. */
    VIRTUAL_KEY_ACTION_CLICK = 2,
};

/** Starts the virtual-key service. @param flags 0. @return 0, or -1. */
int VirtualKey_Initialize(int flags);

/** Sends a key. @return 0, or -1 when the service is not started or the key is unknown to it. */
int VirtualKey_Send_KeyCode(int key_code, int action);

/** Ends the virtual-key service. */
void VirtualKey_Finalize(void);

#ifdef __cplusplus
}
#endif
