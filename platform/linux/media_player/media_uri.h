/**
 * Names of files as the caller gives them, and as GStreamer wants them. Any thread.
 */
#pragma once

#include <string>

namespace platform {

/**
 * Makes a URI of a name.
 *
 * @param name a path, any bytes but null, or a URI of the scheme file or fd, which stays as it is.
 * A URI of another scheme would lead away from this machine's files: it counts as a path
 * @return empty when no URI can be made of it
 */
std::string media_uri(const std::string &name);

/** The path a URI means on this machine; empty when it means no local file. */
std::string local_path(const std::string &uri);

/**
 * Whether there is something at a path that can be played: a readable, regular file with contents.
 * Opening anything else could block for ever. May block as long as the file system does.
 *
 * @return PLAYER_ERROR_NONE or the player error that says what is wrong
 */
int check_media_file(const std::string &path);

} // namespace platform
