/**
 * The set's stored rotation state, "db/sysman/rotation_state": read at start so that the window
 * comes up as the panel stood when the set was switched off, and written after each turn. Main-loop
 * thread only.
 */
#pragma once

namespace platform {

/**
 * Degrees clockwise of a stored state: 1 landscape, 2 portrait, 3 landscape reversed, 0 portrait
 * reversed; any other counts as landscape.
 */
int angle_of_rotation_state(int state);

/** The stored state of an angle that is a multiple of 90. */
int rotation_state_of_angle(int degrees);

/**
 * Gives the panel its first angle and keeps the store up to date from now on. The angle is the
 * stored one; a set without a stored state gets the configured first state, which is stored so that
 * an application reading the key finds it. The panel of a real set stays as it stands when the set
 * is switched off, and the application reads how that is from the store; so the configured state is
 * for a set that has never been on and never overrules the store.
 */
void rotation_state_start();

} // namespace platform
