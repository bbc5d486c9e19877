/**
 * How long a file's play waits for what, and why. Private to the files of Playback. Unless it says
 * otherwise a time was chosen by judgement and found to do in the tests; nothing measured stands
 * behind the last digit, and the tests hold for other values of the same size.
 */
#pragma once

#include <chrono>

#include "media_player/gst_ptr.h"

namespace platform {

// --- Opening ---

/**
 * A file that goes away slowly, from a disk that was pulled out say, holds up the next no longer. A
 * sound one is gone in far less; a second without a new picture is what a viewer still takes for a
 * change of films.
 */
constexpr auto LONGEST_WAIT_FOR_PREDECESSOR = std::chrono::milliseconds(1000);

/**
 * A load that was told to stop ends within milliseconds, unless its disk is gone: then it is left
 * to itself, as it holds nothing of the file's. The next file waits this long anyway.
 */
constexpr auto LONGEST_WAIT_FOR_SUBTITLE_END = LONGEST_WAIT_FOR_PREDECESSOR;

/**
 * How often a file that opens is looked after while nothing comes of it: often enough for a reader
 * that gave up without a word to cost no more than a blink, seldom enough to cost no work.
 */
constexpr auto LOOK_AFTER_OPENING = std::chrono::milliseconds(250);

/**
 * The first start on a machine looks at every plugin there is, which is slow on a small one with a
 * cold disk. Nothing plays before its end, so it is given up late.
 */
constexpr auto LONGEST_SET_UP = std::chrono::seconds(180);

// --- Seeking and going round ---

/**
 * A picture that was sought is given up after this, and the play goes on with what there is. Even
 * an exact seek decodes one stretch between key frames, mostly well below a second's work.
 */
constexpr auto LONGEST_SEEK = std::chrono::milliseconds(5000);

/**
 * A reader that does not tell the end of a round is helped on, after the last picture of the round
 * has stood for this long. Shorter than what looks like a stop; longer than a reader's own word
 * takes to come by.
 */
constexpr auto LONGEST_WAIT_FOR_ROUND = std::chrono::milliseconds(300);

/** Rounds of a file of next to no length must not keep a processor busy: ten a second at most. */
constexpr auto SHORTEST_ROUND = std::chrono::milliseconds(100);

/** Tracks need not end together, and lengths are told roundly: less than this is not "cut short".
 */
constexpr GstClockTime LONGEST_MISSING_END = 500 * GST_MSECOND;

// --- Trouble ---

/** How often it is looked whether frames still come. The stalls below count in seconds. */
constexpr auto PROGRESS_INTERVAL = std::chrono::milliseconds(1000);

/**
 * A file whose end should have been reached is given up after this long without a frame. Long
 * enough for a stick that wakes up; a film of stills with longer ones is saved by its length.
 */
constexpr auto SHORTEST_STALL = std::chrono::milliseconds(4000);

/** The same where no length tells when the end is due: there a still may well be meant. */
constexpr auto LONGEST_STALL = std::chrono::milliseconds(30000);

/**
 * What was decoded before a file broke is still shown; this long without a frame is the end.
 * Several times the distance of frames, even of slow ones.
 */
constexpr auto BROKEN_PATIENCE = std::chrono::milliseconds(700);

/** The same for a file that was broken before it was started, whose first frame is still to come.
 */
constexpr auto BROKEN_START_PATIENCE = std::chrono::milliseconds(1000);

/** A looping file that breaks anew at once is given up. */
constexpr auto SHORTEST_LIFE_BETWEEN_BREAKS = std::chrono::milliseconds(1000);

/** What the pause between two tries to bring the sound back grows to. */
constexpr std::chrono::milliseconds LONGEST_SOUND_PAUSE = std::chrono::hours(1);

} // namespace platform
