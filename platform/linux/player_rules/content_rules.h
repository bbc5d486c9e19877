/**
 * Which files of a folder the player plays, told by their names alone, on which panel, and in which
 * order. Any thread.
 */
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

enum class ContentKind {
    Other, ///< not played
    Video,
    Photo,
};

/** @param direct_backlight whether the set is of the models that play one more kind of file */
ContentKind content_kind(std::string_view name, bool direct_backlight);

/** Whether a file of that name is looked at for a subtitle. */
bool is_subtitle(std::string_view name, bool direct_backlight);

/** What the name of a file for the upright panel begins with. */
inline constexpr std::string_view PORTRAIT_PREFIX = "portrait_";

/** Whether a file is for the upright panel. */
bool is_portrait_content(std::string_view name);

/** Content of which orientations a panel can show: of one as it stands, of both with a rotator. */
enum class Orientations { Landscape, Portrait, Both };

/**
 * Whether a regular file of that name gives the player something to show. Stricter than the
 * player's list, which takes the hidden files of other systems too: with nothing else it shows
 * nothing.
 */
bool is_playable(std::string_view name, bool direct_backlight);

/**
 * The same of what lies in a folder, and folders are nothing to show either. Asks the file system
 * where that has not told the kind of file.
 */
bool is_playable(const std::filesystem::directory_entry &file, bool direct_backlight,
                 Orientations shown);

/**
 * The list that a playing file stands in, as its folder tells it: the folder's files of one
 * orientation, videos before photos, each in the order of the directory.
 */
struct ContentList {
    bool portrait = false;          ///< the list for the upright panel
    std::vector<std::string> names; ///< names of the files, in the order in which they play
    size_t videos = 0;              ///< how many of them are videos; photos follow
    size_t position = 0;            ///< of the file in question, counted from 0
};

/**
 * Looks a file up in its list. Takes as long as the file system does.
 *
 * @param path the file, as the player names it to its libraries
 * @return nothing where the folder cannot be read or does not hold the file as one of a list
 */
std::optional<ContentList> content_list(const std::string &path, bool direct_backlight);

} // namespace platform
