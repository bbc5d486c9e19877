#include "steps.h"
#include "set_keys.h"

#include <algorithm>
#include <cstdlib>
#include <sstream>

namespace model {

int Step::number(size_t n) const
{
    return n < arguments.size() ? std::atoi(arguments[n].c_str()) : 0;
}

std::string Step::text(size_t n) const
{
    return n < arguments.size() ? arguments[n] : std::string();
}

bool Step::fails(const std::string &function) const
{
    return std::find(failing.begin(), failing.end(), function) != failing.end();
}

std::string to_text(const Step &step)
{
    std::string line = step.what;
    for (const std::string &argument : step.arguments)
        line += " " + argument;
    for (const std::string &function : step.failing)
        line += " !" + function;
    return line;
}

std::string to_text(const Steps &steps)
{
    std::string lines;
    for (const Step &step : steps)
        lines += to_text(step) + "\n";
    return lines;
}

Steps parse_steps(const std::string &text)
{
    Steps steps;
    std::istringstream lines(text);
    std::string line;
    while (std::getline(lines, line)) {
        std::istringstream words(line);
        Step step;
        if (!(words >> step.what) || step.what[0] == '#')
            continue;
        std::string word;
        while (words >> word) {
            if (word[0] == '!')
                step.failing.push_back(word.substr(1));
            else
                step.arguments.push_back(word);
        }
        steps.push_back(step);
    }
    return steps;
}

const std::vector<std::string> &functions_that_fail()
{
    static const std::vector<std::string> functions = {
        "player_create",
        "player_destroy",
        "player_set_completed_cb",
        "player_set_interrupted_cb",
        "player_set_error_cb",
        "player_set_subtitle_updated_cb_ex",
        "player_set_uri",
        "player_set_subtitle_path",
        "player_set_display",
        "player_set_display_rotation",
        "player_resize_video_render_rect",
        "player_prepare_async",
        "player_unprepare",
        "player_start",
        "player_stop",
        "player_pause",
        "player_get_state",
        "player_set_looping",
        "player_set_playback_rate",
        "player_get_playback_rate",
        "pictrel_init_display",
        "pictrel_destroy_display",
        "pictrel_create_from_url",
        "pictrel_destroy",
        "pictrel_set_window",
        "pictrel_set_geometry_size",
        "pictrel_add_event_callback",
        "pictrel_parse",
        "pictrel_decode",
        "pictrel_render",
        "pictrel_set_mixer_render",
        "pictrel_rotate",
        "ecore_timer_add",
        "ecore_pipe_add",
        "ecore_pipe_write",
        "ecore_event_handler_add",
        "evas_object_rectangle_add",
        "elm_win_add",
        "elm_genlist_item_class_new",
        "elm_velt_popup_add",
        "elm_velt_layout_add",
        "elm_velt_genlist_add",
        "elm_velt_imagebox_add",
        "elm_velt_button_add",
        "vconf_get_int",
        "vconf_set_int",
        "vconf_notify_key_changed",
        "system_info_get_custom_bool",
        "system_info_get_value_int",
        "runtime_info_get_value_string",
        "app_control_get_extra_data",
        "app_context_manager_set_epop_block",
        "app_context_manager_unset_epop_block",
        "usb_device_get_device_list",
        "opendir",
        "stat",
        "sound_manager_get_speaker_selection",
        "sound_manager_set_speaker_selection",
        "display_rotator_get_status",
        "display_rotator_add_cb",
        "VirtualKey_Send_KeyCode",
        "KeyRouter_Remove_Key",
        "KeyRouter_Set_KeyList",
    };
    return functions;
}

const std::vector<std::string> &key_names()
{
    static const std::vector<std::string> names = [] {
        std::vector<std::string> all = {"Up", "return"};
        for (const set_keys::Key &key : set_keys::USED)
            all.emplace_back(key.name);
        return all;
    }();
    return names;
}

} // namespace model
