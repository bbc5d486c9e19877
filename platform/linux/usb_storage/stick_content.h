/**
 * Content that a USB stick brings along: its folder "demo". Any thread; looks at each stick, and
 * takes for ever where one hangs.
 */
#pragma once

#include <string>
#include <vector>

#include "player_rules/content_rules.h"

namespace platform {

/**
 * The folders "demo" with something in it that the player would play, in the order of the sticks.
 * The letters may be capital or small, since some file systems tell them apart and some do not; of
 * several such folders on one stick the one that is written like that goes first.
 *
 * @param mounts where the sticks are mounted
 * @param shown of the panel that is to show it; whoever has none takes all
 * @return paths with a slash at the end
 */
std::vector<std::string> stick_contents(const std::vector<std::string> &mounts,
                                        Orientations shown = Orientations::Both);

} // namespace platform
