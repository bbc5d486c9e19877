#include "config_store.h"

#include <cerrno>
#include <condition_variable>
#include <cstring>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

#include "base/worker_thread.h"
#include "config_store/config_files.h"
#include "config_store/config_watcher.h"
#include "config_store/platform_store.h"
#include "log/platform_log.h"
#include "player_rules/config_keys.h"
#include "settings/settings.h"

struct _keynode_t {
    std::string name;
};

namespace {

// What a sync takes on a medium in good health is less. The service manager bears a main loop that
// stands for three seconds.
constexpr std::chrono::milliseconds LONGEST_WRITE{500};
constexpr std::chrono::milliseconds LONGEST_END{1500};

class ConfigStore {
  public:
    // Never destroyed: the main loop that the watcher hangs on ends before static objects do, and
    // the writer may outlast both.
    static ConfigStore &get()
    {
        static ConfigStore &store = *new ConfigStore;
        return store;
    }

    bool read(const std::string &key, int &value);
    bool write(const std::string &key, int value);
    std::map<std::string, int> list();
    bool finish_writes();

    platform::ConfigFiles &files() { return files_; }
    platform::ConfigWatcher &watcher() { return watcher_; }
    std::function<void(const std::string &, int)> own_write;

  private:
    /** A value on its way to the medium. */
    struct Write {
        int value;
        uint64_t number;
    };

    ConfigStore()
        : files_(platform::Settings::get().state_dir, platform::Settings::get().runtime_dir),
          surviving_files_(files_),
          watcher_(files_, [this](const std::string &folder) { return sync_later(folder); })
    {
    }

    bool sync_later(const std::string &folder);
    bool write_surviving(const std::string &key, int value);
    bool bring_to_medium(const std::string &key, uint64_t number);

    platform::ConfigFiles files_;
    platform::ConfigFiles
        surviving_files_; ///< the writer's, or the main loop's where there is none
    platform::ConfigWatcher watcher_;

    std::mutex mutex_;
    std::condition_variable written_;
    std::map<std::string, Write> on_their_way_;
    bool late_ = false; ///< nobody waits for what is on its way
    uint64_t last_number_ = 0;
    platform::WorkerThread writer_{"config-writer"};
};

bool ConfigStore::read(const std::string &key, int &value)
{
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (const auto write = on_their_way_.find(key); write != on_their_way_.end()) {
            value = write->second.value;
            return true;
        }
    }
    return files_.read(key, value);
}

bool ConfigStore::write(const std::string &key, int value)
{
    return platform::ConfigFiles::survives(key) ? write_surviving(key, value)
                                                : files_.write(key, value);
}

// Before any key is written that the new folder in it will hold.
bool ConfigStore::sync_later(const std::string &folder)
{
    const auto sync = [folder] {
        const bool synced = platform::ConfigFiles::sync_folder(folder);
        if (!synced)
            PLATFORM_LOGW("config_store", "%s could not be synced: %s", folder.c_str(),
                          std::strerror(errno));
        return synced;
    };
    return writer_.post(sync) || sync();
}

// A medium that takes long must not hold up the main loop. The caller learns what becomes of its
// value where that is known soon, which it is unless the medium is in trouble.
bool ConfigStore::write_surviving(const std::string &key, int value)
{
    const auto result = std::make_shared<std::optional<bool>>();
    std::unique_lock<std::mutex> lock(mutex_);
    const uint64_t number = ++last_number_;
    on_their_way_[key] = {value, number};
    lock.unlock();
    const bool posted = writer_.post([this, key, number, result] {
        const bool done = bring_to_medium(key, number);
        const std::lock_guard<std::mutex> guard(mutex_);
        *result = done;
        written_.notify_all();
    });
    if (!posted)
        return bring_to_medium(key, number);
    lock.lock();
    if (!late_ && !written_.wait_for(lock, LONGEST_WRITE, [&] { return result->has_value(); })) {
        late_ = true;
        PLATFORM_LOGW("config_store", "%s takes long to be written; it is not waited for",
                      key.c_str());
    }
    return result->value_or(true);
}

bool ConfigStore::bring_to_medium(const std::string &key, uint64_t number)
{
    std::unique_lock<std::mutex> lock(mutex_);
    const Write write = on_their_way_.at(key);
    if (write.number != number)
        return true; // a newer value follows
    lock.unlock();
    const bool done = surviving_files_.write(key, write.value);
    lock.lock();
    if (const auto at = on_their_way_.find(key); at->second.number == number)
        on_their_way_.erase(at);
    if (on_their_way_.empty() && std::exchange(late_, false))
        PLATFORM_LOGI("config_store", "nothing waits to be written any more");
    return done;
}

std::map<std::string, int> ConfigStore::list()
{
    std::unique_lock<std::mutex> lock(mutex_);
    // Before the medium is read: what gets there in between would be missed in both.
    const std::map<std::string, Write> newest = on_their_way_;
    lock.unlock();
    std::map<std::string, int> all = files_.list();
    for (const auto &[key, write] : newest)
        all[key] = write.value;
    return all;
}

bool ConfigStore::finish_writes()
{
    std::unique_lock<std::mutex> lock(mutex_);
    const auto all_written = [this] { return on_their_way_.empty(); };
    if (written_.wait_for(lock, LONGEST_END, all_written))
        return true;
    for (const auto &[key, write] : on_their_way_)
        PLATFORM_LOGE("config_store", "%s may keep its old value: %d is not written yet",
                      key.c_str(), write.value);
    return false;
}

platform::ConfigWatcher::Owner owner_of(vconf_callback_fn callback)
{
    return reinterpret_cast<platform::ConfigWatcher::Owner>(callback);
}

} // namespace

void platform::write_factory_defaults()
{
    for (const KnownKey &key : known_keys()) {
        int present = 0;
        if (key.factory && vconf_get_int(key.name, &present) != 0 &&
            ConfigStore::get().files().holds_nothing(key.name))
            vconf_set_int(key.name, *key.factory);
    }
}

std::map<std::string, int> platform::stored_keys()
{
    return ConfigStore::get().list();
}

bool platform::finish_writes()
{
    return ConfigStore::get().finish_writes();
}

void platform::on_own_write(std::function<void(const std::string &, int)> listener)
{
    ConfigStore::get().own_write = std::move(listener);
}

int vconf_get_int(const char *key, int *value)
{
    if (key == nullptr || value == nullptr)
        return -1;
    return ConfigStore::get().read(key, *value) ? 0 : -1;
}

int vconf_set_int(const char *key, int value)
{
    if (key == nullptr)
        return -1;
    ConfigStore &store = ConfigStore::get();
    if (!store.write(key, value))
        return -1;
    if (const auto listener = store.own_write)
        listener(key, value);
    return 0;
}

int vconf_notify_key_changed(const char *key, vconf_callback_fn callback, void *user_data)
{
    if (key == nullptr || callback == nullptr || !platform::ConfigFiles::is_valid_key(key))
        return -1;
    const auto notify = [callback, user_data](const std::string &name) {
        _keynode_t node{name};
        callback(&node, user_data);
    };
    return ConfigStore::get().watcher().add(key, owner_of(callback), notify) ? 0 : -1;
}

int vconf_ignore_key_changed(const char *key, vconf_callback_fn callback)
{
    if (key == nullptr || callback == nullptr)
        return -1;
    return ConfigStore::get().watcher().remove(key, owner_of(callback)) ? 0 : -1;
}

const char *vconf_keynode_get_name(keynode_t *node)
{
    return node != nullptr ? node->name.c_str() : nullptr;
}
