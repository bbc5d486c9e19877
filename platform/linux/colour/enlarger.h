/** Makes pictures larger whose colours have been converted, as PlaneScaler does before that. */
#pragma once

#include "base/pixels.h"

namespace platform {

/**
 * Draws some rows of a picture in a larger size, each pixel between its neighbours by distance, to
 * within two codes. Any thread, also several at a time.
 *
 * @param from  in no direction larger than `to`; at least one pixel each way
 * @param first of `count` rows of `to`
 */
void enlarge(const Pixels &from, const Pixels &to, int first, int count);

} // namespace platform
