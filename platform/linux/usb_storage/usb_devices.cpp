#include "usb_storage/usb_devices.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <memory>
#include <utility>

#include <sys/stat.h>

#include "base/paths.h"
#include "base/worker_thread.h"
#include "log/platform_log.h"
#include "lookahead/lookahead.h"
#include "settings/settings.h"
#include "usb_storage/block_devices.h"

namespace platform {

namespace {

constexpr std::chrono::milliseconds LONGEST_LOOK{1000};

struct State {
    UsbChanges changes;
    std::string file_of_added; ///< empty when it is not kept
    std::function<void()> listener;
    std::atomic<bool> available{true}; ///< whether devices could be listed last; any thread
};

State &state()
{
    // Never destroyed: a thread that hangs at a disk may outlive it.
    static State &the_one = *new State;
    return the_one;
}

void keep_added()
{
    const State &now = state();
    if (!now.file_of_added.empty() && !write_paths(now.file_of_added, now.changes.added))
        PLATFORM_LOGW("usb_storage", "%s cannot be written; what was added lasts until the end",
                      now.file_of_added.c_str());
}

bool is_folder(const std::string &path)
{
    struct stat status = {};
    return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

/** The same for a thread that is needed; a disk that does not answer in time has no folder. */
bool is_folder_in_time(const std::string &path)
{
    const auto found = std::make_shared<std::atomic<bool>>(false);
    WorkerThread::run_apart(
        "stick-looker", [path, found] { *found = is_folder(path); }, LONGEST_LOOK);
    return *found;
}

std::optional<std::vector<std::string>> mounted_devices()
{
    const auto devices = usb_block_devices();
    const auto table = mounts();
    if (!devices || !table)
        return std::nullopt;
    return mount_paths(*devices, *table);
}

// Says once, and again after it worked in between, that devices cannot be listed.
void report(bool available)
{
    if (state().available.exchange(available) && !available)
        PLATFORM_LOGW("usb_storage", "neither udev nor the mount table can be read");
}

} // namespace

const UsbChanges &usb_changes()
{
    return state().changes;
}

std::optional<std::vector<std::string>> usb_places(const UsbChanges &changes)
{
    std::optional<std::vector<std::string>> paths = Settings::get().usb_mounts;
    if (paths->empty())
        paths = mounted_devices();
    report(paths.has_value());
    if (!paths && changes.added.empty())
        return std::nullopt;
    std::vector<std::string> listed;
    for (const std::string &path : paths.value_or(std::vector<std::string>())) {
        if (!contains(changes.removed, path))
            listed.push_back(path);
    }
    for (const std::string &path : changes.added) {
        if (!contains(listed, path))
            listed.push_back(path);
    }
    return listed;
}

std::optional<std::vector<std::string>> usb_mount_paths(const UsbChanges &changes)
{
    std::optional<std::vector<std::string>> paths = usb_places(changes);
    if (paths)
        paths->erase(std::remove_if(paths->begin(), paths->end(),
                                    [](const std::string &path) { return !is_folder(path); }),
                     paths->end());
    return paths;
}

void usb_set_listener(std::function<void()> listener)
{
    state().listener = std::move(listener);
}

void usb_tell_change()
{
    if (state().listener)
        state().listener();
}

void usb_keep_added_in(const std::string &file)
{
    state().file_of_added = file;
    state().changes.added = read_paths(file);
}

bool usb_add(const std::string &path)
{
    const std::string place = without_last_slashes(path);
    if (place.empty() || place.front() != '/' || !is_folder_in_time(place))
        return false;
    UsbChanges &changes = state().changes;
    std::vector<std::string> &removed = changes.removed;
    removed.erase(std::remove(removed.begin(), removed.end(), place), removed.end());
    if (!contains(usb_places(changes).value_or(std::vector<std::string>()), place))
        changes.added.push_back(place);
    keep_added();
    PLATFORM_LOGI("usb_storage", "%s was added", place.c_str());
    usb_tell_change();
    return true;
}

bool usb_remove(const std::string &path)
{
    const std::string place = without_last_slashes(path);
    UsbChanges &changes = state().changes;
    std::vector<std::string> &added = changes.added;
    const bool was_added = contains(added, place);
    const bool listed = contains(usb_places(changes).value_or(std::vector<std::string>()), place);
    if (!was_added && !listed)
        return false;
    added.erase(std::remove(added.begin(), added.end(), place), added.end());
    if (listed && !was_added)
        changes.removed.push_back(place);
    keep_added();
    // Whoever pulls it may want to unmount it next.
    Lookahead::get().drop();
    PLATFORM_LOGI("usb_storage", "%s was removed", place.c_str());
    usb_tell_change();
    return true;
}

} // namespace platform
