/**
 * Buffers that a decoder draws its frames into, and that go on to the plane's sink from there
 * without being copied.
 *
 * A decoder of libav maps a frame for writing as long as it needs it as a reference, which is
 * longer than until it hands it on. GStreamer's own pool and its usual way to map would have it
 * copied there, because memory that is mapped for writing cannot be shared. The buffers of this
 * pool are mapped for no longer than it takes to learn where they are, and come back only when
 * nobody reads them any more.
 */
#pragma once

#include "media_player/gst_ptr.h"

namespace platform {

/** Makes a pool of frames that are described by GstVideoMeta; to be configured. */
PoolPtr make_frame_pool();

} // namespace platform
