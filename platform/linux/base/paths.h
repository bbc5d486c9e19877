/** Paths as texts of any bytes, and lists of such in files. Any thread. */
#pragma once

#include <string>
#include <vector>

namespace platform {

/** The path without slashes at its end; the root stays. */
std::string without_last_slashes(std::string path);

/** What stands behind the last slash; the whole path when there is none. */
std::string last_part(const std::string &path);

/** Whether a path is one of several. */
bool contains(const std::vector<std::string> &paths, const std::string &path);

/** A list that write_paths() has left; empty where there is none. */
std::vector<std::string> read_paths(const std::string &file);

/** Replaces the file, whatever lies there. @return false on failure */
bool write_paths(const std::string &file, const std::vector<std::string> &paths);

} // namespace platform
