// The table of events, the table of keys, and who posts them.

#include <map>

#include "model.h"
#include "set_keys.h"

namespace model {

using fake::Raw;

namespace {

int key_type(const std::string &name)
{
    for (const set_keys::Key &key : set_keys::USED) {
        if (name == key.name)
            return key.type;
    }
    return 17;
}

} // namespace

bool Model::possible(const Step &step) const
{
    const std::string &what = step.what;
    if (what == "set" || what == "content" || what == "no-content" || what == "sticks" ||
        what == "config")
        return !terminated;
    if (what == "create")
        return !created;
    if (!running())
        return false;

    const bool list = genlist && popup_wired;
    const std::map<std::string, bool> conditions = {
        {"visible", window_active},
        {"turn", window_active},
        {"press", window_active},
        {"resize", window_active},
        {"rotator", set.rotator_followed},
        {"change", step.text() == DEMO_MODE ? set.follows_demo_mode : set.follows_use_mode},
        {"tell", !set.untold.empty()},
        {"record", launched},
        {"null-record", launched},
        {"deliver", !set.queue.empty()},
        {"prepared", set.preparing && !set.preparation_failed},
        {"completed", set.completed_followed && set.video == Video::Playing},
        {"error", set.errors_followed},
        {"interrupted", set.interrupted_followed},
        {"subtitle", set.subtitles_followed},
        {"parsed", set.picture && set.parse_followed},
        {"decoded", set.picture && set.decode_followed},
        {"conflict", set.picture && set.conflict_followed},
        {"row", list},
        {"hover", list},
        {"list-key", list},
        {"list-shown", list},
        {"focus", genlist && step.number() < static_cast<int>(rows.size())},
        {"ok", popup && button},
        {"ok-press", popup && button},
        {"popup-timeout", popup && popup_wired},
    };
    const auto found = conditions.find(what);
    return found == conditions.end() || found->second;
}

void Model::apply(const Step &step)
{
    set.begin(step);
    const std::string &what = step.what;
    const int number = step.number();
    if (what == "set") {
        const int value = step.number(1);
        Facts &facts = set.facts;
        const std::map<std::string, bool *> flags = {
            {"window", &facts.window_prepared},      {"rotator", &facts.has_rotator},
            {"disclaimer", &facts.has_disclaimer},   {"backlight", &facts.direct_backlight},
            {"right-to-left", &facts.right_to_left}, {"resources", &facts.has_resources}};
        const auto flag = flags.find(step.text());
        if (flag != flags.end())
            *flag->second = value != 0;
        else if (step.text() == "language")
            facts.language = step.text(1);
        else if (step.text() == "sound")
            set.sound_route = value;
    } else if (what == "content") {
        set.facts.folders[step.text()] = {step.arguments.begin() + 1, step.arguments.end()};
    } else if (what == "no-content") {
        set.facts.folders.erase(step.text());
    } else if (what == "sticks") {
        set.facts.sticks = step.arguments;
    } else if (what == "config" && step.text(1) == "-") {
        set.config.erase(step.text());
    } else if (what == "config") {
        set.config[step.text()] = step.number(1);
    } else if (what == "change") {
        set.config[step.text()] = step.number(1);
        config_changed(step.text());
    } else if (what == "tell") {
        // The store tells the player's own writes too, unless it has stopped to follow the key.
        const std::string key = set.untold.front();
        set.untold.pop_front();
        config_changed(key);
    } else if (what == "create") {
        create();
    } else if (what == "launch") {
        launch(step);
    } else if (what == "terminate") {
        terminate();
    } else if (what == "pause" || what == "power") {
        set.exit();
    } else if (what == "language") {
        change_language();
    } else if (what == "visible" && !started) {
        started = true;
        start_demo();
    } else if (what == "turn") {
        window_turned(number);
    } else if (what == "rotator") {
        rotator_reports(number);
    } else if (what == "press" && number == 1 && !popup && !turning) {
        open_popup();
    } else if (what == "resize" && set.player) {
        set.call("player_resize_video_render_rect", 0, 0, 1920, 1080);
    } else if (what == "key" && set.key_handler) {
        set.post(8, key_type(step.text()));
    } else if (what == "list-key" && key_type(step.text()) == 1) {
        set.post(7, 0);
    } else if (what == "record") {
        dispatch(number, step.number(1));
    } else if (what == "deliver") {
        const auto [id, parameter] = set.queue.front();
        set.queue.pop_front();
        dispatch(id, parameter);
    } else if (what == "prepared") {
        set.preparing = false;
        set.video = Video::Ready;
        video_state = 2;
        set.post(3, 0);
    } else if (what == "completed") {
        set.video = Video::Ready;
        set.post(2, 0);
    } else if (what == "error" && number != -26476496) {
        set.preparation_failed = set.preparing;
        set.post(1, 0);
    } else if (what == "interrupted" && number == 4) {
        set.post(1, 0);
    } else if (what == "parsed") {
        set.post(4, number);
    } else if (what == "decoded") {
        set.post(5, number);
    } else if (what == "conflict" && number == 10) {
        set.exit();
    } else if (what == "row") {
        press_row(number);
    } else if (what == "hover") {
        const bool on_row = number < static_cast<int>(rows.size());
        set.call("elm_object_item_focus_set", Raw{on_row ? "row" : "null"}, true);
        if (on_row)
            focused_row = number;
    } else if (what == "focus") {
        focused_row = number;
    } else if (what == "ok" || what == "popup-timeout" || (what == "ok-press" && number == 1)) {
        close_popup();
    } else if (what == "list-shown") {
        set.call("ecore_idler_add", Raw{"data"});
        ++set.idlers;
    } else if (what == "idle") {
        for (; set.idlers > 0; --set.idlers)
            focus_selected_row();
    } else if (what == "wait") {
        wait(number);
    }
}

void Model::dispatch(int id, int parameter)
{
    switch (id) {
    case 1:
        release_resources();
        quit_with(3);
        break;
    case 2:
        player_completed();
        break;
    case 3:
        player_prepared();
        break;
    case 4:
        if (parameter == 0 && set.picture) {
            set.decode_followed =
                set.call("pictrel_add_event_callback", Raw{"picture"}, 1, Raw{"null"});
            set.call("pictrel_decode", Raw{"picture"}, 0);
        } else if (parameter == 1) {
            set.write(STATUS, 3);
            play_neighbour(+1);
        }
        break;
    case 5:
        photo_decoded(parameter);
        break;
    case 7:
        item_selected();
        break;
    case 8:
        dispatch_key(parameter);
        break;
    case 10:
        window_rotated();
        break;
    default:
        break;
    }
}

void Model::player_completed()
{
    name_paths();
    const auto size = static_cast<unsigned int>(play_list.size());
    if (play_index > 0)
        current = static_cast<unsigned int>(play_index) - 1;
    else if (play_index == 0)
        current = size == 0 ? 0 : (current + 1) % size;
    if (current >= size)
        current = 0;
    if (size != 0)
        play_path += play_list[current].name;
    const std::string subtitle = size != 0 ? play_list[current].subtitle : "";
    subtitle_path = subtitle.empty() ? "" : subtitle_path + subtitle;
    switch_type();
    if (!repeat)
        set.exit();
    // What an empty list plays is left open: nothing.
    else if (size != 0 && playing_type == 1)
        play_photo();
    else if (size != 0)
        play_video();
}

void Model::player_prepared()
{
    if (video_state != 2 || !set.player)
        return;
    set.set_video_rotation(panel == 1 ? 2 : 0);
    if (!set.start()) {
        stop_video();
        quit_with(0);
        return;
    }
    show_disclaimer();
    set.write(FILE_MODE, portrait() ? 2 : 1);
    set.write(STATUS, 1);
}

void Model::photo_decoded(int result)
{
    slide_show = false;
    if (result != 3) {
        set.write(STATUS, 3);
        play_neighbour(+1);
        return;
    }
    set.write(STATUS, 1);
    render_photo();
    if (menu_selection(0) == 0)
        start_slide_show();
}

void Model::item_selected()
{
    if (!genlist || focused_row < 0)
        return;
    const int number = rows[static_cast<size_t>(focused_row)].first;
    if (number != play_index)
        choose(number);
}

void Model::window_rotated()
{
    close_popup();
    items.clear();
    play_list.clear();
    const int result = build_play_list();
    if (result < 0)
        set.exit();
    if (result <= 0)
        return;
    set.write(FILE_MODE, portrait() ? 2 : 1);
    build_items();
    start_demo();
}

void Model::dispatch_key(int type)
{
    const bool photo = photo_is_current();
    const bool video = type_of(current) == 0;
    switch (type) {
    case 0:
        if (close_popup())
            break;
        release_resources();
        quit_with(0);
        break;
    case 1:
        if (close_popup())
            break;
        if (photo)
            stop_slide_show();
        if (!turning)
            open_popup();
        break;
    case 2:
        if (photo) {
            select(0);
            play_index = 0;
            start_slide_show();
        } else if (video) {
            resume();
        }
        break;
    case 3:
        if (photo)
            stop_slide_show();
        else if (video)
            pause();
        break;
    case 4:
        if (!video)
            break;
        stop_video();
        hide_window();
        set.exit();
        break;
    case 5:
        if (video)
            resume_or_pause();
        break;
    case 6:
        if (!set.works("sound_manager_get_speaker_selection"))
            break;
        if (const int target = set.sound_route == 0 ? 8 : 0;
            set.call("sound_manager_set_speaker_selection", target))
            set.sound_route = target;
        break;
    case 7:
    case 8:
        if (folder_contents)
            trick(type == 8 ? 2.0 : -2.0);
        break;
    case 9:
    case 10:
        if (play_list.size() < 2)
            break;
        if (photo)
            stop_slide_show();
        play_neighbour(type == 10 ? +1 : -1);
        break;
    case 12:
        if (!set.has_rotator())
            break;
        toggle_rotation();
        update_rotation_timer();
        break;
    case 13:
        change_rotation();
        break;
    case 14:
    case 15:
        step_timer(type == 14);
        break;
    case 16:
        if (!set.has_rotator())
            break;
        set.write(LANDSCAPE_TIMER, 0);
        set.write(PORTRAIT_TIMER, 0);
        update_rotation_timer();
        announce_timer(2, 0);
        break;
    default:
        break;
    }
}

void Model::step_timer(bool of_portrait)
{
    const char *key = of_portrait ? PORTRAIT_TIMER : LANDSCAPE_TIMER;
    int value = 0;
    if (!set.has_rotator() || !set.read(key, value))
        return;
    value = (value % 10 + 11) % 10;
    set.write(key, value);
    if (portrait() == of_portrait)
        update_rotation_timer();
    announce_timer(of_portrait ? 1 : 0, value);
}

void Model::window_turned(int angle)
{
    const int old = panel;
    panel = angle == 90 ? 1 : angle == 180 ? 2 : angle == 270 ? 3 : 0;
    if (panel != old)
        set.post(10, 0);
}

void Model::rotator_reports(int status)
{
    set.facts.rotator_status = status;
    turning = status == 1 || status == 2;
}

void Model::wait(int milliseconds)
{
    const int64_t end = set.now + milliseconds;
    for (TimerId next = set.next_due(end); next != NONE; next = set.next_due(end)) {
        set.now = set.timers[static_cast<size_t>(next)].due;
        fire(next);
    }
    set.now = end;
}

void Model::fire(TimerId id)
{
    const bool again = alarm(set.timers[static_cast<size_t>(id)].alarm);
    ExpectedSet::Timer &timer = set.timers[static_cast<size_t>(id)];
    if (again)
        timer.due += timer.interval;
    else
        timer.running = false;
}

/** @return whether the timer goes on. */
bool Model::alarm(Alarm what)
{
    switch (what) {
    case Alarm::SlideShow:
        play_neighbour(+1);
        slide_show_timer = NONE;
        return false;
    case Alarm::PhotoEnd:
        if (auto_rotation)
            return false; // and the field keeps what it had
        play_neighbour(+1);
        photo_end_timer = NONE;
        return false;
    case Alarm::PopupGone:
        delete_popup();
        return false;
    case Alarm::Disclaimer:
        set.call("evas_object_hide", Raw{disclaimer_image ? "imagebox" : "null"});
        set.call("evas_object_hide", Raw{disclaimer_root ? "layout" : "null"});
        disclaimer_visible = false;
        set.delete_timer(disclaimer_timer);
        return false;
    case Alarm::TimedRotation:
        change_rotation();
        return true;
    case Alarm::RotationDelay:
        if (turning)
            return true;
        set.call("VirtualKey_Send_KeyCode", 569, 2);
        close_popup();
        delay_timer = NONE;
        return false;
    }
    return false;
}

} // namespace model
