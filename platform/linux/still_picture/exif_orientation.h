/** What a picture's EXIF data say of how it lies in the file. Any thread. */
#pragma once

#include <cstdint>
#include <vector>

#include "base/orientation.h"

namespace platform {

/**
 * What brings the picture upright; nothing has to when it does not say how it lies.
 *
 * @param exif the payload of the APP1 segment, from "Exif" on; may be damaged or empty
 */
Orientation upright_orientation(const std::vector<uint8_t> &exif);

} // namespace platform
