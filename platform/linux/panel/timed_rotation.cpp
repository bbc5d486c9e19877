#include "panel/timed_rotation.h"

#include <array>
#include <cstring>

#include <Ecore_Input.h>

#include "config_store.h"
#include "config_store/key_names.h"
#include "config_store/own_writes.h"
#include "panel/panel_model.h"

namespace platform {

namespace {

constexpr char PANEL_KEY[] = "XF86PanelEnter";

/** What the stored timer indices stand for. */
constexpr std::array<int, 10> INTERVALS_S = {300, 330, 360, 390, 420, 450, 480, 540, 600, 900};

bool in_portrait()
{
    return PanelModel::get().angle() % 180 != 0;
}

} // namespace

TimedRotation &TimedRotation::get()
{
    static TimedRotation rotation;
    return rotation;
}

int TimedRotation::interval_s(bool portrait)
{
    int index = 0;
    vconf_get_int(portrait ? PORTRAIT_TIMER_KEY : LANDSCAPE_TIMER_KEY, &index);
    const bool known = index >= 0 && index < static_cast<int>(INTERVALS_S.size());
    return INTERVALS_S[known ? static_cast<size_t>(index) : 0];
}

void TimedRotation::start()
{
    on_own_write([this](const std::string &key, int value) { wrote(key, value); });
    // Behind the application's own handler or before it: either acts on the same event.
    if (!keys_)
        keys_.reset(ecore_event_handler_add(ECORE_EVENT_KEY_DOWN, on_key, this));
    // The panel outlives the application, and its listeners stay.
    if (!following_)
        PanelModel::get().on_angle([this](int) { arm(); });
    following_ = true;
}

void TimedRotation::stop()
{
    on_own_write({});
    keys_.reset();
    on_ = false;
    launched_ = false;
    armed_at_.reset();
}

void TimedRotation::launched()
{
    if (!launched_) {
        int stored = 0;
        vconf_get_int(ROTATION_AUTO_MODE_KEY, &stored);
        on_ = stored != 0;
    }
    launched_ = true;
    arm();
}

std::optional<double> TimedRotation::left_s() const
{
    if (!armed_at_ || PanelModel::get().turning())
        return std::nullopt;
    const double left = *armed_at_ + running_s_ - ecore_time_get();
    return left > 0 ? std::optional<double>(left) : std::nullopt;
}

void TimedRotation::wrote(const std::string &key, int value)
{
    if (key == ROTATION_AUTO_MODE_KEY)
        on_ = value != 0;
    else if (key != (in_portrait() ? PORTRAIT_TIMER_KEY : LANDSCAPE_TIMER_KEY))
        return;
    arm();
}

void TimedRotation::arm()
{
    armed_at_.reset();
    if (!on_ || !launched_ || !PanelModel::get().can_turn())
        return;
    running_s_ = interval_s(in_portrait());
    armed_at_ = ecore_time_get();
}

Eina_Bool TimedRotation::on_key(void *data, int /*type*/, void *event)
{
    const char *name = static_cast<const Ecore_Event_Key *>(event)->keyname;
    if (name && std::strcmp(name, PANEL_KEY) == 0)
        static_cast<TimedRotation *>(data)->armed_at_.reset();
    return ECORE_CALLBACK_PASS_ON;
}

} // namespace platform
