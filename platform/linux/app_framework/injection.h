/**
 * What the control service does to a running application from outside: keys as if typed, power
 * events as if the set had raised them, and the news that the system language changed. Main-loop
 * thread only.
 */
#pragma once

#include <ctime>
#include <string>

namespace platform {

/** Power events that can be raised by hand. */
enum class PowerEvent {
    Off,
    Standby,
    Wakeup,
};

/**
 * Presses and releases a key, as if the remote control had sent it. The key reaches the application
 * under exactly this name; the table of PC key names is not applied.
 *
 * @param tv_key_name the set's name of the key, e.g. "XF86RaiseChannel"
 */
void inject_key(const std::string &tv_key_name);

/** Raises a power event on every subscriber, and the state change that belongs to it. */
void inject_power(PowerEvent event);

/** When the application got its first launch request, by the real-time clock; 0 before. */
timespec first_launch_time();

/** Tells the application that the system language is another one now. */
void announce_language_change();

} // namespace platform
