#include "app_framework/session_watch.h"

#include <unistd.h>
#include <utility>

#include "bus/bus_names.h"
#include "log/platform_log.h"

namespace platform {

namespace {

constexpr char SERVICE[] = "app_framework";
constexpr char PROPERTIES[] = "org.freedesktop.DBus.Properties";

} // namespace

SessionWatch::SessionWatch(std::function<void(bool)> on_change)
    : on_change_(std::move(on_change)), bus_(connect_system_bus())
{
    if (!bus_)
        return;
    loop_.emplace(bus_.get());
    const auto found = [](sd_bus_message *reply, void *data, sd_bus_error *) {
        const char *path = nullptr;
        if (sd_bus_message_read(reply, "o", &path) > 0)
            static_cast<SessionWatch *>(data)->follow(path);
        return 1;
    };
    sd_bus_call_method_async(bus_.get(), BusOutput(pending_), LOGIND, LOGIND_PATH, LOGIND_MANAGER,
                             "GetSessionByPID", found, this, "u", static_cast<uint32_t>(getpid()));
}

void SessionWatch::follow(const char *path)
{
    session_ = path;
    const auto changed = [](sd_bus_message *, void *data, sd_bus_error *) {
        static_cast<SessionWatch *>(data)->ask();
        return 0;
    };
    sd_bus_match_signal_async(bus_.get(), BusOutput(changes_), LOGIND, path, PROPERTIES,
                              "PropertiesChanged", changed, nullptr, this);
    // What the session is already is told by no change.
    ask();
}

void SessionWatch::ask()
{
    const auto told = [](sd_bus_message *reply, void *data, sd_bus_error *) {
        int active = 0;
        if (sd_bus_message_read(reply, "v", "b", &active) > 0)
            static_cast<SessionWatch *>(data)->take(active != 0);
        return 1;
    };
    sd_bus_call_method_async(bus_.get(), BusOutput(pending_), LOGIND, session_.c_str(), PROPERTIES,
                             "Get", told, this, "ss", LOGIND_SESSION, "Active");
}

void SessionWatch::take(bool active)
{
    if (active == active_)
        return;
    active_ = active;
    PLATFORM_LOGI(SERVICE, "the session %s the screen", active ? "has" : "does not have");
    on_change_(active);
}

} // namespace platform
