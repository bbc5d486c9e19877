#include "player_connection.h"

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>

#include <Ecore.h>

#include "bus/bus_connection.h"
#include "bus/bus_names.h"
#include "command.h"

namespace tvctl {

namespace {

// A player that is reading a slow stick answers late; one that hangs never does.
constexpr double LONGEST_CALL_MS = 5000.0;

using Append = std::function<void(Eldbus_Message *)>;
using Take = std::function<void(const Eldbus_Message *)>;

class EcoreLibrary {
  public:
    EcoreLibrary()
    {
        // Modules that follow the machine's batteries and name; they ask the system bus, loudly.
        setenv("ECORE_NO_SYSTEM_MODULES", "1", 0);
        ecore_init();
        // The toolkit takes every error reply for a mistake of the program's; here it is an answer
        // that is told in the tool's own words.
        eina_log_domain_level_set("eldbus", -1);
        eina_log_domain_level_set("eina_safety", -1);
    }
    ~EcoreLibrary() { ecore_shutdown(); }
    EcoreLibrary(const EcoreLibrary &) = delete;
    EcoreLibrary &operator=(const EcoreLibrary &) = delete;
};

int no_player(const char *reason)
{
    std::fprintf(stderr, "tvctl: %s\n", reason);
    return EXIT_NO_PLAYER;
}

int explain(const std::string &name, const std::string &text)
{
    const std::string prefix = "org.freedesktop.DBus.Error.";
    if (name == prefix + "ServiceUnknown" || name == prefix + "NameHasNoOwner")
        return no_player("no player is running in this login");
    if (name == prefix + "NoReply" || name == prefix + "Timeout" || name.empty())
        return refuse("the player does not answer");
    return refuse(text.empty() ? name : text);
}

int call(const char *interface, const char *operation, const Append &append, const Take &take)
{
    const EcoreLibrary ecore;
    const platform::BusConnectionPtr bus = platform::connect_session_bus();
    if (!bus)
        return no_player("there is no session bus to find a player on");
    const platform::BusProxy player(bus.get(), platform::BUS_NAME, platform::BUS_OBJECT, interface);
    if (!player)
        return refuse("out of memory");
    Eldbus_Message *message = eldbus_proxy_method_call_new(player.get(), operation);
    append(message);
    const platform::BusMessagePtr reply(
        eldbus_proxy_send_and_block(player.get(), message, LONGEST_CALL_MS));
    const char *name = nullptr;
    const char *text = nullptr;
    if (!reply)
        return explain({}, {});
    if (eldbus_message_error_get(reply.get(), &name, &text))
        return explain(name != nullptr ? name : "", text != nullptr ? text : "");
    take(reply.get());
    return EXIT_DONE;
}

void ignore(const Eldbus_Message *) {}

} // namespace

int call_control(const char *operation, const std::string &text)
{
    std::string ignored;
    return ask_control(operation, text, ignored);
}

int ask_control(const char *operation, const std::string &text, std::string &result)
{
    const Append append = [&](Eldbus_Message *message) {
        eldbus_message_arguments_append(message, "s", text.c_str());
    };
    const Take take = [&](const Eldbus_Message *reply) {
        const char *answer = nullptr;
        if (*eldbus_message_signature_get(reply) != '\0' &&
            eldbus_message_arguments_get(reply, "s", &answer) && answer != nullptr)
            result = answer;
    };
    return call(platform::BUS_CONTROL_INTERFACE, operation, append, take);
}

int call_control(const char *operation, const Bytes &bytes)
{
    const Append append = [&](Eldbus_Message *message) {
        platform::append_bytes(eldbus_message_iter_get(message), bytes.value);
    };
    return call(platform::BUS_CONTROL_INTERFACE, operation, append, ignore);
}

int call_launch(const platform::Extras &extras)
{
    const Append append = [&](Eldbus_Message *message) {
        platform::append_extras(message, extras);
    };
    return call(platform::BUS_APPLICATION_INTERFACE, "Launch", append, ignore);
}

} // namespace tvctl
