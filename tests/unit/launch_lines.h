/**
 * What reading a launch request leaves in transcripts of everything (`fake_.all()`), up to the
 * moment when the controller has its turn.
 */
#pragma once

#include <string>

#include "main_test.h"

using Extras = fake::Application::Extras;

inline bool has_extra(const Extras &extras, const std::string &key, const std::string &value)
{
    const auto found = extras.find(key);
    return found != extras.end() && found->second == value;
}

inline bool is_ignored(const Extras &extras)
{
    return has_extra(extras, "__K_RELOCATE_BELOW", "com.norvane.tv.aod");
}

/** Whether the request asks the program to end. */
inline bool is_stop(const Extras &extras)
{
    return !is_ignored(extras) && has_extra(extras, "mode", "factory_stop");
}

/** Whether the controller has no turn. */
inline bool is_refused(const Extras &extras)
{
    return is_ignored(extras) || extras.count("mode") != 0;
}

inline bool is_for_folder_contents(const Extras &extras)
{
    return has_extra(extras, "demo_player_mode", "folder_contents_player");
}

/** Reading one extra. */
inline Lines extra_lines(const Extras &extras, const std::string &key)
{
    const std::string question = "app_control_get_extra_data(\"" + key + "\")";
    const auto found = extras.find(key);
    if (found == extras.end())
        return {question, "I \"Get ExtraKey:" + key + ",fail\""};
    return {question, "I \"ExtraKey:" + key + ",pStrExtraValue:" + found->second + "\"",
            "free(text from app_control_get_extra_data)"};
}

/** All that happens before the controller has its turn, at a first request and at any later one. */
inline Lines request_lines(const Extras &extras)
{
    Lines lines = join({{"I \"\""}, extra_lines(extras, "__K_RELOCATE_BELOW")});
    if (is_ignored(extras))
        return lines;
    lines = join({lines, extra_lines(extras, "mode")});
    if (extras.count("mode") != 0)
        return is_stop(extras) ? join({lines, exit_lines()}) : lines;

    const bool contents = is_for_folder_contents(extras);
    lines = join({lines, extra_lines(extras, "demo_player_mode")});
    if (contents)
        lines.push_back(writes(DEMO_MODE, 0));
    lines = join({lines, extra_lines(extras, "repeat_mode"), extra_lines(extras, "folder_path")});
    if (extras.count("folder_path") == 0)
        lines = join({lines, {"opendir(\"/opt/data/demo_movie/\")", "closedir()"}});
    lines = join({lines,
                  extra_lines(extras, "path_location"),
                  {"vconf_notify_key_changed(\"db/ostrel-demo-player-tv/demo_mode\", null)"}});
    if (!contents)
        lines.push_back("vconf_notify_key_changed(\"db/menu/support/use_mode\", null)");
    return lines;
}
