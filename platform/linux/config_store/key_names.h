/** The configuration keys that the player and its neighbours on the set use, by name. Any thread.
 */
#pragma once

namespace platform {

inline constexpr char DEMO_MODE_KEY[] = "db/ostrel-demo-player-tv/demo_mode";
inline constexpr char FILE_MODE_KEY[] = "db/ostrel-demo-player-tv/file_mode";
inline constexpr char LANDSCAPE_TIMER_KEY[] = "db/ostrel-demo-player-tv/landscape_timer";
inline constexpr char PORTRAIT_TIMER_KEY[] = "db/ostrel-demo-player-tv/portrait_timer";
inline constexpr char ROTATION_AUTO_MODE_KEY[] = "db/ostrel-demo-player-tv/rotation_auto_mode";
inline constexpr char PLAYBACK_STATUS_KEY[] = "memory/ostrel-demo-player-tv/playback_status";
inline constexpr char RELAUNCH_TIMER_KEY[] = "memory/usb-launcher-service/start_relaunch_timer";
inline constexpr char ROTATION_STATE_KEY[] = "db/sysman/rotation_state";
inline constexpr char USE_MODE_KEY[] = "db/menu/support/use_mode";

} // namespace platform
