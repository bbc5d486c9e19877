#include "media_player/sound_recovery.h"

#include <algorithm>
#include <utility>

namespace platform {
namespace {

// What the pause between two tries grows to.
constexpr std::chrono::milliseconds LONGEST_PAUSE = std::chrono::hours(1);

} // namespace

void SoundRecovery::on_pipeline(bool device, Time now)
{
    if (!silent_)
        without_device_ = !device;
    found_ = false;
    next_try_ = now + pause_;
}

bool SoundRecovery::go_silent()
{
    return !std::exchange(silent_, true);
}

void SoundRecovery::on_device_lost(Time now)
{
    without_device_ = true;
    if (now > next_try_)
        pause_ = first_pause_;
}

bool SoundRecovery::try_is_due(bool has_track, Time now)
{
    if (!without_device_ || !(silent_ || has_track) || now < next_try_)
        return false;
    next_try_ = now + pause_;
    return true;
}

void SoundRecovery::on_device_found()
{
    pause_ = std::min(pause_ * 2, LONGEST_PAUSE);
    silent_ = false;
}

} // namespace platform
