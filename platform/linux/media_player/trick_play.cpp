#include "media_player/trick_play.h"

#include <algorithm>

namespace platform {
namespace {

// Steps that follow each other faster gain nothing for the eye and cost a lot of decoding.
constexpr auto SHORTEST_STEP = std::chrono::milliseconds(80);

} // namespace

TrickPlay::TrickPlay(Pipeline &pipeline, const FrameOutput &output)
    : pipeline_(pipeline), output_(output)
{
}

TrickPlay::Next TrickPlay::begin(double rate, GstClockTime position, bool running, bool in_rounds)
{
    rate_ = rate;
    stepping_ = false;
    running_ = running;
    pipeline_.mute(rate != 1.0);
    if (rate < 0 && !pipeline_.plays_backwards()) {
        start_stepping(position, running);
        return Next::Nothing;
    }
    origin_ = position;
    if (seek_to(rate, position, in_rounds && rate > 0))
        return Next::AwaitFrame;
    if (rate > 0)
        return Next::Refused;
    start_stepping(position, running);
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
    return in_rounds_ && pipeline_.next_round(rate_);
}

void TrickPlay::start_stepping(GstClockTime position, bool running)
{
    pipeline_.hold();
    stepping_ = true;
    in_rounds_ = false;
    running_ = running;
    origin_ = position;
    origin_time_ = Clock::now();
    last_step_ = origin_time_ - SHORTEST_STEP;
    shown_ = GST_CLOCK_TIME_NONE;
}

void TrickPlay::frame_ready()
{
    if (stepping_) {
        // A file that lands behind the place asked for must not be asked for it again and again.
        shown_ = std::min(output_.position(), asked_);
    } else if (rate_ < 0 && output_.direction() >= 0) {
        start_stepping(origin_, running_);
    }
}

void TrickPlay::set_running(bool running)
{
    if (running == running_)
        return;
    origin_ = position();
    origin_time_ = Clock::now();
    running_ = running;
}

GstClockTime TrickPlay::position() const
{
    if (!running_)
        return origin_;
    const auto elapsed =
        std::chrono::duration_cast<std::chrono::nanoseconds>(Clock::now() - origin_time_).count();
    const double gone = static_cast<double>(elapsed) * -rate_;
    return gone >= static_cast<double>(origin_) ? 0 : origin_ - static_cast<GstClockTime>(gone);
}

std::optional<TrickPlay::Clock::time_point> TrickPlay::deadline() const
{
    if (!stepping_ || !running_)
        return {};
    Clock::time_point next = last_step_ + SHORTEST_STEP;
    if (GST_CLOCK_TIME_IS_VALID(shown_)) {
        // The key frame on screen is the right one until its own place has been passed.
        const GstClockTime ahead = origin_ > shown_ ? origin_ - shown_ : 0;
        const auto wait = static_cast<int64_t>(static_cast<double>(ahead + GST_MSECOND) / -rate_);
        next = std::max(next, origin_time_ + std::chrono::duration_cast<Clock::duration>(
                                                 std::chrono::nanoseconds(wait)));
    }
    return next;
}

TrickPlay::Next TrickPlay::step()
{
    const auto due = deadline();
    if (!due || Clock::now() < *due)
        return Next::Nothing;
    const GstClockTime place = position();
    if (place == 0)
        return Next::AtStart;
    last_step_ = Clock::now();
    asked_ = place;
    Pipeline::Seek seek;
    seek.position = place;
    seek.key_frame = true;
    return pipeline_.seek(seek) ? Next::AwaitFrame : Next::Refused;
}

void TrickPlay::reset()
{
    rate_ = 1.0;
    stepping_ = false;
}

} // namespace platform
