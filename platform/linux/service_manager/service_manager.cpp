#include "service_manager/service_manager.h"

#include <cstddef>
#include <cstdlib>
#include <cstring>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "base/environment.h"
#include "log/platform_log.h"

namespace platform {

namespace {

std::string take_variable(const char *name)
{
    std::string taken = environment_variable(name);
    unsetenv(name);
    return taken;
}

} // namespace

ServiceManager::Request ServiceManager::take_request()
{
    Request request;
    request.address = take_variable("NOTIFY_SOCKET");
    const std::string watched = take_variable("WATCHDOG_PID");
    const long long silence = std::atoll(take_variable("WATCHDOG_USEC").c_str());
    if (silence > 0 && (watched.empty() || watched == std::to_string(getpid())))
        request.watchdog = std::chrono::microseconds(silence);
    return request;
}

ServiceManager &ServiceManager::get()
{
    // Never destroyed: it may be told something until the very end.
    static auto &manager = *new ServiceManager(take_request());
    return manager;
}

ServiceManager::ServiceManager(const Request &request)
    : address_(request.address), watchdog_(request.watchdog)
{
    if (address_.empty())
        return;
    const bool has_form = address_[0] == '/' || address_[0] == '@';
    if (has_form && address_.size() <= sizeof(sockaddr_un::sun_path))
        socket_ = Descriptor(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    if (!socket_)
        PLATFORM_LOGW("service_manager", "the service manager cannot be told anything at %s",
                      address_.c_str());
}

void ServiceManager::tell_alive()
{
    if (!ready_)
        send("EXTEND_TIMEOUT_USEC=" + std::to_string(watchdog_.count()));
    else if (heard_ready_)
        send("WATCHDOG=1");
    else
        heard_ready_ = send("READY=1\nSTATUS=On the screen.\nWATCHDOG=1");
}

TimerPtr ServiceManager::watch_main_loop()
{
    if (!socket_ || watchdog_.count() == 0)
        return {};
    const auto tell = [](void *manager) -> Eina_Bool {
        static_cast<ServiceManager *>(manager)->tell_alive();
        return ECORE_CALLBACK_RENEW;
    };
    return TimerPtr(
        ecore_timer_add(std::chrono::duration<double>(watchdog_ / 3).count(), tell, this));
}

void ServiceManager::tell_ready()
{
    ready_ = true;
    tell_alive();
}

void ServiceManager::tell_status(const std::string &status)
{
    send("STATUS=" + status);
}

// Without waiting, for the main loop must not stand because the manager does.
bool ServiceManager::send(const std::string &state) const
{
    if (!socket_)
        return false;
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, address_.data(), address_.size());
    if (address_[0] == '@')
        address.sun_path[0] = '\0';
    const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + address_.size());
    const ssize_t sent =
        sendto(socket_.number(), state.data(), state.size(), MSG_DONTWAIT | MSG_NOSIGNAL,
               reinterpret_cast<const sockaddr *>(&address), length);
    return sent == static_cast<ssize_t>(state.size());
}

} // namespace platform
