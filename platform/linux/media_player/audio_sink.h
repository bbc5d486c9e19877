/**
 * Where the sound goes: a PulseAudio (or PipeWire) server, an ALSA device, or nowhere. One choice
 * for the process; see AudioChoice for how long it stands.
 *
 * The environment variable OSTREL_DEMO_AUDIO_SINK may name a GStreamer sink element to use instead,
 * for tests and for troubleshooting ("fakesink" plays in silence). Any thread, GStreamer being
 * ready.
 */
#pragma once

#include "media_player/gst_ptr.h"

namespace platform {

/**
 * Chooses, if no choice stands. Takes as long as a server takes to answer, five seconds at most.
 *
 * @return false when there is no sound device
 */
bool choose_audio_sink();

/** A sink for one pipeline; one that is silent but keeps time, when there is no sound device. */
ElementPtr make_audio_sink();

/** Whether two pipelines can have the chosen device at a time. */
bool audio_sink_is_shared();

/** The device is gone; the next make_audio_sink() looks for another one. */
void forget_audio_sink();

/** The device does not answer: there is silence for a while, and then another search. */
void avoid_audio_sink();

} // namespace platform
