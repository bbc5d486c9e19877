#include "app_framework/application.h"

#include <chrono>
#include <clocale>
#include <cstdio>
#include <thread>
#include <utility>

#include <Elementary.h>

#include "app_framework/command_line.h"
#include "app_framework/early_start.h"
#include "app_framework/session_watch.h"
#include "app_framework/single_instance.h"
#include "base/orientation.h"
#include "config_store/platform_store.h"
#include "content_watch/content_watch.h"
#include "control/control.h"
#include "device_power/power_service.h"
#include "key_router/key_translator.h"
#include "log/platform_log.h"
#include "lookahead/lookahead.h"
#include "media_player/media_system.h"
#include "media_player/player_status.h"
#include "panel/rotation_state.h"
#include "panel/timed_rotation.h"
#include "player_rules/launch_rules.h"
#include "player_rules/user_interface.h"
#include "service_manager/service_manager.h"
#include "settings/settings.h"
#include "still_picture/picture_ahead.h"
#include "system_facts/message_catalogue.h"
#include "unplayable_files/fruitless_rounds.h"
#include "unplayable_files/unplayable_files.h"
#include "usb_storage/stick_content.h"
#include "usb_storage/usb_devices.h"
#include "usb_storage/usb_watch.h"
#include "video_plane/video_plane.h"
#include "window/tv_window.h"

namespace platform {

namespace {

constexpr char SERVICE[] = "app_framework";

// The login manager may be gone meanwhile, and then nobody says that the session is back.
constexpr double LONGEST_WAIT_FOR_SESSION_S = 60.0;
constexpr std::chrono::milliseconds STEP_OF_WAIT{100};

enum ExitStatus { DONE = 0, COULD_NOT_RUN = 1, BAD_COMMAND_LINE = 2 };

} // namespace

Application &Application::get()
{
    static Application application;
    return application;
}

Application::Application() = default;
Application::~Application() = default;

int Application::run(int argc, char **argv, const ui_app_lifecycle_callback_s &callbacks,
                     void *user_data)
{
    if (phase_ != Phase::Idle)
        return COULD_NOT_RUN;
    const CommandLine line = read_command_line(argc, argv);
    switch (line.action) {
    case CommandLine::Action::Print:
        std::fputs(line.text.c_str(), stdout);
        return DONE;
    case CommandLine::Action::Refuse:
        std::fputs(line.text.c_str(), stderr);
        return BAD_COMMAND_LINE;
    case CommandLine::Action::Run:
        break;
    }
    callbacks_ = callbacks;
    user_data_ = user_data;
    phase_ = Phase::Starting;
    exit_status_ = DONE;
    follow_signals();
    let_signals_through();
    follow_manager();
    const int status = launch(line.extras);
    stop_services();
    await_session();
    session_.reset();
    alive_timer_.reset();
    signal_handlers_.clear();
    event_handlers_.clear();
    phase_ = Phase::Idle;
    return status;
}

int Application::launch(const Extras &extras)
{
    SingleInstance::Listener listener;
    listener.launch = [this](Extras handed) { return take_launch_request(std::move(handed)); };
    listener.bus = [this](sd_bus *bus) { be_controlled_by(bus); };
    listener.superseded = [this] { quit(); };
    instance_ = std::make_unique<SingleInstance>(std::move(listener));
    switch (instance_->claim(extras)) {
    case SingleInstance::Outcome::HandedOver:
        return DONE;
    case SingleInstance::Outcome::Failed:
        return COULD_NOT_RUN;
    case SingleInstance::Outcome::First:
    case SingleInstance::Outcome::Alone:
        break;
    }
    if (!start_services())
        return COULD_NOT_RUN;
    if (callbacks_.create && !callbacks_.create(user_data_)) {
        PLATFORM_LOGE(SERVICE, "the application could not start");
        return COULD_NOT_RUN;
    }
    phase_ = Phase::Running;
    if (!quit_asked_)
        deliver(extras);
    // The loop would forget that its end was asked for before it began.
    if (!quit_asked_)
        elm_run();
    phase_ = Phase::Ending;
    // The timer tells nothing any more, and each part of the end may take its time.
    ServiceManager::get().tell_alive();
    PLATFORM_LOGI(SERVICE, "ending");
    if (callbacks_.terminate)
        callbacks_.terminate(user_data_);
    ServiceManager::get().tell_alive();
    freeze_timers();
    return exit_status_;
}

bool Application::start_services()
{
    bind_message_catalogue();
    PictureAhead::get().join_lookahead();
    usb_keep_added_in(Settings::get().runtime_dir + "/added_sticks");
    usb_watch_ = UsbWatch::create();
    write_factory_defaults();
    announce_device_events();
    rotation_state_start();
    TimedRotation::get().start();
    keys_ = std::make_unique<KeyTranslator>();
    TvWindow::Listener listener;
    listener.closed = [this] {
        PLATFORM_LOGI(SERVICE, "the window was closed");
        quit();
    };
    listener.seen = [this](bool seen) {
        window_seen_ = seen;
        update_visibility();
    };
    listener.content_seen = [](bool seen) { VideoPlane::set_covered(seen); };
    listener.without_picture = [this] { show_card(); };
    listener.compositor_gone = [this] { compositor_gone(); };
    listener.gone = [] { VideoPlane::outer_window_gone(); };
    window_ = TvWindow::create(WINDOW_NAME, std::move(listener));
    if (!window_)
        return false;
    VideoPlane::call_when_shown([] {
        ecore_main_loop_thread_safe_call_async([](void *) { Application::get().picture_shown(); },
                                               nullptr);
    });
    angle_ = PanelModel::get().on_angle([this](int) { refresh_card(); });
    FruitlessRounds::get().set_listener([] {
        ecore_main_loop_thread_safe_call_async([](void *) { Application::get().show_card(); },
                                               nullptr);
    });
    UnplayableFiles::get().set_listener([] {
        ecore_main_loop_thread_safe_call_async([](void *) { Application::get().refresh_card(); },
                                               nullptr);
    });
    load_decoders();
    session_ = std::make_unique<SessionWatch>([this](bool active) { session_changed(active); });
    be_controlled_by(instance_->connection());
    return true;
}

void Application::be_controlled_by(sd_bus *bus)
{
    if (bus)
        control_start(bus,
                      {[this] { return first_launch_; }, [this] { announce_language_change(); }});
    else
        control_stop();
}

void Application::stop_services()
{
    FruitlessRounds::get().set_listener({});
    UnplayableFiles::get().set_listener({});
    control_stop();
    content_.reset();
    usb_watch_.reset();
    Lookahead::get().stop();
    PowerService::get().stop();
    angle_.reset();
    PanelModel::get().stop();
    TimedRotation::get().stop();
    window_.reset();
    keys_.reset();
    instance_.reset();
    ServiceManager::get().tell_alive();
    finish_writes();
}

/** Lets a service manager watch the main loop and the memory. */
void Application::follow_manager()
{
    ServiceManager &manager = ServiceManager::get();
    if (!manager.present())
        return;
    alive_timer_ = manager.watch_main_loop();
    Lookahead::get().set_growth_listener([this] {
        PLATFORM_LOGI(SERVICE, "ending, to be started anew with what was used up");
        quit();
    });
}

/**
 * Has the player end, to be started anew, when there is other content to be played.
 *
 * @return what the application is to be asked for
 */
Extras Application::follow_content(Extras extras)
{
    const Settings &settings = Settings::get();
    if (content_ || !starts_playback(extras) || !(settings.follow_folder || settings.follow_sticks))
        return extras;
    if (!ServiceManager::get().present()) {
        PLATFORM_LOGI(SERVICE, "content is not followed: nobody would start the player again");
        return extras;
    }
    ContentWatch::Environment environment;
    environment.follow_folder = settings.follow_folder;
    environment.follow_sticks = settings.follow_sticks;
    // Without a rotator the panel stands as it does now for good.
    const PanelModel &panel = PanelModel::get();
    const Orientations shown = panel.can_turn()             ? Orientations::Both
                               : is_portrait(panel.angle()) ? Orientations::Portrait
                                                            : Orientations::Landscape;
    environment.stick_contents = [shown](const std::string &mount) {
        return stick_contents({mount}, shown);
    };
    environment.restart = [this] {
        PLATFORM_LOGI(SERVICE, "ending, to be started anew with other content");
        quit();
    };
    environment.nothing_plays = [] { return current_player_status().looks_again_ms >= 0; };
    content_ = std::make_unique<ContentWatch>(std::move(environment));
    return content_->begin(extras);
}

/**
 * Where a service manager would start the player again at once, only for it to find that another
 * login has the screen, the end waits until its own has it back.
 */
void Application::await_session()
{
    if (!ServiceManager::get().present() || session_active_ || signalled_)
        return;
    PLATFORM_LOGI(SERVICE, "waiting until the session has the screen again");
    ServiceManager::get().tell_status("Waiting until the session has the screen again.");
    const double end = ecore_time_get() + LONGEST_WAIT_FOR_SESSION_S;
    // Without ecore_main_loop_begin(), which would call the idlers that the application has left.
    while (!session_active_ && !signalled_ && ecore_time_get() < end) {
        std::this_thread::sleep_for(STEP_OF_WAIT);
        ecore_main_loop_iterate();
    }
}

/**
 * The application's timers may stay when it has let go of all else, because its loop is over. The
 * loop turns on all the same, in await_session() and when the toolkit is shut down.
 */
void Application::freeze_timers() const
{
    const IteratorPtr children(efl_children_iterator_new(efl_main_loop_get()));
    void *child = nullptr;
    EINA_ITERATOR_FOREACH(children.get(), child)
    {
        auto *object = static_cast<Eo *>(child);
        if (efl_isa(object, EFL_LOOP_TIMER_CLASS) && object != alive_timer_.get())
            ecore_timer_freeze(object);
    }
}

void Application::session_changed(bool active)
{
    session_active_ = active;
    update_visibility();
}

void Application::follow_signals()
{
    const auto exit_asked = [](void *data, int, void *event) -> Eina_Bool {
        // The toolkit asks for the end when the compositor goes away, as if by a signal; that is
        // compositor_gone()'s to say, and nobody else gets to see it.
        const auto *asked = static_cast<const Ecore_Event_Signal_Exit *>(event);
        if (asked->data.si_signo == 0)
            return ECORE_CALLBACK_DONE;
        static_cast<Application *>(data)->signalled();
        return ECORE_CALLBACK_PASS_ON;
    };
    const auto hung_up = [](void *data, int, void *) -> Eina_Bool {
        static_cast<Application *>(data)->signalled();
        return ECORE_CALLBACK_PASS_ON;
    };
    signal_handlers_.emplace_back(
        ecore_event_handler_prepend(ECORE_EVENT_SIGNAL_EXIT, exit_asked, this));
    signal_handlers_.emplace_back(
        ecore_event_handler_prepend(ECORE_EVENT_SIGNAL_HUP, hung_up, this));
}

void Application::signalled()
{
    PLATFORM_LOGI(SERVICE, "asked to end by a signal");
    signalled_ = true;
    quit();
}

void Application::quit()
{
    if (!eina_main_loop_is()) {
        // The loop is not this thread's to end, and would sleep on. A call that finds the
        // application over already only notes that its end was asked for.
        ecore_main_loop_thread_safe_call_async([](void *) { Application::get().quit(); }, nullptr);
        return;
    }
    quit_asked_ = true;
    if (phase_ == Phase::Running)
        ecore_main_loop_quit();
}

bool Application::take_launch_request(Extras extras)
{
    if (quit_asked_ || phase_ != Phase::Running)
        return false;
    PLATFORM_LOGI(SERVICE, "launch request from a later start");
    deliver(std::move(extras));
    return true;
}

void Application::deliver(Extras extras)
{
    if (first_launch_.tv_sec == 0)
        clock_gettime(CLOCK_REALTIME, &first_launch_);
    app_control_s request = {follow_content(std::move(extras))};
    if (callbacks_.app_control)
        callbacks_.app_control(&request, user_data_);
    if (starts_playback(request.extras))
        TimedRotation::get().launched();
}

void Application::picture_shown()
{
    if (window_)
        window_->reveal();
    ServiceManager::get().tell_ready();
}

/** Says in the window why it has no picture. */
void Application::show_card()
{
    if (window_ && stand_in_.show(window_->content()))
        window_->reveal();
}

void Application::refresh_card()
{
    if (window_)
        stand_in_.refresh(window_->content());
}

void Application::compositor_gone()
{
    PLATFORM_LOGE(SERVICE, "the compositor went away");
    exit_status_ = COULD_NOT_RUN;
    quit();
}

void Application::update_visibility()
{
    const bool paused = !window_seen_ || !session_active_;
    if (paused == paused_ || phase_ != Phase::Running)
        return;
    paused_ = paused;
    PLATFORM_LOGI(SERVICE, "the window is %s", paused ? "out of sight" : "seen again");
    const auto callback = paused ? callbacks_.pause : callbacks_.resume;
    if (callback)
        callback(user_data_);
}

app_event_handler_h Application::add_event_handler(app_event_type_e type, app_event_cb callback,
                                                   void *user_data)
{
    event_handlers_.push_back(
        std::make_unique<app_event_handler_s>(app_event_handler_s{type, callback, user_data}));
    return event_handlers_.back().get();
}

void Application::announce(app_event_type_e type)
{
    app_event_info_s info = {type};
    for (size_t i = 0; i < event_handlers_.size(); ++i) {
        const app_event_handler_s handler = *event_handlers_[i];
        if (handler.type == type)
            handler.callback(&info, handler.user_data);
    }
}

void Application::announce_language_change()
{
    choose_catalogue_language();
    refresh_card();
    announce(APP_EVENT_LANGUAGE_CHANGED);
    // The application has had the toolkit choose the language, which sets every part of the locale.
    setlocale(LC_NUMERIC, "C");
}

} // namespace platform
