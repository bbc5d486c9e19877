#include "store_watch.h"

#include <cstdio>
#include <memory>
#include <utility>

#include <dirent.h>

#include "config_store/inotify_events.h"

namespace tvctl {

namespace {

constexpr uint32_t EVENTS = IN_CLOSE_WRITE | IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO |
                            IN_MOVE_SELF | IN_ONLYDIR;
constexpr const char *ROOTS[] = {"db/", "memory/"};

struct DirectoryCloser {
    void operator()(DIR *directory) const { closedir(directory); }
};

bool is_root(const std::string &prefix)
{
    return prefix == ROOTS[0] || prefix == ROOTS[1];
}

} // namespace

StoreWatch::StoreWatch(std::string state_dir, std::string runtime_dir,
                       std::function<void(const std::string &)> on_change)
    : state_dir_(std::move(state_dir)), runtime_dir_(std::move(runtime_dir)),
      on_change_(std::move(on_change)), files_(state_dir_, runtime_dir_),
      inotify_(inotify_init1(IN_NONBLOCK | IN_CLOEXEC))
{
}

bool StoreWatch::start()
{
    if (!inotify_ || !watch_root(ROOTS[0]) || !watch_root(ROOTS[1]))
        return false;
    handler_.reset(ecore_main_fd_handler_add(
        inotify_.number(), ECORE_FD_READ,
        [](void *data, Ecore_Fd_Handler *) -> Eina_Bool {
            static_cast<StoreWatch *>(data)->read_changes();
            return ECORE_CALLBACK_RENEW;
        },
        this, nullptr, nullptr));
    return handler_ != nullptr;
}

std::string StoreWatch::path(const std::string &prefix) const
{
    return (prefix.compare(0, 3, "db/") == 0 ? state_dir_ : runtime_dir_) + "/" + prefix;
}

bool StoreWatch::watch_root(const std::string &prefix)
{
    // The folder of any key below it; the key itself is not made.
    return files_.make_folder(prefix + "any") && watch(prefix, Found::Before);
}

/** Watches a folder and those in it. Keys in a folder that has just come are changes themselves. */
bool StoreWatch::watch(const std::string &prefix, Found found)
{
    const int number = inotify_add_watch(inotify_.number(), path(prefix).c_str(), EVENTS);
    if (number < 0)
        return false;
    prefixes_[number] = prefix;
    const std::unique_ptr<DIR, DirectoryCloser> folder(opendir(path(prefix).c_str()));
    while (const dirent *entry = folder ? readdir(folder.get()) : nullptr) {
        const std::string key = prefix + entry->d_name;
        if (!platform::ConfigFiles::is_valid_key(key))
            continue;
        // What is no folder is not watched as one.
        if (!watch(key + "/", found) && found == Found::Now)
            tell(key);
    }
    return true;
}

void StoreWatch::read_changes()
{
    platform::read_inotify_events(inotify_.number(),
                                  [this](const inotify_event &event) { take(event); });
}

void StoreWatch::take(const inotify_event &event)
{
    if ((event.mask & IN_Q_OVERFLOW) != 0)
        std::fprintf(stderr, "tvctl: too many changes at once; some are not shown\n");
    const auto folder = prefixes_.find(event.wd);
    if (folder == prefixes_.end())
        return;
    const std::string prefix = folder->second;
    if ((event.mask & IN_MOVE_SELF) != 0)
        inotify_rm_watch(inotify_.number(), event.wd);
    if ((event.mask & IN_IGNORED) != 0) {
        prefixes_.erase(folder);
        if (is_root(prefix))
            watch_root(prefix);
        return;
    }
    if (event.len == 0)
        return;
    const std::string key = prefix + event.name;
    if ((event.mask & IN_ISDIR) == 0 && (event.mask & IN_CREATE) == 0)
        tell(key);
    else if ((event.mask & IN_ISDIR) != 0 && (event.mask & (IN_CREATE | IN_MOVED_TO)) != 0 &&
             platform::ConfigFiles::is_valid_key(key))
        watch(key + "/", Found::Now);
}

void StoreWatch::tell(const std::string &key)
{
    // Files that are still being written have names that no key has.
    if (platform::ConfigFiles::is_valid_key(key))
        on_change_(key);
}

} // namespace tvctl
