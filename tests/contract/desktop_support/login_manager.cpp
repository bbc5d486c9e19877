// A login manager for tests, on the bus that DBUS_SYSTEM_BUS_ADDRESS names. It knows one session
// and says what lines on its standard input tell it to:
//   shutdown 0|1 | sleep 0|1 | active 0|1 | strangers 0|1 | locks
// The last three answer, locks with the number of delay locks that are held. Strangers are
// processes that belong to no session, as those do that the manager of a user has started.

#include <cerrno>
#include <cstdio>
#include <string>
#include <unistd.h>
#include <vector>

#include <poll.h>
#include <sys/epoll.h>
#include <systemd/sd-bus.h>
#include <systemd/sd-event.h>

namespace {

constexpr char MANAGER[] = "/org/freedesktop/login1";
constexpr char MANAGER_INTERFACE[] = "org.freedesktop.login1.Manager";
constexpr char SESSION[] = "/org/freedesktop/login1/session/c1";
constexpr char SESSION_INTERFACE[] = "org.freedesktop.login1.Session";

sd_bus *bus = nullptr;
bool session_active = true;
bool strangers = false;
std::vector<int> lock_ends;

void say(const std::string &line)
{
    std::printf("%s\n", line.c_str());
    std::fflush(stdout);
}

int get_session(sd_bus_message *call, void *, sd_bus_error *error)
{
    if (strangers) {
        say("asked by a stranger");
        return sd_bus_error_set_const(error, "org.freedesktop.login1.NoSessionForPID",
                                      "it belongs to no session");
    }
    return sd_bus_reply_method_return(call, "o", SESSION);
}

int inhibit(sd_bus_message *call, void *, sd_bus_error *)
{
    const char *what = nullptr, *who = nullptr, *why = nullptr, *mode = nullptr;
    int ends[2];
    if (sd_bus_message_read(call, "ssss", &what, &who, &why, &mode) <= 0 || pipe(ends) != 0)
        return -EIO;
    lock_ends.push_back(ends[0]);
    const int answered = sd_bus_reply_method_return(call, "h", ends[1]);
    close(ends[1]);
    say(std::string("locked ") + what + " " + mode + " by " + who + ": " + why);
    return answered;
}

int get_active(sd_bus *, const char *, const char *, const char *, sd_bus_message *reply, void *,
               sd_bus_error *)
{
    return sd_bus_message_append(reply, "b", session_active);
}

const sd_bus_vtable MANAGER_MEMBERS[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("GetSessionByPID", "u", "o", get_session, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("Inhibit", "ssss", "h", inhibit, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_SIGNAL("PrepareForShutdown", "b", 0),
    SD_BUS_SIGNAL("PrepareForSleep", "b", 0),
    SD_BUS_VTABLE_END};

const sd_bus_vtable SESSION_MEMBERS[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_PROPERTY("Active", "b", get_active, 0, SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE),
    SD_BUS_VTABLE_END};

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
        sd_bus_emit_signal(bus, MANAGER, MANAGER_INTERFACE, "PrepareForShutdown", "b", on);
    else if (command.compare(0, 5, "sleep") == 0)
        sd_bus_emit_signal(bus, MANAGER, MANAGER_INTERFACE, "PrepareForSleep", "b", on);
    else if (command.compare(0, 6, "active") == 0) {
        session_active = on;
        sd_bus_emit_properties_changed(bus, SESSION, SESSION_INTERFACE, "Active", nullptr);
        say("active " + std::to_string(on));
    } else if (command.compare(0, 9, "strangers") == 0) {
        strangers = on;
        say("strangers " + std::to_string(on));
    } else if (command == "locks")
        say("locks " + std::to_string(locks_held()));
}

int on_input(sd_event_source *source, int, uint32_t, void *)
{
    static std::string pending;
    char buffer[256];
    const ssize_t size = read(STDIN_FILENO, buffer, sizeof buffer);
    if (size <= 0)
        return sd_event_exit(sd_event_source_get_event(source), 0);
    pending.append(buffer, static_cast<size_t>(size));
    for (size_t end = pending.find('\n'); end != std::string::npos; end = pending.find('\n')) {
        obey(pending.substr(0, end));
        pending.erase(0, end + 1);
    }
    return 0;
}

} // namespace

int main()
{
    sd_event *event = nullptr;
    sd_event_default(&event);
    sd_bus_open_system(&bus);
    sd_bus_attach_event(bus, event, SD_EVENT_PRIORITY_NORMAL);
    sd_bus_add_object_vtable(bus, nullptr, MANAGER, MANAGER_INTERFACE, MANAGER_MEMBERS, nullptr);
    sd_bus_add_object_vtable(bus, nullptr, SESSION, SESSION_INTERFACE, SESSION_MEMBERS, nullptr);
    sd_bus_request_name(bus, "org.freedesktop.login1", 0);
    sd_event_add_io(event, nullptr, STDIN_FILENO, EPOLLIN, on_input, nullptr);
    say("serving");
    const int status = sd_event_loop(event);
    sd_bus_flush_close_unref(bus);
    sd_event_unref(event);
    return status;
}
