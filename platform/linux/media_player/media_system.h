/**
 * GStreamer as a whole: set up once per process, in a thread of its own, because loading it would
 * hold up the main loop at the very start.
 */
#pragma once

namespace platform {

/** Begins to set GStreamer up, unless that has been done; returns at once. Any thread. */
void start_media_system();

/** Returns when GStreamer is ready for use. Any thread but the main loop's. */
bool wait_for_media_system();

} // namespace platform
