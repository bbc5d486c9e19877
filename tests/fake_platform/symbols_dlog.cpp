// The platform log: every line is taken apart, checked against the one form that all lines of the
// player have, and added to the transcript.

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <gtest/gtest.h>

#include "dlog.h"
#include "platform.h"

namespace {

const char *color_of(int priority)
{
    switch (priority) {
    case DLOG_DEBUG:
    case DLOG_INFO:
        return "\033[32m";
    case DLOG_WARN:
        return "\033[33m";
    case DLOG_ERROR:
        return "\033[31m";
    default:
        return "";
    }
}

// "<file>: <function>(<line>) > <color>text<end>"
bool take_apart(const std::string &raw, fake::LogLine &line)
{
    const size_t colon = raw.find(": ");
    const size_t parenthesis = raw.find('(', colon == std::string::npos ? 0 : colon);
    const size_t arrow = raw.find(") > ", parenthesis == std::string::npos ? 0 : parenthesis);
    if (colon == std::string::npos || parenthesis == std::string::npos ||
        arrow == std::string::npos)
        return false;
    line.file = raw.substr(0, colon);
    line.function = raw.substr(colon + 2, parenthesis - colon - 2);
    line.line = std::atoi(raw.c_str() + parenthesis + 1);
    const std::string color = color_of(line.priority);
    const std::string end = "\033[0m";
    const std::string rest = raw.substr(arrow + 4);
    if (color.empty() || rest.size() < color.size() + end.size() || rest.rfind(color, 0) != 0 ||
        rest.compare(rest.size() - end.size(), end.size(), end) != 0)
        return false;
    line.text = rest.substr(color.size(), rest.size() - color.size() - end.size());
    return line.line > 0 && !line.function.empty() && line.file.find('/') == std::string::npos &&
           line.text.find('\033') == std::string::npos;
}

} // namespace

int __dlog_print(int log_id, int priority, const char *tag, const char *format, ...)
{
    char text[4096];
    va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);

    EXPECT_EQ(log_id, LOG_ID_APPS) << "log line in the wrong buffer: " << text;
    EXPECT_STREQ(tag, "OSTRELDEMO_PLAYER") << "log line with the wrong tag: " << text;
    fake::LogLine line;
    line.priority = priority;
    line.raw = text;
    if (!take_apart(line.raw, line)) {
        ADD_FAILURE() << "log line of priority " << priority << " in the wrong form: " << text;
        line.text = line.raw;
    }
    fake::platform().transcript.add_log(line);
    return length;
}
