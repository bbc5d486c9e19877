/**
 * The kinds of data that may lie in a video. GStreamer finds out by itself what a file is and has a
 * reader for nearly everything: play lists that name other files and places on the network,
 * drawings that refer to more of them, music for synthesizers. A video's name proves nothing, so
 * only these kinds are read, whatever plug-ins the machine has. Any thread.
 */
#pragma once

#include "media_player/gst_ptr.h"

namespace platform {

/**
 * Has GStreamer choose by itself, in the whole process and for as long as it lives, none but the
 * readers and decoders of these kinds, and lets no address lead it anywhere but to files. After its
 * set-up and before the first file. Readers that are asked for by name are not concerned.
 */
void limit_formats();

/** Whether all that the caps speak of is of these kinds; not so for none and for any. */
bool is_video_format(const GstCaps *caps);

} // namespace platform
