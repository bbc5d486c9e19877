#include "subtitles/ass_text.h"

#include <cstring>

namespace platform {

namespace {

/** Follows the drawing mode ("\p1" … "\p0") through an override block; drawings are no text. */
bool drawing_after(const std::string &block, bool drawing)
{
    for (size_t i = block.find("\\p"); i != std::string::npos; i = block.find("\\p", i + 2)) {
        if (i + 2 < block.size() && block[i + 2] >= '0' && block[i + 2] <= '9')
            drawing = block[i + 2] != '0';
    }
    return drawing;
}

std::string trimmed(const std::string &text)
{
    static const char blanks[] = " \t\n\r";
    const size_t first = text.find_first_not_of(blanks);
    if (first == std::string::npos)
        return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

} // namespace

std::string ass_to_plain(const std::string &ass)
{
    std::string plain;
    bool drawing = false;
    // Brackets behind the last closing one open nothing. Looking for an end from each of them would
    // keep a text full of them busy for minutes.
    const size_t last_end = ass.rfind('}');
    for (size_t i = 0; i < ass.size(); ++i) {
        const char c = ass[i];
        if (c == '{') {
            if (last_end != std::string::npos && i < last_end) {
                const size_t end = ass.find('}', i);
                drawing = drawing_after(ass.substr(i, end - i), drawing);
                i = end;
                continue;
            }
        }
        if (drawing)
            continue;
        if (c == '\\' && i + 1 < ass.size() && std::strchr("Nnh{}", ass[i + 1])) {
            const char escaped = ass[++i];
            plain += escaped == 'N' ? '\n' : escaped == 'n' || escaped == 'h' ? ' ' : escaped;
        } else if (static_cast<unsigned char>(c) == 0xC2 && i + 1 < ass.size() &&
                   static_cast<unsigned char>(ass[i + 1]) == 0xA0) {
            // SAMI files end a text with one that holds a no-break space only.
            plain += ' ';
            ++i;
        } else if (c != '\r') {
            plain += c;
        }
    }
    return trimmed(plain);
}

std::string plain_to_ass(const std::string &plain)
{
    std::string ass;
    for (const char c : plain) {
        if (c == '\n') {
            ass += "\\N";
        } else if (c == '{' || c == '}') {
            ass += '\\';
            ass += c;
        } else if (c == '\\') {
            // A word joiner behind it keeps the backslash from beginning an escape.
            ass += "\\\xE2\x81\xA0";
        } else if (c != '\r') {
            ass += c;
        }
    }
    return ass;
}

bool is_animated(const std::string &ass)
{
    static const char *const moving[] = {"\\t(", "\\move", "\\fad", "\\k", "\\K"};
    for (const char *tag : moving) {
        if (ass.find(tag) != std::string::npos)
            return true;
    }
    return false;
}

} // namespace platform
