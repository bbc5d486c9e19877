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
// A bus that was restarted is back within a moment; to look for one costs a system call.
constexpr double BUS_SEARCH_INTERVAL_S = 5.0;

} // namespace

SingleInstance::SingleInstance(Listener listener) : listener_(std::move(listener))
{
    join();
}

SingleInstance::~SingleInstance()
{
    leave();
}

SingleInstance::Outcome SingleInstance::claim(const Extras &extras)
{
    if (!connection_) {
        PLATFORM_LOGW(SERVICE, "no session bus: starting alone, out of reach of later starts and "
                               "of the control tool");
        look_for_bus();
        return Outcome::Alone;
    }
    const double deadline = ecore_time_get() + LONGEST_HANDOVER_S;
    for (int attempt = 0; attempt < MOST_ATTEMPTS && ecore_time_get() < deadline; ++attempt) {
        switch (own_name()) {
        case Name::Owned:
            return Outcome::First;
        case Name::Unavailable:
            PLATFORM_LOGW(SERVICE, "the session bus gives no name to this player");
            look_for_bus();
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

/** Connects, where there is a bus, and puts the object there that later starts look for. */
void SingleInstance::join()
{
    static const Eldbus_Arg_Info launch_arguments[] = {{"a{say}", "extras"}, {nullptr, nullptr}};
    static const Eldbus_Method methods[] = {
        {"Launch", launch_arguments, nullptr, on_launch_call, 0},
        {nullptr, nullptr, nullptr, nullptr, 0},
    };
    static const Eldbus_Service_Interface_Desc description = {
        BUS_APPLICATION_INTERFACE, methods, nullptr, nullptr, nullptr, nullptr};
    connection_ = connect_session_bus();
    if (!connection_)
        return;
    eldbus_connection_event_callback_add(connection_.get(), ELDBUS_CONNECTION_EVENT_DISCONNECTED,
                                         on_disconnected, this);
    interface_.reset(
        eldbus_service_interface_register(connection_.get(), BUS_OBJECT, &description));
    if (interface_)
        eldbus_service_object_data_set(interface_.get(), INSTANCE_KEY, this);
    else
        leave();
}

void SingleInstance::leave()
{
    lost_.reset();
    interface_.reset();
    if (connection_)
        eldbus_connection_event_callback_del(
            connection_.get(), ELDBUS_CONNECTION_EVENT_DISCONNECTED, on_disconnected, this);
    connection_.reset();
}

// The bus library is still at work on the connection; it can be let go of afterwards.
void SingleInstance::on_disconnected(void *data, Eldbus_Connection * /*connection*/,
                                     void * /*event*/)
{
    auto *self = static_cast<SingleInstance *>(data);
    PLATFORM_LOGW(SERVICE, "the session bus went away: no requests from outside until it is back");
    self->lost_.reset(ecore_job_add(
        [](void *instance) {
            auto *loser = static_cast<SingleInstance *>(instance);
            static_cast<void>(loser->lost_.release()); // it goes by itself
            loser->listener_.bus(nullptr);
            loser->leave();
            loser->look_for_bus();
        },
        self));
}

void SingleInstance::look_for_bus()
{
    search_.reset(ecore_timer_add(
        BUS_SEARCH_INTERVAL_S,
        [](void *data) -> Eina_Bool {
            static_cast<SingleInstance *>(data)->rejoin();
            return ECORE_CALLBACK_RENEW;
        },
        this));
}

/** A player that has come to the bus meanwhile is the session's, and one is enough. */
void SingleInstance::rejoin()
{
    if (!connection_)
        join();
    if (!connection_)
        return;
    switch (own_name()) {
    case Name::Owned:
        search_.reset();
        PLATFORM_LOGI(SERVICE, "the session bus is there: requests from outside are taken");
        listener_.bus(connection_.get());
        break;
    case Name::Taken:
        search_.reset();
        PLATFORM_LOGW(SERVICE, "another player has taken this one's place meanwhile");
        listener_.superseded();
        break;
    case Name::Unavailable:
        break;
    }
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
    if (!self->listener_.launch(std::move(*extras)))
        return nullptr;
    return eldbus_message_method_return_new(message);
}

} // namespace platform
