#include "device_power.h"

#include <algorithm>

#include "device_power/logind_power.h"
#include "device_power/power_service.h"

namespace platform {

namespace {

device_power_state_e state_after(PowerEvent event)
{
    switch (event) {
    case PowerEvent::Off:
        return DEVICE_POWER_STATE_OFF;
    case PowerEvent::Standby:
        return DEVICE_POWER_STATE_STANDBY;
    case PowerEvent::Wakeup:
        break;
    }
    return DEVICE_POWER_STATE_NORMAL;
}

} // namespace

PowerService &PowerService::get()
{
    static PowerService service;
    return service;
}

PowerService::PowerService() = default;
PowerService::~PowerService() = default;

void PowerService::listen()
{
    if (!logind_)
        logind_ = std::make_unique<LogindPower>([this](PowerEvent event) { raise(event); });
}

void PowerService::subscribe(PowerEvent event, device_power_cb callback, void *user_data)
{
    listen();
    subscriptions_.push_back({event, callback, user_data});
}

void PowerService::subscribe_state(device_power_state_changed_cb callback, void *user_data)
{
    listen();
    state_subscriptions_.push_back({callback, user_data});
}

bool PowerService::unsubscribe(PowerEvent event, device_power_cb callback)
{
    const auto end =
        std::remove_if(subscriptions_.begin(), subscriptions_.end(), [&](const Subscription &s) {
            return s.event == event && s.callback == callback;
        });
    const bool found = end != subscriptions_.end();
    subscriptions_.erase(end, subscriptions_.end());
    return found;
}

void PowerService::raise(PowerEvent event)
{
    // Subscribers may unsubscribe from inside their callback, so copies are walked.
    for (const Subscription &subscription : std::vector<Subscription>(subscriptions_)) {
        if (subscription.event == event)
            subscription.callback(subscription.user_data);
    }
    for (const StateSubscription &subscription :
         std::vector<StateSubscription>(state_subscriptions_))
        subscription.callback(state_after(event), subscription.user_data);
}

void PowerService::stop()
{
    logind_.reset();
    subscriptions_.clear();
    state_subscriptions_.clear();
}

namespace {

int subscribe(PowerEvent event, device_power_cb callback, void *user_data)
{
    if (!callback)
        return -1;
    PowerService::get().subscribe(event, callback, user_data);
    return 0;
}

int unsubscribe(PowerEvent event, device_power_cb callback)
{
    return callback && PowerService::get().unsubscribe(event, callback) ? 0 : -1;
}

} // namespace

} // namespace platform

using platform::PowerEvent;

int device_power_subscribe_poweroff(device_power_cb callback, void *user_data)
{
    return platform::subscribe(PowerEvent::Off, callback, user_data);
}

int device_power_subscribe_standby(device_power_cb callback, void *user_data)
{
    return platform::subscribe(PowerEvent::Standby, callback, user_data);
}

int device_power_subscribe_wakeup(device_power_cb callback, void *user_data)
{
    return platform::subscribe(PowerEvent::Wakeup, callback, user_data);
}

int device_power_subscribe_state_changed_event(device_power_state_changed_cb callback,
                                               void *user_data)
{
    if (!callback)
        return -1;
    platform::PowerService::get().subscribe_state(callback, user_data);
    return 0;
}

int device_power_unsubscribe_poweroff(device_power_cb callback)
{
    return platform::unsubscribe(PowerEvent::Off, callback);
}

int device_power_unsubscribe_standby(device_power_cb callback)
{
    return platform::unsubscribe(PowerEvent::Standby, callback);
}

int device_power_unsubscribe_wakeup(device_power_cb callback)
{
    return platform::unsubscribe(PowerEvent::Wakeup, callback);
}
