#include "panel/timed_rotation.h"

#include <cstring>

#include <Ecore_Input.h>

#include "base/orientation.h"
#include "config_store.h"
#include "config_store/platform_store.h"
#include "player_rules/config_keys.h"
#include "player_rules/key_names.h"

namespace platform {

namespace {

bool in_portrait()
{
    return is_portrait(PanelModel::get().angle());
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
    return rotation_interval_s(index);
}

void TimedRotation::start()
{
    on_own_write([this](const std::string &key, int value) { wrote(key, value); });
    // Behind the application's own handler or before it: either acts on the same event.
    if (!keys_)
        keys_.reset(ecore_event_handler_add(ECORE_EVENT_KEY_DOWN, on_key, this));
    angle_ = PanelModel::get().on_angle([this](int) { restart(); });
}

void TimedRotation::stop()
{
    on_own_write({});
    keys_.reset();
    angle_.reset();
    timer_ = {};
}

void TimedRotation::launched()
{
    int stored = 0;
    vconf_get_int(ROTATION_AUTO_MODE_KEY, &stored);
    timer_.launched(stored != 0);
    restart();
}

std::optional<double> TimedRotation::left_s() const
{
    return PanelModel::get().turning() ? std::nullopt : timer_.left_s(ecore_time_get());
}

void TimedRotation::wrote(const std::string &key, int value)
{
    if (timer_.wrote(key, value, in_portrait()))
        restart();
}

void TimedRotation::restart()
{
    if (PanelModel::get().can_turn())
        timer_.restart(ecore_time_get(), interval_s(in_portrait()));
    else
        timer_.give_up();
}

Eina_Bool TimedRotation::on_key(void *data, int /*type*/, void *event)
{
    const char *name = static_cast<const Ecore_Event_Key *>(event)->keyname;
    if (name && std::strcmp(name, PANEL_KEY) == 0)
        static_cast<TimedRotation *>(data)->timer_.give_up();
    return ECORE_CALLBACK_PASS_ON;
}

} // namespace platform
