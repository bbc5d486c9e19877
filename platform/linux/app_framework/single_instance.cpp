#include "app_framework/single_instance.h"

#include <utility>

#include <Ecore.h>

#include "bus/bus_names.h"
#include "log/platform_log.h"

namespace platform {

namespace {

constexpr char SERVICE[] = "app_framework";

// A player that is still scanning a slow stick answers late; one that hangs never does.
constexpr double LONGEST_HANDOVER_S = 10.0;
// How often a player that ends at that very moment is followed by the next one.
constexpr int MOST_ATTEMPTS = 5;

// What the bus says to who asks for a name.
enum RequestNameReply : uint32_t { PRIMARY_OWNER = 1, ALREADY_OWNER = 4 };

} // namespace

SingleInstance::SingleInstance(Listener listener, double patience_s)
    : listener_(std::move(listener)), patience_s_(patience_s)
{
}

SingleInstance::Outcome SingleInstance::claim(const Extras &extras)
{
    if (!join())
        return alone("no session bus: starting alone, out of reach of later starts and of the "
                     "control tool");
    const double deadline = ecore_time_get() + LONGEST_HANDOVER_S;
    for (int attempt = 0; attempt < MOST_ATTEMPTS && ecore_time_get() < deadline; ++attempt) {
        ask_for_name();
        serve_until(bus_.get(), patience_s_, [this] { return name_ != Name::Asked; });
        if (name_ == Name::Owned) {
            follow_bus();
            return Outcome::First;
        }
        if (name_ != Name::Taken)
            return alone("the session bus gives no name to this player");
        if (hand_over(extras, deadline - ecore_time_get())) {
            PLATFORM_LOGI(SERVICE, "the running player took the launch request");
            return Outcome::HandedOver;
        }
        // Either its time is up, or it has just ended and its place is free.
    }
    PLATFORM_LOGE(SERVICE, "a player of this login runs but does not take the launch request");
    return Outcome::Failed;
}

SingleInstance::Outcome SingleInstance::alone(const char *reason)
{
    PLATFORM_LOGW(SERVICE, "%s", reason);
    follow_bus();
    look_for_bus();
    return Outcome::Alone;
}

/** Connects, where there is a bus, and puts the object there that later starts look for. */
bool SingleInstance::join()
{
    // As in the control service, anybody on the bus may call.
    static const sd_bus_vtable methods[] = {
        SD_BUS_VTABLE_START(0),
        SD_BUS_METHOD_WITH_ARGS("Launch", SD_BUS_ARGS("a{say}", extras), SD_BUS_NO_RESULT,
                                on_launch_call, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_VTABLE_END};
    bus_ = connect_session_bus();
    if (bus_ && sd_bus_add_object_vtable(bus_.get(), BusOutput(object_), BUS_OBJECT,
                                         BUS_APPLICATION_INTERFACE, methods, this) < 0)
        leave();
    // However late a name is given, it is.
    if (bus_)
        sd_bus_set_method_call_timeout(bus_.get(), UINT64_MAX);
    return bus_ != nullptr;
}

void SingleInstance::leave()
{
    loop_.reset();
    request_.reset();
    name_ = Name::Unavailable;
    object_.reset();
    bus_.reset();
}

/** From here on nothing is waited for. */
void SingleInstance::follow_bus()
{
    if (bus_)
        loop_.emplace(bus_.get(), [this] {
            if (name_ == Name::Owned)
                PLATFORM_LOGW(SERVICE, "the session bus went away: no requests from outside until "
                                       "it is back");
            listener_.bus(nullptr);
            leave();
            look_for_bus();
        });
}

void SingleInstance::look_for_bus()
{
    search_.reset(ecore_timer_add(
        patience_s_,
        [](void *data) -> Eina_Bool {
            auto *self = static_cast<SingleInstance *>(data);
            if (!self->bus_ && self->join())
                self->follow_bus();
            if (self->bus_ && self->name_ != Name::Asked)
                self->ask_for_name();
            return ECORE_CALLBACK_RENEW;
        },
        this));
}

void SingleInstance::ask_for_name()
{
    const auto told = [](sd_bus_message *reply, void *data, sd_bus_error *) {
        auto *self = static_cast<SingleInstance *>(data);
        uint32_t result = 0;
        if (sd_bus_message_read(reply, "u", &result) <= 0)
            self->name_ = Name::Unavailable;
        else
            self->name_ =
                result == PRIMARY_OWNER || result == ALREADY_OWNER ? Name::Owned : Name::Taken;
        // During claim() it is that which waits for this.
        if (self->loop_)
            self->name_told();
        return 1;
    };
    const int asked = sd_bus_request_name_async(bus_.get(), BusOutput(request_), BUS_NAME, 0, told,
                                                this); // 0: this one does not queue for it
    name_ = asked < 0 ? Name::Unavailable : Name::Asked;
}

/** A player that has come to the bus meanwhile is the session's, and one is enough. */
void SingleInstance::name_told()
{
    if (name_ == Name::Unavailable)
        return;
    search_.reset();
    if (name_ == Name::Owned) {
        PLATFORM_LOGI(SERVICE, "the session bus is there: requests from outside are taken");
        listener_.bus(bus_.get());
    } else {
        PLATFORM_LOGW(SERVICE, "another player has taken this one's place meanwhile");
        listener_.superseded();
    }
}

bool SingleInstance::hand_over(const Extras &extras, double timeout_s)
{
    BusMessagePtr call;
    if (sd_bus_message_new_method_call(bus_.get(), BusOutput(call), BUS_NAME, BUS_OBJECT,
                                       BUS_APPLICATION_INTERFACE, "Launch") < 0)
        return false;
    append_extras(call.get(), extras);
    const BusMessagePtr reply = call_and_wait(bus_.get(), call.get(), timeout_s);
    return reply && !sd_bus_message_is_method_error(reply.get(), nullptr);
}

int SingleInstance::on_launch_call(sd_bus_message *call, void *self, sd_bus_error *error)
{
    std::optional<Extras> extras = read_extras(call);
    if (!extras)
        return sd_bus_error_set_const(error, SD_BUS_ERROR_INVALID_ARGS,
                                      "values of extras hold no null byte");
    // Without an answer the caller waits until this process leaves the bus.
    if (!static_cast<SingleInstance *>(self)->listener_.launch(std::move(*extras)))
        return 1;
    return sd_bus_reply_method_return(call, nullptr);
}

} // namespace platform
