/**
 * What the media player is doing at this moment, for a status report. Any thread; never blocks on
 * the file being played.
 */
#pragma once

#include <cstdint>
#include <string>

#include "media_player.h"

namespace platform {

struct PlayerStatus {
    player_state_e state = PLAYER_STATE_NONE;
    std::string path;         ///< as the caller named it; empty when nothing is prepared
    int64_t position_ms = -1; ///< -1 before the first frame
    int64_t duration_ms = -1; ///< -1 when unknown
    double rate = 1.0;
    int width = 0; ///< of the frames as they are stored; 0 before the first
    int height = 0;
    bool has_subtitle = false; ///< a subtitle file was read and is being shown
    bool looping = false;
};

/** The status of the player that was made last; all defaults when there is none. */
PlayerStatus current_player_status();

} // namespace platform
