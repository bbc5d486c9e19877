/**
 * A launch request as the framework keeps it: the extras by name. Any thread.
 */
#pragma once

#include <map>
#include <string>

namespace platform {

/** Names are UTF-8; values may hold any bytes but null, since they are often file names. */
using Extras = std::map<std::string, std::string>;

} // namespace platform

/** What an application gets a pointer to. */
struct app_control_s {
    platform::Extras extras;
};
