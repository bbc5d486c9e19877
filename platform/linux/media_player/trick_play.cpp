#include "media_player/trick_play.h"

namespace platform {

TrickPlay::TrickPlay(Pipeline &pipeline, const FrameOutput &output)
    : pipeline_(pipeline), output_(output)
{
}

TrickPlay::Next TrickPlay::begin(double rate, GstClockTime position, bool running, bool in_rounds,
                                 Time now)
{
    rate_ = rate;
    steps_.reset();
    pipeline_.mute(rate != 1.0);
    if (rate < 0 && !pipeline_.plays_backwards()) {
        start_stepping(position, running, now);
        return Next::Nothing;
    }
    origin_ = position;
    if (seek_to(rate, position, in_rounds && rate > 0))
        return Next::AwaitFrame;
    if (rate > 0)
        return Next::Refused;
    start_stepping(position, running, now);
    return Next::Nothing;
}

bool TrickPlay::seek_to(double rate, GstClockTime position, bool in_rounds)
{
    Pipeline::Seek seek;
    seek.rate = rate;
    seek.position = position;
    seek.in_rounds = in_rounds && pipeline_.goes_in_rounds();
    in_rounds_ = seek.in_rounds;
    return pipeline_.seek(seek);
}

bool TrickPlay::next_round()
{
    return in_rounds_ && pipeline_.goes_in_rounds() && pipeline_.next_round(rate_);
}

void TrickPlay::start_stepping(GstClockTime position, bool running, Time now)
{
    pipeline_.hold();
    in_rounds_ = false;
    steps_.emplace(std::chrono::nanoseconds(position), rate_, running, now);
}

void TrickPlay::frame_ready(bool running, Time now)
{
    const GstClockTime shown = output_.position();
    if (steps_)
        steps_->on_shown(GST_CLOCK_TIME_IS_VALID(shown) ? std::chrono::nanoseconds(shown)
                                                        : std::chrono::nanoseconds::max());
    else if (rate_ < 0 && output_.direction() >= 0)
        start_stepping(origin_, running, now);
}

void TrickPlay::set_running(bool running, Time now)
{
    if (steps_)
        steps_->set_running(running, now);
}

GstClockTime TrickPlay::position(Time now) const
{
    return steps_ ? static_cast<GstClockTime>(steps_->place(now).count()) : pipeline_.position();
}

std::optional<TrickPlay::Time> TrickPlay::deadline() const
{
    return steps_ ? steps_->due() : std::nullopt;
}

TrickPlay::Next TrickPlay::step(Time now)
{
    const auto place = steps_ ? steps_->step(now) : std::nullopt;
    if (!place)
        return Next::Nothing;
    if (place->count() == 0)
        return Next::AtStart;
    Pipeline::Seek seek;
    seek.position = static_cast<GstClockTime>(place->count());
    seek.key_frame = true;
    return pipeline_.seek(seek) ? Next::AwaitFrame : Next::Refused;
}

void TrickPlay::reset()
{
    rate_ = 1.0;
    steps_.reset();
}

} // namespace platform
