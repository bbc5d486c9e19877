#include "player_connection.h"

#include <cstdio>
#include <functional>

#include "bus/bus_connection.h"
#include "bus/bus_names.h"
#include "command.h"

namespace tvctl {

namespace {

// A player that is reading a slow stick answers late; one that hangs never does.
constexpr double LONGEST_CALL_S = 5.0;

using Append = std::function<void(sd_bus_message *)>;
using Take = std::function<void(sd_bus_message *)>;

int no_player(const char *reason)
{
    std::fprintf(stderr, "tvctl: %s\n", reason);
    return EXIT_NO_PLAYER;
}

int explain(const sd_bus_error &error)
{
    if (sd_bus_error_has_names(&error, SD_BUS_ERROR_SERVICE_UNKNOWN,
                               SD_BUS_ERROR_NAME_HAS_NO_OWNER))
        return no_player("no player is running in this login");
    if (sd_bus_error_has_names(&error, SD_BUS_ERROR_NO_REPLY, SD_BUS_ERROR_TIMEOUT))
        return refuse("the player does not answer");
    return refuse(error.message != nullptr ? error.message : error.name);
}

int call(const char *interface, const char *operation, const Append &append, const Take &take)
{
    const platform::BusPtr bus = platform::connect_session_bus();
    if (!bus)
        return no_player("there is no session bus to find a player on");
    platform::BusMessagePtr message;
    if (sd_bus_message_new_method_call(bus.get(), platform::BusOutput(message), platform::BUS_NAME,
                                       platform::BUS_OBJECT, interface, operation) < 0)
        return refuse("out of memory");
    append(message.get());
    const platform::BusMessagePtr reply =
        platform::call_and_wait(bus.get(), message.get(), LONGEST_CALL_S);
    if (!reply)
        return refuse("the player does not answer");
    if (const sd_bus_error *error = sd_bus_message_get_error(reply.get()))
        return explain(*error);
    take(reply.get());
    return EXIT_DONE;
}

void ignore(sd_bus_message *) {}

} // namespace

int call_control(const char *operation, const std::string &text)
{
    std::string ignored;
    return ask_control(operation, text, ignored);
}

int ask_control(const char *operation, const std::string &text, std::string &result)
{
    const Append append = [&](sd_bus_message *message) {
        sd_bus_message_append_basic(message, 's', text.c_str());
    };
    const Take take = [&](sd_bus_message *reply) {
        const char *answer = nullptr;
        if (sd_bus_message_read_basic(reply, 's', &answer) > 0)
            result = answer;
    };
    return call(platform::BUS_CONTROL_INTERFACE, operation, append, take);
}

int call_control(const char *operation, const Bytes &bytes)
{
    const Append append = [&](sd_bus_message *message) {
        platform::append_bytes(message, bytes.value);
    };
    return call(platform::BUS_CONTROL_INTERFACE, operation, append, ignore);
}

int call_launch(const platform::Extras &extras)
{
    const Append append = [&](sd_bus_message *message) {
        platform::append_extras(message, extras);
    };
    return call(platform::BUS_APPLICATION_INTERFACE, "Launch", append, ignore);
}

} // namespace tvctl
