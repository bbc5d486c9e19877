/**
 * The login manager's announcements of shutdown and sleep. Main-loop thread only.
 */
#pragma once

#include <functional>

#include <Ecore.h>

#include "base/descriptor.h"
#include "base/toolkit_handles.h"
#include "bus/bus_connection.h"
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
    void prepare(PowerEvent begin, const Eldbus_Message *message);

    std::function<void(PowerEvent)> on_event_;
    BusConnectionPtr connection_;
    BusProxy manager_;
    SignalHandlerPtr shutdown_;
    SignalHandlerPtr sleep_;
    Descriptor lock_;
    TimerPtr release_timer_;
    PendingCallPtr pending_lock_;
};

} // namespace platform
