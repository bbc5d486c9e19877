/** What the platform prepares of the player's user interface before the player asks for it. */
#pragma once

namespace platform {

inline constexpr char WINDOW_NAME[] = "ostrel-demo-player-tv";
inline constexpr char TEXT_DOMAIN[] = "ostrel-demo-player-tv";

/** The size of the list in the options, in layout units. */
inline constexpr double OPTIONS_WIDTH_UNITS = 120.0;
inline constexpr double OPTIONS_HEIGHT_UNITS = 55.0;
inline constexpr char OPTIONS_ROW_STYLE[] = "C_TextTile_SingleLine_02";

} // namespace platform
