/**
 * Comparing texts without regard to the case of ASCII letters, the same in every locale: the C
 * library's functions follow the locale, and in a Turkish one an I is no i. Any thread.
 */
#pragma once

#include <algorithm>
#include <string_view>

namespace platform {

/** The lower-case form of an ASCII letter; any other byte as it is. */
constexpr char lower_case(char letter)
{
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

/** The place of a text in another, looked for from a place on; npos when it is not there. */
inline size_t find_nocase(std::string_view text, std::string_view what, size_t from = 0)
{
    if (from > text.size())
        return std::string_view::npos;
    const auto found =
        std::search(text.begin() + from, text.end(), what.begin(), what.end(),
                    [](char one, char other) { return lower_case(one) == lower_case(other); });
    return found == text.end() ? std::string_view::npos : static_cast<size_t>(found - text.begin());
}

} // namespace platform
