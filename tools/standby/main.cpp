// ostrel-demo-standby: the standby card in a window of its own, for a kiosk to have beneath the
// player. It says what the configuration keys tell, for as long as nothing covers it, and neither
// takes keys nor shows a pointer.

#include <array>
#include <cstdio>
#include <memory>
#include <string_view>
#include <vector>

#include <Ecore_Input.h>
#include <Elementary.h>

#include "config_store.h"
#include "panel/panel_model.h"
#include "panel/rotation_state.h"
#include "player_rules/config_keys.h"
#include "player_rules/launch_rules.h"
#include "service_manager/service_manager.h"
#include "settings/settings.h"
#include "standby_card/standby_card.h"
#include "system_facts/message_catalogue.h"
#include "window/tv_window.h"

using namespace platform;

namespace {

enum ExitStatus { DONE = 0, COULD_NOT_RUN = 1, BAD_COMMAND_LINE = 2 };

constexpr char NAME[] = "ostrel-demo-standby";
constexpr char USAGE[] = "Usage: ostrel-demo-standby\n"
                         "Shows the standby card, full screen, until it is ended by a signal.\n";

/** Those that what is said depends on. */
constexpr std::array MESSAGE_KEYS = {DEMO_MODE_KEY, PLAYBACK_STATUS_KEY};

int read_key(const char *key, int otherwise)
{
    int value = otherwise;
    vconf_get_int(key, &value);
    return value;
}

StandbyMessage message_of_keys()
{
    StandbyMessage message;
    const int status = read_key(PLAYBACK_STATUS_KEY, 0);
    if (read_key(DEMO_MODE_KEY, 0) == DEMO_SWITCHED_OFF) {
        message.kind = StandbyMessage::Kind::SwitchedOff;
    } else if (status == NOTHING_TO_PLAY) {
        message.kind = StandbyMessage::Kind::NoContent;
        message.folder = BUILT_IN_FOLDER;
        message.folder.pop_back(); // its slash
    } else if (status == PLAYBACK_FAILED) {
        message.kind = StandbyMessage::Kind::BeginsAgain;
    }
    return message;
}

int stored_angle()
{
    return angle_of_rotation_state(
        read_key(ROTATION_STATE_KEY, Settings::get().first_rotation_state));
}

void follow_panel(keynode_t *, void *)
{
    PanelModel::get().follow(stored_angle());
}

class Standby {
  public:
    ~Standby();

    /** @return false when there is no compositor, with the reason in the log */
    bool start();

    int exit_status() const { return exit_status_; }

  private:
    static void say_what_the_keys_tell(keynode_t *, void *standby);
    void ignore_input();
    void fit();
    void end(int status);

    std::unique_ptr<TvWindow> window_;
    Evas_Object *content_ = nullptr; ///< of the window
    std::unique_ptr<StandbyCard> card_;
    std::vector<EventHandlerPtr> input_;
    TimerPtr alive_timer_;
    int exit_status_ = DONE;
};

// The main loop turns on while the toolkit is shut down.
Standby::~Standby()
{
    for (const char *key : MESSAGE_KEYS)
        vconf_ignore_key_changed(key, say_what_the_keys_tell);
    vconf_ignore_key_changed(ROTATION_STATE_KEY, follow_panel);
}

void Standby::say_what_the_keys_tell(keynode_t *, void *standby)
{
    static_cast<Standby *>(standby)->card_->say(message_of_keys());
}

bool Standby::start()
{
    PanelModel::get().set_first_angle(stored_angle());
    TvWindow::Listener listener;
    listener.closed = [this] { end(DONE); };
    listener.compositor_gone = [this] { end(COULD_NOT_RUN); };
    ignore_input(); // before the window looks at it
    window_ = TvWindow::create(NAME, std::move(listener));
    if (!window_)
        return false;
    content_ = window_->take();
    card_ = std::make_unique<StandbyCard>(evas_object_evas_get(content_));
    card_->say(message_of_keys());
    evas_object_event_callback_add(
        content_, EVAS_CALLBACK_RESIZE,
        [](void *data, Evas *, Evas_Object *, void *) { static_cast<Standby *>(data)->fit(); },
        this);
    fit();
    for (const char *key : MESSAGE_KEYS)
        vconf_notify_key_changed(key, say_what_the_keys_tell, this);
    vconf_notify_key_changed(ROTATION_STATE_KEY, follow_panel, nullptr);
    // A program that is started next is mapped above this one.
    evas_object_smart_callback_add(
        content_, "visibility,changed",
        [](void *data, Evas_Object *, void *) {
            static_cast<Standby *>(data)->window_->sync();
            ServiceManager::get().tell_ready();
        },
        this);
    evas_object_show(content_);
    window_->reveal();
    alive_timer_ = ServiceManager::get().watch_main_loop();
    return true;
}

/** The window gives the keyboard's focus to whatever it has, and shows a pointer that moves. */
void Standby::ignore_input()
{
    for (const int type : {ECORE_EVENT_KEY_DOWN, ECORE_EVENT_KEY_UP, ECORE_EVENT_MOUSE_MOVE,
                           ECORE_EVENT_MOUSE_BUTTON_DOWN, ECORE_EVENT_MOUSE_BUTTON_UP})
        input_.emplace_back(ecore_event_handler_prepend(
            type, [](void *, int, void *) -> Eina_Bool { return ECORE_CALLBACK_DONE; }, nullptr));
}

void Standby::fit()
{
    Size size;
    evas_object_geometry_get(content_, nullptr, nullptr, &size.width, &size.height);
    card_->resize(size);
}

void Standby::end(int status)
{
    exit_status_ = status;
    elm_exit();
}

int run()
{
    Standby standby;
    if (!standby.start())
        return COULD_NOT_RUN;
    elm_run();
    return standby.exit_status();
}

} // namespace

int main(int argc, char **argv)
{
    if (argc > 1) {
        const bool asked = argc == 2 && std::string_view(argv[1]) == "--help";
        std::fputs(USAGE, asked ? stdout : stderr);
        return asked ? DONE : BAD_COMMAND_LINE;
    }
    ServiceManager::get(); // before the toolkit tells it that all is ready
    prepare_toolkit();
    elm_init(0, nullptr);
    bind_message_catalogue();
    const int status = run();
    elm_shutdown();
    return status;
}
