#include "media_player/field_pace.h"

namespace platform {
namespace {

// About a second. A start, a seek or another program's short burst of work spoils one or two of
// them; three in a row are a machine that is too slow.
constexpr int STRETCH = 50;

// Fewer late ones look better than half the pictures would.
constexpr int BEARABLE = STRETCH / 5;

// Half the time that a field is seen.
constexpr auto LATE = std::chrono::milliseconds(10);

} // namespace

bool FieldPace::on_picture(std::chrono::nanoseconds late)
{
    if (is_halved())
        return false;
    late_ += late > LATE ? 1 : 0;
    if (++pictures_ < STRETCH)
        return false;
    bad_stretches_ = late_ > BEARABLE ? bad_stretches_ + 1 : 0;
    pictures_ = late_ = 0;
    return is_halved();
}

} // namespace platform
