// The program from its start to its end, and where the content is.

#include <algorithm>
#include <map>

#include "model.h"

namespace model {

using fake::Raw;

namespace {

constexpr char BUILT_IN[] = "/opt/data/demo_movie/";

bool portrait_name(const std::string &name)
{
    std::string prefix = name.substr(0, 9);
    std::transform(prefix.begin(), prefix.end(), prefix.begin(), ::tolower);
    return prefix == "portrait_";
}

// The extension counts as known when it stands anywhere in the list of its kind.
bool known(const std::string &name, const std::string &list)
{
    const size_t dot = name.rfind('.');
    if (dot == std::string::npos)
        return false;
    std::string extension = name.substr(dot);
    std::transform(extension.begin(), extension.end(), extension.begin(), ::tolower);
    return list.find(extension) != std::string::npos;
}

std::string language_suffix(const std::string &language)
{
    // Some rows of the table; the table itself has its own tests.
    const std::map<std::string, std::string> suffixes = {
        {"en_US", "_EngUS"}, {"ko_KR", "_Kor"}, {"de_DE.UTF-8", "_Deu"}};
    const auto found = suffixes.find(language);
    return found == suffixes.end() ? "" : found->second;
}

} // namespace

void Model::create()
{
    created = true;
    int state = -1;
    if (set.read(ROTATION_STATE, state))
        panel = state == 2 ? 1 : state == 3 ? 2 : state == 0 ? 3 : 0;
    set.call("elm_config_mirrored_set", set.facts.right_to_left);
}

void Model::launch(const Step &step)
{
    // Arguments are the extras, key=value.
    const auto extra = [&](const std::string &key, std::string &value) {
        if (!set.works("app_control_get_extra_data"))
            return false;
        for (const std::string &argument : step.arguments) {
            const size_t equal = argument.find('=');
            if (argument.substr(0, equal) == key) {
                value = argument.substr(equal + 1);
                return true;
            }
        }
        return false;
    };
    std::string value;
    if (extra("__K_RELOCATE_BELOW", value) && value == "com.norvane.tv.aod")
        return;
    if (extra("mode", value)) {
        if (value == "factory_stop")
            set.exit();
        return;
    }
    const bool wants_folder_contents =
        extra("demo_player_mode", value) && value == "folder_contents_player";
    if (wants_folder_contents)
        set.write(DEMO_MODE, 0);
    const bool wants_repeat = !(extra("repeat_mode", value) && value == "no");
    std::string wanted_folder = set.folder_opens(BUILT_IN) ? BUILT_IN : "";
    extra("folder_path", wanted_folder);
    const bool wants_usb = extra("path_location", value) && value == "usb";

    if (set.call("vconf_notify_key_changed", DEMO_MODE, Raw{"null"}))
        set.follows_demo_mode = true;
    if (!wants_folder_contents && set.call("vconf_notify_key_changed", USE_MODE, Raw{"null"}))
        set.follows_use_mode = true;

    if (launched) {
        start_demo();
        return;
    }
    launched = true;
    folder_contents = wants_folder_contents;
    repeat = wants_repeat;
    folder = wanted_folder;
    usb = wants_usb;
    if (!create_controller())
        set.exit();
}

bool Model::create_controller()
{
    int value = 0;
    set.read(AUTO_MODE, value);
    auto_rotation = value != 0;

    window = set.facts.window_prepared || set.works("elm_win_add");
    if (window && set.works("evas_object_rectangle_add"))
        set.call("evas_object_show", Raw{"rectangle"});
    set.pipe = set.works("ecore_pipe_add");
    set.key_handler = set.works("ecore_event_handler_add");
    set.rotator_followed = set.facts.has_rotator && set.works("display_rotator_add_cb");

    if (!create_video_player()) {
        set.write(STATUS, 3);
        return false;
    }
    scan_folder();
    if (build_play_list() == -1)
        return false;

    set.call("evas_object_show", Raw{window ? "window" : "null"});
    window_visible = window_active = window;
    set.call("ecore_wl2_sync");
    build_items();
    set.write(RELAUNCH_TIMER, 3);
    return true;
}

bool Model::create_video_player()
{
    if (!set.call("player_create"))
        return false;
    set.player = true;
    set.video = Video::Idle;
    // Three of the four callbacks are needed.
    set.completed_followed = set.works("player_set_completed_cb");
    set.interrupted_followed = set.completed_followed && set.works("player_set_interrupted_cb");
    set.errors_followed = set.interrupted_followed && set.works("player_set_error_cb");
    set.subtitles_followed = set.errors_followed && set.works("player_set_subtitle_updated_cb_ex");
    return set.errors_followed;
}

void Model::start_demo()
{
    if (play_list.empty())
        return;
    int orientation = 0;
    set.read(FILE_MODE, orientation);
    const int selection = menu_selection(orientation);
    if (selection == -1) {
        set.exit();
        return;
    }
    // A single file of the other orientation: the panel turns first.
    const bool wants_portrait = orientation == 2;
    if (set.has_rotator() && selection != 0 && wants_portrait != portrait()) {
        set.write(FILE_MODE, wants_portrait ? 2 : 1);
        set.call("VirtualKey_Send_KeyCode", 569, 2);
        return;
    }
    build_disclaimer();
    play_index = selection;
    update_rotation_timer();
    play_selection();
}

void Model::terminate()
{
    set.write(RELAUNCH_TIMER, 1);
    set.call("vconf_ignore_key_changed", USE_MODE);
    set.call("vconf_ignore_key_changed", DEMO_MODE);
    set.follows_use_mode = set.follows_demo_mode = false;
    terminated = true;
    if (!launched)
        return;

    release_resources();
    if (set.player)
        set.call("player_destroy");
    set.player = false;
    if (set.pipe)
        set.call("ecore_pipe_del", Raw{"pipe"});
    set.pipe = false;
    set.queue.clear();
    set.key_handler = set.rotator_followed = false;
    if (set.call("app_context_manager_unset_epop_block"))
        set.epop_blocked = false;
    delete_widget(popup, "popup");
    delete_widget(genlist, "genlist");
    delete_widget(popup_layout, "layout");
    delete_widget(toast, "popup");
    delete_widget(disclaimer_root, "layout");
    delete_widget(disclaimer_image, "imagebox");
    set.delete_timer(rotation_timer);
    set.delete_timer(disclaimer_timer);
    set.delete_timer(delay_timer);
    delete_widget(window, "window");
    launched = false;
}

void Model::change_language()
{
    set.call("elm_config_mirrored_set", set.facts.right_to_left);
    if (set.works("runtime_info_get_value_string"))
        set.call("elm_language_set", set.facts.language);
}

void Model::config_changed(const std::string &key)
{
    const int last_value = key == DEMO_MODE ? -1 : 0;
    int value = 0;
    if (set.read(key, value) && value == last_value)
        set.exit();
}

// The word holds the landscape selection in its low byte and the portrait selection in the next; 0
// and -1 stand for both.
int Model::menu_selection(int half) const
{
    int word = 0;
    set.read(DEMO_MODE, word);
    if (word == 0 || word == -1)
        return word;
    const bool of_portrait = half == 2 || (half == 0 && portrait());
    return (of_portrait ? word >> 8 : word) & 0xFF;
}

void Model::select(int number)
{
    if (number == 0 || number == -1) {
        set.write(DEMO_MODE, number);
        return;
    }
    int word = 0;
    set.read(DEMO_MODE, word);
    set.write(DEMO_MODE,
              portrait() ? ((number << 8) & 0xFFFF) | (word & 0xFF) : number | (word & 0xFF00));
}

std::string Model::content_folder() const
{
    if (folder_contents)
        return usb ? usb_folder() : folder;
    return set.folder_opens(BUILT_IN) ? BUILT_IN : "";
}

std::string Model::usb_folder() const
{
    std::string candidate;
    if (!set.works("usb_device_get_device_list"))
        return candidate;
    for (const std::string &stick : set.facts.sticks) {
        candidate = stick + "/" + folder + "/";
        if (set.folder_exists(candidate))
            break;
    }
    return candidate;
}

void Model::scan_folder()
{
    const std::string videos =
        std::string(set.facts.direct_backlight && set.works("system_info_get_value_int") ? ".smp4/"
                                                                                         : "") +
        ".ts/.avi/.mp4/.asf/.wmv/.ogg/.flv/.mpeg/.mkv/.tp";
    if (folder.empty())
        play_path = set.folder_opens(BUILT_IN) ? BUILT_IN : "";
    else
        play_path = usb ? usb_folder() : folder;
    if (!set.folder_opens(play_path))
        return;

    std::vector<std::string> subtitles;
    for (const std::string &name : set.files_of(play_path)) {
        if (known(name, videos))
            (portrait_name(name) ? portrait_videos : landscape_videos).push_back({0, name, ""});
        else if (known(name, ".jpg/.jpeg"))
            (portrait_name(name) ? portrait_photos : landscape_photos).push_back({1, name, ""});
        else if (known(name, ".smi/.srt/.sub/.ttxt/.txt/.ssa/.ass/.psb/.sami/.mpl"))
            subtitles.push_back(name);
    }

    // The first subtitle of the set's language, else the last one that carries the video's name.
    const std::string suffix = set.works("runtime_info_get_value_string")
                                   ? language_suffix(set.facts.language)
                                   : std::string();
    for (auto *list : {&landscape_videos, &portrait_videos}) {
        for (Entry &video : *list) {
            const std::string base = video.name.substr(0, video.name.rfind('.'));
            for (const std::string &name : subtitles) {
                if (name.find(base) == std::string::npos)
                    continue;
                video.subtitle = name;
                if (!suffix.empty() && name.find(suffix) != std::string::npos)
                    break;
            }
        }
    }
}

int Model::build_play_list()
{
    const int selection = menu_selection(0);
    const auto &videos = portrait() ? portrait_videos : landscape_videos;
    const auto &photos = portrait() ? portrait_photos : landscape_photos;
    if (!videos.empty() || !photos.empty()) {
        play_list = videos;
        play_list.insert(play_list.end(), photos.begin(), photos.end());
        return 1;
    }
    const bool other_has_content = portrait()
                                       ? !landscape_videos.empty() || !landscape_photos.empty()
                                       : !portrait_videos.empty() || !portrait_photos.empty();
    if (!set.has_rotator() || !other_has_content) {
        set.write(STATUS, 2);
        return -1;
    }
    if (selection == -1)
        return 1;
    set.write(FILE_MODE, portrait() ? 1 : 2);
    delay_timer = set.start_timer(800, Alarm::RotationDelay);
    return 0;
}

void Model::build_items()
{
    items = {{-1, "tr(SID_OFF)"}, {0, "tr(COM_HTS_SID_PLAY_ALL)"}};
    for (size_t i = 0; i < play_list.size(); ++i) {
        const size_t dot = play_list[i].name.rfind('.');
        if (dot != std::string::npos)
            items.emplace_back(static_cast<int>(i) + 1, play_list[i].name.substr(0, dot));
    }
}

} // namespace model
