/** JPEG files from pictures. */
#pragma once

#include <vector>

#include "image.h"

namespace sample {

/**
 * Compresses a picture.
 *
 * @param turned store the picture lying on its left side and note in its EXIF data that it is to be
 *               turned clockwise by a quarter (orientation 6)
 * @throws std::runtime_error
 */
std::vector<unsigned char> jpeg_of(const Image &image, bool turned);

} // namespace sample
