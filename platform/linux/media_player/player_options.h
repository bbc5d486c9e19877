/** What the media player does by default, and tests set otherwise. Made once for each player. */
#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "lookahead/lookahead.h"
#include "media_player/audio_choice.h"
#include "media_player/audio_sink.h"
#include "media_player/media_system.h"
#include "media_player/pipeline.h"
#include "settings/settings.h"
#include "subtitles/subtitle_track.h"
#include "unplayable_files/fruitless_rounds.h"
#include "unplayable_files/unplayable_files.h"

namespace platform {

/** SubtitleTrack::load(), or what a test has in its place. */
using SubtitleLoad = std::function<std::unique_ptr<SubtitleTrack>(
    const std::string &path, std::string &error, const StopRequest &stop)>;

struct PlayerOptions {
    Pipeline::AudioSinkMaker make_audio_sink = platform::make_audio_sink;
    /** Whether there is a sound device; looks again for a lost one. */
    std::function<bool()> find_sound = choose_audio_sink;
    /** How long a looping file that lost its sound waits before it tries it again. */
    std::chrono::milliseconds sound_retry_interval = SOUND_SEARCH_INTERVAL;
    /** Waits for the media system, at most until it is told to stop; false: there is none. */
    std::function<bool(const std::atomic<bool> &stopping)> set_up = wait_for_media_system;
    std::chrono::milliseconds first_frame_timeout{15000}; ///< longest wait for a first frame
    /** A film for which no frame has come for so long stalls. */
    std::chrono::milliseconds stall_patience{10000};
    /** Of films of high dynamic range: the light that becomes the screen's white, cd/m². */
    double sdr_white = Settings::get().sdr_white;
    SubtitleLoad load_subtitle = SubtitleTrack::load;
    /** How long a video whose first frame is there may wait for its subtitle. */
    std::chrono::milliseconds subtitle_timeout{3000};
    /** Keeps those that cannot be opened, which are passed over; null: each such is an error. */
    UnplayableFiles *unplayable_files =
        Settings::get().skip_broken_videos ? &UnplayableFiles::get() : nullptr;
    /** Says how long a list of nothing but such is waited with; not used without the former. */
    FruitlessRounds *fruitless_rounds = &FruitlessRounds::get();
    /** Names the file that is opened ahead, and hears of those that are played; null: none is. */
    Lookahead *lookahead = &Lookahead::get();
};

} // namespace platform
