#include "control/control.h"

#include <algorithm>
#include <map>
#include <memory>
#include <numeric>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/ascii_case.h"
#include "bus/bus_connection.h"
#include "bus/bus_names.h"
#include "control/status_answers.h"
#include "control/status_report.h"
#include "device_power/power_service.h"
#include "key_router/key_translator.h"
#include "log/log_line.h"
#include "log/platform_log.h"
#include "panel/panel_model.h"
#include "player_rules/key_names.h"
#include "system_facts/language.h"
#include "usb_storage/usb_devices.h"

namespace platform {

namespace {

constexpr char INVALID_ARGUMENTS[] = "org.freedesktop.DBus.Error.InvalidArgs";
constexpr char LIMITS_EXCEEDED[] = "org.freedesktop.DBus.Error.LimitsExceeded";
constexpr char REFUSED[] = "org.tizen.OstrelDemoPlayerTv.Error.Refused";

/** The service while it is on the bus. */
struct Service {
    ServiceInterfacePtr interface;
    ControlledApplication application;
    std::shared_ptr<StatusAnswers> status;
};

Service &service()
{
    static Service the_one;
    return the_one;
}

Eldbus_Message *invalid(const Eldbus_Message *call, const char *reason)
{
    return eldbus_message_error_new(call, INVALID_ARGUMENTS, reason);
}

// The one way to say no: the reason goes to the caller and, because staff may ask later, the log.
Eldbus_Message *refuse(const Eldbus_Message *call, const std::string &reason)
{
    PLATFORM_LOGW("control", "%s refused: %s", eldbus_message_member_get(call), reason.c_str());
    return eldbus_message_error_new(call, REFUSED, reason.c_str());
}

// What follows may end the program, so the caller gets its answer first.
void answer_now(const Eldbus_Service_Interface *interface, const Eldbus_Message *call)
{
    eldbus_connection_send(eldbus_service_connection_get(interface),
                           eldbus_message_method_return_new(call), nullptr, nullptr, -1);
}

// Letters to insert, remove or change to make one text of the other; upper case counts as lower.
size_t distance(const std::string &from, const std::string &to)
{
    std::vector<size_t> row(to.size() + 1);
    std::iota(row.begin(), row.end(), size_t{0});
    for (size_t i = 0; i < from.size(); ++i) {
        size_t diagonal = row[0];
        row[0] = i + 1;
        for (size_t j = 0; j < to.size(); ++j) {
            const size_t change = diagonal + (lower_case(from[i]) != lower_case(to[j]) ? 1 : 0);
            diagonal = row[j + 1];
            row[j + 1] = std::min({change, row[j] + 1, row[j + 1] + 1});
        }
    }
    return row.back();
}

/** The one text of a call, "s"; nothing when it has other arguments. */
std::optional<std::string> text_argument(const Eldbus_Message *message)
{
    const char *text = nullptr;
    if (!eldbus_message_arguments_get(message, "s", &text) || text == nullptr)
        return std::nullopt;
    return text;
}

/** The one path of a call, "ay", any bytes but null; nothing for other arguments. */
std::optional<std::string> path_argument(const Eldbus_Message *message)
{
    Eldbus_Message_Iter *bytes = nullptr;
    const char *data = nullptr;
    int size = 0;
    if (!eldbus_message_arguments_get(message, "ay", &bytes) ||
        !eldbus_message_iter_fixed_array_get(bytes, 'y', &data, &size) || size <= 0)
        return std::nullopt;
    std::string path(data, static_cast<size_t>(size));
    if (path.find('\0') != std::string::npos)
        return std::nullopt;
    return path;
}

/** "landscape", "portrait", "landscape-reverse", "portrait-reverse" as degrees clockwise. */
std::optional<int> panel_angle(const std::string &name)
{
    static const std::map<std::string, int> angles = {
        {"landscape", 0}, {"portrait", 90}, {"landscape-reverse", 180}, {"portrait-reverse", 270}};
    const auto angle = angles.find(name);
    return angle != angles.end() ? std::optional<int>(angle->second) : std::nullopt;
}

/**
 * The key of the set whose name is most like a misspelt one.
 *
 * @return empty when none is like it
 */
std::string similar_key_name(const std::string &name)
{
    // A name much longer than any key's is no slip of the fingers, and comparing costs its length.
    if (name.size() > 64)
        return {};
    std::string best;
    size_t best_distance = 4;
    for (const char *known : tv_key_names()) {
        const std::string candidate = known;
        // People leave the common prefix out: "AudioPlay" means "XF86AudioPlay".
        const size_t found =
            std::min(distance(name, candidate), distance("XF86" + name, candidate));
        if (found < best_distance && found < candidate.size() / 2 + 1) {
            best = candidate;
            best_distance = found;
        }
    }
    return best;
}

Eldbus_Message *on_key(const Eldbus_Service_Interface *, const Eldbus_Message *call)
{
    const auto name = text_argument(call);
    if (!name)
        return invalid(call, "Key takes the name of a key");
    if (!is_tv_key_name(*name)) {
        const std::string similar = similar_key_name(*name);
        return refuse(call, "the set has no key \"" + visible_text(*name) + "\"" +
                                (similar.empty() ? std::string() : "; is it " + similar + "?"));
    }
    inject_key(*name);
    return eldbus_message_method_return_new(call);
}

Eldbus_Message *on_panel(const Eldbus_Service_Interface *, const Eldbus_Message *call)
{
    const auto name = text_argument(call);
    const auto angle = name ? panel_angle(*name) : std::nullopt;
    if (!angle)
        return invalid(call, "Panel takes landscape, portrait, landscape-reverse or "
                             "portrait-reverse");
    PanelModel &panel = PanelModel::get();
    if (!panel.can_turn())
        return refuse(call, "the set does not turn its panel; tv.conf says whether it has a "
                            "rotator");
    if (panel.turning() && panel.target() != *angle)
        return refuse(call,
                      "the panel is turning to " + std::to_string(panel.target()) + " degrees");
    const bool there = panel.turning() || panel.angle() == *angle;
    if (!there && !panel.turn_to(*angle))
        return refuse(call, "the panel does not turn");
    return eldbus_message_method_return_new(call);
}

Eldbus_Message *on_power(const Eldbus_Service_Interface *interface, const Eldbus_Message *call)
{
    static const std::map<std::string, PowerEvent> events = {
        {"off", PowerEvent::Off}, {"standby", PowerEvent::Standby}, {"wakeup", PowerEvent::Wakeup}};
    const auto name = text_argument(call);
    const auto event = name ? events.find(*name) : events.end();
    if (event == events.end())
        return invalid(call, "Power takes off, standby or wakeup");
    answer_now(interface, call);
    PowerService::get().raise(event->second);
    return nullptr;
}

Eldbus_Message *on_language(const Eldbus_Service_Interface *interface, const Eldbus_Message *call)
{
    const auto name = text_argument(call);
    if (!name || !set_language(*name))
        return invalid(call, "Language takes a language and country like ko_KR");
    answer_now(interface, call);
    service().application.announce_language_change();
    return nullptr;
}

Eldbus_Message *on_usb_add(const Eldbus_Service_Interface *, const Eldbus_Message *call)
{
    const auto path = path_argument(call);
    if (!path || path->front() != '/')
        return invalid(call, "UsbAdd takes an absolute path");
    if (!usb_add(*path))
        return refuse(call, visible_text(*path) + " is no folder");
    return eldbus_message_method_return_new(call);
}

Eldbus_Message *on_usb_remove(const Eldbus_Service_Interface *, const Eldbus_Message *call)
{
    const auto path = path_argument(call);
    if (!path || path->front() != '/')
        return invalid(call, "UsbRemove takes an absolute path");
    if (!usb_remove(*path))
        return refuse(call, "no USB storage is mounted at " + visible_text(*path));
    return eldbus_message_method_return_new(call);
}

Eldbus_Message *on_status(const Eldbus_Service_Interface *interface, const Eldbus_Message *call)
{
    const auto format = text_argument(call);
    if (!format || (*format != "json" && *format != "text"))
        return invalid(call, "Status takes the format: json or text");
    const std::shared_ptr<const Eldbus_Message> asked(call, [](const Eldbus_Message *message) {
        eldbus_message_unref(const_cast<Eldbus_Message *>(message));
    });
    eldbus_message_ref(const_cast<Eldbus_Message *>(call));
    const bool taken =
        service().status->ask([connection = eldbus_service_connection_get(interface), asked,
                               json = *format == "json"](const Status &status) {
            const std::string text =
                json ? status_as_json(status_nodes(status)) : status_summary(status);
            Eldbus_Message *reply = eldbus_message_method_return_new(asked.get());
            eldbus_message_arguments_append(reply, "s", text.c_str());
            eldbus_connection_send(connection, reply, nullptr, nullptr, -1);
        });
    // Not in the log, which the next thousand would fill as well.
    return taken ? nullptr
                 : eldbus_message_error_new(call, LIMITS_EXCEEDED, "too many ask for the status");
}

const Eldbus_Arg_Info KEY_ARGUMENTS[] = {{"s", "name"}, {nullptr, nullptr}};
const Eldbus_Arg_Info PANEL_ARGUMENTS[] = {{"s", "orientation"}, {nullptr, nullptr}};
const Eldbus_Arg_Info POWER_ARGUMENTS[] = {{"s", "event"}, {nullptr, nullptr}};
const Eldbus_Arg_Info LANGUAGE_ARGUMENTS[] = {{"s", "language"}, {nullptr, nullptr}};
const Eldbus_Arg_Info PATH_ARGUMENTS[] = {{"ay", "path"}, {nullptr, nullptr}};
const Eldbus_Arg_Info FORMAT_ARGUMENTS[] = {{"s", "format"}, {nullptr, nullptr}};
const Eldbus_Arg_Info STATUS_RESULTS[] = {{"s", "status"}, {nullptr, nullptr}};

const Eldbus_Method METHODS[] = {
    {"Key", KEY_ARGUMENTS, nullptr, on_key, 0},
    {"Panel", PANEL_ARGUMENTS, nullptr, on_panel, 0},
    {"Power", POWER_ARGUMENTS, nullptr, on_power, 0},
    {"Language", LANGUAGE_ARGUMENTS, nullptr, on_language, 0},
    {"UsbAdd", PATH_ARGUMENTS, nullptr, on_usb_add, 0},
    {"UsbRemove", PATH_ARGUMENTS, nullptr, on_usb_remove, 0},
    {"Status", FORMAT_ARGUMENTS, STATUS_RESULTS, on_status, 0},
    {nullptr, nullptr, nullptr, nullptr, 0},
};

const Eldbus_Service_Interface_Desc DESCRIPTION = {
    BUS_CONTROL_INTERFACE, METHODS, nullptr, nullptr, nullptr, nullptr};

} // namespace

bool control_start(Eldbus_Connection *connection, ControlledApplication application,
                   StorageReader read)
{
    if (connection == nullptr || service().interface)
        return false;
    ServiceInterfacePtr interface(
        eldbus_service_interface_register(connection, BUS_OBJECT, &DESCRIPTION));
    if (!interface) {
        PLATFORM_LOGW("control", "the control interface could not be put on the session bus");
        return false;
    }
    auto status = StatusAnswers::create(std::move(read), application.first_launch);
    service() = {std::move(interface), std::move(application), std::move(status)};
    return true;
}

void control_stop()
{
    service() = {};
}

} // namespace platform
