#include <utility>

#include "log/platform_log.h"
#include "media_player/playback.h"

namespace platform {
namespace {

// Tracks need not end together, and lengths are told roundly: less than this is not "cut short".
constexpr GstClockTime LONGEST_MISSING_END = 500 * GST_MSECOND;

double seconds(GstClockTime time)
{
    return static_cast<double>(time) / static_cast<double>(GST_SECOND);
}

} // namespace

void Playback::do_start()
{
    if (phase_ == Phase::PassedOver) {
        // While this takes time nothing at all can be played, and the last picture stays.
        passing_over_ends_ = Clock::now() + pass_over_time_;
        return;
    }
    if (phase_ == Phase::Paused) {
        phase_ = Phase::Playing;
        trick_->set_running(true, Clock::now());
        end_.start(Clock::now());
        resume_pipeline();
        return;
    }
    if (phase_ != Phase::Ready && phase_ != Phase::Ended)
        return;
    PLATFORM_LOGI("player", "playing %s", name_.c_str());
    phase_ = Phase::Playing;
    output_->set_visible(true);
    const auto now = Clock::now();
    rounds_.on_start(now);
    stall_.start(now);
    given_up_ = false;
    end_.start(now);
    const bool rewind = std::exchange(needs_rewind_, true);
    if (break_.broken() && rewind) {
        restart();
        return;
    }
    if (rewind || wanted_rate_ != 1.0 ||
        (looping_ && !trick_->in_rounds() && pipeline_->goes_in_rounds()))
        play_from(0);
    else
        resume_pipeline();
    if (rounds_.wants_plan())
        plan_round();
    break_.on_start(Clock::now());
}

void Playback::do_pause()
{
    passing_over_ends_ = NEVER;
    if (phase_ != Phase::Playing)
        return;
    phase_ = Phase::Paused;
    trick_->set_running(false, Clock::now());
    pipeline_->hold();
}

void Playback::do_stop()
{
    passing_over_ends_ = NEVER;
    if (!running() && phase_ != Phase::Ready && phase_ != Phase::Ended)
        return;
    if (running()) {
        PLATFORM_LOGI("player", "stopped %s", name_.c_str());
        rounds_.reset();
    }
    phase_ = Phase::Ready;
    wait_.reset();
    stall_.stop();
    wanted_rate_ = 1.0;
    trick_->reset();
    pipeline_->hold();
}

// A file whose reader cannot seek still plays, once, from where it stands.
void Playback::play_from(GstClockTime position)
{
    trick_->reset();
    begin_stretch(wanted_rate_, position);
}

void Playback::begin_stretch(double rate, GstClockTime position)
{
    on_speed(trick_->begin(rate, position, phase_ == Phase::Playing, looping_, Clock::now()));
}

void Playback::resume_pipeline()
{
    if (phase_ == Phase::Playing && !trick_->stepping())
        pipeline_->play();
}

// A speed that is wanted while a seek is under way is taken up after it.
void Playback::take_speed()
{
    if (wait_ || wanted_rate_ == trick_->rate())
        return;
    const GstClockTime here = trick_->position(Clock::now());
    const GstClockTime position = GST_CLOCK_TIME_IS_VALID(here) ? here : 0;
    PLATFORM_LOGI("player", "speed %.2f from %.1f s", wanted_rate_, seconds(position));
    begin_stretch(wanted_rate_, position);
}

void Playback::on_speed(TrickPlay::Next next)
{
    count_drops_ = trick_->rate() == 1.0;
    if (phase_ == Phase::Playing)
        end_.start(Clock::now());
    switch (next) {
    case TrickPlay::Next::Nothing:
        break;
    case TrickPlay::Next::AwaitFrame:
        rounds_.reset();
        await_ready([this] { on_speed_taken(); }, LONGEST_SEEK, [this] { on_speed_taken(); });
        break;
    case TrickPlay::Next::AtStart:
        back_to_normal();
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
    if (!running())
        return;
    trick_->frame_ready(phase_ == Phase::Playing, Clock::now());
    take_speed();
    if (!wait_)
        resume_pipeline();
}

void Playback::step_back()
{
    on_speed(trick_->step(Clock::now()));
}

void Playback::announce_normal_speed()
{
    count_drops_ = true;
    wanted_rate_ = 1.0;
    events_.normal_speed(*this, rate_request_);
}

void Playback::back_to_normal()
{
    PLATFORM_LOGI("player", "backwards play came to the start; going on forward");
    announce_normal_speed();
    begin_stretch(1.0, 0);
}

void Playback::on_ended()
{
    // An end that was told before a seek may be heard of after it.
    if (!running() || !output_->at_end() || trick_->stepping())
        return;
    if (trick_->rate() < 0) {
        back_to_normal();
        return;
    }
    warn_if_cut_short();
    tell_round_over();
    follow(rounds_.on_ended(plan_for_round(), Clock::now()));
}

// Readers take the end of a file that was cut off for the end of the film.
void Playback::warn_if_cut_short()
{
    const GstClockTime length = duration_;
    const GstClockTime position = pipeline_->position();
    if (break_.broken() || !GST_CLOCK_TIME_IS_VALID(length) || !GST_CLOCK_TIME_IS_VALID(position) ||
        position + LONGEST_MISSING_END >= length)
        return;
    PLATFORM_LOGW("player", "%s is cut short: it ends after %.1f of %.1f s", name_.c_str(),
                  seconds(position), seconds(length));
}

Rounds::Plan Playback::plan_for_round()
{
    if (!looping_)
        return Rounds::Plan::End;
    return sound_is_back() ? Rounds::Plan::ReopenWithSound : Rounds::Plan::GoOn;
}

void Playback::on_round_read(bool fresh)
{
    if (!fresh)
        return;
    rounds_.on_read();
    if (running())
        plan_round();
}

void Playback::plan_round()
{
    const bool shown = output_->at_end() && trick_->in_rounds();
    follow(rounds_.plan_read(plan_for_round(), shown, Clock::now()));
}

void Playback::on_round_shown()
{
    if (!running() || !trick_->in_rounds())
        return;
    tell_round_over();
    follow(rounds_.on_shown(looping_, Clock::now()));
}

void Playback::tell_round_over()
{
    stall_.forgive();
    on_played();
    Lookahead *lookahead = request_.options->lookahead;
    if (looping_ && lookahead)
        lookahead->on_round(name_);
}

void Playback::on_round_due()
{
    follow(rounds_.on_due());
}

std::optional<std::chrono::nanoseconds> Playback::known(GstClockTime time)
{
    if (!GST_CLOCK_TIME_IS_VALID(time))
        return {};
    return std::chrono::nanoseconds(time);
}

void Playback::check_for_end()
{
    end_.stop();
    if (phase_ != Phase::Playing || looping_ || trick_->rate() != 1.0)
        return;
    if (!GST_CLOCK_TIME_IS_VALID(duration_))
        duration_ = pipeline_->duration();
    if (end_.check({known(output_->position()), known(duration_)}, Clock::now()))
        events_.nearly_over(*this);
}

void Playback::follow(Rounds::Step step)
{
    switch (step) {
    case Rounds::Step::Nothing:
        break;
    case Rounds::Step::Begin:
        begin_round();
        break;
    case Rounds::Step::Complete:
        complete();
        break;
    case Rounds::Step::ReopenWithSound:
        reopen_with_sound();
        break;
    }
}

// What becomes of a broken file is decided when all that was read of it has been shown.
void Playback::begin_round()
{
    if (break_.broken())
        return;
    const bool seamless = trick_->next_round();
    rounds_.on_begun(seamless, Clock::now());
    if (!seamless)
        begin_stretch(trick_->rate(), 0);
}

void Playback::complete()
{
    PLATFORM_LOGI("player", "%s has come to its end", name_.c_str());
    phase_ = Phase::Ended;
    wait_.reset();
    break_.stop();
    stall_.stop();
    rounds_.reset();
    wanted_rate_ = 1.0;
    trick_->reset();
    pipeline_->hold();
    events_.completed(*this);
}

} // namespace platform
