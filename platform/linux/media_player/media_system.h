/**
 * GStreamer as a whole: set up once per process, in a thread of its own, because loading it would
 * hold up the main loop at the very start.
 */
#pragma once

#include <atomic>

namespace platform {

/** Begins to set GStreamer up, unless that has been done; returns at once. Any thread. */
void start_media_system();

/**
 * Returns when GStreamer is ready and knows where sound goes. Any thread but the main loop's.
 *
 * @param stopping gives the wait up
 * @return false: given up, or there is no GStreamer
 */
bool wait_for_media_system(const std::atomic<bool> &stopping);

/**
 * Begins to load the decoders of the commonest files, and returns at once; a file that needs one
 * before it is there waits for it. The dynamic loader lets one thread in at a time and is busy with
 * the decoders' hundred libraries for long, so what the screen needs is loaded before. Any thread.
 */
void load_decoders();

/**
 * To be called when the program is about to end. What is still under way then, and can take a
 * minute at the very first start on a machine, does not hold the end up: exit() leaves at once with
 * the same status, and no destructor runs under a thread that is at work. Main loop.
 */
void abandon_media_system();

} // namespace platform
