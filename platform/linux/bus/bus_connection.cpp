#include "bus/bus_connection.h"

#include <cstdlib>
#include <unistd.h>
#include <utility>

namespace platform {

namespace {

/** Keeps the toolkit's own error lines down while a bus that may well be missing is tried. */
class QuietDomain {
  public:
    explicit QuietDomain(const char *name) : name_(name), level_(eina_log_domain_level_get(name))
    {
        eina_log_domain_level_set(name_, -1);
    }
    ~QuietDomain() { eina_log_domain_level_set(name_, level_); }
    QuietDomain(const QuietDomain &) = delete;
    QuietDomain &operator=(const QuietDomain &) = delete;

  private:
    const char *name_;
    int level_;
};

bool has_value(const char *variable)
{
    const char *value = std::getenv(variable);
    return value && *value;
}

BusConnectionPtr connect(Eldbus_Connection_Type type)
{
    if (eldbus_init() <= 0)
        return nullptr;
    const QuietDomain quiet_bus("eldbus");
    const QuietDomain quiet_checks("eina_safety");
    Eldbus_Connection *connection = eldbus_connection_get(type);
    if (!connection)
        eldbus_shutdown();
    return BusConnectionPtr(connection);
}

} // namespace

void BusConnectionDeleter::operator()(Eldbus_Connection *connection) const
{
    eldbus_connection_unref(connection);
    eldbus_shutdown();
}

BusConnectionPtr connect_session_bus()
{
    // Without an address the bus library would start a bus of its own through the X11 display.
    if (!has_value("DBUS_SESSION_BUS_ADDRESS")) {
        if (!has_value("XDG_RUNTIME_DIR"))
            return nullptr;
        const std::string socket = std::string(std::getenv("XDG_RUNTIME_DIR")) + "/bus";
        if (access(socket.c_str(), F_OK) != 0)
            return nullptr;
    }
    return connect(ELDBUS_CONNECTION_TYPE_SESSION);
}

BusConnectionPtr connect_system_bus()
{
    return connect(ELDBUS_CONNECTION_TYPE_SYSTEM);
}

BusProxy::BusProxy(Eldbus_Connection *connection, const char *name, const char *path,
                   const char *interface)
    : object_(eldbus_object_get(connection, name, path)),
      proxy_(object_ ? eldbus_proxy_get(object_, interface) : nullptr)
{
}

BusProxy::~BusProxy()
{
    if (proxy_)
        eldbus_proxy_unref(proxy_);
    if (object_)
        eldbus_object_unref(object_);
}

BusProxy::BusProxy(BusProxy &&other) noexcept
{
    *this = std::move(other);
}

BusProxy &BusProxy::operator=(BusProxy &&other) noexcept
{
    std::swap(object_, other.object_);
    std::swap(proxy_, other.proxy_);
    return *this;
}

BusMessagePtr call_and_wait(const BusProxy &proxy, Eldbus_Message *call, double timeout_s)
{
    constexpr double MILLISECONDS = 1000.0;
    // The toolkit takes every error reply for a mistake of the program's.
    const QuietDomain quiet_bus("eldbus");
    const QuietDomain quiet_checks("eina_safety");
    BusMessagePtr reply(eldbus_proxy_send_and_block(proxy.get(), call, timeout_s * MILLISECONDS));
    if (reply && eldbus_message_error_get(reply.get(), nullptr, nullptr))
        return nullptr;
    return reply;
}

} // namespace platform
