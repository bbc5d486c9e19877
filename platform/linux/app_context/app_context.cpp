#include "app_context.h"

#include "app_context/app_context_state.h"
#include "log/platform_log.h"

namespace {

platform::AppContextState &state()
{
    static platform::AppContextState the_state;
    return the_state;
}

void set_epop_blocked(bool blocked)
{
    if (state().epop_blocked != blocked)
        PLATFORM_LOGI("app_context", "pop-ups of the set are %s", blocked ? "blocked" : "free");
    state().epop_blocked = blocked;
}

} // namespace

const platform::AppContextState &platform::AppContextState::get()
{
    return state();
}

int app_context_manager_init(void)
{
    state().connected = true;
    return 0;
}

void app_context_manager_fini(void)
{
    set_epop_blocked(false);
    state().connected = false;
}

int app_context_manager_set_epop_block(void)
{
    if (!state().connected)
        return -1;
    set_epop_blocked(true);
    return 0;
}

// The player disconnects before it destroys its controller, which releases the block once more.
int app_context_manager_unset_epop_block(void)
{
    set_epop_blocked(false);
    return 0;
}

// Fonts and sizes here are those of Elementary's own configuration, which elm_init() has read.
int ui_config_manager_init(void)
{
    return 0;
}

void ui_config_manager_fini(void) {}

// The stock Elementary has no additions to start.
int ea_init(void)
{
    return 0;
}

SettingsAPI *SettingsAPI::Get()
{
    static SettingsAPI service;
    return &service;
}

void SettingsAPI::DisableItemsByList(const std::vector<std::string> &items,
                                     const std::string &app_id)
{
    state().disabled_items[app_id] = items;
    PLATFORM_LOGI("app_context", "%zu menu items are out of bounds for %s", items.size(),
                  app_id.c_str());
}

void SettingsAPI::RemoveDisabledItemsByAppname(const std::string &app_id)
{
    if (state().disabled_items.erase(app_id) != 0)
        PLATFORM_LOGI("app_context", "menu items are free again for %s", app_id.c_str());
}
