#include "content_watch/content_watch.h"

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include "config_store.h"
#include "content_watch/folder_state.h"
#include "log/platform_log.h"
#include "lookahead/lookahead.h"
#include "player_rules/config_keys.h"
#include "player_rules/launch_rules.h"
#include "usb_storage/stick_content.h"
#include "usb_storage/usb_devices.h"

namespace platform {

namespace {

constexpr char SERVICE[] = "content_watch";

// A disk that does not answer for so long does not hold up the start any more.
constexpr std::chrono::milliseconds PATIENCE_AT_START{3000};

/** What is found before the application has its request. */
struct Beginning {
    std::vector<std::string> sticks;
    FolderRest::Watch watch = FolderRest::Watch::Nobody;
    std::optional<FolderState> state;
};

} // namespace

/** What the thread looks at; outlives the service where the thread hangs. */
struct ContentWatch::Looks {
    explicit Looks(Environment given) : environment(std::move(given)), rest(environment.patience) {}

    void look_at_folder();
    void look_at_sticks(const UsbChanges &changes) const;

    const Environment environment;
    std::shared_ptr<FolderEvents::Queue> events;
    std::string folder; ///< what is played
    bool on_stick = false;
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

void ContentWatch::Looks::look_at_sticks(const UsbChanges &changes) const
{
    const auto mounts = usb_mount_paths(changes);
    if (!mounts)
        return;
    const std::vector<std::string> sticks = stick_contents(*mounts, environment.shown);
    if (!on_stick && !sticks.empty())
        PLATFORM_LOGI(SERVICE, "%s has come", sticks.front().c_str());
    else if (on_stick && std::find(sticks.begin(), sticks.end(), folder) == sticks.end())
        PLATFORM_LOGI(SERVICE, "%s is gone", folder.c_str());
    else
        return;
    environment.restart();
}

ContentWatch::ContentWatch(Environment environment)
    : looks_(std::make_shared<Looks>(std::move(environment)))
{
}

ContentWatch::~ContentWatch()
{
    usb_set_listener({});
    thread_.stop();
}

ContentWatch::Extras ContentWatch::begin(const Extras &asked)
{
    const bool with_sticks = looks_->environment.follow_sticks && asked.empty() && may_play_stick();
    const std::optional<std::string> folder =
        looks_->environment.follow_folder ? listed_folder(asked) : std::nullopt;
    if (with_sticks)
        usb_set_listener([this] { on_usb_change(); });
    if (folder)
        events_ = std::make_unique<FolderEvents>([this] {
            thread_.post([looks = looks_] { looks->rest.on_event(WorkerThread::Clock::now()); });
        });

    const auto found = std::make_shared<Beginning>();
    const auto look = [found, with_sticks, folder, changes = usb_changes(),
                       shown = looks_->environment.shown,
                       queue = events_ ? events_->queue() : nullptr] {
        if (with_sticks)
            found->sticks = stick_contents(
                usb_mount_paths(changes).value_or(std::vector<std::string>()), shown);
        if (folder && found->sticks.empty()) {
            found->watch = queue->watch(*folder);
            found->state = folder_state(*folder);
        }
    };
    if (!WorkerThread::run_apart("content", look, PATIENCE_AT_START)) {
        PLATFORM_LOGW(SERVICE, "the disk does not answer; the folder is not followed");
        events_.reset();
        return asked;
    }
    if (!found->sticks.empty()) {
        events_.reset();
        looks_->on_stick = true;
        looks_->folder = found->sticks.front();
        PLATFORM_LOGI(SERVICE, "playing %s", looks_->folder.c_str());
        return request_for(looks_->folder);
    }
    if (folder) {
        looks_->events = events_->queue();
        looks_->folder = *folder;
        looks_->rest.on_look(WorkerThread::Clock::now(), found->watch, found->state);
        WorkerThread::Hooks hooks;
        hooks.next_deadline = [looks = looks_] { return looks->rest.next_look(); };
        hooks.on_deadline = [looks = looks_] { looks->look_at_folder(); };
        thread_.start(std::move(hooks));
    }
    return asked;
}

/** A stick would bring a demo back that staff have switched off. */
bool ContentWatch::may_play_stick()
{
    int selection = 0;
    return vconf_get_int(DEMO_MODE_KEY, &selection) != 0 || selection != -1;
}

void ContentWatch::on_usb_change()
{
    thread_.post([looks = looks_, changes = usb_changes()] { looks->look_at_sticks(changes); });
}

} // namespace platform
