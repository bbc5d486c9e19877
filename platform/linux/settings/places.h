/**
 * Where the program keeps its files: the XDG base directories, and the environment variables that
 * override them. All paths are absolute and without a slash at the end. Any thread, as long as
 * nobody changes the environment meanwhile.
 */
#pragma once

#include <string>

namespace platform {

/** tv.conf in force: the first that exists; empty when there is none. */
std::string find_tv_conf();

/** For what survives a restart. */
std::string find_state_dir();

/**
 * For what lives until the machine is switched off. Without an XDG runtime directory it is made
 * under /tmp, for this user only; a directory there that somebody else could write is not used.
 */
std::string find_runtime_dir();

/** Installed pictures, theme and catalogues, or those of the build tree. */
std::string find_resource_dir();

} // namespace platform
