/**
 * Pieces that recur in transcripts: the steps that many operations share.
 */
#pragma once

#include <map>
#include <string>
#include <vector>

#include "player_fixture.h"

/** Adds lines behind others. */
inline Lines &operator+=(Lines &lines, const Lines &more)
{
    lines.insert(lines.end(), more.begin(), more.end());
    return lines;
}

inline Lines &operator+=(Lines &lines, const std::string &line)
{
    lines.push_back(line);
    return lines;
}

/** Closing a popup. @param timer the tear-down timer that was pending, or an empty text. */
inline Lines popup_closing_lines(const std::string &popup, const std::string &timer = "")
{
    Lines lines = {"I \"\"", "evas_object_hide(" + popup + ")", "I \"Block E-POP = 0 \"",
                   "app_context_manager_unset_epop_block()"};
    if (!timer.empty())
        lines += "ecore_timer_del(" + timer + ")";
    lines += "ecore_timer_add(0.5, controller)";
    return lines;
}

/** Letting go of the video. @param state what the media player was doing. */
inline Lines video_stopping_lines(player_state_e state)
{
    Lines lines = {"I \"\""};
    if (state != PLAYER_STATE_IDLE)
        lines += "player_stop()";
    lines += "player_unprepare()";
    return lines;
}

/** Setting up a video on a media player in a state. @param subtitle its path, or an empty text. */
inline Lines video_lines(const std::string &path, const std::string &subtitle, player_state_e state,
                         bool looping)
{
    Lines lines = {"I \"" + path + " " + subtitle + "\""};
    lines += video_stopping_lines(state);
    if (!subtitle.empty())
        lines += "player_set_subtitle_path(\"" + subtitle + "\")";
    const std::string loops = looping ? "true" : "false";
    lines += {"player_set_uri(\"" + path + "\")", "player_set_display(0, window#1)",
              "player_prepare_async(controller)", "player_set_looping(" + loops + ")",
              "I \"player_set_looping " + loops + " finish\""};
    return lines;
}

/**
 * Setting up the n-th photo, counted from 1.
 *
 * @param display_ready whether the display was initialised for an earlier one
 * @param replaces      whether an earlier picture is released
 */
inline Lines photo_lines(const std::string &path, int n, bool display_ready, bool replaces)
{
    Lines lines = {"I \"" + path + "\"", display_ready ? "I \"Already init display,not init again\""
                                                       : "pictrel_init_display(window#1)"};
    const std::string picture = "picture#" + std::to_string(n);
    if (replaces)
        lines += "pictrel_destroy(picture#" + std::to_string(n - 1) + ")";
    lines += {"pictrel_create_from_url(\"" + path + "\")",
              "pictrel_set_window(" + picture + ", 1)",
              "pictrel_set_geometry_size(" + picture + ", 4)",
              "pictrel_add_event_callback(" + picture + ", 4, " + picture + ")",
              "pictrel_add_event_callback(" + picture + ", 0, null)",
              "pictrel_parse(" + picture + ")"};
    return lines;
}

/** Building the rows of the options. @param names number and name of each entry that has a row */
inline Lines item_list_lines(const std::vector<std::string> &names)
{
    Lines lines = {"D \"\""};
    for (const std::string &name : names)
        lines += "I \"" + name + "\"";
    return lines;
}

/** Short translations of what is told about the timed rotation. */
inline std::map<std::string, std::string> rotation_texts()
{
    const std::string prefix = "TV_SID_ZAVO_MIX_CAAUG_";
    return {{prefix + "LANDSCAPE_TIMER_A_MINS", "L <<A>>"},
            {prefix + "LANDSCAPE_TIMER_A_MINS_B_SEC", "L <<A>>:<<B>>"},
            {prefix + "PORTRAIT_TIMER_A_MINS", "P <<A>>"},
            {prefix + "PORTRAIT_TIMER_A_MINS_B_SEC", "P <<A>>:<<B>>"},
            {prefix + "RESET_P_L_TIMER_A_MINS", "Reset <<A>>"},
            {"COM_ID_QUENDIRA_ROTATION", "Rotation"},
            {"SID_ON", "On"},
            {"SID_OFF", "Off"}};
}

/** Translations of what the options show. */
inline std::map<std::string, std::string> option_texts()
{
    return {{"SID_OFF", "Off"},
            {"COM_HTS_SID_PLAY_ALL", "Play all"},
            {"COM_SID_DEMO", "Demo"},
            {"SID_OK", "OK"}};
}
