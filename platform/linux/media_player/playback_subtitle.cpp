#include <utility>

#include "log/platform_log.h"
#include "media_player/playback.h"

namespace platform {

// Read beside the opening of the video, which is mostly the longer of the two, and on a thread of
// its own: a subtitle that is slow to read, or made to be slow, must hold up neither the video nor
// its closing.
void Playback::start_subtitle()
{
    if (subtitle_.empty() || subtitle_ == subtitle_begun_)
        return;
    subtitle_begun_ = subtitle_;
    const auto read = [weak = weak_from_this(), path = subtitle_,
                       load = request_.options->load_subtitle,
                       &stopping = subtitle_reader_->stopping()] {
        std::string error;
        const std::shared_ptr<SubtitleTrack> track =
            load(path, error, [&stopping] { return stopping.load(); });
        if (const std::shared_ptr<Playback> playback = weak.lock())
            playback->thread_.post([self = playback.get(), path, track, error] {
                self->on_subtitle_read(path, track, error);
            });
    };
    subtitle_pending_ = subtitle_reader_->post(read);
    if (!subtitle_pending_)
        warn_about_subtitle("there is no thread to read it");
}

// A file that was opened ahead may have been opened with another one, or with none.
void Playback::take_subtitle(const std::string &path)
{
    if (path == subtitle_)
        return;
    subtitle_ = path;
    // A guess that is still being read must not keep the reader.
    if (std::exchange(subtitle_pending_, false))
        subtitle_reader_.emplace(SUBTITLE_READER);
    has_subtitle_ = false;
    output_->set_subtitle(nullptr, {});
    const bool frame_is_there = phase_ == Phase::Prepared || phase_ == Phase::AwaitingSubtitle;
    if (frame_is_there) {
        held_results_->clear();
        phase_ = Phase::AwaitingSubtitle;
    }
    start_subtitle();
    if (frame_is_there)
        await_subtitle();
}

// Of a file that is open ahead it may take its time, as nobody waits for it.
void Playback::await_subtitle()
{
    if (subtitle_pending_) {
        if (!held_results_)
            subtitle_limit_ = Clock::now() + request_.options->subtitle_timeout;
        return;
    }
    subtitle_limit_.reset();
    phase_ = Phase::Prepared;
    report_result([this] { finish_preparation(); });
}

void Playback::on_subtitle_read(const std::string &path,
                                const std::shared_ptr<SubtitleTrack> &track,
                                const std::string &error)
{
    if (path != subtitle_ || !std::exchange(subtitle_pending_, false))
        return;
    if (track) {
        has_subtitle_ = true;
        output_->set_subtitle(track, [this](const SubtitleTrack::Cue &cue) {
            thread_.post([this, cue] { events_.subtitle(*this, cue); });
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
    subtitle_reader_->close();
    warn_about_subtitle("it was not read in time");
    await_subtitle();
}

void Playback::warn_about_subtitle(const std::string &why)
{
    report_result([this, why, subtitle = subtitle_] {
        PLATFORM_LOGW("player", "%s plays without its subtitle %s: %s", name_.c_str(),
                      subtitle.c_str(), why.c_str());
    });
}

} // namespace platform
