#include "widget_extension/plain_text.h"

#include <cstdlib>
#include <memory>
#include <vector>

#include <Elementary.h>
#include <fribidi.h>

namespace platform {

std::string markup_of(const char *text)
{
    const std::unique_ptr<char, decltype(&std::free)> markup(
        elm_entry_utf8_to_markup(text ? text : ""), &std::free);
    return markup ? markup.get() : "";
}

bool reads_right_to_left(const char *text)
{
    if (!text)
        return false;
    std::vector<FriBidiCharType> types;
    int position = 0;
    while (const Eina_Unicode letter = eina_unicode_utf8_next_get(text, &position))
        types.push_back(fribidi_get_bidi_type(letter));
    return fribidi_get_par_direction(types.data(), static_cast<FriBidiStrIndex>(types.size())) ==
           FRIBIDI_PAR_RTL;
}

} // namespace platform
