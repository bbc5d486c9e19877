/**
 * The step before the pipeline's end for pictures: a GStreamer element that makes a whole picture
 * of each field, and hands on untouched what is not interlaced.
 */
#pragma once

#include <functional>

#include "media_player/field_pace.h"
#include "media_player/gst_ptr.h"

namespace platform {

/**
 * Makes the element. Films that play fast or backwards, and those whose pictures come late, get one
 * picture a frame.
 *
 * @param pace      of this film; outlives the element
 * @param on_halved hears, on a streaming thread, when `pace` has decided for one picture a frame
 */
ElementPtr make_deinterlacer(FieldPace &pace, std::function<void()> on_halved);

} // namespace platform
