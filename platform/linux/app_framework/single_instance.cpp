#include "app_framework/single_instance.h"

#include <optional>
#include <utility>

#include <Ecore.h>

#include "bus/bus_names.h"
#include "log/platform_log.h"

namespace platform {

namespace {

constexpr char SERVICE[] = "app_framework";
constexpr char INSTANCE_KEY[] = "instance";
constexpr char INVALID_ARGUMENTS[] = "org.freedesktop.DBus.Error.InvalidArgs";

// A player that is still scanning a slow stick answers late; one that hangs never does.
constexpr double LONGEST_HANDOVER_S = 10.0;
constexpr double BUS_CALL_S = 5.0;
// How often a player that ends at that very moment is followed by the next one.
constexpr int MOST_ATTEMPTS = 5;

} // namespace

SingleInstance::SingleInstance(std::function<bool(Extras)> on_launch)
    : on_launch_(std::move(on_launch)), connection_(connect_session_bus())
{
    if (!connection_)
        return;
    eldbus_connection_event_callback_add(
        connection_.get(), ELDBUS_CONNECTION_EVENT_DISCONNECTED,
        [](void *, Eldbus_Connection *, void *) {
            PLATFORM_LOGW(SERVICE, "the session bus went away: no more requests from outside");
        },
        nullptr);
}

SingleInstance::Outcome SingleInstance::claim(const Extras &extras)
{
    if (!connection_ || !publish()) {
        PLATFORM_LOGW(SERVICE, "no session bus: starting alone, out of reach of later starts and "
                               "of the control tool");
        return Outcome::Alone;
    }
    const double deadline = ecore_time_get() + LONGEST_HANDOVER_S;
    for (int attempt = 0; attempt < MOST_ATTEMPTS && ecore_time_get() < deadline; ++attempt) {
        switch (own_name()) {
        case Name::Owned:
            return Outcome::First;
        case Name::Unavailable:
            PLATFORM_LOGW(SERVICE, "the session bus gives no name to this player");
            return Outcome::Alone;
        case Name::Taken:
            break;
        }
        if (hand_over(extras, deadline - ecore_time_get())) {
            PLATFORM_LOGI(SERVICE, "the running player took the launch request");
            return Outcome::HandedOver;
        }
        // Either its time is up, or it has just ended and its place is free.
    }
    PLATFORM_LOGE(SERVICE, "a player of this login runs but does not take the launch request");
    return Outcome::Failed;
}

bool SingleInstance::publish()
{
    static const Eldbus_Arg_Info launch_arguments[] = {{"a{say}", "extras"}, {nullptr, nullptr}};
    static const Eldbus_Method methods[] = {
        {"Launch", launch_arguments, nullptr, on_launch_call, 0},
        {nullptr, nullptr, nullptr, nullptr, 0},
    };
    static const Eldbus_Service_Interface_Desc description = {
        BUS_APPLICATION_INTERFACE, methods, nullptr, nullptr, nullptr, nullptr};
    interface_.reset(
        eldbus_service_interface_register(connection_.get(), BUS_OBJECT, &description));
    if (!interface_)
        return false;
    eldbus_service_object_data_set(interface_.get(), INSTANCE_KEY, this);
    return true;
}

SingleInstance::Name SingleInstance::own_name()
{
    const BusProxy bus(connection_.get(), ELDBUS_FDO_BUS, ELDBUS_FDO_PATH, ELDBUS_FDO_INTERFACE);
    if (!bus)
        return Name::Unavailable;
    Eldbus_Message *call = eldbus_proxy_method_call_new(bus.get(), "RequestName");
    eldbus_message_arguments_append(
        call, "su", BUS_NAME, static_cast<unsigned int>(ELDBUS_NAME_REQUEST_FLAG_DO_NOT_QUEUE));
    const BusMessagePtr reply = call_and_wait(bus, call, BUS_CALL_S);
    unsigned int result = 0;
    if (!reply || !eldbus_message_arguments_get(reply.get(), "u", &result))
        return Name::Unavailable;
    return result == ELDBUS_NAME_REQUEST_REPLY_PRIMARY_OWNER ||
                   result == ELDBUS_NAME_REQUEST_REPLY_ALREADY_OWNER
               ? Name::Owned
               : Name::Taken;
}

bool SingleInstance::hand_over(const Extras &extras, double timeout_s)
{
    const BusProxy owner(connection_.get(), BUS_NAME, BUS_OBJECT, BUS_APPLICATION_INTERFACE);
    if (!owner)
        return false;
    Eldbus_Message *call = eldbus_proxy_method_call_new(owner.get(), "Launch");
    append_extras(call, extras);
    return call_and_wait(owner, call, timeout_s) != nullptr;
}

Eldbus_Message *SingleInstance::on_launch_call(const Eldbus_Service_Interface *interface,
                                               const Eldbus_Message *message)
{
    auto *self =
        static_cast<SingleInstance *>(eldbus_service_object_data_get(interface, INSTANCE_KEY));
    std::optional<Extras> extras = extras_of(message);
    if (!extras)
        return eldbus_message_error_new(message, INVALID_ARGUMENTS,
                                        "values of extras hold no null byte");
    // Without an answer the caller waits until this process leaves the bus.
    if (!self->on_launch_(std::move(*extras)))
        return nullptr;
    return eldbus_message_method_return_new(message);
}

} // namespace platform
