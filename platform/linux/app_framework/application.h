/**
 * The application and its life: start, launch requests, pause and resume, the end. One per process.
 * Main-loop thread only, but for quit().
 */
#pragma once

#include <ctime>
#include <memory>
#include <string>
#include <vector>

#include <Ecore.h>
#include <systemd/sd-bus.h>

#include "app_framework.h"
#include "app_framework/stand_in.h"
#include "base/toolkit_handles.h"
#include "launch/launch_request.h"
#include "panel/panel_model.h"

/** A launch request as the application gets a pointer to it. */
struct app_control_s {
    platform::Extras extras;
};

struct app_event_info_s {
    app_event_type_e type;
};

struct app_event_handler_s {
    app_event_type_e type;
    app_event_cb callback;
    void *user_data;
};

namespace platform {

class ContentWatch;
class KeyTranslator;
class SessionWatch;
class SingleInstance;
class TvWindow;
class UsbWatch;

class Application {
  public:
    static Application &get();

    /** The whole life of the application. @return the exit status of the process */
    int run(int argc, char **argv, const ui_app_lifecycle_callback_s &callbacks, void *user_data);

    /** Asks for the end; safe at any time. Any thread; from another one it is taken up later. */
    void quit();

    app_event_handler_h add_event_handler(app_event_type_e type, app_event_cb callback,
                                          void *user_data);

    /** Tells the application that the system language is another one now. */
    void announce_language_change();

  private:
    enum class Phase { Idle, Starting, Running, Ending };

    Application();
    ~Application();

    int launch(const Extras &extras);
    bool start_services();
    void be_controlled_by(sd_bus *bus);
    void stop_services();
    void follow_manager();
    Extras follow_content(Extras extras);
    void await_session();
    void freeze_timers() const;
    void session_changed(bool active);
    bool take_launch_request(Extras extras);
    void deliver(Extras extras);
    void follow_signals();
    void signalled();
    void picture_shown();
    void show_card();
    void refresh_card();
    void compositor_gone();
    void update_visibility();
    void announce(app_event_type_e type);

    ui_app_lifecycle_callback_s callbacks_ = {};
    void *user_data_ = nullptr;
    Phase phase_ = Phase::Idle;
    timespec first_launch_ = {}; ///< by the real-time clock; 0 before the first request
    bool quit_asked_ = false;
    bool signalled_ = false;
    int exit_status_ = 0;
    bool window_seen_ = true;
    bool session_active_ = true;
    bool paused_ = false;

    std::vector<std::unique_ptr<app_event_handler_s>> event_handlers_;
    std::vector<EventHandlerPtr> signal_handlers_;
    TimerPtr alive_timer_;
    std::unique_ptr<SingleInstance> instance_;
    std::unique_ptr<SessionWatch> session_;
    std::unique_ptr<UsbWatch> usb_watch_;
    std::unique_ptr<ContentWatch> content_; ///< from the first request on that plays something
    std::unique_ptr<KeyTranslator> keys_;
    std::unique_ptr<TvWindow> window_;
    PanelModel::Subscription angle_;
    StandIn stand_in_;
};

} // namespace platform
