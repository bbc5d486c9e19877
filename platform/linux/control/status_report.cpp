#include "control/status_report.h"

#include "app_context/app_context_state.h"
#include "config_store/config_files.h"
#include "config_store/known_keys.h"
#include "media_player/player_status.h"
#include "panel/panel_model.h"
#include "settings/settings.h"
#include "system_facts.h"
#include "system_facts/language.h"
#include "usb_storage/usb_devices.h"
#include "video_plane/video_plane.h"

namespace platform {

namespace {

const char *state_name(player_state_e state)
{
    switch (state) {
    case PLAYER_STATE_NONE:
        return "none";
    case PLAYER_STATE_IDLE:
        return "idle";
    case PLAYER_STATE_READY:
        return "ready";
    case PLAYER_STATE_PLAYING:
        return "playing";
    case PLAYER_STATE_PAUSED:
        return "paused";
    }
    return "unknown";
}

StatusValue known_time(int64_t milliseconds)
{
    return milliseconds >= 0 ? StatusValue(milliseconds) : StatusValue();
}

std::vector<StatusNode> player_nodes()
{
    const PlayerStatus status = current_player_status();
    return {
        {"state", std::string(state_name(status.state))},
        {"file", status.path.empty() ? StatusValue() : StatusValue(status.path)},
        {"position_ms", known_time(status.position_ms)},
        {"duration_ms", known_time(status.duration_ms)},
        {"rate", status.rate},
        {"width", int64_t{status.width}},
        {"height", int64_t{status.height}},
        {"subtitle", status.has_subtitle},
        {"looping", status.looping},
    };
}

std::vector<StatusNode> frame_nodes()
{
    const std::shared_ptr<VideoPlane> plane = VideoPlane::current();
    const VideoPlane::Statistics statistics =
        plane ? plane->statistics() : VideoPlane::Statistics();
    return {
        {"shown", static_cast<int64_t>(statistics.presented)},
        {"dropped", static_cast<int64_t>(statistics.dropped)},
    };
}

std::vector<StatusNode> panel_nodes()
{
    const PanelModel &panel = PanelModel::get();
    return {
        {"angle", int64_t{panel.angle()}},
        {"rotator", panel.can_turn()},
        {"turning_to", panel.turning() ? StatusValue(int64_t{panel.target()}) : StatusValue()},
        {"width", int64_t{panel.width()}},
        {"height", int64_t{panel.height()}},
    };
}

// The player's own keys are named also while they are not set, every other one when it is.
std::vector<StatusNode> configuration_nodes()
{
    const Settings &settings = Settings::get();
    const std::map<std::string, int> set =
        ConfigFiles(settings.state_dir, settings.runtime_dir).list();
    std::map<std::string, StatusValue> all;
    for (const KnownKey &key : known_keys())
        all[key.name] = StatusValue();
    for (const auto &[key, value] : set)
        all[key] = int64_t{value};
    std::vector<StatusNode> nodes;
    nodes.reserve(all.size());
    for (const auto &[key, value] : all)
        nodes.push_back({key, value});
    return nodes;
}

std::vector<StatusNode> blocked_item_nodes()
{
    std::vector<StatusNode> nodes;
    for (const auto &[application, items] : AppContextState::get().disabled_items)
        nodes.push_back({application, items});
    return nodes;
}

} // namespace

std::vector<StatusNode> status_report()
{
    const bool right_to_left = ua_UI_orientation_get() == UI_ORIENTATION_RIGHT_TO_LEFT;
    return {
        {"player", player_nodes()},
        {"frames", frame_nodes()},
        {"panel", panel_nodes()},
        {"language", language()},
        {"menu_direction", std::string(right_to_left ? "rtl" : "ltr")},
        {"usb", usb_mount_paths().value_or(std::vector<std::string>())},
        {"popups_blocked", AppContextState::get().epop_blocked},
        {"blocked_items", blocked_item_nodes()},
        {"config", configuration_nodes()},
    };
}

} // namespace platform
