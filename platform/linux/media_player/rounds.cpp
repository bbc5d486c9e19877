#include "media_player/rounds.h"

#include <utility>

namespace platform {
namespace {

// A reader that does not tell the end of a round is helped on, after the last picture of the round
// has stood for this long. Shorter than what looks like a stop; longer than a reader's own word
// takes to come by.
constexpr auto LONGEST_WAIT_FOR_ROUND = std::chrono::milliseconds(300);

// Rounds of a file of next to no length must not keep a processor busy: ten a second at most.
constexpr auto SHORTEST_ROUND = std::chrono::milliseconds(100);

} // namespace

void Rounds::reset()
{
    read_ = Read::Underway;
    ahead_ = 0;
    picture_waits_ = false;
    due_.reset();
}

Rounds::Step Rounds::plan_read(Plan plan, bool at_end, Time now)
{
    if (plan == Plan::GoOn) {
        read_ = Read::Underway;
        return go_on(now);
    }
    read_ = plan == Plan::End ? Read::Last : Read::BeforeReopening;
    return at_end ? on_shown(plan != Plan::End, now) : Step::Nothing;
}

Rounds::Step Rounds::on_shown(bool looping, Time now)
{
    if (read_ == Read::Last && !looping)
        return Step::Complete;
    if (read_ == Read::BeforeReopening)
        return Step::ReopenWithSound;
    // Normally the next round is under way by now.
    if (ahead_ > 0) {
        ahead_--;
        return Step::Nothing;
    }
    picture_waits_ = true;
    if (!due_)
        due_ = now + LONGEST_WAIT_FOR_ROUND;
    return Step::Nothing;
}

Rounds::Step Rounds::on_ended(Plan plan, Time now)
{
    switch (plan) {
    case Plan::End:
        return Step::Complete;
    case Plan::ReopenWithSound:
        return Step::ReopenWithSound;
    case Plan::GoOn:
        break;
    }
    return go_on(now);
}

Rounds::Step Rounds::go_on(Time now)
{
    const Time earliest = last_begun_ + SHORTEST_ROUND;
    if (now >= earliest)
        return Step::Begin;
    due_ = earliest;
    return Step::Nothing;
}

Rounds::Step Rounds::on_due()
{
    due_.reset();
    return Step::Begin;
}

void Rounds::on_begun(bool seamless, Time now)
{
    last_begun_ = now;
    read_ = Read::Underway;
    due_.reset();
    if (seamless && !std::exchange(picture_waits_, false))
        ahead_++;
}

} // namespace platform
