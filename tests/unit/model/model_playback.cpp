// What is played, and how.

#include "model.h"

namespace model {

using fake::Raw;

int Model::type_of(unsigned int index) const
{
    return index < play_list.size() ? play_list[index].type : -1;
}

void Model::name_paths()
{
    play_path = content_folder();
    subtitle_path = content_folder();
}

bool Model::play_selection()
{
    name_paths();
    current = 0;
    if (play_index == -1) {
        set.exit();
        return false;
    }
    // What an empty list does is left open; here nothing is played.
    if (play_list.empty())
        return false;
    if (play_index > 0) {
        current = static_cast<unsigned int>(play_index) - 1;
        if (current >= play_list.size()) {
            current = 0;
            select(0);
        }
    }
    play_current();
    return true;
}

void Model::play_neighbour(int direction)
{
    if (play_list.empty())
        return;
    const auto size = static_cast<unsigned int>(play_list.size());
    current = (direction > 0 ? current + 1 : current - 1 + size) % size;
    name_paths();
    play_current();
}

void Model::play_current()
{
    play_path += play_list[current].name;
    subtitle_path =
        play_list[current].subtitle.empty() ? "" : subtitle_path + play_list[current].subtitle;
    switch_type();
    if (playing_type == 1)
        play_photo();
    else
        play_video();
}

void Model::switch_type()
{
    if (type_of(current) == playing_type)
        return;
    if (playing_type == 0)
        stop_video();
    else
        destroy_photo();
    playing_type = 1 - playing_type;
}

void Model::play_video()
{
    stop_video();
    if (!subtitle_path.empty())
        set.set_subtitle(subtitle_path);
    if (!set.set_uri(play_path))
        return;
    set.player_line("player_set_display", 0, Raw{window ? "window" : "null"});
    if (!set.prepare())
        return;
    set.set_looping(play_list.size() == 1);
    video_state = 1;
}

void Model::stop_video()
{
    video_state = 0;
    if (!set.player)
        return;
    if (set.player_result("player_get_state") && set.video != Video::Idle)
        set.stop();
    set.unprepare();
}

void Model::play_photo()
{
    if (!display) {
        display = true;
        if (!set.call("pictrel_init_display", Raw{window ? "window" : "null"}))
            return;
        set.display_ready = true;
    }
    if (set.picture) {
        set.call("pictrel_destroy", Raw{"picture"});
        set.picture = false;
    }
    if (!set.call("pictrel_create_from_url", play_path))
        return;
    set.picture = true;
    set.picture_mark = -1;
    set.parse_followed = set.decode_followed = set.conflict_followed = false;
    if (!set.call("pictrel_set_window", Raw{"picture"}, 1) ||
        !set.call("pictrel_set_geometry_size", Raw{"picture"}, 4))
        return;
    set.picture_mark = 0;
    set.conflict_followed =
        set.call("pictrel_add_event_callback", Raw{"picture"}, 4, Raw{"picture"});
    set.parse_followed = set.call("pictrel_add_event_callback", Raw{"picture"}, 0, Raw{"null"});
    set.call("pictrel_parse", Raw{"picture"});
}

void Model::render_photo()
{
    if (!set.picture)
        return;
    set.picture_mark = 1;
    if (panel == 0) {
        set.call("pictrel_render", Raw{"picture"});
        return;
    }
    set.call("pictrel_set_mixer_render", Raw{"picture"}, 1);
    set.call("pictrel_render", Raw{"picture"});
    set.call("pictrel_set_mixer_render", Raw{"picture"}, 0);
    set.call("pictrel_rotate", Raw{"picture"}, panel == 1 ? 270 : panel == 2 ? 180 : 90);
}

void Model::destroy_photo()
{
    set.delete_timer(slide_show_timer);
    if (set.picture)
        set.call("pictrel_destroy", Raw{"picture"});
    set.picture = false;
    if (display && set.call("pictrel_destroy_display", 1))
        set.display_ready = false;
    display = false;
}

void Model::start_slide_show()
{
    if (slide_show)
        return;
    slide_show = true;
    if (!set.has_rotator())
        slide_show_timer = set.start_timer(5000, Alarm::SlideShow);
    else if (current + 1 != play_list.size())
        slide_show_timer = set.start_timer(180000, Alarm::SlideShow);
    else
        photo_end_timer = set.start_timer(180000, Alarm::PhotoEnd);
}

void Model::stop_slide_show()
{
    if (!slide_show)
        return;
    slide_show = false;
    set.delete_timer(slide_show_timer);
}

int Model::player_state() const
{
    return set.player && set.works("player_get_state") ? static_cast<int>(set.video) : 0;
}

bool Model::start_at_normal_speed()
{
    set.set_rate(1.0);
    return set.start();
}

void Model::pause()
{
    if (player_state() != 3)
        return;
    set.set_rate(1.0);
    set.pause();
}

void Model::resume()
{
    const int state = player_state();
    if (state == 4) {
        start_at_normal_speed();
        return;
    }
    if (!set.player_result("player_get_playback_rate"))
        return;
    if (state == 3 && set.rate != 1.0)
        start_at_normal_speed();
}

void Model::resume_or_pause()
{
    if (player_state() == 4)
        start_at_normal_speed();
    else if (player_state() == 3)
        pause();
}

void Model::trick(double speed)
{
    if (player_state() == 4)
        resume();
    set.set_rate(speed);
}

void Model::release_resources()
{
    close_popup();
    stop_video();
    destroy_photo();
}

void Model::hide_window()
{
    if (!window)
        return;
    set.call("evas_object_hide", Raw{"window"});
    window_visible = false;
    set.call("ecore_wl2_sync");
}

void Model::quit_with(int status)
{
    hide_window();
    set.write(STATUS, status);
    set.exit();
}

} // namespace model
