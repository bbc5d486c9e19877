#include "player_rules/rotation_timer.h"

#include "player_rules/config_keys.h"

namespace platform {

int rotation_interval_s(int index)
{
    const bool known = index >= 0 && index < static_cast<int>(ROTATION_INTERVALS_S.size());
    return ROTATION_INTERVALS_S[known ? static_cast<size_t>(index) : 0];
}

void RotationTimerModel::launched(bool stored)
{
    // The player reads its switch once.
    if (!launched_)
        on_ = stored;
    launched_ = true;
}

bool RotationTimerModel::wrote(const std::string &key, int value, bool portrait)
{
    if (key == ROTATION_AUTO_MODE_KEY) {
        on_ = value != 0;
        return true;
    }
    return key == (portrait ? PORTRAIT_TIMER_KEY : LANDSCAPE_TIMER_KEY);
}

void RotationTimerModel::restart(double now, int interval_s)
{
    end_.reset();
    if (on_ && launched_)
        end_ = now + interval_s;
}

std::optional<double> RotationTimerModel::left_s(double now) const
{
    return end_ && *end_ > now ? std::optional<double>(*end_ - now) : std::nullopt;
}

} // namespace platform
