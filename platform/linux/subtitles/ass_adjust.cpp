#include "subtitles/ass_adjust.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>

#include <Eina.h>

namespace platform {

namespace {

constexpr double LARGEST_SCALE_PERCENT = 1000;
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

/** Bounds the number that follows a tag; returns the text that replaces it and moves `at` on. */
std::string bounded_number(const std::string &text, size_t &at, double largest)
{
    char *end = nullptr;
    const std::string number = text.substr(at, 64);
    const double value = std::strtod(number.c_str(), &end);
    const auto length = static_cast<size_t>(end - number.c_str());
    if (length == 0)
        return {};
    at += length;
    if (std::fabs(value) <= largest)
        return number.substr(0, length);
    return std::to_string(static_cast<long>(value < 0 ? -largest : largest));
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
    static const struct {
        const char *tag;
        bool is_size;
        double bound;
    } tags[] = {{"\\fscx", false, LARGEST_SCALE_PERCENT},
                {"\\fscy", false, LARGEST_SCALE_PERCENT},
                {"\\fs", true, 0},
                {"\\bord", false, LARGEST_BORDER},
                {"\\xbord", false, LARGEST_BORDER},
                {"\\ybord", false, LARGEST_BORDER}};

    std::string result;
    for (size_t i = 0; i < ass.size();) {
        bool found = false;
        for (const auto &entry : tags) {
            const size_t length = std::strlen(entry.tag);
            if (ass.compare(i, length, entry.tag) != 0)
                continue;
            found = true;
            size_t at = i + length;
            // A signed size multiplies the present one; in a row they grow beyond every bound.
            const bool relative =
                entry.is_size && at < ass.size() && (ass[at] == '+' || ass[at] == '-');
            const std::string number =
                bounded_number(ass, at, entry.is_size ? largest : entry.bound);
            if (!relative)
                result += entry.tag + number;
            i = at;
            break;
        }
        if (!found)
            result += ass[i++];
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
