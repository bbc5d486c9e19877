// The status as programs read it, and what follows from it.

#include "base/paths.h"
#include "control/status_report.h"
#include "player_rules/config_keys.h"

namespace platform {

namespace {

StatusValue or_null(const std::string &text)
{
    return text.empty() ? StatusValue() : StatusValue(text);
}

StatusValue or_null(std::optional<int> number)
{
    return number ? StatusValue(int64_t{*number}) : StatusValue();
}

StatusValue known_time(int64_t milliseconds)
{
    return milliseconds >= 0 ? StatusValue(milliseconds) : StatusValue();
}

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

std::vector<StatusNode> playing_nodes(const Status &status)
{
    static const char *const kinds[] = {"", "video", "photo"};
    const std::string kind = kinds[static_cast<size_t>(status.playing())];
    return {
        {"kind", or_null(kind)},
        {"name", or_null(last_part(status.file()))},
        {"file", or_null(status.file())},
    };
}

StatusValue list_value(const std::optional<ContentList> &list)
{
    if (!list)
        return {};
    return std::vector<StatusNode>{
        {"orientation", std::string(list->portrait ? "portrait" : "landscape")},
        {"number", static_cast<int64_t>(list->position) + 1},
        {"length", static_cast<int64_t>(list->names.size())},
        {"videos", static_cast<int64_t>(list->videos)},
        {"photos", static_cast<int64_t>(list->names.size() - list->videos)},
        {"names", list->names},
    };
}

std::vector<StatusNode> player_nodes(const PlayerStatus &player)
{
    return {
        {"state", std::string(state_name(player.state))},
        {"file", or_null(player.path)},
        {"position_ms", known_time(player.position_ms)},
        {"duration_ms", known_time(player.duration_ms)},
        {"rate", player.rate},
        {"width", int64_t{player.width}},
        {"height", int64_t{player.height}},
        {"subtitle", player.has_subtitle},
        {"looping", player.looping},
    };
}

std::vector<StatusNode> picture_nodes(const PictureStatus &picture)
{
    return {
        {"file", or_null(picture.path)},
        {"shown", picture.shown},
        {"width", int64_t{picture.width}},
        {"height", int64_t{picture.height}},
    };
}

std::vector<StatusNode> rotation_nodes(const RotationTimes &rotation)
{
    return {
        {"on", rotation.on},
        {"left_s", rotation.left_s ? StatusValue(*rotation.left_s) : StatusValue()},
        {"landscape_s", int64_t{rotation.landscape_s}},
        {"portrait_s", int64_t{rotation.portrait_s}},
    };
}

std::vector<StatusNode> panel_nodes(const PanelStatus &panel)
{
    return {
        {"angle", int64_t{panel.angle}},           {"rotator", panel.rotator},
        {"turning_to", or_null(panel.turning_to)}, {"width", int64_t{panel.width}},
        {"height", int64_t{panel.height}},
    };
}

} // namespace

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

int Status::selection() const
{
    return selection_of(selection_word.value_or(0), panel.angle % 180 != 0);
}

std::vector<StatusNode> status_nodes(const Status &status)
{
    std::vector<StatusNode> blocked;
    for (const auto &[application, items] : status.blocked_items)
        blocked.push_back({application, items});
    std::vector<StatusNode> keys;
    for (const auto &[key, value] : status.configuration)
        keys.push_back({key, or_null(value)});
    return {
        {"playing", playing_nodes(status)},
        {"list", list_value(status.list)},
        {"selection", int64_t{status.selection()}},
        {"player", player_nodes(status.player)},
        {"picture", picture_nodes(status.picture)},
        {"frames",
         std::vector<StatusNode>{{"shown", static_cast<int64_t>(status.frames.presented)},
                                 {"dropped", static_cast<int64_t>(status.frames.dropped)}}},
        {"panel", panel_nodes(status.panel)},
        {"timed_rotation", rotation_nodes(status.rotation)},
        {"language", status.language},
        {"menu_direction", std::string(status.right_to_left ? "rtl" : "ltr")},
        {"usb", status.usb ? StatusValue(*status.usb) : StatusValue()},
        {"popups_blocked", status.popups_blocked},
        {"blocked_items", blocked},
        {"config", keys},
    };
}

} // namespace platform
