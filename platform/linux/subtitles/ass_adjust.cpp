#include "subtitles/ass_adjust.h"

#include <algorithm>
#include <charconv>
#include <cstring>

#include <Eina.h>

namespace platform {

namespace {

constexpr double LARGEST_SCALE_PERCENT = 1000;
constexpr double LARGEST_SPACING = 1000;
constexpr double LARGEST_BORDER = 100;

// A space of no width: libass breaks a line here and shows nothing where it does not.
constexpr char BREAK_PLACE[] = "{\\fscx0} {\\fscx}";

/** Shorter runs than this fit on a line of a portrait panel. */
constexpr int LONGEST_UNBROKEN = 12;

bool is_ideographic(char32_t c)
{
    return (c >= 0x3041 && c <= 0x30FF) || (c >= 0x3400 && c <= 0x9FFF) ||
           (c >= 0xF900 && c <= 0xFAFF) || (c >= 0x20000 && c <= 0x3FFFF);
}

/** Kana that may not begin a line: small ones and the length mark. */
bool may_not_begin_line(char32_t c)
{
    static const char32_t small[] = U"ぁぃぅぇぉっゃゅょゎァィゥェォッャュョヮヵヶーゝゞヽヾ々";
    return std::find(std::begin(small), std::end(small) - 1, c) != std::end(small) - 1;
}

bool may_break_between(char32_t left, char32_t right)
{
    // The vowels written before their consonant begin a syllable.
    if ((right >= 0x0E40 && right <= 0x0E44) || (right >= 0x0EC0 && right <= 0x0EC4))
        return left > 0x0E00 && left < 0x0F00;
    const bool after_full_stop =
        left == 0x3001 || left == 0x3002 || left == 0xFF01 || left == 0xFF0C || left == 0xFF1F;
    return is_ideographic(right) && !may_not_begin_line(right) &&
           (is_ideographic(left) || after_full_stop);
}

/** A tag whose number can make letters large, and the largest one it may have. */
struct SizeTag {
    const char *name;
    double bound;
    bool is_size; ///< a number with a sign multiplies the present size
};

bool begins_number(char c)
{
    return (c >= '0' && c <= '9') || c == '.' || c == '+' || c == '-';
}

/** Appends the number at `at`, or the lone sign or point there, within bounds. @return its end */
size_t append_bounded(std::string &result, const std::string &ass, size_t at, const SizeTag &tag)
{
    const bool has_sign = ass[at] == '+' || ass[at] == '-';
    const char *digits = ass.data() + at + (has_sign ? 1 : 0);
    double value = 0;
    const auto [end, error] = std::from_chars(digits, ass.data() + ass.size(), value);
    const auto length = static_cast<size_t>(end - (ass.data() + at));
    if (error == std::errc::invalid_argument)
        result += ass[at];
    else if (has_sign && tag.is_size)
        // Multiplied in a row it would grow beyond every bound.
        result += "+0";
    else if (error == std::errc::result_out_of_range || value > tag.bound)
        result += (ass[at] == '-' ? "-" : "") + std::to_string(static_cast<long>(tag.bound));
    else
        result.append(ass, at, length);
    return error == std::errc::invalid_argument ? at + 1 : at + length;
}

} // namespace

std::string with_break_places(const std::string &ass)
{
    std::string result;
    bool in_block = false;
    int unbroken = 0;
    char32_t left = 0;
    int begin = 0;
    int end = 0;
    while (const char32_t letter = eina_unicode_utf8_next_get(ass.c_str(), &end)) {
        const std::string bytes = ass.substr(begin, end - begin);
        begin = end;
        if (in_block || letter == '{') {
            in_block = letter != '}';
            result += bytes;
            continue;
        }
        const bool escape = letter == '\\' && ass[end] != '\0';
        if (letter == ' ' || escape)
            unbroken = 0;
        const bool zero_width_space = letter == 0x200B;
        if (zero_width_space ||
            (unbroken >= LONGEST_UNBROKEN / 2 && may_break_between(left, letter))) {
            result += BREAK_PLACE;
            unbroken = 0;
        }
        if (!zero_width_space)
            result += bytes;
        ++unbroken;
        left = letter;
    }
    return result;
}

std::string with_bounded_sizes(const std::string &ass, double largest)
{
    // A tag is the first of these that it begins with.
    const SizeTag tags[] = {
        {"fscx", LARGEST_SCALE_PERCENT, false}, {"fscy", LARGEST_SCALE_PERCENT, false},
        {"fsp", LARGEST_SPACING, false},        {"fs", largest, true},
        {"bord", LARGEST_BORDER, false},        {"xbord", LARGEST_BORDER, false},
        {"ybord", LARGEST_BORDER, false}};
    std::string result;
    bool in_block = false;
    // What libass takes for the tag's number may stand in brackets, behind blanks or behind other
    // letters, so all numbers up to the next tag are bounded.
    const SizeTag *tag = nullptr;
    for (size_t i = 0; i < ass.size();) {
        const char c = ass[i];
        if (c == '{' || c == '}' || c == '\\')
            tag = nullptr;
        in_block = c == '{' || (in_block && c != '}');
        if (in_block && c == '\\') {
            const size_t name = std::min(ass.find_first_not_of(" \t", i + 1), ass.size());
            const auto *found =
                std::find_if(std::begin(tags), std::end(tags), [&](const auto &each) {
                    return ass.compare(name, std::strlen(each.name), each.name) == 0;
                });
            if (found != std::end(tags))
                tag = found;
        }
        if (tag && begins_number(c)) {
            i = append_bounded(result, ass, i, *tag);
        } else {
            result += c;
            ++i;
        }
    }
    return result;
}

void bound_style_sizes(ASS_Track &track, double largest)
{
    for (int i = 0; i < track.n_styles; ++i) {
        ASS_Style &style = track.styles[i];
        style.FontSize = std::clamp(style.FontSize, -largest, largest);
        style.ScaleX = std::min(style.ScaleX, LARGEST_SCALE_PERCENT / 100);
        style.ScaleY = std::min(style.ScaleY, LARGEST_SCALE_PERCENT / 100);
        style.Outline = std::min(style.Outline, LARGEST_BORDER);
    }
}

} // namespace platform
