#include "app_framework.h"

#include <cstring>

#include "app_framework/application.h"
#include "app_framework/early_start.h"
#include "media_player/media_system.h"

using platform::Application;

namespace {

// Here, and not in a file of its own, because every application pulls this object file in.
__attribute__((constructor)) void before_main()
{
    platform::prepare_process();
}

} // namespace

int ui_app_main(int argc, char **argv, ui_app_lifecycle_callback_s *callbacks, void *user_data)
{
    if (!callbacks || !argv)
        return 1;
    const int status = Application::get().run(argc, argv, *callbacks, user_data);
    platform::abandon_media_system();
    return status;
}

void ui_app_exit(void)
{
    Application::get().quit();
}

int ui_app_add_event_handler(app_event_handler_h *handler, app_event_type_e event_type,
                             app_event_cb callback, void *user_data)
{
    if (!handler || !callback)
        return -1;
    *handler = Application::get().add_event_handler(event_type, callback, user_data);
    return 0;
}

int app_control_get_extra_data(app_control_h app_control, const char *key, char **value)
{
    if (!app_control || !key || !value)
        return -1;
    const auto extra = app_control->extras.find(key);
    if (extra == app_control->extras.end())
        return -1;
    char *copy = strdup(extra->second.c_str());
    if (!copy)
        return -1;
    *value = copy;
    return 0;
}
