#include <algorithm>
#include <utility>

#include "log/platform_log.h"
#include "media_player.h"
#include "media_player/audio_sink.h"
#include "media_player/playback.h"
#include "media_player/playback_times.h"

namespace platform {

void Playback::on_decoder_missing(Track track, const std::string &what)
{
    std::string &missing = track == Track::Sound ? missing_sound_ : missing_picture_;
    if (missing.find(what) == std::string::npos)
        missing += (missing.empty() ? "" : ", ") + what;
    if (track == Track::Sound)
        sound_unsupported_ = true;
}

// GStreamer's own sentence about a missing decoder does not say which one.
std::string Playback::why_no_picture(const std::string &otherwise) const
{
    return missing_picture_.empty() ? otherwise
                                    : "no decoder is installed for it (" + missing_picture_ + ")";
}

void Playback::on_failure(const Failure &failure)
{
    if (phase_ == Phase::Failed || phase_ == Phase::Ended)
        return;
    if (!failure.details.empty())
        PLATFORM_LOGD("player", "%s: %s", name_.c_str(), failure.details.c_str());
    if (failure.busy && failure.part != Failure::Part::SoundDevice) {
        interrupt(failure.text);
        return;
    }
    switch (failure.part) {
    case Failure::Part::Sound:
        sound_unsupported_ = true;
        go_silent(failure.text);
        return;
    case Failure::Part::SoundDevice:
        forget_audio_sink();
        without_device_ = true;
        if (Clock::now() > sound_trial_)
            sound_pause_ = request_.sound_pause; // it was good for a while
        go_silent(failure.text);
        return;
    default:
        break;
    }
    if (phase_ == Phase::Opening)
        fail(failure.code, why_no_picture(failure.text));
    else
        on_broken(failure.text);
}

// The pipeline is opened anew without its sound. The last picture stays until it is where it was.
void Playback::go_silent(const std::string &why)
{
    if (std::exchange(silent_, true))
        return;
    PLATFORM_LOGW("player", "%s plays in silence: %s", name_.c_str(), why.c_str());
    if (phase_ == Phase::Opening) {
        held_results_.clear();
        arm_first_frame();
        if (!open_again())
            fail(PLAYER_ERROR_INVALID_OPERATION, "it cannot be opened without sound either");
        return;
    }
    const GstClockTime position = output_->position();
    output_->set_visible(false);
    needs_rewind_ = phase_ == Phase::Ready;
    const auto give_up = [this] { on_broken("it does not come back without sound"); };
    if (!open_again()) {
        give_up();
        return;
    }
    if (phase_ == Phase::Ready)
        return;
    const auto go_on = [this, position] {
        output_->set_visible(true);
        run_from(GST_CLOCK_TIME_IS_VALID(position) ? position : 0);
    };
    await_ready(go_on, LONGEST_SEEK, give_up);
}

// Asked between two rounds of a file that plays over and over, which nothing else would ever bring
// its sound back to. A device that is there and breaks each time holds the picture, so the tries
// become rarer.
bool Playback::sound_is_back()
{
    const auto now = Clock::now();
    const bool missed = without_device_ && (silent_ || pipeline_->has_sound());
    if (!missed || broken_ || trick_->rate() != 1.0 || now < sound_trial_)
        return false;
    sound_trial_ = now + sound_pause_;
    if (!request_.find_sound())
        return false;
    sound_pause_ = std::min(sound_pause_ * 2, LONGEST_SOUND_PAUSE);
    return true;
}

// A pipeline that was put together without a sound device takes none in later: it is opened anew.
void Playback::renew_with_sound()
{
    sound_due_ = false;
    round_is_last_ = false;
    round_time_.reset();
    silent_ = false;
    output_->set_visible(false);
    const auto give_up = [this] {
        without_device_ = true;
        go_silent("its sound does not come back");
    };
    if (!open_again()) {
        give_up();
        return;
    }
    const auto go_on = [this] {
        PLATFORM_LOGI("player", "%s plays with sound again", name_.c_str());
        output_->set_visible(true);
        run_from(0);
    };
    await_ready(go_on, LONGEST_SEEK, give_up);
}

// Some readers lose their way in a broken file without a word. A file is given up when no frame has
// come for long, though its end should have been reached; slow slides are not to be mistaken for
// it.
void Playback::watch_progress()
{
    const auto now = Clock::now();
    progress_check_ = now + PROGRESS_INTERVAL;
    const uint64_t shown = output_->shown();
    if (paused_ || on_ready_ || trick_->stepping() || shown != shown_at_progress_) {
        shown_at_progress_ = shown;
        last_progress_ = now;
        return;
    }
    const auto still = now - last_progress_;
    const GstClockTime length = duration_;
    const GstClockTime position = output_->position();
    if (still < SHORTEST_STALL)
        return;
    if (!GST_CLOCK_TIME_IS_VALID(length) || !GST_CLOCK_TIME_IS_VALID(position) ||
        trick_->rate() < 0) {
        if (still > LONGEST_STALL)
            on_broken("no frame comes any more");
        return;
    }
    const double gone = static_cast<double>(std::chrono::nanoseconds(still).count());
    if (static_cast<double>(position) + gone * trick_->rate() > static_cast<double>(length))
        on_broken("it stands still near its end");
}

void Playback::on_broken(const std::string &why)
{
    if (broken_check_)
        return;
    PLATFORM_LOGW("player", "%s is broken and ends here: %s", name_.c_str(), why.c_str());
    broken_ = true;
    on_ready_ = nullptr;
    shown_at_check_ = output_->shown();
    broken_check_ = Clock::now() + BROKEN_PATIENCE;
}

void Playback::check_broken()
{
    const uint64_t shown = output_->shown();
    if (phase_ != Phase::Running || paused_ || shown != shown_at_check_) {
        shown_at_check_ = shown;
        broken_check_ = Clock::now() + BROKEN_PATIENCE;
        return;
    }
    broken_check_.reset();
    if (looping_ && Clock::now() - last_restart_ > SHORTEST_LIFE_BETWEEN_BREAKS + BROKEN_PATIENCE) {
        last_restart_ = Clock::now();
        start_anew();
    } else
        complete();
}

void Playback::start_anew()
{
    output_->set_visible(false);
    if (!open_again()) {
        complete();
        return;
    }
    const auto go_on = [this] {
        output_->set_visible(true);
        needs_rewind_ = false;
        resume_pipeline();
    };
    await_ready(go_on, LONGEST_SEEK, [this] { complete(); });
}

} // namespace platform
