/** What the player does with a launch request. Any thread. */
#pragma once

#include <map>
#include <string>

namespace platform {

/** Requests of the factory and of the ambient mode leave what plays as it is. */
inline bool starts_playback(const std::map<std::string, std::string> &extras)
{
    const auto below = extras.find("__K_RELOCATE_BELOW");
    return extras.count("mode") == 0 &&
           (below == extras.end() || below->second != "com.norvane.tv.aod");
}

} // namespace platform
