#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "dlog.h"
#include "log/log_line.h"

namespace {

using platform::format_log_line;
using platform::LogStyle;

std::string plain(const std::string &text)
{
    const std::string line = format_log_line({}, DLOG_INFO, "T", 1, text);
    const std::string before = "I/T(    1): ";
    EXPECT_EQ(line.substr(0, before.size()), before);
    EXPECT_EQ(line.back(), '\n');
    return line.substr(before.size(), line.size() - before.size() - 1);
}

std::string coloured(const std::string &text)
{
    LogStyle style;
    style.colours = true;
    const std::string line = format_log_line(style, DLOG_INFO, "T", 1, text);
    return line.substr(12, line.size() - 13);
}

TEST(LogLine, BeginsWithPriorityTagAndProcess)
{
    EXPECT_EQ(format_log_line({}, DLOG_INFO, "OSTRELDEMO_PLAYER", 1234, "file.cpp: F(12) > text"),
              "I/OSTRELDEMO_PLAYER( 1234): file.cpp: F(12) > text\n");
    EXPECT_EQ(format_log_line({}, DLOG_ERROR, "T", 1234567, ""), "E/T(1234567): \n");
}

TEST(LogLine, EveryPriorityHasALetter)
{
    EXPECT_EQ(platform::log_priority_letter(DLOG_DEBUG), 'D');
    EXPECT_EQ(platform::log_priority_letter(DLOG_INFO), 'I');
    EXPECT_EQ(platform::log_priority_letter(DLOG_WARN), 'W');
    EXPECT_EQ(platform::log_priority_letter(DLOG_ERROR), 'E');
    EXPECT_EQ(platform::log_priority_letter(-1), 'D');
    EXPECT_EQ(platform::log_priority_letter(99), 'E');
}

TEST(LogLine, JournalGetsTheSyslogLevelInFront)
{
    LogStyle journal;
    journal.journal = true;
    EXPECT_EQ(format_log_line(journal, DLOG_DEBUG, "T", 1, "x").substr(0, 3), "<7>");
    EXPECT_EQ(format_log_line(journal, DLOG_INFO, "T", 1, "x").substr(0, 3), "<6>");
    EXPECT_EQ(format_log_line(journal, DLOG_WARN, "T", 1, "x").substr(0, 3), "<4>");
    EXPECT_EQ(format_log_line(journal, DLOG_ERROR, "T", 1, "x"), "<3>E/T(    1): x\n");
}

TEST(LogLine, ColoursAreKeptOnlyWhenAskedFor)
{
    const std::string text = "f > \033[32mgreen\033[0m";
    EXPECT_EQ(plain(text), "f > green");
    EXPECT_EQ(coloured(text), text);
}

TEST(LogLine, ColourLeftOpenIsClosed)
{
    EXPECT_EQ(coloured("\033[1;31mred"), "\033[1;31mred\033[0m");
    EXPECT_EQ(plain("\033[1;31mred"), "red");
}

TEST(LogLine, DirectionsAndLinesOfNamesAreSeen)
{
    for (const char *control :
         {"\u061c", "\u200e", "\u200f", "\u2028", "\u2029", "\u202a", "\u202e", "\u2066", "\u2069"})
        EXPECT_THAT(plain(control), testing::StartsWith("\\x")) << plain(control);
    // Joiners are needed for spelling.
    for (const char *letter :
         {"\u200c", "\u200d", "\u2027", "\u202f", "\u2065", "\u206a", "\u2128"})
        EXPECT_EQ(plain(letter), letter);
}

TEST(LogLine, OtherEscapesNeverReachTheTerminal)
{
    EXPECT_EQ(coloured("\033[2J\033]0;title\007"), "\\x1b[2J\\x1b]0;title\\x07");
    EXPECT_EQ(coloured("\033[31"), "\\x1b[31");
    EXPECT_EQ(coloured("\033"), "\\x1b");
    EXPECT_EQ(coloured("\xC2\x9B"
                       "2J"),
              "\\xc2\\x9b2J");
}

TEST(LogLine, ControlCharactersAreVisible)
{
    EXPECT_EQ(plain("a\nb\r\tc\x7F"), "a\\nb\\x0d\\tc\\x7f");
    EXPECT_EQ(plain(std::string("a\0b", 3)), "a\\x00b");
}

TEST(LogLine, Utf8StaysAndEverythingElseIsVisible)
{
    EXPECT_EQ(plain("Grüße 한국어 😀"), "Grüße 한국어 😀");
    EXPECT_EQ(plain("\xFFz"), "\\xffz");
    EXPECT_EQ(plain("\xC3"), "\\xc3");
    EXPECT_EQ(plain("\xE2\x82z"), "\\xe2\\x82z");
    EXPECT_EQ(plain("\xED\xA0\x80"), "\\xed\\xa0\\x80");
}

TEST(LogLine, TagCannotBreakTheLine)
{
    EXPECT_EQ(format_log_line({}, DLOG_INFO, "a\nb", 1, "x"), "I/a\\nb(    1): x\n");
}

} // namespace
