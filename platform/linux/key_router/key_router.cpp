#include "key_router.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <memory>
#include <set>
#include <string>

#include "key_router/shortcuts_inhibitor.h"
#include "log/platform_log.h"
#include "player_rules/key_names.h"

namespace platform {

namespace {

constexpr char SERVICE[] = "key_router";

/**
 * The grabs of this process. A Linux compositor hands the focused window every key it does not keep
 * for its own shortcuts, so a grab comes down to having those shortcuts put aside.
 */
class KeyRouter {
  public:
    static KeyRouter &get()
    {
        static KeyRouter router;
        return router;
    }

    void initialize(wl_registry *registry, wl_seat *seat)
    {
        registry_ = registry;
        seat_ = seat;
    }

    bool set(wl_surface *surface, const KeyRouter_KeyList &list)
    {
        Grab &grab = grabs_[surface];
        for (int i = 0; i < list.count; ++i)
            grab.keys.insert(list.keys[i].name);
        if (!grab.inhibitor && registry_ && seat_)
            grab.inhibitor = ShortcutsInhibitor::create(registry_, seat_, surface);
        PLATFORM_LOGI(SERVICE, "%zu keys grabbed%s", grab.keys.size(),
                      grab.inhibitor ? ", compositor shortcuts put aside" : "");
        return true;
    }

    bool unset(wl_surface *surface, const KeyRouter_KeyList &list)
    {
        const auto grab = grabs_.find(surface);
        if (grab == grabs_.end())
            return false;
        for (int i = 0; i < list.count; ++i)
            grab->second.keys.erase(list.keys[i].name);
        if (grab->second.keys.empty()) {
            grabs_.erase(grab);
            PLATFORM_LOGI(SERVICE, "keys released");
        }
        return true;
    }

    void finalize()
    {
        grabs_.clear();
        registry_ = nullptr;
        seat_ = nullptr;
    }

  private:
    struct Grab {
        std::set<std::string> keys;
        std::unique_ptr<ShortcutsInhibitor> inhibitor;
    };

    wl_registry *registry_ = nullptr;
    wl_seat *seat_ = nullptr;
    std::map<wl_surface *, Grab> grabs_;
};

bool is_valid(const KeyRouter_KeyList *list)
{
    return list && list->count >= 0 && list->count <= KEY_ROUTER_MAX_KEYS;
}

} // namespace

} // namespace platform

using platform::KeyRouter;

void KeyRouter_Initialize(wl_display * /*display*/, wl_registry *registry, wl_seat *seat,
                          unsigned int /*id*/)
{
    KeyRouter::get().initialize(registry, seat);
}

void KeyRouter_Reset_KeyList(KeyRouter_KeyList *list)
{
    if (list)
        std::memset(list, 0, sizeof *list);
}

void KeyRouter_Add_All_Key(int mode, KeyRouter_KeyList *list)
{
    if (!platform::is_valid(list))
        return;
    for (const char *name : platform::tv_key_names()) {
        if (list->count == KEY_ROUTER_MAX_KEYS)
            return;
        KeyRouter_Key &key = list->keys[list->count++];
        const size_t length = std::min<size_t>(std::strlen(name), KEY_ROUTER_NAME_SIZE - 1);
        std::memcpy(key.name, name, length);
        key.name[length] = '\0';
        key.mode = mode;
    }
}

bool KeyRouter_Remove_Key(const char *name, int mode, KeyRouter_KeyList *list)
{
    if (!name || !platform::is_valid(list))
        return false;
    KeyRouter_Key *const end = list->keys + list->count;
    KeyRouter_Key *const kept = std::remove_if(list->keys, end, [&](const KeyRouter_Key &key) {
        return key.mode == mode && std::strncmp(key.name, name, KEY_ROUTER_NAME_SIZE) == 0;
    });
    list->count = static_cast<int>(kept - list->keys);
    return kept != end;
}

bool KeyRouter_Set_KeyList(wl_surface *surface, const KeyRouter_KeyList *list)
{
    return surface && platform::is_valid(list) && KeyRouter::get().set(surface, *list);
}

bool KeyRouter_UnSet_KeyList(wl_surface *surface, const KeyRouter_KeyList *list)
{
    return surface && platform::is_valid(list) && KeyRouter::get().unset(surface, *list);
}

void KeyRouter_Finalize(void)
{
    KeyRouter::get().finalize();
}
