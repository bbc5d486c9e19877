#include "media_player/field_pace.h"

#include <algorithm>

namespace platform {
namespace {

// About a second, or two at half the pace. A start, a seek or another program's short burst of work
// spoils one or two of them; three in a row are a machine that is too slow.
constexpr int STRETCH = 50;
constexpr int BAD_STRETCHES = 3;

// Fewer late ones look better than half the pictures would.
constexpr int BEARABLE = STRETCH / 5;

// Half the time that a field is seen.
constexpr auto LATE = std::chrono::milliseconds(10);

// Stretches until both fields are tried again: half a minute, and an hour. A machine that is too
// slow stutters for three seconds at each try.
constexpr int SHORTEST_REST = 15;
constexpr int LONGEST_REST = 120 * SHORTEST_REST;

// A pace that was kept for so many times as many pictures as the rest before had was lost for
// another reason.
constexpr int KEPT = 10;

} // namespace

bool FieldPace::on_picture(std::chrono::nanoseconds late)
{
    had_fields_ = true;
    late_ += late > LATE ? 1 : 0;
    if (++pictures_ < STRETCH)
        return false;
    const bool bad = late_ > BEARABLE;
    pictures_ = late_ = 0;
    if (!halved_) {
        stretches_++;
        bad_stretches_ = bad ? bad_stretches_ + 1 : 0;
        return bad_stretches_ == BAD_STRETCHES && halve();
    }
    // A machine that one picture a frame is too much for need not try two.
    stretches_ += bad ? 0 : 1;
    if (stretches_ == rest_) {
        halved_ = false;
        stretches_ = 0;
    }
    return false;
}

/** @return whether for the first time */
bool FieldPace::halve()
{
    const bool first = rest_ == 0;
    rest_ = stretches_ > KEPT * rest_ ? SHORTEST_REST : std::min(2 * rest_, LONGEST_REST);
    halved_ = true;
    stretches_ = bad_stretches_ = 0;
    return first;
}

} // namespace platform
