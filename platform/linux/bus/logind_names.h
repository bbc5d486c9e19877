/** The names under which the login manager, systemd's or elogind, is found on the system bus. */
#pragma once

namespace platform {

inline constexpr char LOGIND[] = "org.freedesktop.login1";
inline constexpr char LOGIND_PATH[] = "/org/freedesktop/login1";
inline constexpr char LOGIND_MANAGER[] = "org.freedesktop.login1.Manager";
inline constexpr char LOGIND_SESSION[] = "org.freedesktop.login1.Session";

} // namespace platform
