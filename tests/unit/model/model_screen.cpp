// Popup, toast, disclaimer, timed rotation.

#include "model.h"

namespace model {

using fake::Raw;

namespace {

// Seconds between two turns, by the number that staff step through.
constexpr int INTERVALS[] = {300, 330, 360, 390, 420, 450, 480, 540, 600, 900};

// Writers keep to 0..9, so what another number means is left open: here the first interval.
int interval(int index)
{
    return index >= 0 && index <= 9 ? INTERVALS[index] : INTERVALS[0];
}

// The catalogue of these tests: each template is its id with both slots behind it.
std::string filled(const std::string &id, int minutes, const std::string &seconds)
{
    return id + " " + std::to_string(minutes) + ":" + seconds;
}

} // namespace

void Model::delete_widget(bool &widget, const char *kind)
{
    if (widget)
        set.call("evas_object_del", Raw{kind});
    widget = false;
}

void Model::open_popup()
{
    popup = set.call("elm_velt_popup_add", Raw{window ? "window" : "null"});
    popup_layout = set.call("elm_velt_layout_add", Raw{popup ? "popup" : "null"});
    genlist = set.call("elm_velt_genlist_add", Raw{popup_layout ? "layout" : "null"});
    popup_wired = popup_visible = button = false;
    rows.clear();
    focused_row = -1;
    if (!set.works("elm_genlist_item_class_new"))
        return;
    if (genlist)
        rows = items;
    button = set.works("elm_velt_button_add");
    buttons_made += button ? 1 : 0;
    popup_wired = true;
    set.call("elm_popup_timeout_set", Raw{popup ? "popup" : "null"}, 30.0);
    if (set.call("app_context_manager_set_epop_block"))
        set.epop_blocked = true;
    set.call("evas_object_show", Raw{popup ? "popup" : "null"});
    popup_visible = popup;
}

bool Model::close_popup()
{
    if (!popup)
        return false;
    set.call("evas_object_hide", Raw{"popup"});
    popup_visible = false;
    if (set.call("app_context_manager_unset_epop_block"))
        set.epop_blocked = false;
    set.delete_timer(popup_timer);
    popup_timer = set.start_timer(500, Alarm::PopupGone);
    return true;
}

void Model::delete_popup()
{
    delete_widget(genlist, "genlist");
    delete_widget(popup_layout, "layout");
    delete_widget(popup, "popup");
    button = popup_wired = false;
    rows.clear();
    focused_row = -1;
    popup_timer = NONE;
}

void Model::focus_selected_row()
{
    if (!genlist)
        return;
    const int selection = menu_selection(0);
    for (size_t i = 0; i < rows.size(); ++i) {
        if (rows[i].first != selection)
            continue;
        set.call("elm_object_focus_set", Raw{"genlist"}, true);
        set.call("elm_genlist_item_show", Raw{"row"}, Raw{"IN"});
        set.call("elm_object_item_focus_set", Raw{"row"}, true);
        focused_row = static_cast<int>(i);
        return;
    }
}

void Model::choose(int number)
{
    hide_disclaimer();
    play_index = number;
    select(number);
    if (number != 0)
        play_selection();
    else if (photo_is_current())
        start_slide_show();
}

void Model::press_row(int index)
{
    if (index >= static_cast<int>(rows.size()))
        return;
    const int number = rows[static_cast<size_t>(index)].first;
    if (number != play_index)
        choose(number);
    close_popup();
}

void Model::show_toast(const std::string &text)
{
    close_popup();
    delete_widget(toast, "popup");
    toast = set.call("elm_velt_popup_add", Raw{window ? "window" : "null"});
    toast_text = toast ? text : "";
    if (!toast)
        return;
    set.call("elm_velt_popup_toast_text_set", Raw{"popup"}, text);
    set.call("elm_popup_timeout_set", Raw{"popup"}, 3.0);
    set.call("evas_object_show", Raw{"popup"});
}

void Model::announce_timer(int status, int index)
{
    const std::string id = std::string("TV_SID_ZAVO_MIX_CAAUG_") +
                           (status == 0   ? "LANDSCAPE"
                            : status == 1 ? "PORTRAIT"
                                          : "RESET_P_L") +
                           "_TIMER_A_MINS";
    const int minutes = interval(index) / 60;
    const int seconds = interval(index) % 60;
    if (seconds == 0 || status == 2)
        show_toast(filled(id, minutes, ""));
    else
        show_toast(filled(id + "_B_SEC", minutes, std::to_string(seconds)));
}

void Model::toggle_rotation()
{
    auto_rotation = !auto_rotation;
    set.write(AUTO_MODE, auto_rotation ? 1 : 0);
    show_toast(std::string("tr(COM_ID_QUENDIRA_ROTATION) tr(") +
               (auto_rotation ? "SID_ON" : "SID_OFF") + ")");
}

void Model::update_rotation_timer()
{
    set.delete_timer(rotation_timer);
    if (!set.has_rotator() || !auto_rotation)
        return;
    int index = 0;
    set.read(portrait() ? PORTRAIT_TIMER : LANDSCAPE_TIMER, index);
    rotation_timer = set.start_timer(interval(index) * 1000, Alarm::TimedRotation);
}

void Model::change_rotation()
{
    if (!set.has_rotator())
        return;
    // The timer goes even when the turn is refused.
    set.delete_timer(rotation_timer);
    const auto &videos = portrait() ? landscape_videos : portrait_videos;
    const auto &photos = portrait() ? landscape_photos : portrait_photos;
    if (videos.empty() && photos.empty())
        return;
    set.write(FILE_MODE, portrait() ? 1 : 2);
    set.call("VirtualKey_Send_KeyCode", 569, 2);
}

void Model::build_disclaimer()
{
    if (!set.shows_disclaimer())
        return;
    remove_disclaimer();
    disclaimer_root = set.call("elm_velt_layout_add", Raw{window ? "window" : "null"});
    if (!disclaimer_root)
        return;
    disclaimer_image = set.call("elm_velt_imagebox_add", Raw{"layout"});
    if (!disclaimer_image)
        return;
    disclaimer_file =
        set.facts.has_resources ? portrait() ? "/res/portrait.png" : "/res/wide.png" : "";
    set.call("elm_velt_imagebox_file_set", Raw{"imagebox"}, disclaimer_file);
    set.call("evas_object_hide", Raw{"layout"});
    set.call("evas_object_hide", Raw{"imagebox"});
}

void Model::show_disclaimer()
{
    if (!set.shows_disclaimer() || !disclaimer_root || !disclaimer_image)
        return;
    disclaimer_file =
        set.facts.has_resources ? portrait() ? "/res/portrait.png" : "/res/wide.png" : "";
    set.call("elm_velt_imagebox_file_set", Raw{"imagebox"}, disclaimer_file);
    if (portrait())
        set.call("evas_object_resize", Raw{"imagebox"}, 135, 240);
    else
        set.call("evas_object_resize", Raw{"imagebox"}, 240, 135);
    set.call("evas_object_show", Raw{"layout"});
    set.call("evas_object_show", Raw{"imagebox"});
    disclaimer_visible = true;
    // One that still runs is forgotten, not deleted.
    disclaimer_timer = set.start_timer(5000, Alarm::Disclaimer);
}

void Model::hide_disclaimer()
{
    if (!set.shows_disclaimer())
        return;
    set.call("evas_object_hide", Raw{disclaimer_root ? "layout" : "null"});
    set.call("evas_object_hide", Raw{disclaimer_image ? "imagebox" : "null"});
    disclaimer_visible = false;
    set.delete_timer(disclaimer_timer);
}

void Model::remove_disclaimer()
{
    delete_widget(disclaimer_root, "layout");
    delete_widget(disclaimer_image, "imagebox");
    disclaimer_visible = false;
    disclaimer_file.clear();
}

} // namespace model
