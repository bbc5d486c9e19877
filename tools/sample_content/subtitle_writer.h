/** The texts of the sample subtitles. */
#pragma once

#include <string>

namespace sample {

/**
 * A SubRip file for a video.
 *
 * @param language "EngUS" or "Kor", as in the file's name
 * @param seconds  length of the video; the texts are spread over it
 */
std::string subrip_text(const std::string &language, double seconds);

} // namespace sample
