#include "system_facts/message_catalogue.h"

#include <clocale>
#include <cstdlib>
#include <libintl.h>
#include <map>
#include <string>

#include "player_rules/user_interface.h"
#include "settings/settings.h"
#include "system_facts/language.h"

// The library's own switch: a program that changes LANGUAGE while it runs counts it up (GNU gettext
// manual, "Changing the language at runtime").
extern "C" int _nl_msg_cat_cntr;

namespace platform {

namespace {

// Countries whose language we have in the form of another country only.
std::string relative_of(const std::string &language)
{
    static const std::map<std::string, std::string> relatives = {
        {"pt_PT", "pt_BR"}, {"zh_HK", "zh_TW"}, {"zh_MO", "zh_TW"}, {"zh_SG", "zh_CN"}};
    const auto found = relatives.find(language);
    return found == relatives.end() ? std::string() : found->second + ":";
}

/** Without any locale the texts would not be looked up at all. */
void ensure_locale()
{
    const char *locale = setlocale(LC_MESSAGES, nullptr);
    const std::string name = locale ? locale : "C";
    if (name != "C" && name != "POSIX")
        return;
    setlocale(LC_ALL, "C.UTF-8");
    setlocale(LC_NUMERIC, "C");
}

} // namespace

void bind_message_catalogue()
{
    const std::string folder = Settings::get().resource_dir + "/locale";
    bindtextdomain(TEXT_DOMAIN, folder.c_str());
    bind_textdomain_codeset(TEXT_DOMAIN, "UTF-8");
    choose_catalogue_language();
}

void choose_catalogue_language()
{
    ensure_locale();
    const std::string full = language();
    const std::string name = full.substr(0, full.find_first_of(".@"));
    // English last: a text in it is better than the text's name.
    setenv("LANGUAGE", (name + ":" + relative_of(name) + "en").c_str(), 1);
    ++_nl_msg_cat_cntr;
}

} // namespace platform
