#include "app_framework/session_watch.h"

#include <cstring>
#include <unistd.h>
#include <utility>

#include "bus/bus_names.h"
#include "log/platform_log.h"

namespace platform {

namespace {

constexpr char SERVICE[] = "app_framework";
constexpr char ACTIVE[] = "Active";

} // namespace

SessionWatch::SessionWatch(std::function<void(bool)> on_change)
    : on_change_(std::move(on_change)), connection_(connect_system_bus())
{
    if (!connection_)
        return;
    manager_ = BusProxy(connection_.get(), LOGIND, LOGIND_PATH, LOGIND_MANAGER);
    if (manager_)
        pending_.reset(eldbus_proxy_call(manager_.get(), "GetSessionByPID", on_session, this, -1,
                                         "u", static_cast<unsigned int>(getpid())));
}

void SessionWatch::on_session(void *data, const Eldbus_Message *reply, Eldbus_Pending * /*pending*/)
{
    auto *self = static_cast<SessionWatch *>(data);
    static_cast<void>(self->pending_.release()); // it goes by itself
    const char *path = nullptr;
    if (!eldbus_message_error_get(reply, nullptr, nullptr) &&
        eldbus_message_arguments_get(reply, "o", &path))
        self->follow(path);
}

void SessionWatch::follow(const char *path)
{
    session_ = BusProxy(connection_.get(), LOGIND, path, LOGIND_SESSION);
    if (!session_)
        return;
    eldbus_proxy_event_callback_add(session_.get(), ELDBUS_PROXY_EVENT_PROPERTY_CHANGED,
                                    on_property, this);
    eldbus_proxy_event_callback_add(session_.get(), ELDBUS_PROXY_EVENT_PROPERTY_LOADED, on_loaded,
                                    this);
    eldbus_proxy_properties_monitor(session_.get(), EINA_TRUE);
}

void SessionWatch::on_property(void *data, Eldbus_Proxy * /*proxy*/, void *event)
{
    const auto *changed = static_cast<const Eldbus_Proxy_Event_Property_Changed *>(event);
    if (std::strcmp(changed->name, ACTIVE) == 0)
        static_cast<SessionWatch *>(data)->take(changed->value);
}

// What the session was when its properties were asked for is told by no change.
void SessionWatch::on_loaded(void *data, Eldbus_Proxy *proxy, void * /*event*/)
{
    static_cast<SessionWatch *>(data)->take(eldbus_proxy_property_local_get(proxy, ACTIVE));
}

void SessionWatch::take(const Eina_Value *value)
{
    Eina_Bool active = EINA_TRUE;
    if (!value || !eina_value_get(value, &active) || active == active_)
        return;
    active_ = active;
    PLATFORM_LOGI(SERVICE, "the session %s the screen", active ? "has" : "does not have");
    on_change_(active);
}

} // namespace platform
