/**
 * Connections to the message buses, shared by the services that talk D-Bus. A machine without a bus
 * is an ordinary case here: the answer is null and nothing is logged, so that each service decides
 * what that means to it. Main-loop thread only.
 */
#pragma once

#include <functional>
#include <memory>
#include <string>

#include <Eldbus.h>

#include "base/toolkit_handles.h"

namespace platform {

struct BusConnectionDeleter {
    void operator()(Eldbus_Connection *connection) const;
};

/** Holds Eldbus as a whole as well, so it must go before Ecore is shut down. */
using BusConnectionPtr = std::unique_ptr<Eldbus_Connection, BusConnectionDeleter>;

/**
 * The bus of the login session. A bus that goes away later takes nothing along with it.
 *
 * @return null when there is none; one is never launched for the purpose
 */
BusConnectionPtr connect_session_bus();

/** The machine's bus; null as above. */
BusConnectionPtr connect_system_bus();

using BusMessagePtr = std::unique_ptr<Eldbus_Message, HandleEnd<eldbus_message_unref>>;
using SignalHandlerPtr =
    std::unique_ptr<Eldbus_Signal_Handler, HandleEnd<eldbus_signal_handler_del>>;
using ServiceInterfacePtr =
    std::unique_ptr<Eldbus_Service_Interface, HandleEnd<eldbus_service_interface_unregister>>;

/**
 * A call that waits for its answer. Its end makes the callback one last time, with an error. A call
 * is gone after its callback, which lets go of the owner with release().
 */
using PendingCallPtr = std::unique_ptr<Eldbus_Pending, HandleEnd<eldbus_pending_cancel>>;

/** An object of another process and one interface of it; releases both together. */
class BusProxy {
  public:
    BusProxy() = default;
    BusProxy(Eldbus_Connection *connection, const char *name, const char *path,
             const char *interface);
    ~BusProxy();
    BusProxy(BusProxy &&other) noexcept;
    BusProxy &operator=(BusProxy &&other) noexcept;

    Eldbus_Proxy *get() const { return proxy_; }
    explicit operator bool() const { return proxy_ != nullptr; }

  private:
    Eldbus_Object *object_ = nullptr;
    Eldbus_Proxy *proxy_ = nullptr;
};

/**
 * Calls a method and waits for its reply. A failure is an ordinary outcome here and not logged.
 *
 * @param call      the call, which this function consumes
 * @param timeout_s how long to wait at most
 * @return the reply, or null when there was none, an error, or no time left
 */
BusMessagePtr call_and_wait(const BusProxy &proxy, Eldbus_Message *call, double timeout_s);

} // namespace platform
