/**
 * The names under which a running player is found on the session bus. Shared by the application
 * framework, the control service and the tools.
 */
#pragma once

namespace platform {

/** Owned by the one running instance of a session. */
inline constexpr char BUS_NAME[] = "org.tizen.OstrelDemoPlayerTv";
inline constexpr char BUS_OBJECT[] = "/org/tizen/OstrelDemoPlayerTv";

/** Launch(a{say}): a launch request; names of extras and their values as bytes without a null. */
inline constexpr char BUS_APPLICATION_INTERFACE[] = "org.tizen.OstrelDemoPlayerTv.Application";
inline constexpr char BUS_CONTROL_INTERFACE[] = "org.tizen.OstrelDemoPlayerTv.Control";

} // namespace platform
