/**
 * The start of the demo in transcripts of everything (`fake_.all()`): what is chosen, whether the
 * panel is turned first, and the timer of the timed rotation.
 */
#pragma once

#include <optional>
#include <string>

#include "player_lines.h"

/** What a start finds. No value means that the key cannot be read, which leaves zero. */
struct Start {
    bool rotator;
    int panel;
    std::optional<int> file_mode;
    std::optional<int> word;
    bool timed;

    bool upright() const { return panel % 2 == 1; }

    /** The selection that is in force: -1 to leave, 0 for all, or an entry counted from 1. */
    int mode() const
    {
        const int both = word.value_or(0);
        if (both == 0 || both == -1)
            return both;
        const int half = file_mode.value_or(0);
        return half == 2 || (half == 0 && upright()) ? both / 0x100 : both % 0x100;
    }

    /** Whether the panel is turned first, because the selection is the other orientation's. */
    bool turns() const
    {
        return rotator && mode() != 0 && mode() != -1 && (file_mode == 2) != upright();
    }
};

/** Reading a key that may be unreadable. */
inline Lines read_lines(const std::string &key, std::optional<int> value)
{
    Lines lines = {reads(key)};
    if (!value)
        lines += "E \"GetConfigInt key [" + key + "] faild\"";
    return lines;
}

/** Reading what is chosen. */
inline Lines selection_lines(const Start &start)
{
    Lines lines = read_lines(ConfigKey::FILE_MODE, start.file_mode);
    lines += read_lines(ConfigKey::DEMO_MODE, start.word);
    const int both = start.word.value_or(0);
    if (both == 0 || both == -1)
        return lines;
    const int half = start.file_mode.value_or(0);
    if (half == 0)
        lines += panel_line(start.upright());
    return lines += "E \"eMode=" + std::to_string(half) +
                    " iMenuType=" + std::to_string(start.mode()) + "\"";
}

/** Asking whether the panel has to turn, and turning it. */
inline Lines panel_check_lines(const Start &start)
{
    Lines lines = rotator_lines(start.rotator);
    if (!start.rotator || start.mode() == 0)
        return lines;
    lines += panel_line(start.upright());
    if (start.turns())
        lines += {writes(ConfigKey::FILE_MODE, start.file_mode == 2 ? 2 : 1), "I \"\"",
                  "VirtualKey_Send_KeyCode(569, 2)"};
    return lines;
}

/** Arming the timed rotation, with both intervals at their shortest. @param pending as before */
inline Lines timed_rotation_lines(const Start &start, const std::string &pending = "")
{
    Lines lines = {"I \"\""};
    if (!pending.empty())
        lines += "ecore_timer_del(" + pending + ")";
    lines += rotator_lines(start.rotator);
    if (!start.rotator || !start.timed)
        return lines;
    return lines +=
           {panel_line(start.upright()),
            reads(start.upright() ? ConfigKey::PORTRAIT_TIMER : ConfigKey::LANDSCAPE_TIMER),
            "I \"set timer 300 sec\"", "ecore_timer_add(300, controller)"};
}
