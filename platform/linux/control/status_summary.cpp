// The status as a person reads it.

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "base/orientation.h"
#include "base/paths.h"
#include "control/status_report.h"
#include "log/log_line.h"
#include "player_rules/config_keys.h"

namespace platform {

namespace {

constexpr size_t VALUES_BEGIN = 16;
constexpr int DIGITS = 5;

std::string quoted(const std::string &name)
{
    return "\"" + visible_text(name) + "\"";
}

/** "0:07", "12:30" or "1:02:03". */
std::string clock_time(int64_t milliseconds)
{
    const auto seconds = static_cast<long>(milliseconds / 1000);
    char text[64];
    if (seconds >= 3600)
        std::snprintf(text, sizeof text, "%ld:%02ld:%02ld", seconds / 3600, seconds / 60 % 60,
                      seconds % 60);
    else
        std::snprintf(text, sizeof text, "%ld:%02ld", seconds / 60, seconds % 60);
    return text;
}

/** "5 min", "5 min 30 s" or "12 s". */
std::string duration(int seconds)
{
    std::string text = seconds >= 60 ? std::to_string(seconds / 60) + " min" : "";
    if (seconds % 60 != 0 || seconds < 60)
        text += (text.empty() ? "" : " ") + std::to_string(seconds % 60) + " s";
    return text;
}

std::string count(size_t number, const char *what)
{
    return std::to_string(number) + " " + what + (number == 1 ? "" : "s");
}

std::string speed(double rate)
{
    return std::string(rate < 0 ? "backwards" : "forwards") + " at " +
           decimal(std::fabs(rate), DIGITS) + " times the speed";
}

std::string playing(const Status &status)
{
    const PlayerStatus &player = status.player;
    std::string text;
    switch (status.playing()) {
    case Status::Playing::Nothing:
        return "nothing";
    case Status::Playing::Photo:
        return "photo " + quoted(last_part(status.picture.path));
    case Status::Playing::Video:
        if (player.looks_again_ms >= 0)
            return "nothing can be played; looks again in " +
                   duration(static_cast<int>((player.looks_again_ms + 999) / 1000));
        text = "video " + quoted(last_part(player.path));
        break;
    }
    if (player.position_ms >= 0)
        text += ", at " + clock_time(player.position_ms);
    if (player.position_ms >= 0 && player.duration_ms >= 0)
        text += " of " + clock_time(player.duration_ms);
    if (player.state == PLAYER_STATE_PAUSED)
        text += ", paused";
    else if (player.state == PLAYER_STATE_READY)
        text += ", about to start";
    else if (player.rate != 1.0)
        text += ", " + speed(player.rate);
    return text + (player.has_subtitle ? ", with subtitles" : "");
}

std::string picture(const VideoStatus &video)
{
    std::string text = std::to_string(video.width) + "x" + std::to_string(video.height);
    if (video.pixel_width != video.pixel_height)
        text += " of " + std::to_string(video.pixel_width) + ":" +
                std::to_string(video.pixel_height) + " pixels";
    if (video.frame_rate > 0)
        text += ", " + decimal(video.frame_rate, DIGITS) + " frames/s";
    if (video.interlaced)
        text += video.halved ? ", interlaced, one picture a frame" : ", interlaced";
    text += ", " + video.format;
    if (!video.decoder.empty())
        text += " by " + video.decoder + (video.hardware ? " (hardware)" : "");
    return text + "; " + std::to_string(video.shown) + " pictures shown, " +
           std::to_string(video.dropped) + " dropped, " + std::to_string(video.late) + " late";
}

std::string mapping(const VideoStatus &video)
{
    switch (video.mapping) {
    case ToneMapping::None:
        break;
    case ToneMapping::PQ:
    case ToneMapping::HLG:
        return std::string("mapped from ") + (video.mapping == ToneMapping::PQ ? "PQ" : "HLG") +
               " by BT.2390, peak " + decimal(video.peak, DIGITS) + ", white " +
               decimal(video.white, DIGITS) + " cd/m2";
    case ToneMapping::Ignored:
        return "high dynamic range ignored, converted by GStreamer";
    }
    return video.exact ? "not mapped" : "not mapped, converted by GStreamer";
}

std::string colours(const VideoStatus &video)
{
    const auto part = [](const char *what, const ColourPart &told) {
        return what + (" " + told.name) + " (" + source_name(told.source) + "), ";
    };
    return part("range", video.range) + part("matrix", video.matrix) +
           part("transfer", video.transfer) + part("primaries", video.primaries) + mapping(video);
}

std::string list(const Status &status)
{
    if (status.playing() == Status::Playing::Nothing)
        return "-";
    if (!status.list)
        return "unknown, because the folder has changed or cannot be read";
    const ContentList &list = *status.list;
    return std::string(list.portrait ? "portrait" : "landscape") + ", number " +
           std::to_string(list.position + 1) + " of " + std::to_string(list.names.size()) + " (" +
           count(list.videos, "video") + ", " + count(list.names.size() - list.videos, "photo") +
           ")";
}

std::string selection(const Status &status)
{
    const int entry = status.selection();
    if (entry == DEMO_SWITCHED_OFF)
        return "off";
    if (entry == 0)
        return "play all";
    std::string number = "only number " + std::to_string(entry);
    const auto index = static_cast<size_t>(entry - 1);
    if (!status.list || status.list->portrait != is_portrait(status.panel.angle))
        return number;
    return index < status.list->names.size() ? number + ", " + quoted(status.list->names[index])
                                             : number + ", which the list does not have";
}

std::string panel(const PanelStatus &panel)
{
    std::string text = PANEL_ORIENTATIONS[panel.angle / 90];
    if (panel.width > 0)
        text += ", " + std::to_string(panel.width) + "x" + std::to_string(panel.height);
    if (panel.turning_to)
        return text + ", turning to " + PANEL_ORIENTATIONS[*panel.turning_to / 90];
    return text + (panel.rotator ? "" : ", does not turn");
}

std::string timed_rotation(const Status &status)
{
    const RotationTimes &rotation = status.rotation;
    std::string text = rotation.on ? "on" : "off";
    if (rotation.on && !status.panel.rotator)
        text += ", but the panel does not turn";
    else if (rotation.on && status.panel.turning_to)
        text += ", turning now";
    else if (rotation.left_s)
        text += ", turns in " + duration(static_cast<int>(std::ceil(*rotation.left_s)));
    else if (rotation.on)
        text += ", but nothing is to be shown on the other side";
    return text + " (landscape " + duration(rotation.landscape_s) + ", portrait " +
           duration(rotation.portrait_s) + ")";
}

std::string joined(const std::vector<std::string> &texts)
{
    std::string all;
    for (const std::string &text : texts)
        all += (all.empty() ? "" : ", ") + visible_text(text);
    return all.empty() ? "none" : all;
}

/** One line for each. */
std::string passed_over(const std::vector<UnplayableFile> &files)
{
    std::string all;
    for (const UnplayableFile &file : files)
        all += (all.empty() ? "" : "\n" + std::string(VALUES_BEGIN, ' ')) +
               quoted(last_part(file.path)) + ", " + visible_text(file.why);
    return all;
}

std::string blocked(const Status &status)
{
    std::vector<std::string> everything;
    if (status.popups_blocked)
        everything.emplace_back("pop-ups of the set");
    for (const auto &[application, items] : status.blocked_items) {
        for (const std::string &item : items)
            everything.push_back(item);
    }
    return joined(everything);
}

void add(std::string &lines, const std::string &name, const std::string &value)
{
    std::string line = name + ":";
    line.resize(VALUES_BEGIN, ' ');
    lines += line + value + "\n";
}

} // namespace

std::string status_summary(const Status &status)
{
    std::string lines;
    add(lines, "Playing", playing(status));
    if (!status.file().empty())
        add(lines, "File", visible_text(status.file()));
    if (status.playing() == Status::Playing::Video && status.player.video.width > 0) {
        add(lines, "Picture", picture(status.player.video));
        add(lines, "Colours", colours(status.player.video));
    }
    if (!status.passed_over.empty())
        add(lines, "Passed over", passed_over(status.passed_over));
    if (status.player.stalls > 0)
        add(lines, "Stalls",
            std::to_string(status.player.stalls) + ", the last in " +
                quoted(last_part(status.player.last_stall)));
    add(lines, "List", list(status));
    add(lines, "Selection", selection(status));
    add(lines, "Panel", panel(status.panel));
    add(lines, "Timed rotation", timed_rotation(status));
    add(lines, "Blocked", blocked(status));
    add(lines, "Frames",
        std::to_string(status.frames.presented) + " shown, " +
            std::to_string(status.frames.dropped) + " dropped, " +
            std::to_string(status.frames.late) + " late");
    add(lines, "Language",
        visible_text(status.language) + ", " +
            (status.right_to_left ? "right to left" : "left to right"));
    add(lines, "USB storage",
        status.usb ? joined(*status.usb) : "unknown, because it cannot be read");
    return lines;
}

} // namespace platform
