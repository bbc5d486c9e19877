#include "media_player/backward_steps.h"

#include <algorithm>
#include <utility>

namespace platform {
namespace {

// Steps that follow each other faster gain nothing for the eye and cost a lot of decoding.
constexpr auto SHORTEST_STEP = std::chrono::milliseconds(80);

} // namespace

BackwardSteps::BackwardSteps(Nanoseconds position, double rate, bool running, Time now)
    : rate_(rate), running_(running), origin_(position), origin_time_(now),
      last_step_(now - SHORTEST_STEP)
{
}

void BackwardSteps::set_running(bool running, Time now)
{
    if (running == running_)
        return;
    origin_ = place(now);
    origin_time_ = now;
    running_ = running;
}

BackwardSteps::Nanoseconds BackwardSteps::place(Time now) const
{
    if (!running_)
        return origin_;
    const auto gone = std::chrono::duration_cast<Nanoseconds>((now - origin_time_) * -rate_);
    return std::max(origin_ - gone, Nanoseconds(0));
}

std::optional<BackwardSteps::Time> BackwardSteps::due() const
{
    if (!running_)
        return {};
    Time next = last_step_ + SHORTEST_STEP;
    if (shown_) {
        // The key frame on screen is the right one until its own place has been passed.
        const Nanoseconds ahead = std::max(origin_ - *shown_, Nanoseconds(0));
        const auto wait = (ahead + std::chrono::milliseconds(1)) / -rate_;
        next = std::max(next, origin_time_ + std::chrono::duration_cast<Time::duration>(wait));
    }
    return next;
}

std::optional<BackwardSteps::Nanoseconds> BackwardSteps::step(Time now)
{
    const auto time = due();
    if (!time || now < *time)
        return {};
    last_step_ = now;
    asked_ = place(now);
    return asked_;
}

void BackwardSteps::on_shown(Nanoseconds position)
{
    // A file that lands behind the place asked for must not be asked for it again and again.
    shown_ = std::min(position, asked_);
}

} // namespace platform
