/** What the media player does by default, and tests set otherwise. Made once for each player. */
#pragma once

#include <chrono>
#include <functional>

#include "media_player/audio_sink.h"
#include "media_player/media_system.h"
#include "media_player/pipeline.h"
#include "media_player/subtitle_loader.h"

namespace platform {

struct PlayerOptions {
    Pipeline::AudioSinkMaker make_audio_sink = platform::make_audio_sink;
    /** Whether there is a sound device; looks again for a lost one. */
    std::function<bool()> find_sound = choose_audio_sink;
    /** How long a looping file that lost its sound waits before it tries it again. */
    std::chrono::milliseconds sound_pause{60000};
    /** Waits for the media system; false: there is none. */
    std::function<bool()> set_up = wait_for_media_system;
    std::chrono::milliseconds patience{15000}; ///< longest wait for a first frame
    SubtitleLoader::Load load_subtitle = SubtitleTrack::load;
    /** How long a video whose first frame is there may wait for its subtitle. */
    std::chrono::milliseconds subtitle_patience{3000};
};

} // namespace platform
