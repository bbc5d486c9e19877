#include "device_power/logind_power.h"

#include <utility>

#include <fcntl.h>

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
    : on_event_(std::move(on_event)), bus_(connect_system_bus())
{
    if (!bus_) {
        PLATFORM_LOGI(SERVICE, "no system bus: power events of the machine are not seen");
        return;
    }
    loop_.emplace(bus_.get());
    const auto follow = [this](BusSlotPtr &slot, const char *signal, auto callback) {
        sd_bus_match_signal_async(bus_.get(), BusOutput(slot), LOGIND, LOGIND_PATH, LOGIND_MANAGER,
                                  signal, callback, nullptr, this);
    };
    follow(shutdown_, "PrepareForShutdown", on_prepare<PowerEvent::Off>);
    follow(sleep_, "PrepareForSleep", on_prepare<PowerEvent::Standby>);
    take_delay_lock();
}

void LogindPower::take_delay_lock()
{
    if (lock_ || pending_lock_)
        return;
    const auto take = [](sd_bus_message *reply, void *data, sd_bus_error *) {
        auto *self = static_cast<LogindPower *>(data);
        self->pending_lock_.reset();
        int lock = -1;
        // The message closes its own.
        if (sd_bus_message_read(reply, "h", &lock) > 0)
            self->lock_ = Descriptor(fcntl(lock, F_DUPFD_CLOEXEC, 0));
        return 1;
    };
    sd_bus_call_method_async(bus_.get(), BusOutput(pending_lock_), LOGIND, LOGIND_PATH,
                             LOGIND_MANAGER, "Inhibit", take, this, "ssss", "shutdown:sleep",
                             "Demo player", "The demo is being ended", "delay");
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

template <PowerEvent BEGIN>
int LogindPower::on_prepare(sd_bus_message *signal, void *self, sd_bus_error *)
{
    int begins = 0;
    if (sd_bus_message_read(signal, "b", &begins) > 0)
        static_cast<LogindPower *>(self)->prepare(BEGIN, begins != 0);
    return 0;
}

void LogindPower::prepare(PowerEvent begin, bool begins)
{
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
