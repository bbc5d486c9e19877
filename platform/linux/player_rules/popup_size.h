/** The size of the list in the player's options, in layout units. */
#pragma once

namespace platform {

inline constexpr double OPTIONS_WIDTH_UNITS = 120.0;
inline constexpr double OPTIONS_HEIGHT_UNITS = 55.0;

} // namespace platform
