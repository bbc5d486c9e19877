/**
 * How soon a start may follow others that ended soon. A service manager starts the player again at
 * once, so that the screen is dark for a moment only; a player that cannot live must not wear the
 * machine out that way. The system's manager knows only one delay for all restarts. One thread.
 */
#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace platform {

/** What one start leaves behind for the next one. */
struct StartRecord {
    int short_lives = 0;                ///< of the players before it, without a long one
    std::chrono::milliseconds began{0}; ///< since the machine was switched on
};

/** What is to be noted of a start at this moment, after the one before. Decides only. */
StartRecord next_start(const std::optional<StartRecord> &former, std::chrono::milliseconds now);

/** How long a start waits after so many short lives: not at all at first, never over 8 s. */
std::chrono::milliseconds wait_after(int short_lives);

/**
 * Notes a start in a file, whose folder is made if need be.
 *
 * @param now since the machine was switched on
 * @return how long the start is to wait, not at all where the file cannot be read or written
 */
std::chrono::milliseconds note_start(const std::string &file, std::chrono::milliseconds now);

/** Notes the start of this process where the user's other runtime files are, and waits. */
void pace_start();

} // namespace platform
