/**
 * Reader of tv.conf. Any thread; a file is read in one go.
 */
#pragma once

#include <string>
#include <string_view>

#include "settings/settings.h"

namespace platform {

/**
 * Reads a file into the settings. What is not said there, or said wrongly, stays as it is, and the
 * latter is logged as a warning with file, line and key.
 *
 * @return false when the file exists but cannot be read; a missing file is an empty one
 */
bool read_tv_conf(const std::string &path, Settings &settings);

/** Whether a text is language and country, e.g. "ko_KR"; an encoding or modifier may follow. */
bool is_language(std::string_view text);

} // namespace platform
