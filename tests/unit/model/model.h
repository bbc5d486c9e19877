/**
 * What the player should do, step by step: a second, much smaller player, written from the tables
 * that say what each event, key, timer and launch request does, and not from src/. It has the
 * state that matters and one short function for each row; how things look on the screen is left
 * to the tests of the single files.
 *
 * The model never looks at the player. The driver gives both the same steps and compares.
 */
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "expected_set.h"
#include "steps.h"

namespace model {

struct Entry {
    int type; /**< 0 video, 1 photo */
    std::string name;
    std::string subtitle;
};

/** A row of the options popup: its number and its text. */
using Row = std::pair<int, std::string>;

class Model {
  public:
    /** Whether a step can happen at all: no key without a program, no end without a video. */
    bool possible(const Step &step) const;

    /** Does it. What the player is expected to have called is in set.calls then. */
    void apply(const Step &step);

    /** The program has been created, and not been terminated. */
    bool running() const { return created && !terminated; }

    ExpectedSet set;

    // The program.
    bool created = false;
    bool terminated = false;
    bool launched = false; /**< there is a controller */
    bool started = false;  /**< the first visibility has come */
    int panel = 0;         /**< how the window stands: 0..3, 1 and 3 are portrait */

    // The controller's fields.
    bool repeat = true;
    bool folder_contents = false;
    bool slide_show = false;
    bool usb = false;
    bool auto_rotation = false;
    bool turning = false;
    bool display = false;
    int play_index = -1;
    unsigned int current = 0;
    int playing_type = 0;
    int video_state = 0;
    std::string folder;
    std::string play_path;
    std::string subtitle_path;
    std::vector<Entry> play_list, landscape_videos, portrait_videos, landscape_photos,
        portrait_photos;
    std::vector<Row> items;

    // Windows and widgets: whether they are there, and what they show.
    bool window = false, window_visible = false, window_active = false;
    bool popup = false, popup_layout = false, genlist = false, popup_wired = false,
         popup_visible = false, button = false;
    int buttons_made = 0;
    std::vector<Row> rows;
    int focused_row = -1;
    bool toast = false;
    std::string toast_text;
    bool disclaimer_root = false, disclaimer_image = false, disclaimer_visible = false;
    std::string disclaimer_file;

    TimerId slide_show_timer = NONE, photo_end_timer = NONE, popup_timer = NONE,
            disclaimer_timer = NONE, rotation_timer = NONE, delay_timer = NONE;

  private:
    // model_life.cpp: the program from its start to its end, and where the content is
    void create();
    void launch(const Step &step);
    bool create_controller();
    bool create_video_player();
    void start_demo();
    void terminate();
    void change_language();
    void config_changed(const std::string &key);
    int menu_selection(int half) const;
    void select(int number);
    std::string content_folder() const;
    std::string usb_folder() const;
    void scan_folder();
    int build_play_list();
    void build_items();
    bool portrait() const { return panel == 1 || panel == 3; }

    // model_events.cpp: the table of events, the table of keys, and who posts them
    void dispatch(int id, int parameter);
    void dispatch_key(int type);
    void player_completed();
    void player_prepared();
    void photo_decoded(int result);
    void item_selected();
    void window_rotated();
    void step_timer(bool of_portrait);
    void window_turned(int angle);
    void rotator_reports(int status);
    void fire(TimerId timer);
    bool alarm(Alarm what);
    void wait(int milliseconds);

    // model_playback.cpp: what is played, and how
    int type_of(unsigned int index) const;
    bool photo_is_current() const { return type_of(current) == 1; }
    void name_paths();
    bool play_selection();
    void play_neighbour(int direction);
    void play_current();
    void switch_type();
    void play_video();
    void stop_video();
    void play_photo();
    void render_photo();
    void destroy_photo();
    void start_slide_show();
    void stop_slide_show();
    void resume();
    void pause();
    void resume_or_pause();
    void trick(double speed);
    int player_state() const;
    bool start_at_normal_speed();
    void release_resources();
    void hide_window();
    void quit_with(int status);

    // model_screen.cpp: popup, toast, disclaimer, timed rotation
    void open_popup();
    bool close_popup();
    void delete_popup();
    void focus_selected_row();
    void choose(int number);
    void press_row(int index);
    void show_toast(const std::string &text);
    void announce_timer(int status, int index);
    void toggle_rotation();
    void update_rotation_timer();
    void change_rotation();
    void build_disclaimer();
    void show_disclaimer();
    void hide_disclaimer();
    void remove_disclaimer();
    void delete_widget(bool &widget, const char *kind);
};

} // namespace model
