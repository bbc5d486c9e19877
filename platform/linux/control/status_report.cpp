#include "control/status_report.h"

#include <charconv>
#include <iterator>

#include "app_context/app_context_state.h"
#include "base/orientation.h"
#include "config_store/platform_store.h"
#include "panel/panel_model.h"
#include "panel/timed_rotation.h"
#include "player_rules/config_keys.h"
#include "settings/settings.h"
#include "system_facts.h"
#include "system_facts/language.h"
#include "usb_storage/usb_devices.h"

namespace platform {

namespace {

PanelStatus panel_status()
{
    const PanelModel &panel = PanelModel::get();
    PanelStatus status;
    status.angle = panel.angle();
    status.rotator = panel.can_turn();
    if (panel.turning())
        status.turning_to = panel.target();
    status.width = panel.pixel_width();
    status.height = panel.pixel_height();
    return status;
}

RotationTimes rotation_times()
{
    const TimedRotation &rotation = TimedRotation::get();
    return {rotation.on(), rotation.left_s(), TimedRotation::interval_s(false),
            TimedRotation::interval_s(true)};
}

// The player's own keys are named also while they are not set, every other one when it is.
std::map<std::string, std::optional<int>> configuration()
{
    std::map<std::string, std::optional<int>> all;
    for (const KnownKey &key : known_keys())
        all[key.name] = std::nullopt;
    for (const auto &[key, value] : stored_keys())
        all[key] = value;
    return all;
}

} // namespace

Status collect_status()
{
    Status status;
    status.player = current_player_status();
    status.picture = current_picture_status();
    status.passed_over = UnplayableFiles::get().all();
    status.panel = panel_status();
    status.rotation = rotation_times();
    if (const std::shared_ptr<VideoPlane> plane = VideoPlane::current())
        status.frames = plane->statistics();
    status.language = language();
    status.right_to_left = ua_UI_orientation_get() == UI_ORIENTATION_RIGHT_TO_LEFT;
    status.popups_blocked = AppContextState::get().epop_blocked;
    status.blocked_items = AppContextState::get().disabled_items;
    status.configuration = configuration();
    status.selection_word = status.configuration[DEMO_MODE_KEY];
    return status;
}

StorageQuestion storage_question(const Status &status, const timespec &list_made)
{
    const bool direct_backlight = Settings::get().direct_backlight();
    return {status.file(), direct_backlight, list_made, usb_changes(), status.passed_over};
}

Status::Playing Status::playing() const
{
    if (!player.path.empty() && player.state >= PLAYER_STATE_READY)
        return Playing::Video;
    return picture.shown ? Playing::Photo : Playing::Nothing;
}

const std::string &Status::file() const
{
    static const std::string none;
    switch (playing()) {
    case Playing::Video:
        return player.path;
    case Playing::Photo:
        return picture.path;
    case Playing::Nothing:
        break;
    }
    return none;
}

std::string decimal(double number, int digits)
{
    char text[64];
    char *const end =
        std::to_chars(text, std::end(text), number, std::chars_format::general, digits).ptr;
    return {text, end};
}

const char *source_name(ColourSource source)
{
    switch (source) {
    case ColourSource::Stream:
        return "stream";
    case ColourSource::Container:
        return "container";
    case ColourSource::Usual:
        break;
    }
    return "usual";
}

int Status::selection() const
{
    return selection_of(selection_word.value_or(0), is_portrait(panel.angle));
}

} // namespace platform
