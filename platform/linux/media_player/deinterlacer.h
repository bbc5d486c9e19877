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
 * Makes the element. Films that play at another speed than their own, and those whose pictures come
 * late, get one picture a frame. Pictures that the sink would be too late with are not made; the
 * bus hears of each, as it does of those that the sink drops.
 *
 * @param pace      of this film; outlives the element
 * @param on_halved hears, on a streaming thread, when `pace` decides for one picture a frame for
 * the first time
 */
ElementPtr make_deinterlacer(FieldPace &pace, std::function<void()> on_halved);

} // namespace platform
