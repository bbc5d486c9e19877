// A small application on the framework. It writes what happens to it to its standard output, one
// line each, and does what lines on its standard input say:
//   quit (leaves a timer and an idler behind) | quit-from-a-thread | hide | delete | close | sync
//   | turn DEGREES | press KEY | panel-key | language
//   | keyboard (answered as soon as the window has it)
//   | only X Y WIDTH HEIGHT (leaves nothing but the square, there)
//   | redraw (a corner of the real window, nothing of its content; answered with "redrawn")
//   | reveal-resized (the real window, as when a picture comes right after a change of its size)
// Environment: TEST_NOTHING_SEEN leaves square and button out of the window; TEST_CREATE_FAILS,
// TEST_QUIT_IN_CREATE, TEST_QUIT_IN_CONTROL; TEST_POWER_OFF_ONLY subscribes to no other power
// event; TEST_SLOW_CREATE and TEST_SLOW_TERMINATE wait for a line on the standard input.

#include <cstdio>
#include <cstdlib>
#include <future>
#include <string>
#include <thread>
#include <unistd.h>
#include <utility>

#include <Ecore.h>
#include <Ecore_Input.h>
#include <Elementary.h>

#include "app_framework.h"
#include "app_framework/application.h"
#include "device_power.h"
#include "display_rotator.h"
#include "efl_on_tv.h"
#include "key_router.h"
#include "key_router/key_translator.h"
#include "panel/panel_model.h"
#include "window/tv_window.h"

namespace {

Evas_Object *window = nullptr;
Evas_Object *mark = nullptr;
Evas_Object *button = nullptr;
bool has_ended = false;
bool has_keyboard = false;
bool keyboard_asked_for = false;

template <typename... Arguments> void say(const char *format, Arguments... arguments)
{
    std::printf((std::string(format) + "\n").c_str(), arguments...);
    std::fflush(stdout);
}

void say_extra(app_control_h control, const char *key)
{
    char *value = nullptr;
    if (app_control_get_extra_data(control, key, &value) != 0) {
        say("extra %s missing", key);
        return;
    }
    std::string hex;
    for (const char *byte = value; *byte; ++byte) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02x", static_cast<unsigned char>(*byte));
        hex += digits;
    }
    say("extra %s=%s", key, hex.c_str());
    free(value);
}

void say_screen(const char *what)
{
    int x = -1, y = -1, width = 0, height = 0;
    elm_win_screen_size_get(window, &x, &y, &width, &height);
    say("%s angle %d screen %d,%d %dx%d", what, elm_win_rotation_get(window), x, y, width, height);
}

wl_surface *surface()
{
    Ecore_Evas *canvas = ecore_evas_ecore_evas_get(evas_object_evas_get(window));
    Ecore_Wl2_Window *wl_window = ecore_evas_wayland2_window_get(canvas);
    return wl_window ? ecore_wl2_window_surface_get(wl_window) : nullptr;
}

void on_resize(void *, Evas *, Evas_Object *object, void *)
{
    int width = 0, height = 0;
    evas_object_geometry_get(object, nullptr, nullptr, &width, &height);
    say("resize %dx%d", width, height);
    say_screen("resized");
}

void on_mouse_down(void *, Evas *, Evas_Object *object, void *info)
{
    const auto *event = static_cast<const Evas_Event_Mouse_Down *>(info);
    say("down %d at %d,%d%s", event->button, event->canvas.x, event->canvas.y,
        object == window ? "" : " of a stranger");
}

void on_mouse_move(void *, Evas *, Evas_Object *, void *info)
{
    const auto *event = static_cast<const Evas_Event_Mouse_Move *>(info);
    say("pointer at %d,%d", event->cur.canvas.x, event->cur.canvas.y);
}

void on_inner_key(void *, Evas *, Evas_Object *, void *info)
{
    say("widget key %s", static_cast<const Evas_Event_Key_Down *>(info)->key);
}

Eina_Bool on_key(void *, int, void *event)
{
    const auto *key = static_cast<const Ecore_Event_Key *>(event);
    say("key %s %s", key->keyname, key->key);
    return ECORE_CALLBACK_PASS_ON;
}

void report_keyboard()
{
    if (has_keyboard && std::exchange(keyboard_asked_for, false))
        say("keyboard");
}

Eina_Bool on_keyboard(void *, int, void *)
{
    has_keyboard = true;
    report_keyboard();
    return ECORE_CALLBACK_PASS_ON;
}

Eina_Bool on_device(void *, int, void *)
{
    say("device added");
    return ECORE_CALLBACK_PASS_ON;
}

int on_rotator(display_rotator_status_t *status, void *)
{
    say("rotator %d at %d", status->status, status->angle);
    return 1;
}

/** A window like the player's: a hole over all of it, and a coloured square at its top left. */
void make_window()
{
    window = app_get_preinitialized_window("test");
    say("window %s, again %s", window ? "yes" : "no",
        app_get_preinitialized_window("test") ? "yes" : "no");
    Evas_Object *hole = evas_object_rectangle_add(evas_object_evas_get(window));
    evas_object_size_hint_weight_set(hole, EVAS_HINT_EXPAND, EVAS_HINT_EXPAND);
    evas_object_color_set(hole, 0, 0, 0, 0);
    evas_object_render_op_set(hole, EVAS_RENDER_COPY);
    evas_object_show(hole);
    elm_win_resize_object_add(window, hole);
    elm_win_autodel_set(window, EINA_TRUE);
    elm_policy_set(ELM_POLICY_QUIT, ELM_POLICY_QUIT_LAST_WINDOW_CLOSED);

    mark = evas_object_rectangle_add(evas_object_evas_get(window));
    evas_object_color_set(mark, 255, 0, 0, 255);
    evas_object_geometry_set(mark, 20, 10, 100, 60);
    const bool seen = !getenv("TEST_NOTHING_SEEN");
    if (seen)
        evas_object_show(mark);
    button = elm_button_add(window);
    evas_object_geometry_set(button, 200, 100, 80, 40);
    evas_object_event_callback_add(button, EVAS_CALLBACK_KEY_DOWN, on_inner_key, nullptr);
    evas_object_smart_callback_add(
        button, "clicked", [](void *, Evas_Object *, void *) { say("clicked"); }, nullptr);
    if (seen)
        evas_object_show(button);
    elm_object_focus_set(button, EINA_TRUE);

    say("hint %d", elm_win_aux_hint_add(window, "wm.screencontroller.exception", "3"));
    say("surface %s", surface() ? "yes" : "no");
    evas_object_event_callback_add(window, EVAS_CALLBACK_RESIZE, on_resize, nullptr);
    evas_object_event_callback_add(window, EVAS_CALLBACK_MOUSE_DOWN, on_mouse_down, nullptr);
    evas_object_event_callback_add(window, EVAS_CALLBACK_MOUSE_MOVE, on_mouse_move, nullptr);
    evas_object_event_callback_add(
        window, EVAS_CALLBACK_MOUSE_OUT,
        [](void *, Evas *, Evas_Object *, void *) { say("pointer gone"); }, nullptr);
    evas_object_smart_callback_add(
        window, "wm,rotation,changed",
        [](void *, Evas_Object *, void *) { say_screen("rotation"); }, nullptr);
    evas_object_smart_callback_add(
        window, "visibility,changed",
        [](void *, Evas_Object *, void *info) {
            say("visibility %ld", static_cast<long>(reinterpret_cast<intptr_t>(info)));
        },
        nullptr);
    ecore_event_handler_add(ECORE_EVENT_KEY_DOWN, on_key, nullptr);
    // Elementary's "focused" is no help: it comes when the window is shown, before the keyboard.
    ecore_event_handler_add(ECORE_WL2_EVENT_FOCUS_IN, on_keyboard, nullptr);
    display_rotator_add_cb(on_rotator, nullptr);
    say_screen("made");
    evas_object_show(window);
    ecore_wl2_sync();
    say("shown");

    KeyRouter_Initialize(ecore_wl2_display_get(ecore_wl2_connected_display_get(nullptr)),
                         ecore_wl2_display_registry_get(ecore_wl2_connected_display_get(nullptr)),
                         ecore_wl2_input_seat_get(ecore_wl2_input_default_input_get(
                             ecore_wl2_connected_display_get(nullptr))),
                         0);
    KeyRouter_KeyList list;
    KeyRouter_Reset_KeyList(&list);
    KeyRouter_Add_All_Key(KEY_ROUTER_MODE_EXCLUSIVE, &list);
    say("grab %d", KeyRouter_Set_KeyList(surface(), &list));
}

void delete_window()
{
    if (window)
        evas_object_del(window);
    window = nullptr;
}

void leave_only(const char *place)
{
    int x = 0, y = 0, width = 0, height = 0;
    std::sscanf(place, "%d %d %d %d", &x, &y, &width, &height);
    evas_object_hide(button);
    evas_object_geometry_set(mark, x, y, width, height);
    evas_object_show(mark);
}

void on_redrawn(void *, Evas *canvas, void *)
{
    evas_event_callback_del(canvas, EVAS_CALLBACK_RENDER_FLUSH_POST, on_redrawn);
    say("redrawn");
}

void redraw()
{
    Evas *canvas = evas_object_evas_get(platform::TvWindow::current()->outer());
    evas_event_callback_add(canvas, EVAS_CALLBACK_RENDER_FLUSH_POST, on_redrawn, nullptr);
    evas_damage_rectangle_add(canvas, 0, 0, 1, 1);
}

std::promise<void> about_to_sleep;
std::thread ending_thread;

/** Ends from a thread of its own, as a library's callback does, while the main loop sleeps. */
void quit_from_a_thread()
{
    ending_thread = std::thread([asleep = about_to_sleep.get_future()] {
        asleep.wait();
        ui_app_exit();
        ui_app_exit();
    });
    ecore_idle_enterer_add(
        [](void *) -> Eina_Bool {
            about_to_sleep.set_value();
            return ECORE_CALLBACK_CANCEL;
        },
        nullptr);
}

/** What an application need not let go of, because it goes with the main loop. */
void leave_behind()
{
    const auto tell_when_late = [](void *what) -> Eina_Bool {
        if (has_ended)
            say("%s after the end", static_cast<const char *>(what));
        return ECORE_CALLBACK_RENEW;
    };
    ecore_timer_add(0.0, tell_when_late, "timer");
    ecore_idler_add(tell_when_late, "idler");
}

void obey(const std::string &command)
{
    if (command == "quit") {
        leave_behind();
        ui_app_exit();
        ui_app_exit();
    } else if (command == "quit-from-a-thread") {
        quit_from_a_thread();
    } else if (command == "hide") {
        evas_object_hide(window);
    } else if (command == "delete") {
        delete_window();
    } else if (command == "close") {
        evas_object_smart_callback_call(platform::TvWindow::current()->outer(), "delete,request",
                                        nullptr);
    } else if (command == "sync") {
        ecore_wl2_sync();
    } else if (command == "panel-key") {
        say("sent %d",
            VirtualKey_Send_KeyCode(VIRTUAL_KEY_CODE_ROTATE_PANEL, VIRTUAL_KEY_ACTION_CLICK));
    } else if (command == "keyboard") {
        keyboard_asked_for = true;
        report_keyboard();
    } else if (command == "language") {
        platform::Application::get().announce_language_change();
    } else if (command.compare(0, 5, "turn ") == 0) {
        platform::PanelModel::get().turn_to(std::atoi(command.c_str() + 5));
    } else if (command.compare(0, 5, "only ") == 0) {
        leave_only(command.c_str() + 5);
    } else if (command == "redraw") {
        redraw();
    } else if (command == "reveal-resized") {
        evas_object_resize(platform::TvWindow::current()->outer(), 600, 360);
        platform::TvWindow::current()->reveal();
    } else if (command.compare(0, 6, "press ") == 0) {
        platform::inject_key(command.substr(6));
    }
    say("done %s", command.c_str());
}

Eina_Bool on_input(void *, Ecore_Fd_Handler *)
{
    static std::string pending;
    char buffer[512];
    const ssize_t size = read(STDIN_FILENO, buffer, sizeof buffer);
    if (size <= 0)
        return ECORE_CALLBACK_CANCEL;
    pending.append(buffer, static_cast<size_t>(size));
    for (size_t end = pending.find('\n'); end != std::string::npos; end = pending.find('\n')) {
        const std::string command = pending.substr(0, end);
        pending.erase(0, end + 1);
        obey(command);
    }
    return ECORE_CALLBACK_RENEW;
}

void wait_for_a_line()
{
    char byte = 0;
    while (byte != '\n' && read(STDIN_FILENO, &byte, 1) == 1) {
    }
}

void follow_power()
{
    device_power_subscribe_poweroff([](void *) { say("power off"); }, nullptr);
    if (getenv("TEST_POWER_OFF_ONLY"))
        return;
    device_power_subscribe_standby([](void *) { say("power standby"); }, nullptr);
    device_power_subscribe_wakeup([](void *) { say("power wakeup"); }, nullptr);
    device_power_subscribe_state_changed_event(
        [](device_power_state_e state, void *) { say("power state %d", state); }, nullptr);
}

bool on_create(void *)
{
    say("create");
    if (getenv("TEST_SLOW_CREATE"))
        wait_for_a_line();
    if (getenv("TEST_CREATE_FAILS"))
        return false;
    if (getenv("TEST_QUIT_IN_CREATE"))
        ui_app_exit();
    VirtualKey_Initialize(0);
    follow_power();
    ecore_event_handler_add(ECORE_EVENT_DEVICE_ADD, on_device, nullptr);
    ecore_main_fd_handler_add(STDIN_FILENO, ECORE_FD_READ, on_input, nullptr, nullptr, nullptr);
    return true;
}

void on_control(app_control_h control, void *)
{
    say("control");
    for (const char *key : {"folder_path", "path_location", "mode", "demo_player_mode",
                            "repeat_mode", "__K_RELOCATE_BELOW"})
        say_extra(control, key);
    if (!window)
        make_window();
    say("ready");
    if (getenv("TEST_QUIT_IN_CONTROL"))
        ui_app_exit();
}

void on_terminate(void *)
{
    say("terminate");
    if (ending_thread.joinable())
        ending_thread.join();
    if (getenv("TEST_SLOW_TERMINATE"))
        wait_for_a_line();
    KeyRouter_Finalize();
    VirtualKey_Finalize();
    display_rotator_remove_cb(on_rotator);
    delete_window();
    has_ended = true;
    // The loop is over; asking for its end changes nothing, whoever asks.
    ui_app_exit();
    std::thread(ui_app_exit).join();
}

} // namespace

int main(int argc, char **argv)
{
    elm_init(argc, argv);
    ui_app_lifecycle_callback_s callbacks = {};
    callbacks.create = on_create;
    callbacks.terminate = on_terminate;
    callbacks.pause = [](void *) { say("pause"); };
    callbacks.resume = [](void *) { say("resume"); };
    callbacks.app_control = on_control;
    app_event_handler_h handler = nullptr;
    ui_app_add_event_handler(
        &handler, APP_EVENT_LANGUAGE_CHANGED,
        [](app_event_info_h, void *) { say("language changed"); }, nullptr);
    const int status = ui_app_main(argc, argv, &callbacks, nullptr);
    elm_shutdown();
    return status;
}
