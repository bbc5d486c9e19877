#include "subtitles/native_formats.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>

#include <Eina.h>

#include "base/ascii_case.h"
#include "base/toolkit_handles.h"

namespace platform {

namespace {

/** "h:mm:ss" with an optional fraction, in milliseconds. */
std::optional<int64_t> parse_clock(const std::string &text)
{
    unsigned hours = 0;
    unsigned minutes = 0;
    unsigned seconds = 0;
    int used = 0;
    if (std::sscanf(text.c_str(), " %4u:%2u:%2u%n", &hours, &minutes, &seconds, &used) != 3)
        return std::nullopt;
    int64_t result = ((int64_t{hours} * 60 + minutes) * 60 + seconds) * 1000;
    if (text[used] == '.' || text[used] == ',') {
        int64_t weight = 100;
        for (int i = used + 1; text[i] >= '0' && text[i] <= '9' && weight > 0; ++i, weight /= 10)
            result += (text[i] - '0') * weight;
    }
    return result;
}

/** Appends what an XML entity without its "&" and ";" stands for; false when it is none. */
bool append_entity(std::string &text, const std::string &name)
{
    static const char *const named[][2] = {
        {"amp", "&"}, {"lt", "<"}, {"gt", ">"}, {"quot", "\""}, {"apos", "'"}};
    for (const auto &pair : named) {
        if (name == pair[0]) {
            text += pair[1];
            return true;
        }
    }
    if (name.size() < 2 || name[0] != '#')
        return false;
    const bool hex = name[1] == 'x' || name[1] == 'X';
    const unsigned long code = std::strtoul(name.c_str() + (hex ? 2 : 1), nullptr, hex ? 16 : 10);
    if (code == 0 || code > 0x10FFFF || (code >= 0xD800 && code < 0xE000))
        return false;
    const Eina_Unicode character[] = {static_cast<Eina_Unicode>(code), 0};
    const std::unique_ptr<char, HandleEnd<std::free>> bytes(
        eina_unicode_unicode_to_utf8(character, nullptr));
    text += bytes.get();
    return true;
}

/** XML character data without its elements and with its entities resolved. */
std::string xml_text(const std::string &xml)
{
    std::string text;
    for (size_t i = 0; i < xml.size(); ++i) {
        if (xml[i] == '<') {
            const size_t end = xml.find('>', i);
            if (end == std::string::npos)
                break;
            i = end;
        } else if (xml[i] == '&') {
            const std::string name = xml.substr(i + 1, 12);
            const size_t length = name.find(';');
            if (length != std::string::npos && append_entity(text, name.substr(0, length)))
                i += length + 1;
            else
                text += '&';
        } else {
            text += xml[i];
        }
    }
    return text;
}

/**
 * The place of the bracket that ends a tag, npos when there is none before a limit: the first one
 * outside quotation marks, or the very first where a mark was forgotten.
 */
size_t end_of_tag(const std::string &text, size_t from, size_t limit)
{
    size_t first = std::string::npos;
    char quote = '\0';
    for (size_t i = from; i < limit; ++i) {
        const char c = text[i];
        if (c == '>' && quote == '\0')
            return i;
        if (c == '>')
            first = std::min(first, i);
        else if (quote != '\0')
            quote = c == quote ? '\0' : quote;
        else if (c == '"' || c == '\'')
            quote = c;
    }
    return first;
}

std::optional<std::string> attribute(const std::string &tag, const char *name)
{
    const std::string key = std::string(name) + "=";
    const size_t at = tag.find(key);
    if (at == std::string::npos || at + key.size() >= tag.size())
        return std::nullopt;
    const char quote = tag[at + key.size()];
    const size_t begin = at + key.size() + 1;
    const size_t end = tag.find(quote, begin);
    if ((quote != '"' && quote != '\'') || end == std::string::npos)
        return std::nullopt;
    return tag.substr(begin, end - begin);
}

/** The older writers put lines as 'first''second' into the attribute. */
std::string unquote_lines(const std::string &text)
{
    if (text.size() < 2 || text.front() != '\'' || text.back() != '\'')
        return text;
    // Not replaced in place, which would move the rest of the text each time.
    std::string lines;
    lines.reserve(text.size());
    for (size_t i = 1; i + 1 < text.size(); ++i) {
        const bool seam = text[i] == '\'' && text[i + 1] == '\'' && i + 2 < text.size();
        lines += seam ? '\n' : text[i];
        i += seam;
    }
    return lines;
}

/** The place of the next <P> element, not of a longer name that begins with the letter. */
size_t find_paragraph(const std::string &text, size_t from)
{
    size_t at = find_nocase(text, "<p", from);
    while (at != std::string::npos && at + 2 < text.size() && !std::strchr(" \t\n>", text[at + 2]))
        at = find_nocase(text, "<p", at + 2);
    return at;
}

/** The class of a SAMI <P> element, in lower case; empty when it has none. */
std::string sami_class(const std::string &paragraph)
{
    const std::string tag = paragraph.substr(0, paragraph.find('>'));
    const size_t key = find_nocase(tag, "class");
    if (key == std::string::npos)
        return {};
    const size_t begin = tag.find_first_not_of(" \t=\"'", key + 5);
    if (begin == std::string::npos)
        return {};
    std::string name = tag.substr(begin, tag.find_first_of(" \t\"'", begin) - begin);
    std::transform(name.begin(), name.end(), name.begin(), lower_case);
    return name;
}

/** One <SYNC> block with the paragraphs of one class only; the first class found becomes it. */
std::string paragraphs_of(const std::string &block, std::string &chosen)
{
    size_t at = find_paragraph(block, 0);
    if (at == std::string::npos)
        return block;
    std::string kept;
    const std::string head = block.substr(0, at);
    while (at != std::string::npos) {
        const size_t next = find_paragraph(block, at + 2);
        const std::string paragraph =
            block.substr(at, next == std::string::npos ? next : next - at);
        const std::string name = sami_class(paragraph);
        if (chosen.empty())
            chosen = name;
        if (name.empty() || name == chosen)
            kept += paragraph;
        at = next;
    }
    return kept.empty() ? std::string() : head + kept;
}

} // namespace

std::vector<PlainCue> read_powerdivx(const std::string &text)
{
    std::vector<PlainCue> cues;
    for (size_t begin = 0; begin < text.size();) {
        const size_t end = std::min(text.find('\n', begin), text.size());
        const std::string line = text.substr(begin, end - begin);
        begin = end + 1;

        const size_t first_end = line.find('}');
        const size_t second_end =
            first_end == std::string::npos ? std::string::npos : line.find('}', first_end + 1);
        if (line[0] != '{' || second_end == std::string::npos || line[first_end + 1] != '{')
            continue;
        const auto start = parse_clock(line.substr(1, first_end - 1));
        const auto stop = parse_clock(line.substr(first_end + 2, second_end - first_end - 2));
        if (!start || !stop)
            continue;
        PlainCue cue{*start, *stop > *start ? *stop - *start : -1, line.substr(second_end + 1)};
        for (char &letter : cue.text)
            letter = letter == '|' ? '\n' : letter;
        cues.push_back(std::move(cue));
    }
    return cues;
}

std::vector<PlainCue> read_ttxt(const std::string &text)
{
    static const char opening[] = "<TextSample ";
    std::vector<PlainCue> cues;
    for (size_t at = text.find(opening); at != std::string::npos;) {
        const size_t next = text.find(opening, at + 1);
        const size_t tag_end = end_of_tag(text, at, std::min(next, text.size()));
        // A tag that the next one begins in is no tag.
        if (tag_end == std::string::npos) {
            at = next;
            continue;
        }
        const std::string tag = text.substr(at, tag_end - at);
        const auto clock = attribute(tag, "sampleTime");
        const auto start = clock ? parse_clock(*clock) : std::nullopt;
        if (start) {
            std::string content;
            if (tag.back() != '/') {
                const std::string rest = text.substr(tag_end + 1, next - tag_end - 1);
                content = xml_text(rest.substr(0, rest.find("</TextSample>")));
            }
            if (const auto line = attribute(tag, "text"))
                content.insert(0, unquote_lines(xml_text(*line)));
            cues.push_back({*start, -1, std::move(content)});
        }
        at = next;
    }
    return cues;
}

std::string first_sami_language(const std::string &text)
{
    static const char opening[] = "<sync";
    const size_t first = find_nocase(text, opening);
    std::string chosen;
    std::string result = text.substr(0, first);
    for (size_t at = first; at != std::string::npos;) {
        const size_t next = find_nocase(text, opening, at + 1);
        result +=
            paragraphs_of(text.substr(at, next == std::string::npos ? next : next - at), chosen);
        at = next;
    }
    return result;
}

} // namespace platform
