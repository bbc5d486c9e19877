#include "media_player/audio_choice.h"

#include "log/platform_log.h"

namespace platform {
std::string AudioChoice::sink()
{
    const std::lock_guard<std::mutex> lock(mutex_);
    const auto now = environment_.now();
    if (sink_.empty() && (!last_search_ || now - *last_search_ >= SOUND_SEARCH_INTERVAL)) {
        last_search_ = now;
        sink_ = find_sink();
        shared_ = sink_.empty() || sink_ == "pulsesink" || sink_ == "fakesink" ||
                  environment_.opens_twice(sink_);
    }
    return sink_;
}

std::string AudioChoice::find_sink()
{
    std::string wanted = environment_.wanted();
    if (!wanted.empty()) {
        PLATFORM_LOGI("player", "sound goes to %s, as the environment says", wanted.c_str());
        return wanted;
    }
    for (const char *sink : {"pulsesink", "alsasink"}) {
        if (!environment_.opens(sink))
            continue;
        PLATFORM_LOGI("player", "%s %s",
                      silence_logged_ ? "there is sound again; it goes to" : "sound goes to", sink);
        silence_logged_ = false;
        return sink;
    }
    if (!silence_logged_)
        PLATFORM_LOGI("player", "there is no sound device; videos play in silence");
    silence_logged_ = true;
    return {};
}

bool AudioChoice::is_shared() const
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return shared_;
}

void AudioChoice::forget()
{
    const std::lock_guard<std::mutex> lock(mutex_);
    sink_.clear();
    shared_ = false;
    last_search_.reset();
}

} // namespace platform
