/**
 * Which files of a folder the player plays, told by their names alone, and on which panel. Any
 * thread.
 */
#pragma once

#include <string_view>

namespace platform {

enum class ContentKind {
    Other, ///< not played
    Video,
    Photo,
};

/** @param direct_backlight whether the set is of the models that play one more kind of file */
ContentKind content_kind(std::string_view name, bool direct_backlight);

/** Whether a file is for the upright panel. */
bool is_portrait_content(std::string_view name);

} // namespace platform
