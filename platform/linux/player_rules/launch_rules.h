/** What the player reads of a launch request, and what it does with it. Any thread. */
#pragma once

#include <map>
#include <optional>
#include <string>

namespace platform {

/** Names are UTF-8; values may hold any bytes but null, since they are often file names. */
using Extras = std::map<std::string, std::string>;

// The extras that the player asks for.
inline constexpr char FOLDER_PATH_EXTRA[] = "folder_path";
inline constexpr char PATH_LOCATION_EXTRA[] = "path_location";
inline constexpr char PLAYER_MODE_EXTRA[] = "demo_player_mode";
inline constexpr char REPEAT_MODE_EXTRA[] = "repeat_mode";
inline constexpr char MODE_EXTRA[] = "mode";
inline constexpr char RELOCATE_BELOW_EXTRA[] = "__K_RELOCATE_BELOW"; ///< the system adds it

/** Requests of the factory and of the ambient mode leave what plays as it is. */
inline bool starts_playback(const Extras &extras)
{
    const auto below = extras.find(RELOCATE_BELOW_EXTRA);
    return extras.count(MODE_EXTRA) == 0 &&
           (below == extras.end() || below->second != "com.norvane.tv.aod");
}

/** What is played where a request names no folder. */
inline constexpr char BUILT_IN_FOLDER[] = "/opt/data/demo_movie/";

/** The folder whose files the player lists; nothing for one that it looks for on USB. */
inline std::optional<std::string> listed_folder(const Extras &extras)
{
    const auto location = extras.find(PATH_LOCATION_EXTRA);
    if (location != extras.end() && location->second == "usb")
        return std::nullopt;
    const auto folder = extras.find(FOLDER_PATH_EXTRA);
    return folder != extras.end() && !folder->second.empty() ? folder->second : BUILT_IN_FOLDER;
}

/** A request for the contents of a folder. @param folder with a slash at its end */
inline Extras request_for(const std::string &folder)
{
    return {{PLAYER_MODE_EXTRA, "folder_contents_player"}, {FOLDER_PATH_EXTRA, folder}};
}

} // namespace platform
