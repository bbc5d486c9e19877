#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "base/utf8.h"

namespace {

using platform::is_utf8;
using platform::utf8_length;

// The first and the last character of each row of the standard's table of well-formed sequences.
const char *const CHARACTERS[] = {
    "\x01",
    "\x7F",
    "\xC2\x80",
    "\xDF\xBF",
    "\xE0\xA0\x80",
    "\xE0\xBF\xBF",
    "\xE1\x80\x80",
    "\xEC\xBF\xBF",
    "\xED\x80\x80",
    "\xED\x9F\xBF",
    "\xEE\x80\x80",
    "\xEF\xBF\xBF",
    "\xF0\x90\x80\x80",
    "\xF0\xBF\xBF\xBF",
    "\xF1\x80\x80\x80",
    "\xF3\xBF\xBF\xBF",
    "\xF4\x80\x80\x80",
    "\xF4\x8F\xBF\xBF",
};

const char *const NO_CHARACTERS[] = {
    "\x80",
    "\xBF",
    "\xFE",
    "\xFF", // never begin one
    "\xC2",
    "\xE1\x80",
    "\xF1\x80\x80", // cut short
    "\xC2\x41",
    "\xE1\x80\xC0",
    "\xF1\x80\x80\x7F",
    "\xC0\x80",
    "\xC1\xBF", // overlong
    "\xE0\x80\x80",
    "\xE0\x9F\xBF",
    "\xF0\x80\x80\x80",
    "\xF0\x8F\xBF\xBF",
    "\xED\xA0\x80",
    "\xED\xAF\xBF",
    "\xED\xB0\x80",
    "\xED\xBF\xBF", // surrogates
    "\xF4\x90\x80\x80",
    "\xF5\x80\x80\x80",
    "\xF8\x88\x80\x80\x80", // above 10FFFF
    "\xFC\x84\x80\x80\x80\x80",
};

TEST(Utf8, CharactersOfEveryLengthAreTaken)
{
    for (const std::string character : CHARACTERS) {
        EXPECT_TRUE(is_utf8(character)) << testing::PrintToString(character);
        EXPECT_EQ(utf8_length("a" + character + "b", 1), character.size())
            << testing::PrintToString(character);
    }
    EXPECT_TRUE(is_utf8(""));
    EXPECT_TRUE(is_utf8(std::string(1, '\0')));
}

TEST(Utf8, WhatTheStandardCallsIllFormedIsRefused)
{
    for (const std::string bytes : NO_CHARACTERS) {
        EXPECT_FALSE(is_utf8("text" + bytes)) << testing::PrintToString(bytes);
        EXPECT_FALSE(is_utf8(bytes + "text")) << testing::PrintToString(bytes);
        EXPECT_EQ(utf8_length(bytes, 0), 0u) << testing::PrintToString(bytes);
    }
    EXPECT_FALSE(is_utf8(std::string_view("\xC3\xA4", 1))) << "its other half is not of the text";
}

} // namespace
