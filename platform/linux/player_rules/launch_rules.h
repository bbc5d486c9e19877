/** What the player reads of a launch request, and what it does with it. Any thread. */
#pragma once

#include <map>
#include <string>

namespace platform {

// The extras that the player asks for.
inline constexpr char FOLDER_PATH_EXTRA[] = "folder_path";
inline constexpr char PATH_LOCATION_EXTRA[] = "path_location";
inline constexpr char PLAYER_MODE_EXTRA[] = "demo_player_mode";
inline constexpr char REPEAT_MODE_EXTRA[] = "repeat_mode";
inline constexpr char MODE_EXTRA[] = "mode";
inline constexpr char RELOCATE_BELOW_EXTRA[] = "__K_RELOCATE_BELOW"; ///< the system adds it

/** Requests of the factory and of the ambient mode leave what plays as it is. */
inline bool starts_playback(const std::map<std::string, std::string> &extras)
{
    const auto below = extras.find(RELOCATE_BELOW_EXTRA);
    return extras.count(MODE_EXTRA) == 0 &&
           (below == extras.end() || below->second != "com.norvane.tv.aod");
}

} // namespace platform
