#include "log/log_line.h"

#include <cstdint>
#include <cstdio>

#include "base/utf8.h"
#include "dlog.h"

namespace platform {

namespace {

constexpr std::string_view COLOUR_RESET = "\033[0m";

unsigned char byte_at(std::string_view text, size_t position)
{
    return static_cast<unsigned char>(text[position]);
}

// Length of the terminal colour escape at a position, 0 when there is none.
size_t colour_escape_length(std::string_view text, size_t position)
{
    if (text.compare(position, 2, "\033[") != 0)
        return 0;
    size_t end = text.find_first_not_of("0123456789;", position + 2);
    return end != std::string_view::npos && text[end] == 'm' ? end + 1 - position : 0;
}

// U+061C, U+200E, U+200F, U+2028 to U+202E and U+2066 to U+2069.
bool turns_letters(std::string_view character)
{
    if (character == "\u061c")
        return true;
    if (character.size() != 3 || byte_at(character, 0) != 0xE2)
        return false;
    const unsigned char second = byte_at(character, 1);
    const unsigned char third = byte_at(character, 2);
    if (second == 0x80)
        return third == 0x8E || third == 0x8F || (third >= 0xA8 && third <= 0xAE);
    return second == 0x81 && third >= 0xA6 && third <= 0xA9;
}

void append_escaped(std::string &line, unsigned char byte)
{
    if (byte == '\n') {
        line += "\\n";
    } else if (byte == '\t') {
        line += "\\t";
    } else {
        char escaped[8];
        std::snprintf(escaped, sizeof escaped, "\\x%02x", static_cast<unsigned>(byte));
        line += escaped;
    }
}

void append_visible(std::string &line, std::string_view text, bool colours)
{
    bool coloured = false;
    for (size_t position = 0; position < text.size();) {
        if (size_t length = colour_escape_length(text, position); length != 0) {
            const std::string_view escape = text.substr(position, length);
            if (colours) {
                line += escape;
                coloured = escape != COLOUR_RESET;
            }
            position += length;
        } else if (length = printable_length(text, position);
                   length != 0 && !turns_letters(text.substr(position, length))) {
            line += text.substr(position, length);
            position += length;
        } else {
            append_escaped(line, byte_at(text, position));
            ++position;
        }
    }
    // A colour left open, say by a file's name, must not run on into the terminal.
    if (coloured)
        line += COLOUR_RESET;
}

int syslog_level(int priority)
{
    if (priority <= DLOG_DEBUG)
        return 7;
    if (priority == DLOG_INFO)
        return 6;
    return priority == DLOG_WARN ? 4 : 3;
}

} // namespace

size_t printable_length(std::string_view text, size_t position)
{
    const size_t length = utf8_length(text, position);
    const unsigned char first = byte_at(text, position);
    const bool ascii_control = first < 0x20 || first == 0x7F;
    // U+0080..U+009F are control characters too; some terminals act on them.
    const bool other_control = first == 0xC2 && length == 2 && byte_at(text, position + 1) < 0xA0;
    return ascii_control || other_control ? 0 : length;
}

std::string visible_text(std::string_view text)
{
    std::string visible;
    append_visible(visible, text, false);
    return visible;
}

char log_priority_letter(int priority)
{
    if (priority <= DLOG_DEBUG)
        return 'D';
    if (priority == DLOG_INFO)
        return 'I';
    return priority == DLOG_WARN ? 'W' : 'E';
}

std::string format_log_line(const LogStyle &style, int priority, std::string_view tag, int pid,
                            std::string_view text)
{
    std::string line;
    line.reserve(tag.size() + text.size() + 32);
    if (style.journal) {
        line += '<';
        line += std::to_string(syslog_level(priority));
        line += '>';
    }
    line += log_priority_letter(priority);
    line += '/';
    append_visible(line, tag, false);
    char process[24];
    std::snprintf(process, sizeof process, "(%5d): ", pid);
    line += process;
    append_visible(line, text, style.colours);
    line += '\n';
    return line;
}

} // namespace platform
