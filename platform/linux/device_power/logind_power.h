/**
 * The login manager's announcements of shutdown and sleep. Main-loop thread only.
 */
#pragma once

#include <functional>
#include <optional>

#include "base/descriptor.h"
#include "base/toolkit_handles.h"
#include "bus/bus_connection.h"
#include "bus/bus_loop.h"
#include "device_power/power_service.h"

namespace platform {

/**
 * Follows logind and holds its delay lock, so that the machine waits a moment for the application
 * to end in good order. Where no system bus or no logind is, nothing happens.
 */
class LogindPower {
  public:
    explicit LogindPower(std::function<void(PowerEvent)> on_event);
    LogindPower(const LogindPower &) = delete;
    LogindPower &operator=(const LogindPower &) = delete;

  private:
    void take_delay_lock();
    void release_delay_lock();
    void release_delay_lock_soon();
    template <PowerEvent BEGIN>
    static int on_prepare(sd_bus_message *signal, void *self, sd_bus_error *);
    void prepare(PowerEvent begin, bool begins);

    std::function<void(PowerEvent)> on_event_;
    BusPtr bus_;
    std::optional<BusLoop> loop_;
    BusSlotPtr shutdown_;
    BusSlotPtr sleep_;
    Descriptor lock_;
    TimerPtr release_timer_;
    BusSlotPtr pending_lock_;
};

} // namespace platform
