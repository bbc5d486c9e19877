// The status as programs read it.

#include <cstdio>
#include <string_view>

#include "base/paths.h"
#include "control/status_report.h"
#include "log/log_line.h"

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

StatusValue colour_part(const ColourPart &part)
{
    if (part.name.empty())
        return {};
    return std::vector<StatusNode>{
        {"value", part.name},
        {"source", std::string(source_name(part.source))},
    };
}

StatusValue mapping_value(const VideoStatus &video)
{
    static const char *const kinds[] = {"none", "pq", "hlg", "ignored"};
    const std::string kind = kinds[static_cast<size_t>(video.mapping)];
    const bool maps = video.peak > 0;
    return std::vector<StatusNode>{
        {"kind", kind},
        {"by", maps ? StatusValue(std::string("BT.2390")) : StatusValue()},
        {"peak", maps ? StatusValue(video.peak) : StatusValue()},
        {"white", maps ? StatusValue(video.white) : StatusValue()},
    };
}

StatusValue video_value(const VideoStatus &video)
{
    if (video.width == 0)
        return {};
    return std::vector<StatusNode>{
        {"decoder", or_null(video.decoder)},
        {"decoder_name", or_null(video.decoder_name)},
        {"hardware", video.hardware},
        {"width", int64_t{video.width}},
        {"height", int64_t{video.height}},
        {"pixel_width", int64_t{video.pixel_width}},
        {"pixel_height", int64_t{video.pixel_height}},
        {"frame_rate", video.frame_rate > 0 ? StatusValue(video.frame_rate) : StatusValue()},
        {"interlaced", video.interlaced},
        {"halved", video.halved},
        {"format", or_null(video.format)},
        {"depth", int64_t{video.depth}},
        {"range", colour_part(video.range)},
        {"matrix", colour_part(video.matrix)},
        {"transfer", colour_part(video.transfer)},
        {"primaries", colour_part(video.primaries)},
        {"converter", std::string(video.exact ? "own" : "gstreamer")},
        {"mapping", mapping_value(video)},
        {"shown", static_cast<int64_t>(video.shown)},
        {"dropped", static_cast<int64_t>(video.dropped)},
        {"late", static_cast<int64_t>(video.late)},
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
        {"subtitle", player.has_subtitle},
        {"looping", player.looping},
        {"looks_again_ms", known_time(player.looks_again_ms)},
        {"stalls", static_cast<int64_t>(player.stalls)},
        {"last_stall", or_null(player.last_stall)},
        {"video", video_value(player.video)},
    };
}

std::vector<StatusNode> picture_nodes(const PictureStatus &picture)
{
    return {
        {"file", or_null(picture.path)},
        {"shown", picture.shown},
        {"width", int64_t{picture.width}},
        {"height", int64_t{picture.height}},
        {"colour_profile", or_null(picture.colour_profile)},
    };
}

std::vector<StatusNode> passed_over_nodes(const std::vector<UnplayableFile> &files)
{
    std::vector<StatusNode> nodes;
    nodes.reserve(files.size());
    for (const UnplayableFile &file : files)
        nodes.push_back({file.path, file.why});
    return nodes;
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

template <typename... Functions> struct Overloaded : Functions... {
    using Functions::operator()...;
};
template <typename... Functions> Overloaded(Functions...) -> Overloaded<Functions...>;

std::string json_string(std::string_view text)
{
    std::string json = "\"";
    for (size_t at = 0; at < text.size();) {
        const auto byte = static_cast<unsigned char>(text[at]);
        if (const size_t length = printable_length(text, at); length != 0) {
            if (byte == '"' || byte == '\\')
                json += '\\';
            json += text.substr(at, length);
            at += length;
            continue;
        }
        char escape[8];
        std::snprintf(escape, sizeof escape, byte < 0x80 ? "\\u%04x" : "\\udc%02x",
                      static_cast<unsigned>(byte));
        json += escape;
        ++at;
    }
    return json + "\"";
}

std::string json_value(const StatusValue &value);

template <typename List, typename Writer>
std::string joined(const List &list, const char *separator, Writer write)
{
    std::string text;
    for (const auto &item : list) {
        if (!text.empty())
            text += separator;
        text += write(item);
    }
    return text;
}

std::string json_object(const std::vector<StatusNode> &nodes)
{
    return "{" +
           joined(nodes, ", ",
                  [](const StatusNode &node) {
                      return json_string(node.name) + ": " + json_value(node.value);
                  }) +
           "}";
}

std::string json_value(const StatusValue &value)
{
    return std::visit(Overloaded{
                          [](std::monostate) { return std::string("null"); },
                          [](bool truth) { return std::string(truth ? "true" : "false"); },
                          [](int64_t whole) { return std::to_string(whole); },
                          [](double real) { return decimal(real, 6); },
                          [](const std::string &text) { return json_string(text); },
                          [](const std::vector<std::string> &texts) {
                              return "[" + joined(texts, ", ", json_string) + "]";
                          },
                          [](const std::vector<StatusNode> &nodes) { return json_object(nodes); },
                      },
                      value);
}

} // namespace

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
        {"passed_over", passed_over_nodes(status.passed_over)},
        {"frames", std::vector<StatusNode>{{"shown", static_cast<int64_t>(status.frames.presented)},
                                           {"dropped", static_cast<int64_t>(status.frames.dropped)},
                                           {"late", static_cast<int64_t>(status.frames.late)}}},
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

std::string status_as_json(const std::vector<StatusNode> &status)
{
    return json_object(status) + "\n";
}

} // namespace platform
