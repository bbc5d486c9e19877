/**
 * Whether the login session of this process is the one on the screen. Main-loop thread only.
 */
#pragma once

#include <functional>
#include <string>

#include "bus/bus_connection.h"

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
    static void on_session(void *data, const Eldbus_Message *reply, Eldbus_Pending *pending);
    static void on_property(void *data, Eldbus_Proxy *proxy, void *event);
    static void on_loaded(void *data, Eldbus_Proxy *proxy, void *event);

    void follow(const char *path);
    void take(const Eina_Value *value);

    std::function<void(bool)> on_change_;
    BusConnectionPtr connection_;
    BusProxy manager_;
    BusProxy session_;
    PendingCallPtr pending_;
    Eina_Bool active_ = EINA_TRUE;
};

} // namespace platform
