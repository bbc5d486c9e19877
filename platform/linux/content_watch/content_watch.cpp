#include "content_watch/content_watch.h"

#include <optional>
#include <utility>
#include <vector>

#include "config_store.h"
#include "content_watch/folder_state.h"
#include "log/platform_log.h"
#include "lookahead/lookahead.h"
#include "player_rules/config_keys.h"
#include "player_rules/launch_rules.h"
#include "settings/settings.h"
#include "usb_storage/usb_devices.h"

namespace platform {

namespace {

constexpr char SERVICE[] = "content_watch";

/** What is found before the application has its request. */
struct Beginning {
    FolderRest::Watch watch = FolderRest::Watch::Nobody;
    std::optional<FolderState> state;
};

} // namespace

/** What the thread looks at; outlives the service where the thread hangs. */
struct ContentWatch::Looks {
    explicit Looks(Environment given) : environment(std::move(given)), rest(environment.patience) {}

    void look_at_folder();

    const Environment environment;
    std::shared_ptr<FolderEvents::Queue> events;
    std::string folder; ///< what is played
    FolderRest rest;
};

void ContentWatch::Looks::look_at_folder()
{
    const FolderRest::Watch watch = events->watch(folder);
    if (!rest.on_look(WorkerThread::Clock::now(), watch, folder_state(folder)))
        return;
    PLATFORM_LOGI(SERVICE, "%s holds other files; they are played after this one", folder.c_str());
    Lookahead::get().call_at_change(environment.restart);
    if (environment.nothing_plays())
        environment.restart();
}

ContentWatch::ContentWatch(Environment environment)
    : looks_(std::make_shared<Looks>(std::move(environment)))
{
}

ContentWatch::~ContentWatch()
{
    usb_set_listener({});
    if (sticks_)
        sticks_->close();
    thread_.stop();
}

Extras ContentWatch::begin(const Extras &asked)
{
    if (looks_->environment.follow_sticks && asked.empty() && may_play_stick()) {
        const std::string stick = begin_sticks();
        if (!stick.empty()) {
            PLATFORM_LOGI(SERVICE, "playing %s", stick.c_str());
            return request_for(stick);
        }
    }
    const std::optional<std::string> folder =
        looks_->environment.follow_folder ? listed_folder(asked) : std::nullopt;
    if (folder)
        begin_folder(*folder);
    return asked;
}

/** @return the folder of a stick that plays, or nothing in it */
std::string ContentWatch::begin_sticks()
{
    const Environment &environment = looks_->environment;
    sticks_ = std::make_shared<StickLooks>(
        StickLooks::Environment{environment.stick_contents, environment.patience_at_start,
                                Settings::get().runtime_dir + "/slow_sticks", environment.restart});
    usb_set_listener([this] {
        thread_.post([sticks = sticks_, changes = usb_changes()] {
            if (const auto places = usb_places(changes))
                sticks->on_change(*places);
        });
    });
    return sticks_->begin(usb_places(usb_changes()).value_or(std::vector<std::string>()));
}

/** Has the thread look at a folder whenever something has happened there. */
void ContentWatch::begin_folder(const std::string &folder)
{
    events_ = std::make_unique<FolderEvents>([this] {
        thread_.post([looks = looks_] { looks->rest.on_event(WorkerThread::Clock::now()); });
    });
    const auto found = std::make_shared<Beginning>();
    const auto look = [found, folder, queue = events_->queue()] {
        found->watch = queue->watch(folder);
        found->state = folder_state(folder);
    };
    if (!WorkerThread::run_apart("content", look, looks_->environment.patience_at_start)) {
        PLATFORM_LOGW(SERVICE, "the disk does not answer; the folder is not followed");
        events_.reset();
        return;
    }
    looks_->events = events_->queue();
    looks_->folder = folder;
    looks_->rest.on_look(WorkerThread::Clock::now(), found->watch, found->state);
    WorkerThread::Hooks hooks;
    hooks.next_deadline = [looks = looks_] { return looks->rest.next_look(); };
    hooks.on_deadline = [looks = looks_] { looks->look_at_folder(); };
    thread_.start(std::move(hooks));
}

/** A stick would bring a demo back that staff have switched off. */
bool ContentWatch::may_play_stick()
{
    int selection = 0;
    return vconf_get_int(DEMO_MODE_KEY, &selection) != 0 || selection != DEMO_SWITCHED_OFF;
}

} // namespace platform
