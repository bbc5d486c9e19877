#include "widget_extension/plain_text.h"

#include <cstdlib>
#include <memory>

#include <Elementary.h>

namespace platform {
namespace {

bool is_between(Eina_Unicode letter, Eina_Unicode first, Eina_Unicode last)
{
    return letter >= first && letter <= last;
}

/** Hebrew, Arabic and their neighbours, presentation forms included. */
bool is_right_to_left_letter(Eina_Unicode letter)
{
    return is_between(letter, 0x05be, 0x08ff) || is_between(letter, 0xfb1d, 0xfdff) ||
           is_between(letter, 0xfe70, 0xfefc) || is_between(letter, 0x10800, 0x10fff) ||
           is_between(letter, 0x1e800, 0x1efff) || letter == 0x200f;
}

/** Letters of all other scripts; digits, blanks and punctuation have no direction of their own. */
bool is_left_to_right_letter(Eina_Unicode letter)
{
    if (letter < 0x80)
        return is_between(letter, 'A', 'Z') || is_between(letter, 'a', 'z');
    const bool symbol = is_between(letter, 0x80, 0xbf) || is_between(letter, 0x2000, 0x2bff) ||
                        is_between(letter, 0x3000, 0x3004) || letter == 0xfeff;
    return !symbol || letter == 0x200e;
}

} // namespace

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
    int position = 0;
    while (const Eina_Unicode letter = eina_unicode_utf8_next_get(text, &position)) {
        if (is_right_to_left_letter(letter))
            return true;
        if (is_left_to_right_letter(letter))
            return false;
    }
    return false;
}

} // namespace platform
