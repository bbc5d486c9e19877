#include <utility>

#include "log/platform_log.h"
#include "media_player/playback.h"
#include "media_player/playback_times.h"

namespace platform {
namespace {

double seconds(GstClockTime time)
{
    return static_cast<double>(time) / static_cast<double>(GST_SECOND);
}

} // namespace

void Playback::do_start()
{
    if (phase_ == Phase::Running) {
        if (!std::exchange(paused_, false))
            return;
        trick_->set_running(true);
        resume_pipeline();
        return;
    }
    if (phase_ != Phase::Ready && phase_ != Phase::Ended)
        return;
    PLATFORM_LOGI("player", "playing %s", name_.c_str());
    phase_ = Phase::Running;
    paused_ = false;
    output_->set_visible(true);
    last_round_ = Clock::now();
    last_progress_ = Clock::now();
    progress_check_ = Clock::now() + PROGRESS_INTERVAL;
    if (broken_ && needs_rewind_) {
        start_anew();
        return;
    }
    if (needs_rewind_ || wanted_rate_ != 1.0 ||
        (looping_ && !trick_->in_rounds() && pipeline_->goes_in_rounds()))
        run_from(0);
    else
        resume_pipeline();
    if (round_read_)
        follow_up_round();
    if (broken_check_)
        broken_check_ = Clock::now() + BROKEN_START_PATIENCE;
}

// A file whose reader cannot seek still plays, once, from where it stands.
void Playback::run_from(GstClockTime position)
{
    needs_rewind_ = false;
    trick_->reset();
    on_speed(trick_->begin(wanted_rate_, position, !paused_, looping_));
}

void Playback::do_stop()
{
    if (phase_ != Phase::Running && phase_ != Phase::Ready && phase_ != Phase::Ended)
        return;
    if (phase_ == Phase::Running)
        PLATFORM_LOGI("player", "stopped %s", name_.c_str());
    needs_rewind_ = needs_rewind_ || phase_ != Phase::Ready;
    phase_ = Phase::Ready;
    on_ready_ = nullptr;
    progress_check_.reset();
    round_time_.reset();
    sound_due_ = false;
    rate_pending_ = false;
    wanted_rate_ = 1.0;
    trick_->reset();
    pipeline_->mute(false);
    pipeline_->hold();
}

void Playback::resume_pipeline()
{
    if (!paused_ && !trick_->stepping())
        pipeline_->play();
}

void Playback::take_speed(double rate)
{
    if (on_ready_) {
        rate_pending_ = true;
        return;
    }
    rate_pending_ = false;
    if (rate == trick_->rate())
        return;
    const GstClockTime now = trick_->stepping() ? trick_->position() : pipeline_->position();
    const GstClockTime position = GST_CLOCK_TIME_IS_VALID(now) ? now : 0;
    PLATFORM_LOGI("player", "speed %.2f from %.1f s", rate, seconds(position));
    on_speed(trick_->begin(rate, position, !paused_, looping_));
}

void Playback::on_speed(TrickPlay::Next next)
{
    count_drops_ = trick_->rate() == 1.0;
    switch (next) {
    case TrickPlay::Next::Nothing:
        break;
    case TrickPlay::Next::AwaitFrame:
        round_time_.reset();
        round_read_ = false;
        round_is_last_ = false;
        sound_due_ = false;
        rounds_ahead_ = 0;
        await_ready([this] { on_speed_taken(); }, LONGEST_SEEK, [this] { on_speed_taken(); });
        break;
    case TrickPlay::Next::AtStart:
        back_to_normal(0);
        break;
    case TrickPlay::Next::Refused:
        PLATFORM_LOGW("player", "%s cannot be sought; it plays at normal speed", name_.c_str());
        trick_->reset();
        pipeline_->mute(false);
        announce_normal_speed();
        resume_pipeline();
        break;
    }
}

void Playback::on_speed_taken()
{
    if (phase_ != Phase::Running)
        return;
    trick_->frame_ready();
    if (rate_pending_)
        take_speed(wanted_rate_);
    if (!on_ready_)
        resume_pipeline();
}

void Playback::announce_normal_speed()
{
    count_drops_ = true;
    wanted_rate_ = 1.0;
    listener_->on_normal_speed(*this, rate_request_);
}

void Playback::back_to_normal(GstClockTime position)
{
    PLATFORM_LOGI("player", "backwards play came to the start; going on forward");
    announce_normal_speed();
    on_speed(trick_->begin(1.0, position, !paused_, looping_));
}

void Playback::on_ended()
{
    // An end that was told before a seek may be heard of after it.
    if (phase_ != Phase::Running || !output_->at_end() || trick_->stepping())
        return;
    if (trick_->rate() < 0) {
        back_to_normal(0);
        return;
    }
    warn_if_cut_short();
    if (!looping_)
        complete();
    else if (sound_is_back())
        renew_with_sound();
    else
        go_round();
}

// Readers take the end of a file that was cut off for the end of the film.
void Playback::warn_if_cut_short()
{
    const GstClockTime length = duration_;
    const GstClockTime position = pipeline_->position();
    if (broken_ || !GST_CLOCK_TIME_IS_VALID(length) || !GST_CLOCK_TIME_IS_VALID(position) ||
        position + LONGEST_MISSING_END >= length)
        return;
    PLATFORM_LOGW("player", "%s is cut short: it ends after %.1f of %.1f s", name_.c_str(),
                  seconds(position), seconds(length));
}

// The reader is ahead of the picture: the next round is read while the end of this one is shown.
void Playback::on_round_read(bool fresh)
{
    if (!fresh)
        return;
    round_read_ = true;
    if (phase_ == Phase::Running)
        follow_up_round();
}

void Playback::follow_up_round()
{
    round_read_ = false;
    if (!looping_)
        round_is_last_ = true;
    else if (sound_is_back())
        sound_due_ = true;
    else
        go_round();
    if ((round_is_last_ || sound_due_) && output_->at_end())
        on_round_shown();
}

void Playback::on_round_shown()
{
    if (phase_ != Phase::Running || !trick_->in_rounds())
        return;
    if (!looping_ && std::exchange(round_is_last_, false)) {
        complete();
        return;
    }
    if (sound_due_) {
        renew_with_sound();
        return;
    }
    // Normally the next round is under way by now.
    if (rounds_ahead_ > 0)
        rounds_ahead_--;
    else if (!round_time_)
        round_time_ = Clock::now() + LONGEST_WAIT_FOR_ROUND;
}

void Playback::go_round()
{
    const auto due = last_round_ + SHORTEST_ROUND;
    if (Clock::now() < due)
        round_time_ = due;
    else
        next_round();
}

void Playback::next_round()
{
    last_round_ = Clock::now();
    round_is_last_ = false;
    if (trick_->next_round()) {
        rounds_ahead_++;
        return;
    }
    on_speed(trick_->begin(trick_->rate(), 0, !paused_, true));
}

void Playback::complete()
{
    PLATFORM_LOGI("player", "%s has come to its end", name_.c_str());
    phase_ = Phase::Ended;
    needs_rewind_ = true;
    on_ready_ = nullptr;
    broken_check_.reset();
    progress_check_.reset();
    wanted_rate_ = 1.0;
    trick_->reset();
    pipeline_->mute(false);
    pipeline_->hold();
    listener_->on_completed(*this);
}

} // namespace platform
