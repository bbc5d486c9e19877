#include "system_facts.h"

#include <cstring>
#include <string>

#include "settings/settings.h"
#include "system_facts/language.h"

namespace {

const char *const DISCLAIMER_FEATURE = "com.norvane/featureconf/ostrel_demo_player.show_disclaimer";

} // namespace

int system_info_get_custom_bool(const char *key, bool *value)
{
    if (key == nullptr || value == nullptr || std::strcmp(key, DISCLAIMER_FEATURE) != 0)
        return -1;
    *value = platform::Settings::get().disclaimer;
    return 0;
}

int system_info_get_value_int(int key, int *value)
{
    if (value == nullptr || key != SYSTEM_INFO_KEY_STORE_CONTENT_TYPE)
        return -1;
    *value = platform::Settings::get().store_content_type;
    return 0;
}

int runtime_info_get_value_string(int key, char **value)
{
    if (value == nullptr || key != RUNTIME_INFO_KEY_LANGUAGE)
        return -1;
    char *text = strdup(platform::language().c_str());
    if (text == nullptr)
        return -1;
    *value = text;
    return 0;
}

int ua_UI_orientation_get(void)
{
    const std::string &configured = platform::Settings::get().menu_orientation;
    const bool right_to_left =
        configured.empty() ? platform::is_right_to_left(platform::language()) : configured == "rtl";
    return right_to_left ? UI_ORIENTATION_RIGHT_TO_LEFT : UI_ORIENTATION_LEFT_TO_RIGHT;
}
