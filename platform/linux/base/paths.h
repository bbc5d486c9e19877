/** Paths as texts of any bytes. Any thread. */
#pragma once

#include <string>

namespace platform {

/** The path without slashes at its end; the root stays. */
std::string without_last_slashes(std::string path);

/** What stands behind the last slash; the whole path when there is none. */
std::string last_part(const std::string &path);

} // namespace platform
