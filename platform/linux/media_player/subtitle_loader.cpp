#include "media_player/subtitle_loader.h"

#include <utility>

#include "media_player/thread_start.h"

namespace platform {

std::shared_ptr<SubtitleLoader> SubtitleLoader::start(const std::string &path, Load load,
                                                      std::function<void()> on_done)
{
    auto loader = std::make_shared<SubtitleLoader>();
    // The thread keeps its loader alive: it may outlive the file, on a disk that was pulled out.
    std::thread thread =
        start_thread("a subtitle", [loader, path, load = std::move(load), done = on_done] {
            loader->end_.set_value_at_thread_exit();
            loader->run(path, load);
            done();
        });
    if (!thread.joinable())
        return nullptr;
    thread.detach();
    return loader;
}

void SubtitleLoader::run(const std::string &path, const Load &load)
{
    std::string error;
    std::unique_ptr<SubtitleTrack> track = load(path, error, [this] { return stopped_.load(); });
    const std::lock_guard<std::mutex> lock(mutex_);
    track_ = std::move(track);
    error_ = std::move(error);
}

std::unique_ptr<SubtitleTrack> SubtitleLoader::take(std::string &error)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    error = error_;
    return std::move(track_);
}

bool SubtitleLoader::wait_for_end(std::chrono::milliseconds limit) const
{
    return ended_.wait_for(limit) == std::future_status::ready;
}

} // namespace platform
