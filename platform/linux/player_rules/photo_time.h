/** How long the player leaves a photo on the screen, unless its slide show is held. Any thread. */
#pragma once

#include <chrono>

namespace platform {

/** @param rotator whether the set turns its panel */
constexpr std::chrono::seconds photo_time(bool rotator)
{
    return std::chrono::seconds(rotator ? 180 : 5);
}

} // namespace platform
