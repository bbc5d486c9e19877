#include "config_store/config_watcher.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <vector>

#include <sys/stat.h>

#include "config_store/inotify_events.h"
#include "log/platform_log.h"

namespace platform {

namespace {

constexpr uint32_t EVENTS = IN_CLOSE_WRITE | IN_MOVED_TO | IN_MOVED_FROM | IN_DELETE |
                            IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;

// A folder that cannot be watched again, say on a medium that is away for a moment.
constexpr double RETRY_S = 1.0;

} // namespace

bool ConfigWatcher::Trace::operator!=(const Trace &other) const
{
    return exists != other.exists || inode != other.inode ||
           changed.tv_sec != other.changed.tv_sec || changed.tv_nsec != other.changed.tv_nsec;
}

ConfigWatcher::ConfigWatcher(ConfigFiles &files) : files_(files) {}

bool ConfigWatcher::add(const std::string &key, Owner owner, Callback callback)
{
    for (auto &[number, registration] : registrations_) {
        if (registration.key == key && registration.owner == owner) {
            registration.callback = std::move(callback);
            return true;
        }
    }
    if (!open())
        return false;
    // What happened before this call is not for the new registration, also when it waits in the
    // kernel still.
    read_changes();
    if (!changes_.empty() && !job_)
        job_.reset(ecore_job_add(on_job, this));
    const std::string path = files_.folder(key);
    Folder &folder = folders_[path];
    if (folder.watch < 0 && !files_.make_folder(key))
        return fail("the folder of " + key);
    if (folder.watch < 0 && !watch(path, folder))
        return fail(path);
    folder.keys.emplace(key, trace(key));
    registrations_[next_registration_++] = {key, owner, std::move(callback), next_change_};
    return true;
}

// Whatever could not be set up for a registration is taken back, and the reason reported.
bool ConfigWatcher::fail(const std::string &what)
{
    const int reason = errno;
    PLATFORM_LOGW("config_store", "%s cannot be watched: %s", what.c_str(), std::strerror(reason));
    for (auto folder = folders_.begin(); folder != folders_.end();)
        folder = folder->second.keys.empty() ? folders_.erase(folder) : std::next(folder);
    if (registrations_.empty())
        close();
    return false;
}

bool ConfigWatcher::remove(const std::string &key, Owner owner)
{
    const auto found =
        std::find_if(registrations_.begin(), registrations_.end(), [&](const auto &entry) {
            return entry.second.key == key && entry.second.owner == owner;
        });
    if (found == registrations_.end())
        return false;
    registrations_.erase(found);
    if (registrations_.empty()) {
        close();
        return true;
    }
    const bool still_wanted =
        std::any_of(registrations_.begin(), registrations_.end(),
                    [&](const auto &entry) { return entry.second.key == key; });
    const auto folder = folders_.find(files_.folder(key));
    if (still_wanted || folder == folders_.end())
        return true;
    folder->second.keys.erase(key);
    if (folder->second.keys.empty()) {
        if (folder->second.watch >= 0)
            inotify_rm_watch(inotify_.number(), folder->second.watch);
        folders_.erase(folder);
    }
    return true;
}

bool ConfigWatcher::open()
{
    if (handler_)
        return true;
    inotify_ = Descriptor(inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
    if (!inotify_)
        return fail("the store");
    handler_.reset(ecore_main_fd_handler_add(inotify_.number(), ECORE_FD_READ, on_readable, this,
                                             nullptr, nullptr));
    errno = ENOSYS;
    return handler_ || fail("without a main loop the store");
}

void ConfigWatcher::close()
{
    handler_.reset();
    job_.reset();
    retry_.reset();
    inotify_ = Descriptor();
    folders_.clear();
    changes_.clear();
}

bool ConfigWatcher::watch(const std::string &path, Folder &folder)
{
    folder.watch = inotify_add_watch(inotify_.number(), path.c_str(), EVENTS);
    return folder.watch >= 0;
}

// Moves every change that the kernel has seen into our own queue.
void ConfigWatcher::read_changes()
{
    read_inotify_events(inotify_.number(), [this](const inotify_event &event) { take(event); });
    rewatch_lost();
}

void ConfigWatcher::take(const inotify_event &event)
{
    if ((event.mask & IN_Q_OVERFLOW) != 0) {
        PLATFORM_LOGI("config_store", "too many changes at once, comparing the watched keys");
        for (auto &[path, folder] : folders_)
            compare(folder);
        return;
    }
    const auto found = std::find_if(folders_.begin(), folders_.end(), [&](const auto &entry) {
        return entry.second.watch == event.wd;
    });
    if (found == folders_.end())
        return;
    if ((event.mask & IN_MOVE_SELF) != 0)
        inotify_rm_watch(inotify_.number(), event.wd);
    if ((event.mask & (IN_MOVE_SELF | IN_IGNORED)) != 0)
        found->second.watch = -1;
    if (event.len == 0)
        return;
    for (auto &[key, known] : found->second.keys) {
        if (key.compare(key.rfind('/') + 1, std::string::npos, event.name) == 0) {
            known = trace(key);
            note(key);
        }
    }
}

// Folders that were removed or moved away are made again where the keys are looked for.
void ConfigWatcher::rewatch_lost()
{
    bool failed = false;
    for (auto &[path, folder] : folders_) {
        if (folder.watch >= 0 || folder.keys.empty())
            continue;
        if (files_.make_folder(folder.keys.begin()->first) && watch(path, folder)) {
            PLATFORM_LOGI("config_store", "watching %s again", path.c_str());
            compare(folder);
            continue;
        }
        if (!retry_)
            PLATFORM_LOGW("config_store", "%s cannot be watched for now: %s", path.c_str(),
                          std::strerror(errno));
        failed = true;
    }
    if (!failed)
        retry_.reset();
    else if (!retry_)
        retry_.reset(ecore_timer_add(RETRY_S, on_retry, this));
}

void ConfigWatcher::compare(Folder &folder)
{
    for (auto &[key, known] : folder.keys) {
        const Trace now = trace(key);
        if (now != known) {
            known = now;
            note(key);
        }
    }
}

void ConfigWatcher::note(const std::string &key)
{
    changes_.push_back({next_change_++, key});
}

// Callbacks may add and remove registrations, change keys and even end the last registration, so
// nothing of ours is held across a call.
void ConfigWatcher::deliver()
{
    while (!changes_.empty()) {
        const Change change = std::move(changes_.front());
        changes_.pop_front();
        std::vector<uint64_t> concerned;
        for (const auto &[number, registration] : registrations_) {
            if (registration.key == change.key && registration.since <= change.number)
                concerned.push_back(number);
        }
        for (const uint64_t number : concerned) {
            const auto registration = registrations_.find(number);
            if (registration != registrations_.end()) {
                const Callback callback = registration->second.callback;
                callback(change.key);
            }
        }
    }
}

ConfigWatcher::Trace ConfigWatcher::trace(const std::string &key) const
{
    struct stat status = {};
    if (stat(files_.path(key).c_str(), &status) != 0)
        return {};
    return {true, status.st_ino, status.st_ctim};
}

Eina_Bool ConfigWatcher::on_readable(void *data, Ecore_Fd_Handler *)
{
    auto &self = *static_cast<ConfigWatcher *>(data);
    self.read_changes();
    self.deliver();
    return ECORE_CALLBACK_RENEW;
}

void ConfigWatcher::on_job(void *data)
{
    auto &self = *static_cast<ConfigWatcher *>(data);
    static_cast<void>(self.job_.release()); // it goes by itself
    self.deliver();
}

Eina_Bool ConfigWatcher::on_retry(void *data)
{
    auto &self = *static_cast<ConfigWatcher *>(data);
    // Deletes the timer when every folder is watched again, which Ecore allows from inside.
    self.read_changes();
    self.deliver();
    return ECORE_CALLBACK_RENEW;
}

} // namespace platform
