/**
 * What this set is and how it is set up: product features, product numbers, the system language and
 * the direction of its user interface. Main-loop thread only; the answers may change between calls.
 */
#pragma once

#include <stdbool.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Numbers of system_info_get_value_int(). */
enum {
    /** Store-content type of the set; 1 marks the models with direct backlight. */
    SYSTEM_INFO_KEY_STORE_CONTENT_TYPE = 713,
};

/** Numbers of runtime_info_get_value_string(). */
enum {
    /** The system language as language, underscore, country, e.g. "ko_KR" or "de_DE.UTF-8". */
    RUNTIME_INFO_KEY_LANGUAGE = 1,
};

/** Results of ua_UI_orientation_get(). */
enum {
    UI_ORIENTATION_LEFT_TO_RIGHT = 0,
    UI_ORIENTATION_RIGHT_TO_LEFT = 1,
};

/**
 * Reads a yes/no product feature.
 *
 * @param value receives the feature; untouched on failure
 * @return 0, or a negative value when the set does not know the feature
 */
int system_info_get_custom_bool(const char *key, bool *value);

/**
 * Reads a product number.
 *
 * @param key   a SYSTEM_INFO_KEY_ number
 * @param value receives the number; untouched on failure
 * @return 0, or a negative value when the set does not know the key
 */
int system_info_get_value_int(int key, int *value);

/**
 * Reads a text about the running system.
 *
 * @param key   a RUNTIME_INFO_KEY_ number
 * @param value receives a text that the caller releases with free(); untouched on failure
 * @return 0, or a negative value when it cannot be told
 */
int runtime_info_get_value_string(int key, char **value);

/** The direction of the set's own menus in the language in force: a UI_ORIENTATION_ value. */
int ua_UI_orientation_get(void);

#ifdef __cplusplus
}
#endif
