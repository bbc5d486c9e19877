/**
 * Names on the buses: those under which a running player is found on the session bus, by later
 * starts and by the tools, and those of the login manager on the system bus.
 */
#pragma once

namespace platform {

/** Owned by the one running instance of a session. */
inline constexpr char BUS_NAME[] = "org.tizen.OstrelDemoPlayerTv";
inline constexpr char BUS_OBJECT[] = "/org/tizen/OstrelDemoPlayerTv";

/** Launch(a{say}): a launch request; names of extras and their values as bytes without a null. */
inline constexpr char BUS_APPLICATION_INTERFACE[] = "org.tizen.OstrelDemoPlayerTv.Application";
inline constexpr char BUS_CONTROL_INTERFACE[] = "org.tizen.OstrelDemoPlayerTv.Control";

/** The login manager, systemd's or elogind. */
inline constexpr char LOGIND[] = "org.freedesktop.login1";
inline constexpr char LOGIND_PATH[] = "/org/freedesktop/login1";
inline constexpr char LOGIND_MANAGER[] = "org.freedesktop.login1.Manager";
inline constexpr char LOGIND_SESSION[] = "org.freedesktop.login1.Session";

} // namespace platform
