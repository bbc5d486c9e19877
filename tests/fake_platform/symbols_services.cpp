// Application framework, configuration store, system facts, storage, power, sound and context.

#include "app_context.h"
#include "platform.h"
#include "resource_path.h"
#include "sound_route.h"
#include "system_facts.h"
#include "usb_storage.h"

namespace {

fake::Platform &the_fake()
{
    return fake::platform();
}

// A service that is held from the call on, whether or not it succeeds.
int start(const char *function, const char *service)
{
    the_fake().hold(service);
    return the_fake().told(function);
}

void finish(const char *function, const char *service)
{
    the_fake().call(function);
    the_fake().release(service);
}

int give_next(const char *function, usb_device_list_h list, usb_device_h *device)
{
    const int failed = the_fake().asked(function, static_cast<const void *>(list));
    if (failed != 0)
        return failed;
    usb_device_h next = the_fake().registry.check(function, list) ? list->take() : nullptr;
    if (next == nullptr)
        return -1;
    *device = next;
    return 0;
}

int subscribe(const char *function, const char *event, device_power_cb callback, void *data)
{
    const int failed = the_fake().told(function);
    if (failed == 0)
        the_fake().power.followers[event] = {callback, data};
    return failed;
}

int unsubscribe(const char *function, const char *event, device_power_cb callback)
{
    const int failed = the_fake().told(function);
    auto &followers = the_fake().power.followers;
    const auto found = followers.find(event);
    if (found == followers.end() || found->second.callback != callback)
        return -1;
    followers.erase(found);
    return failed;
}

} // namespace

// ---- Application framework ----

int ui_app_main(int argc, char **argv, ui_app_lifecycle_callback_s *callbacks, void *user_data)
{
    the_fake().call("ui_app_main", argc, static_cast<const void *>(argv));
    return the_fake().app.run(callbacks, user_data);
}

void ui_app_exit(void)
{
    the_fake().call("ui_app_exit");
    ++the_fake().app.exit_requests;
}

int ui_app_add_event_handler(app_event_handler_h *handler, app_event_type_e event_type,
                             app_event_cb callback, void *user_data)
{
    the_fake().call(
        "ui_app_add_event_handler",
        fake::Raw{event_type == APP_EVENT_LANGUAGE_CHANGED ? "LANGUAGE_CHANGED" : "another event"},
        static_cast<const void *>(user_data));
    const int failed = the_fake().script.result("ui_app_add_event_handler");
    if (handler == nullptr || callback == nullptr)
        return -1;
    static char place;
    *handler = reinterpret_cast<app_event_handler_h>(&place);
    the_fake().app.follow(event_type, callback, user_data);
    return failed;
}

Evas_Object *app_get_preinitialized_window(const char *window_name)
{
    the_fake().call("app_get_preinitialized_window", window_name);
    if (!the_fake().widgets.window_prepared)
        return nullptr;
    return the_fake().widgets.add("window", nullptr);
}

// ---- Configuration store ----

int vconf_get_int(const char *key, int *value)
{
    const int failed = the_fake().asked("vconf_get_int", key);
    const auto found = the_fake().store.values.find(key);
    if (failed != 0 || found == the_fake().store.values.end())
        return -1;
    *value = found->second;
    return 0;
}

int vconf_set_int(const char *key, int value)
{
    const int failed = the_fake().told("vconf_set_int", key, value);
    if (failed == 0)
        the_fake().store.written(key, value);
    return failed;
}

int vconf_notify_key_changed(const char *key, vconf_callback_fn callback, void *user_data)
{
    const int failed =
        the_fake().told("vconf_notify_key_changed", key, static_cast<const void *>(user_data));
    if (failed == 0)
        the_fake().store.follow(key, callback, user_data);
    return failed;
}

int vconf_ignore_key_changed(const char *key, vconf_callback_fn callback)
{
    the_fake().call("vconf_ignore_key_changed", key);
    return the_fake().store.unfollow(key, callback) ? 0 : -1;
}

// ---- System facts ----

int system_info_get_custom_bool(const char *key, bool *value)
{
    const int failed = the_fake().asked("system_info_get_custom_bool", key);
    if (failed == 0)
        *value = the_fake().system.has_disclaimer;
    return failed;
}

int system_info_get_value_int(int key, int *value)
{
    const int failed = the_fake().asked("system_info_get_value_int", key);
    if (failed == 0)
        *value = the_fake().system.store_content_type;
    return failed;
}

int runtime_info_get_value_string(int key, char **value)
{
    const int failed = the_fake().asked("runtime_info_get_value_string", key);
    if (failed != 0)
        return failed;
    *value =
        the_fake().system.language_missing
            ? nullptr
            : the_fake().texts.give("runtime_info_get_value_string", the_fake().system.language);
    return 0;
}

int ua_UI_orientation_get(void)
{
    the_fake().query("ua_UI_orientation_get");
    return the_fake().system.ui_orientation;
}

// ---- Resources and storage ----

char *getResourcePath(const char *application_id, const char *name)
{
    the_fake().query("getResourcePath", application_id, name);
    const auto found = the_fake().system.resources.find(name);
    if (found == the_fake().system.resources.end())
        return nullptr;
    return the_fake().texts.give("getResourcePath", found->second);
}

void freeResourcePath(char *path)
{
    the_fake().query("freeResourcePath", path);
    the_fake().texts.taken_back(path);
    std::free(path);
}

int usb_device_get_device_list(int type, usb_device_list_h *list)
{
    const int failed = the_fake().asked("usb_device_get_device_list", type);
    if (failed != 0)
        return failed;
    the_fake().registry.lend(&the_fake().usb_list, "usb-list");
    the_fake().usb_list.refresh(the_fake().storage.sticks);
    *list = &the_fake().usb_list;
    return 0;
}

int usb_device_list_get_first(usb_device_list_h list, usb_device_h *device)
{
    if (list != nullptr)
        list->rewind();
    return give_next("usb_device_list_get_first", list, device);
}

int usb_device_list_get_next(usb_device_list_h list, usb_device_h *device)
{
    return give_next("usb_device_list_get_next", list, device);
}

const char *usb_device_get_mountpath(usb_device_h device)
{
    the_fake().query("usb_device_get_mountpath", static_cast<const void *>(device));
    if (!the_fake().registry.check("usb_device_get_mountpath", device))
        return "";
    return device->mount_path.c_str();
}

// ---- Power ----

int device_power_subscribe_poweroff(device_power_cb callback, void *user_data)
{
    return subscribe("device_power_subscribe_poweroff", "poweroff", callback, user_data);
}

int device_power_subscribe_standby(device_power_cb callback, void *user_data)
{
    return subscribe("device_power_subscribe_standby", "standby", callback, user_data);
}

int device_power_subscribe_wakeup(device_power_cb callback, void *user_data)
{
    return subscribe("device_power_subscribe_wakeup", "wakeup", callback, user_data);
}

int device_power_subscribe_state_changed_event(device_power_state_changed_cb callback,
                                               void *user_data)
{
    const int failed = the_fake().told("device_power_subscribe_state_changed_event");
    if (failed == 0) {
        the_fake().power.state_callback = callback;
        the_fake().power.state_data = user_data;
    }
    return failed;
}

int device_power_unsubscribe_poweroff(device_power_cb callback)
{
    return unsubscribe("device_power_unsubscribe_poweroff", "poweroff", callback);
}

int device_power_unsubscribe_standby(device_power_cb callback)
{
    return unsubscribe("device_power_unsubscribe_standby", "standby", callback);
}

int device_power_unsubscribe_wakeup(device_power_cb callback)
{
    return unsubscribe("device_power_unsubscribe_wakeup", "wakeup", callback);
}

// ---- Sound ----

int sound_manager_get_speaker_selection(int *speaker)
{
    const int failed = the_fake().asked("sound_manager_get_speaker_selection");
    if (failed == 0)
        *speaker = the_fake().system.sound_route;
    return failed;
}

int sound_manager_set_speaker_selection(int speaker)
{
    const int failed = the_fake().told("sound_manager_set_speaker_selection", speaker);
    if (failed == 0)
        the_fake().system.sound_route = speaker;
    return failed;
}

// ---- Application context ----

int app_context_manager_init(void)
{
    return start("app_context_manager_init", "application context");
}

void app_context_manager_fini(void)
{
    finish("app_context_manager_fini", "application context");
}

int app_context_manager_set_epop_block(void)
{
    const int failed = the_fake().told("app_context_manager_set_epop_block");
    if (failed == 0)
        the_fake().hold("pop-up block");
    return failed;
}

int app_context_manager_unset_epop_block(void)
{
    const int failed = the_fake().told("app_context_manager_unset_epop_block");
    if (failed == 0)
        the_fake().release("pop-up block");
    return failed;
}

int ui_config_manager_init(void)
{
    return start("ui_config_manager_init", "UI configuration");
}

void ui_config_manager_fini(void)
{
    finish("ui_config_manager_fini", "UI configuration");
}

int ea_init(void)
{
    return the_fake().told("ea_init");
}

SettingsAPI *SettingsAPI::Get()
{
    the_fake().query("SettingsAPI::Get");
    static SettingsAPI service;
    return &service;
}

void SettingsAPI::DisableItemsByList(const std::vector<std::string> &items,
                                     const std::string &app_id)
{
    std::string names;
    for (const std::string &item : items)
        names += (names.empty() ? "" : " ") + item;
    the_fake().call("SettingsAPI::DisableItemsByList", names, app_id);
    the_fake().hold("menu block for " + app_id);
}

void SettingsAPI::RemoveDisabledItemsByAppname(const std::string &app_id)
{
    the_fake().call("SettingsAPI::RemoveDisabledItemsByAppname", app_id);
    the_fake().release("menu block for " + app_id);
}
