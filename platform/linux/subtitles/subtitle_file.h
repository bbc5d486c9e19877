/**
 * Reading a whole subtitle file into memory. A demo folder may hold anything under a subtitle's
 * name, so only regular files of a sensible size are taken and nothing here can block for ever.
 */
#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "subtitles/stop_request.h"

namespace platform {

/** The largest subtitle file that is read, in bytes. Real ones have some hundred kilobytes. */
constexpr size_t MAX_SUBTITLE_FILE_SIZE = 16u << 20;

/**
 * Reads a regular file. Any thread; blocks for the disk only.
 *
 * @param path  any bytes but null
 * @param error receives one sentence when nothing is returned
 */
std::optional<std::string> read_subtitle_file(const std::string &path, std::string &error,
                                              const StopRequest &stop = {});

/** The file name's extension in lower case without its dot, or an empty text. */
std::string lower_extension(const std::string &path);

} // namespace platform
