/**
 * Comparing names without regard to case. Only the letters of ASCII have two cases here, whatever
 * the locale: the C library's functions follow it, and in a Turkish one an I is no i. Any thread.
 */
#pragma once

#include <algorithm>
#include <string_view>

inline bool IsSameLetter(char cFirst, char cSecond)
{
    const auto Lower = [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    };
    return Lower(cFirst) == Lower(cSecond);
}

inline bool IsSameName(std::string_view strFirst, std::string_view strSecond)
{
    return std::equal(strFirst.begin(), strFirst.end(), strSecond.begin(), strSecond.end(),
                      IsSameLetter);
}

/** Whether a name stands anywhere in a text. */
inline bool ContainsName(std::string_view strText, std::string_view strName)
{
    return std::search(strText.begin(), strText.end(), strName.begin(), strName.end(),
                       IsSameLetter) != strText.end();
}
