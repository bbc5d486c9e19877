#include <utility>

#include "log/platform_log.h"
#include "media_player/playback.h"

namespace platform {

// Read beside the opening of the video, which is mostly the longer of the two.
void Playback::start_subtitle()
{
    if (request_.subtitle.empty())
        return;
    subtitle_loader_ = SubtitleLoader::start(
        request_.subtitle, request_.options->load_subtitle, [weak = weak_from_this()] {
            if (const std::shared_ptr<Playback> playback = weak.lock())
                playback->tasks_.post([self = playback.get()] { self->on_subtitle_read(); });
        });
    subtitle_pending_ = subtitle_loader_ != nullptr;
    if (!subtitle_pending_)
        warn_about_subtitle("there is no thread to read it");
}

void Playback::await_subtitle()
{
    if (subtitle_pending_) {
        subtitle_limit_ = Clock::now() + request_.options->subtitle_patience;
        return;
    }
    subtitle_limit_.reset();
    phase_ = Phase::Prepared;
    tell_result([this] { finish_preparation(); });
}

void Playback::on_subtitle_read()
{
    if (!std::exchange(subtitle_pending_, false))
        return;
    std::string error;
    if (std::unique_ptr<SubtitleTrack> track = subtitle_loader_->take(error)) {
        has_subtitle_ = true;
        output_->set_subtitle(std::move(track), [this](const SubtitleTrack::Cue &cue) {
            tasks_.post([this, cue] { events_.subtitle(*this, cue); });
        });
    } else {
        warn_about_subtitle(error);
    }
    if (phase_ == Phase::AwaitingSubtitle)
        await_subtitle();
}

void Playback::give_up_subtitle()
{
    subtitle_pending_ = false;
    subtitle_loader_->stop();
    warn_about_subtitle("it was not read in time");
    await_subtitle();
}

void Playback::warn_about_subtitle(const std::string &why) const
{
    PLATFORM_LOGW("player", "%s plays without its subtitle %s: %s", name_.c_str(),
                  request_.subtitle.c_str(), why.c_str());
}

} // namespace platform
