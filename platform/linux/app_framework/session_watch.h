/**
 * Whether the login session of this process is the one on the screen. Main-loop thread only.
 */
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "bus/bus_connection.h"
#include "bus/bus_loop.h"

namespace platform {

/** Follows logind. Where no system bus, no logind or no session is, nothing is ever reported. */
class SessionWatch {
  public:
    /**
     * @param on_change called with false when the session leaves the screen or turns out not to be
     *                  on it, with true when it returns
     */
    explicit SessionWatch(std::function<void(bool)> on_change);
    SessionWatch(const SessionWatch &) = delete;
    SessionWatch &operator=(const SessionWatch &) = delete;

  private:
    void follow(const char *path);
    void ask();
    void take(bool active);

    std::function<void(bool)> on_change_;
    BusPtr bus_;
    std::optional<BusLoop> loop_;
    std::string session_;
    BusSlotPtr changes_;
    BusSlotPtr pending_;
    bool active_ = true;
};

} // namespace platform
