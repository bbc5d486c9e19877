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
#include "base/orientation.h"
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

constexpr char REFUSED[] = "org.tizen.OstrelDemoPlayerTv.Error.Refused";

/** The service while it is on the bus. */
struct Service {
    BusSlotPtr object;
    ControlledApplication application;
    std::shared_ptr<StatusAnswers> status;
};

Service &service()
{
    static Service the_one;
    return the_one;
}

int invalid(sd_bus_error *error, const char *reason)
{
    return sd_bus_error_set_const(error, SD_BUS_ERROR_INVALID_ARGS, reason);
}

// The one way to say no: the reason goes to the caller and, because staff may ask later, the log.
int refuse(sd_bus_message *call, sd_bus_error *error, const std::string &reason)
{
    PLATFORM_LOGW("control", "%s refused: %s", sd_bus_message_get_member(call), reason.c_str());
    return sd_bus_error_set(error, REFUSED, reason.c_str());
}

int done(sd_bus_message *call)
{
    return sd_bus_reply_method_return(call, nullptr);
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

/** The one text of a call, "s". */
std::string text_argument(sd_bus_message *call)
{
    const char *text = "";
    sd_bus_message_read_basic(call, 's', &text);
    return text;
}

/** The one path of a call, "ay", any bytes but null; empty unless it is an absolute one. */
std::string path_argument(sd_bus_message *call)
{
    const void *bytes = nullptr;
    size_t size = 0;
    sd_bus_message_read_array(call, 'y', &bytes, &size);
    std::string path(static_cast<const char *>(bytes), size);
    return path[0] == '/' && path.find('\0') == std::string::npos ? path : std::string();
}

/** One of PANEL_ORIENTATIONS as degrees clockwise. */
std::optional<int> panel_angle(const std::string &name)
{
    const auto *const found = std::find(PANEL_ORIENTATIONS.begin(), PANEL_ORIENTATIONS.end(), name);
    if (found == PANEL_ORIENTATIONS.end())
        return std::nullopt;
    return static_cast<int>(found - PANEL_ORIENTATIONS.begin()) * 90;
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

int on_key(sd_bus_message *call, void *, sd_bus_error *error)
{
    const std::string name = text_argument(call);
    if (!is_tv_key_name(name)) {
        const std::string similar = similar_key_name(name);
        return refuse(call, error,
                      "the set has no key \"" + visible_text(name) + "\"" +
                          (similar.empty() ? std::string() : "; is it " + similar + "?"));
    }
    inject_key(name);
    return done(call);
}

int on_panel(sd_bus_message *call, void *, sd_bus_error *error)
{
    const auto angle = panel_angle(text_argument(call));
    if (!angle)
        return invalid(error, "Panel takes landscape, portrait, landscape-reverse or "
                              "portrait-reverse");
    PanelModel &panel = PanelModel::get();
    if (!panel.can_turn())
        return refuse(call, error,
                      "the set does not turn its panel; tv.conf says whether it has a rotator");
    if (panel.turning() && panel.target() != *angle)
        return refuse(call, error,
                      "the panel is turning to " + std::to_string(panel.target()) + " degrees");
    const bool there = panel.turning() || panel.angle() == *angle;
    if (!there && !panel.turn_to(*angle))
        return refuse(call, error, "the panel does not turn");
    return done(call);
}

int on_power(sd_bus_message *call, void *, sd_bus_error *error)
{
    static const std::map<std::string, PowerEvent> events = {
        {"off", PowerEvent::Off}, {"standby", PowerEvent::Standby}, {"wakeup", PowerEvent::Wakeup}};
    const auto event = events.find(text_argument(call));
    if (event == events.end())
        return invalid(error, "Power takes off, standby or wakeup");
    // What follows may end the program, so the caller gets its answer first.
    const int answered = done(call);
    PowerService::get().raise(event->second);
    return answered;
}

int on_language(sd_bus_message *call, void *, sd_bus_error *error)
{
    if (!set_language(text_argument(call)))
        return invalid(error, "Language takes a language and country like ko_KR");
    const int answered = done(call);
    service().application.announce_language_change();
    return answered;
}

int on_usb_add(sd_bus_message *call, void *, sd_bus_error *error)
{
    const std::string path = path_argument(call);
    if (path.empty())
        return invalid(error, "UsbAdd takes an absolute path");
    if (!usb_add(path))
        return refuse(call, error, visible_text(path) + " is no folder");
    return done(call);
}

int on_usb_remove(sd_bus_message *call, void *, sd_bus_error *error)
{
    const std::string path = path_argument(call);
    if (path.empty())
        return invalid(error, "UsbRemove takes an absolute path");
    if (!usb_remove(path))
        return refuse(call, error, "no USB storage is mounted at " + visible_text(path));
    return done(call);
}

int on_status(sd_bus_message *call, void *, sd_bus_error *error)
{
    const std::string format = text_argument(call);
    if (format != "json" && format != "text")
        return invalid(error, "Status takes the format: json or text");
    const std::shared_ptr<sd_bus_message> asked(sd_bus_message_ref(call), sd_bus_message_unref);
    const bool taken =
        service().status->ask([asked, json = format == "json"](const Status &status) {
            const std::string text =
                json ? status_as_json(status_nodes(status)) : status_summary(status);
            sd_bus_reply_method_return(asked.get(), "s", text.c_str());
        });
    // Not in the log, which the next thousand would fill as well.
    return taken ? 1
                 : sd_bus_error_set_const(error, SD_BUS_ERROR_LIMITS_EXCEEDED,
                                          "too many ask for the status");
}

// Whoever is on the session bus may call, and introspection is to say so.
constexpr uint64_t ANYBODY = SD_BUS_VTABLE_UNPRIVILEGED;

const sd_bus_vtable METHODS[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD_WITH_ARGS("Key", SD_BUS_ARGS("s", name), SD_BUS_NO_RESULT, on_key, ANYBODY),
    SD_BUS_METHOD_WITH_ARGS("Panel", SD_BUS_ARGS("s", orientation), SD_BUS_NO_RESULT, on_panel,
                            ANYBODY),
    SD_BUS_METHOD_WITH_ARGS("Power", SD_BUS_ARGS("s", event), SD_BUS_NO_RESULT, on_power, ANYBODY),
    SD_BUS_METHOD_WITH_ARGS("Language", SD_BUS_ARGS("s", language), SD_BUS_NO_RESULT, on_language,
                            ANYBODY),
    SD_BUS_METHOD_WITH_ARGS("UsbAdd", SD_BUS_ARGS("ay", path), SD_BUS_NO_RESULT, on_usb_add,
                            ANYBODY),
    SD_BUS_METHOD_WITH_ARGS("UsbRemove", SD_BUS_ARGS("ay", path), SD_BUS_NO_RESULT, on_usb_remove,
                            ANYBODY),
    SD_BUS_METHOD_WITH_ARGS("Status", SD_BUS_ARGS("s", format), SD_BUS_RESULT("s", status),
                            on_status, ANYBODY),
    SD_BUS_VTABLE_END};

} // namespace

bool control_start(sd_bus *bus, ControlledApplication application, StorageReader read)
{
    if (bus == nullptr || service().object)
        return false;
    BusSlotPtr object;
    if (sd_bus_add_object_vtable(bus, BusOutput(object), BUS_OBJECT, BUS_CONTROL_INTERFACE, METHODS,
                                 nullptr) < 0) {
        PLATFORM_LOGW("control", "the control interface could not be put on the session bus");
        return false;
    }
    auto status = StatusAnswers::create(std::move(read), application.first_launch);
    service() = {std::move(object), std::move(application), std::move(status)};
    return true;
}

void control_stop()
{
    service() = {};
}

} // namespace platform
