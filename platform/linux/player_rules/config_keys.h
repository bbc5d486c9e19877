/**
 * The configuration keys that the player and its neighbours on the set use: their names, what they
 * may hold, and what a new set has there. Any thread.
 */
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace platform {

// Those that the platform itself reads or writes; known_keys() has all.
inline constexpr char DEMO_MODE_KEY[] = "db/ostrel-demo-player-tv/demo_mode";
inline constexpr char LANDSCAPE_TIMER_KEY[] = "db/ostrel-demo-player-tv/landscape_timer";
inline constexpr char PORTRAIT_TIMER_KEY[] = "db/ostrel-demo-player-tv/portrait_timer";
inline constexpr char ROTATION_AUTO_MODE_KEY[] = "db/ostrel-demo-player-tv/rotation_auto_mode";
inline constexpr char PLAYBACK_STATUS_KEY[] = "memory/ostrel-demo-player-tv/playback_status";
inline constexpr char ROTATION_STATE_KEY[] = "db/sysman/rotation_state";

/** A value of DEMO_MODE_KEY: staff have ended the demo with "Off" in the options. */
inline constexpr int DEMO_SWITCHED_OFF = -1;
// Values of PLAYBACK_STATUS_KEY.
inline constexpr int NOTHING_TO_PLAY = 2;
inline constexpr int PLAYBACK_FAILED = 3; ///< a video has ended the demo, or a photo was skipped

struct KnownKey {
    const char *name;
    int lowest;                 ///< smallest value with a meaning
    int highest;                ///< largest value with a meaning
    std::optional<int> factory; ///< what a new set has there; nothing: the key does not exist
    const char *meaning;
};

const std::vector<KnownKey> &known_keys();

/** The key of that full name, or whose last component it is; null when there is none. */
const KnownKey *find_known_key(const std::string &name);

/**
 * What a stored selection (DEMO_MODE_KEY) says for one orientation: -1 off, 0 play all, else a
 * file's number.
 */
int selection_of(int word, bool portrait);

} // namespace platform
