/**
 * Control from outside: an object on the session bus that lets tvctl press keys, turn the panel,
 * raise power events, change the language, plug USB storage and ask for the status. The application
 * framework starts it on its own connection, beside its own object. Main-loop thread only.
 */
#pragma once

#include <ctime>
#include <functional>

#include <systemd/sd-bus.h>

#include "control/storage_facts.h"

namespace platform {

/** What the service asks of the application that it controls; called on the main-loop thread. */
struct ControlledApplication {
    /** When the application got its first launch request, by the real-time clock; 0 before. */
    std::function<timespec()> first_launch;
    /** Tells the application that the system language is another one now. */
    std::function<void()> announce_language_change;
};

/**
 * Registers the control interface at BUS_OBJECT.
 *
 * @param bus         the session bus; stays the caller's and must outlive the service
 * @param application both functions have to be there
 * @param read        what asks the storage, in a thread
 * @return false when the interface could not be registered; the reason is logged
 */
bool control_start(sd_bus *bus, ControlledApplication application,
                   StorageReader read = read_storage);

/**
 * Takes the interface off the bus; without a start it does nothing. Whoever still waits for a
 * status is answered by the bus when the connection goes.
 */
void control_stop();

} // namespace platform
