#include "config_store/config_watcher.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>
#include <vector>

#include <sys/inotify.h>
#include <unistd.h>

#include "log/platform_log.h"

namespace platform {

namespace {

constexpr uint32_t EVENTS = IN_CLOSE_WRITE | IN_CREATE | IN_MOVED_TO | IN_MOVED_FROM | IN_DELETE |
                            IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;

// A folder that cannot be watched again, say on a medium that is away for a moment.
constexpr double RETRY_S = 1.0;

std::string prefix_of(const std::string &key)
{
    return key.substr(0, key.rfind('/') + 1);
}

bool begins_with(const std::string &text, const std::string &prefix)
{
    return text.compare(0, prefix.size(), prefix) == 0;
}

/** Whether what was registered stands for everything below a folder, and this is below it. */
bool covers(const std::string &registered, const std::string &name)
{
    return registered.back() == '/' && begins_with(name, registered);
}

} // namespace

bool ConfigWatcher::Trace::operator!=(const Trace &other) const
{
    return exists != other.exists || inode != other.inode ||
           changed.tv_sec != other.changed.tv_sec || changed.tv_nsec != other.changed.tv_nsec;
}

ConfigWatcher::ConfigWatcher(ConfigFiles &files, ConfigFiles::Sync sync)
    : files_(files), sync_(std::move(sync))
{
}

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
    const std::string prefix = prefix_of(key);
    Folder &folder = folders_[prefix];
    if (folder.watch < 0 && !(files_.make_folder(prefix, sync_) && watch(prefix, folder)))
        return fail(files_.folder(prefix));
    Registration &added = registrations_[next_registration_++];
    added = {key, owner, std::move(callback), 0};
    if (covers(key, prefix))
        compare(prefix, folder);
    else
        folder.keys.emplace(key, trace(key));
    added.since = next_change_;
    return true;
}

// Whatever could not be set up for a registration is taken back, and the reason reported.
bool ConfigWatcher::fail(const std::string &what)
{
    const int reason = errno;
    PLATFORM_LOGW("config_store", "%s cannot be watched: %s", what.c_str(), std::strerror(reason));
    drop_unneeded();
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
    drop_unneeded();
    return true;
}

void ConfigWatcher::drop_unneeded()
{
    if (registrations_.empty()) {
        close();
        return;
    }
    for (auto folder = folders_.begin(); folder != folders_.end();) {
        if (is_named(folder->first) || is_whole(folder->first)) {
            ++folder;
            continue;
        }
        inotify_rm_watch(inotify_.number(), folder->second.watch);
        folder = folders_.erase(folder);
    }
}

// Whether a registration cannot do without this folder: it is made again when it is lost.
bool ConfigWatcher::is_named(const std::string &prefix) const
{
    return std::any_of(registrations_.begin(), registrations_.end(),
                       [&](const auto &entry) { return prefix_of(entry.second.key) == prefix; });
}

// Whether every key in this folder is wanted, and every folder.
bool ConfigWatcher::is_whole(const std::string &prefix) const
{
    return std::any_of(registrations_.begin(), registrations_.end(),
                       [&](const auto &entry) { return covers(entry.second.key, prefix); });
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

bool ConfigWatcher::watch(const std::string &prefix, Folder &folder)
{
    folder.watch = inotify_add_watch(inotify_.number(), files_.folder(prefix).c_str(), EVENTS);
    return folder.watch >= 0;
}

// Moves every change that the kernel has seen into our own queue.
void ConfigWatcher::read_changes()
{
    alignas(inotify_event) char buffer[4096];
    for (;;) {
        const ssize_t length = ::read(inotify_.number(), buffer, sizeof buffer);
        if (length < 0 && errno == EINTR)
            continue;
        if (length <= 0)
            break;
        for (ssize_t at = 0; at < length;) {
            const auto &event = *reinterpret_cast<const inotify_event *>(buffer + at);
            take(event);
            at += static_cast<ssize_t>(sizeof event + event.len);
        }
    }
    rewatch_lost();
}

void ConfigWatcher::take(const inotify_event &event)
{
    if ((event.mask & IN_Q_OVERFLOW) != 0) {
        PLATFORM_LOGI("config_store", "too many changes at once, comparing the watched keys");
        lose_tree("");
        return;
    }
    const auto found = std::find_if(folders_.begin(), folders_.end(), [&](const auto &entry) {
        return entry.second.watch == event.wd;
    });
    if (found == folders_.end())
        return;
    if ((event.mask & IN_MOVE_SELF) != 0)
        lose_tree(found->first);
    else if ((event.mask & IN_IGNORED) != 0)
        found->second.watch = -1;
    else if (event.len > 0)
        take_entry(found, found->first + event.name, event.mask);
}

void ConfigWatcher::take_entry(const Folders::iterator &folder, const std::string &name,
                               uint32_t mask)
{
    const bool wanted = is_whole(folder->first) && ConfigFiles::is_valid_key(name);
    if ((mask & IN_ISDIR) != 0) {
        if (wanted && (mask & (IN_CREATE | IN_MOVED_TO)) != 0)
            watch_below(name + "/");
        return;
    }
    if ((mask & IN_CREATE) != 0)
        return; // it is written when it is closed
    auto &keys = folder->second.keys;
    const auto key = wanted ? keys.try_emplace(name).first : keys.find(name);
    if (key != keys.end()) {
        key->second = trace(name);
        note(name);
    }
}

// What was moved away or may have been takes the folders in it along.
void ConfigWatcher::lose_tree(const std::string &prefix)
{
    for (auto &[name, folder] : folders_) {
        if (begins_with(name, prefix)) {
            inotify_rm_watch(inotify_.number(), folder.watch);
            folder.watch = -1;
        }
    }
}

// Folders that were removed or moved away are made again where keys are looked for by name.
void ConfigWatcher::rewatch_lost()
{
    bool failed = false;
    for (auto at = folders_.begin(); at != folders_.end();) {
        auto &[prefix, folder] = *at;
        if (folder.watch >= 0) {
            ++at;
            continue;
        }
        const bool named = is_named(prefix);
        const bool watched = (!named || files_.make_folder(prefix, sync_)) && watch(prefix, folder);
        const std::string path = files_.folder(prefix);
        if (watched)
            PLATFORM_LOGI("config_store", "watching %s again", path.c_str());
        else if (named && !retry_)
            PLATFORM_LOGW("config_store", "%s cannot be watched for now: %s", path.c_str(),
                          std::strerror(errno));
        failed = failed || (named && !watched);
        if (watched || !named)
            compare(prefix, folder);
        at = watched || named ? std::next(at) : folders_.erase(at);
    }
    if (!failed)
        retry_.reset();
    else if (!retry_)
        retry_.reset(ecore_timer_add(RETRY_S, on_retry, this));
}

// The keys in a folder that has just come are changes themselves.
void ConfigWatcher::watch_below(const std::string &prefix)
{
    Folder &folder = folders_[prefix];
    if (folder.watch < 0 && watch(prefix, folder))
        compare(prefix, folder);
}

void ConfigWatcher::compare(const std::string &prefix, Folder &folder)
{
    if (is_whole(prefix)) {
        for (const std::string &name : files_.children(prefix)) {
            if (name.back() == '/')
                watch_below(name);
            else
                folder.keys.try_emplace(name);
        }
    }
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
            if ((registration.key == change.key || covers(registration.key, change.key)) &&
                registration.since <= change.number)
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
