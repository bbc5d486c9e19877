// A login manager for tests, on the bus that DBUS_SYSTEM_BUS_ADDRESS names. It knows one session
// and says what lines on its standard input tell it to:
//   shutdown 0|1 | sleep 0|1 | active 0|1 | strangers 0|1 | locks
// The last three answer, locks with the number of delay locks that are held. Strangers are
// processes that belong to no session, as those do that the manager of a user has started.

#include <cstdio>
#include <string>
#include <unistd.h>
#include <vector>

#include <Ecore.h>
#include <Eldbus.h>
#include <poll.h>

namespace {

constexpr char SESSION[] = "/org/freedesktop/login1/session/c1";

enum { PREPARE_FOR_SHUTDOWN, PREPARE_FOR_SLEEP };

Eldbus_Connection *bus = nullptr;
Eldbus_Service_Interface *manager = nullptr;
Eldbus_Service_Interface *session = nullptr;
bool session_active = true;
bool strangers = false;
std::vector<int> lock_ends;

void say(const std::string &line)
{
    std::printf("%s\n", line.c_str());
    std::fflush(stdout);
}

Eldbus_Message *get_session(const Eldbus_Service_Interface *, const Eldbus_Message *call)
{
    if (strangers) {
        say("asked by a stranger");
        return eldbus_message_error_new(call, "org.freedesktop.login1.NoSessionForPID",
                                        "it belongs to no session");
    }
    Eldbus_Message *reply = eldbus_message_method_return_new(call);
    eldbus_message_arguments_append(reply, "o", SESSION);
    return reply;
}

Eldbus_Message *inhibit(const Eldbus_Service_Interface *, const Eldbus_Message *call)
{
    const char *what = nullptr, *who = nullptr, *why = nullptr, *mode = nullptr;
    int ends[2];
    if (!eldbus_message_arguments_get(call, "ssss", &what, &who, &why, &mode) || pipe(ends) != 0)
        return eldbus_message_error_new(call, "org.freedesktop.DBus.Error.Failed", "no lock");
    lock_ends.push_back(ends[0]);
    Eldbus_Message *reply = eldbus_message_method_return_new(call);
    eldbus_message_arguments_append(reply, "h", ends[1]);
    close(ends[1]);
    say(std::string("locked ") + what + " " + mode + " by " + who + ": " + why);
    return reply;
}

Eina_Bool get_active(const Eldbus_Service_Interface *, const char *, Eldbus_Message_Iter *value,
                     const Eldbus_Message *, Eldbus_Message **)
{
    return eldbus_message_iter_basic_append(value, 'b', session_active);
}

int locks_held()
{
    int held = 0;
    for (const int end : lock_ends) {
        pollfd descriptor = {end, 0, 0};
        poll(&descriptor, 1, 0);
        held += (descriptor.revents & POLLHUP) == 0;
    }
    return held;
}

void obey(const std::string &command)
{
    const bool on = command.back() == '1';
    if (command.compare(0, 8, "shutdown") == 0)
        eldbus_service_signal_emit(manager, PREPARE_FOR_SHUTDOWN, on);
    else if (command.compare(0, 5, "sleep") == 0)
        eldbus_service_signal_emit(manager, PREPARE_FOR_SLEEP, on);
    else if (command.compare(0, 6, "active") == 0) {
        session_active = on;
        eldbus_service_property_changed(session, "Active");
        say("active " + std::to_string(on));
    } else if (command.compare(0, 9, "strangers") == 0) {
        strangers = on;
        say("strangers " + std::to_string(on));
    } else if (command == "locks")
        say("locks " + std::to_string(locks_held()));
}

Eina_Bool on_input(void *, Ecore_Fd_Handler *)
{
    static std::string pending;
    char buffer[256];
    const ssize_t size = read(STDIN_FILENO, buffer, sizeof buffer);
    if (size <= 0) {
        ecore_main_loop_quit();
        return ECORE_CALLBACK_CANCEL;
    }
    pending.append(buffer, static_cast<size_t>(size));
    for (size_t end = pending.find('\n'); end != std::string::npos; end = pending.find('\n')) {
        obey(pending.substr(0, end));
        pending.erase(0, end + 1);
    }
    return ECORE_CALLBACK_RENEW;
}

} // namespace

int main()
{
    ecore_init();
    eldbus_init();
    bus = eldbus_connection_get(ELDBUS_CONNECTION_TYPE_SYSTEM);
    const Eldbus_Arg_Info pid[] = {{"u", "pid"}, {nullptr, nullptr}};
    const Eldbus_Arg_Info path[] = {{"o", "path"}, {nullptr, nullptr}};
    const Eldbus_Arg_Info lock[] = {
        {"s", "what"}, {"s", "who"}, {"s", "why"}, {"s", "mode"}, {nullptr, nullptr}};
    const Eldbus_Arg_Info descriptor[] = {{"h", "lock"}, {nullptr, nullptr}};
    const Eldbus_Arg_Info start[] = {{"b", "start"}, {nullptr, nullptr}};
    const Eldbus_Method methods[] = {{"GetSessionByPID", pid, path, get_session, 0},
                                     {"Inhibit", lock, descriptor, inhibit, 0},
                                     {nullptr, nullptr, nullptr, nullptr, 0}};
    const Eldbus_Signal signals[] = {
        {"PrepareForShutdown", start, 0}, {"PrepareForSleep", start, 0}, {nullptr, nullptr, 0}};
    const Eldbus_Service_Interface_Desc description = {
        "org.freedesktop.login1.Manager", methods, signals, nullptr, nullptr, nullptr};
    manager = eldbus_service_interface_register(bus, "/org/freedesktop/login1", &description);
    const Eldbus_Property properties[] = {{"Active", "b", get_active, nullptr, 0},
                                          {nullptr, nullptr, nullptr, nullptr, 0}};
    const Eldbus_Service_Interface_Desc session_description = {
        "org.freedesktop.login1.Session", nullptr, nullptr, properties, nullptr, nullptr};
    session = eldbus_service_interface_register(bus, SESSION, &session_description);
    eldbus_name_request(
        bus, "org.freedesktop.login1", ELDBUS_NAME_REQUEST_FLAG_DO_NOT_QUEUE,
        [](void *, const Eldbus_Message *, Eldbus_Pending *) { say("serving"); }, nullptr);
    ecore_main_fd_handler_add(STDIN_FILENO, ECORE_FD_READ, on_input, nullptr, nullptr, nullptr);
    ecore_main_loop_begin();
    eldbus_service_interface_unregister(session);
    eldbus_service_interface_unregister(manager);
    eldbus_connection_unref(bus);
    eldbus_shutdown();
    ecore_shutdown();
    return 0;
}
