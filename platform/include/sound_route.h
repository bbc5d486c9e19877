/**
 * Where the set's sound goes. The two routes the player switches between are 0 (the set's own
 * speakers) and 8 (the external output). Main-loop thread only.
 */
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

/** Sound output routes. */
typedef enum {
    SOUND_SPEAKER_INTERNAL = 0,
    SOUND_SPEAKER_EXTERNAL = 8,
} sound_speaker_e;

/**
 * Reads the route in force.
 *
 * @param speaker receives a sound_speaker_e, or another number above 1 when the sound goes
 *                elsewhere; untouched on failure
 * @return 0, or -1 when no sound service answers or it has no output
 */
int sound_manager_get_speaker_selection(int *speaker);

/**
 * Moves the set's sound, what is playing included, to a route.
 *
 * @return 0, or -1 when no sound service answers or the route is not there
 */
int sound_manager_set_speaker_selection(int speaker);

#ifdef __cplusplus
}
#endif
