/** Reads one fact of a picture's EXIF data. Any thread. */
#pragma once

#include <cstdint>
#include <vector>

namespace platform {

/**
 * How the picture lies in the file.
 *
 * @param exif the payload of the APP1 segment, from "Exif" on; may be damaged or empty
 * @return 1 to 8; 1, upright, when it does not say
 */
int exif_orientation(const std::vector<uint8_t> &exif);

} // namespace platform
