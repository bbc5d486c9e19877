#include "media_player/audio_choice.h"

#include "base/worker_thread.h"
#include "log/platform_log.h"

namespace platform {
std::string AudioChoice::sink()
{
    std::unique_lock<std::mutex> lock(mutex_);
    const auto now = environment_.now();
    if (sink_.empty() && !searching_ &&
        (!last_search_ || now - *last_search_ >= SOUND_SEARCH_INTERVAL)) {
        last_search_ = now;
        searching_ = true;
        search_limit_ = std::chrono::steady_clock::now() + environment_.patience;
        lock.unlock();
        WorkerThread::run_apart(
            "sound-searcher", [this] { search(); }, environment_.patience);
        lock.lock();
    }
    searched_.wait_until(lock, search_limit_, [this] { return !searching_; });
    return sink_;
}

void AudioChoice::search()
{
    const std::string found = find_sink();
    const bool shared = found.empty() || found == "pulsesink" || found == "fakesink" ||
                        environment_.opens_twice(found);
    const std::lock_guard<std::mutex> lock(mutex_);
    sink_ = found;
    shared_ = shared;
    searching_ = false;
    searched_.notify_all();
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

void AudioChoice::on_hang()
{
    const auto now = environment_.now();
    const std::lock_guard<std::mutex> lock(mutex_);
    sink_.clear();
    shared_ = true;
    last_search_ = now;
}

} // namespace platform
