#include "bus/bus_connection.h"

#include <cstdlib>
#include <sys/socket.h>
#include <sys/un.h>
#include <utility>

#include "base/descriptor.h"

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

std::string value_of(const char *variable)
{
    const char *value = std::getenv(variable);
    return value ? value : "";
}

/** Whether somebody listens at a socket. */
bool is_served(const std::string &path)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path)
        return true; // The bus library shall say what it makes of that.
    path.copy(address.sun_path, path.size());
    const Descriptor client(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    return client && ::connect(client.number(), reinterpret_cast<const sockaddr *>(&address),
                               sizeof address) == 0;
}

/**
 * Whether it is worth trying an address. The toolkit leaks memory and complains at length when a
 * bus is not there, which is an ordinary case, so the ordinary kind of address is looked at first.
 */
bool is_promising(const std::string &address)
{
    const std::string prefix = "unix:path=";
    if (address.compare(0, prefix.size(), prefix) != 0 || address.find(';') != std::string::npos)
        return !address.empty();
    const size_t end = address.find(',');
    return is_served(address.substr(prefix.size(), end == std::string::npos ? std::string::npos
                                                                            : end - prefix.size()));
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
    std::string address = value_of("DBUS_SESSION_BUS_ADDRESS");
    if (address.empty() && !value_of("XDG_RUNTIME_DIR").empty())
        address = "unix:path=" + value_of("XDG_RUNTIME_DIR") + "/bus";
    return is_promising(address) ? connect(ELDBUS_CONNECTION_TYPE_SESSION) : nullptr;
}

BusConnectionPtr connect_system_bus()
{
    std::string address = value_of("DBUS_SYSTEM_BUS_ADDRESS");
    if (address.empty())
        address = "unix:path=/run/dbus/system_bus_socket";
    return is_promising(address) ? connect(ELDBUS_CONNECTION_TYPE_SYSTEM) : nullptr;
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
