#include "device_power/logind_power.h"

#include <utility>

#include "bus/bus_names.h"
#include "log/platform_log.h"

namespace platform {

namespace {

constexpr char SERVICE[] = "device_power";

// The application has this long to end before the lock is given back; logind itself waits five
// seconds at most.
constexpr double LOCK_SECONDS = 3.0;

} // namespace

LogindPower::LogindPower(std::function<void(PowerEvent)> on_event)
    : on_event_(std::move(on_event)), connection_(connect_system_bus())
{
    if (!connection_) {
        PLATFORM_LOGI(SERVICE, "no system bus: power events of the machine are not seen");
        return;
    }
    manager_ = BusProxy(connection_.get(), LOGIND, LOGIND_PATH, LOGIND_MANAGER);
    if (!manager_)
        return;
    shutdown_.reset(eldbus_proxy_signal_handler_add(
        manager_.get(), "PrepareForShutdown",
        [](void *data, const Eldbus_Message *message) {
            static_cast<LogindPower *>(data)->prepare(PowerEvent::Off, message);
        },
        this));
    sleep_.reset(eldbus_proxy_signal_handler_add(
        manager_.get(), "PrepareForSleep",
        [](void *data, const Eldbus_Message *message) {
            static_cast<LogindPower *>(data)->prepare(PowerEvent::Standby, message);
        },
        this));
    take_delay_lock();
}

void LogindPower::take_delay_lock()
{
    if (lock_ || pending_lock_)
        return;
    pending_lock_.reset(eldbus_proxy_call(
        manager_.get(), "Inhibit",
        [](void *data, const Eldbus_Message *reply, Eldbus_Pending *) {
            auto *self = static_cast<LogindPower *>(data);
            static_cast<void>(self->pending_lock_.release()); // it goes by itself
            int lock = -1;
            if (!eldbus_message_error_get(reply, nullptr, nullptr) &&
                eldbus_message_arguments_get(reply, "h", &lock))
                self->lock_ = Descriptor(lock);
        },
        this, -1, "ssss", "shutdown:sleep", "Demo player", "The demo is being ended", "delay"));
}

void LogindPower::release_delay_lock()
{
    release_timer_.reset();
    lock_ = Descriptor();
}

void LogindPower::release_delay_lock_soon()
{
    if (release_timer_)
        return;
    release_timer_.reset(ecore_timer_add(
        LOCK_SECONDS,
        [](void *data) -> Eina_Bool {
            auto *self = static_cast<LogindPower *>(data);
            static_cast<void>(self->release_timer_.release()); // it goes by itself
            self->release_delay_lock();
            return ECORE_CALLBACK_CANCEL;
        },
        this));
}

void LogindPower::prepare(PowerEvent begin, const Eldbus_Message *message)
{
    Eina_Bool begins = EINA_FALSE;
    if (!eldbus_message_arguments_get(message, "b", &begins))
        return;
    if (begins) {
        PLATFORM_LOGI(SERVICE, "the machine is about to %s",
                      begin == PowerEvent::Off ? "shut down" : "sleep");
        release_delay_lock_soon();
        on_event_(begin);
        return;
    }
    // A shutdown that was called off leaves things as they were; a sleep that is over is a wake-up.
    take_delay_lock();
    if (begin == PowerEvent::Standby) {
        PLATFORM_LOGI(SERVICE, "the machine woke up");
        on_event_(PowerEvent::Wakeup);
    }
}

} // namespace platform
