#include "system_facts/language.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string_view>

#include "log/platform_log.h"
#include "settings/settings.h"
#include "settings/tv_conf.h"

namespace platform {

namespace {

// The language that set_language() chose; empty until then.
std::string &chosen()
{
    static std::string name;
    return name;
}

// The first of the locale's variables that is set decides, as setlocale() has it for messages.
std::string from_locale()
{
    for (const char *variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const char *value = std::getenv(variable);
        if (value != nullptr && value[0] != '\0')
            return value;
    }
    return {};
}

bool is_neutral(const std::string &locale)
{
    const std::string name = locale.substr(0, locale.find_first_of(".@"));
    return name.empty() || name == "C" || name == "POSIX";
}

} // namespace

std::string language()
{
    if (!chosen().empty())
        return chosen();
    if (!Settings::get().language.empty())
        return Settings::get().language;
    const std::string locale = from_locale();
    return is_neutral(locale) ? "en_US" : locale;
}

bool set_language(const std::string &name)
{
    if (!is_language(name))
        return false;
    PLATFORM_LOGI("system_facts", "language %s -> %s", language().c_str(), name.c_str());
    chosen() = name;
    return true;
}

bool is_right_to_left(const std::string &name)
{
    // Punjabi has another script on each side of the border.
    static constexpr std::array<std::string_view, 15> LANGUAGES = {
        "ar",    "ckb", "dv", "fa",  "he", "iw", "ks", "nqo",
        "pa_PK", "ps",  "sd", "syr", "ug", "ur", "yi"};
    return std::any_of(LANGUAGES.begin(), LANGUAGES.end(), [&name](std::string_view language) {
        return name.substr(0, name.find_first_of(".@")) == language ||
               name.substr(0, name.find_first_of("_.@")) == language;
    });
}

} // namespace platform
