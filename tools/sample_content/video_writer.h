/** Video files with sound, encoded by GStreamer. */
#pragma once

#include <functional>
#include <string>

#include "catalogue.h"

namespace sample {

/**
 * Makes a video of an item's scene and tone; the name's extension chooses container and codecs.
 *
 * @param path     file to write
 * @param seconds  length
 * @param progress called with 0 to 1 as the work goes on
 * @throws std::runtime_error with a sentence for the user
 * @throws Cancelled when the user has asked to stop
 */
void write_video(const Item &item, const std::string &path, double seconds,
                 const std::function<void(double)> &progress);

} // namespace sample
