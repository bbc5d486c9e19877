#include "config_store.h"

#include <functional>
#include <string>
#include <utility>

#include "config_store/config_files.h"
#include "config_store/config_watcher.h"
#include "config_store/platform_store.h"
#include "player_rules/config_keys.h"
#include "settings/settings.h"

struct _keynode_t {
    std::string name;
};

namespace {

class ConfigStore {
  public:
    // Never destroyed: the main loop that the watcher hangs on ends before static objects do.
    static ConfigStore &get()
    {
        static ConfigStore &store = *new ConfigStore;
        return store;
    }

    platform::ConfigFiles &files() { return files_; }
    platform::ConfigWatcher &watcher() { return watcher_; }
    std::function<void(const std::string &, int)> own_write;

  private:
    ConfigStore()
        : files_(platform::Settings::get().state_dir, platform::Settings::get().runtime_dir),
          watcher_(files_)
    {
    }

    platform::ConfigFiles files_;
    platform::ConfigWatcher watcher_;
};

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

void platform::on_own_write(std::function<void(const std::string &, int)> listener)
{
    ConfigStore::get().own_write = std::move(listener);
}

int vconf_get_int(const char *key, int *value)
{
    if (key == nullptr || value == nullptr)
        return -1;
    return ConfigStore::get().files().read(key, *value) ? 0 : -1;
}

int vconf_set_int(const char *key, int value)
{
    if (key == nullptr)
        return -1;
    ConfigStore &store = ConfigStore::get();
    if (!store.files().write(key, value))
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
