// Subtitle files: their encodings, their formats and the texts in them. The first byte of the input
// tells the ending of the file's name.

#include <algorithm>
#include <cctype>
#include <cstring>

#include "base/utf8.h"
#include "fuzz.h"
#include "subtitles/ass_adjust.h"
#include "subtitles/ass_text.h"
#include "subtitles/cue_reader.h"
#include "subtitles/native_formats.h"
#include "subtitles/text_encoding.h"

namespace {

constexpr const char *ENDINGS[] = {"smi", "srt", "sub",  "ttxt", "txt", "ssa",
                                   "ass", "psb", "sami", "mpl",  ""};

std::string without(std::string text, const std::string &part)
{
    for (size_t at = 0; (at = text.find(part, at)) != std::string::npos;)
        text.erase(at, part.size());
    return text;
}

/** The largest number behind a tag for the size of letters, however it is put. */
double largest_size(const std::string &ass)
{
    double largest = 0;
    bool in_block = false;
    bool in_size = false;
    for (size_t i = 0; i < ass.size(); ++i) {
        if (std::strchr("{}\\", ass[i]) && ass[i] != '\0')
            in_size = false;
        in_block = ass[i] == '{' || (in_block && ass[i] != '}');
        if (in_block && ass[i] == '\\') {
            i = ass.find_first_not_of(" \t", i + 1);
            if (i == std::string::npos)
                break;
            in_size = ass.compare(i, 2, "fs") == 0 && ass.compare(i, 3, "fsp") != 0 &&
                      ass.compare(i, 3, "fsc") != 0;
            --i;
        } else if (in_size && std::isdigit(static_cast<unsigned char>(ass[i]))) {
            char *end = nullptr;
            largest = std::max(largest, std::strtod(ass.c_str() + i, &end));
            i = static_cast<size_t>(end - ass.c_str()) - 1;
        }
    }
    return largest;
}

void read_texts(const std::string &ass)
{
    constexpr double LARGEST = 100;
    constexpr char ZERO_WIDTH_SPACE[] = "\xE2\x80\x8B";
    constexpr char WORD_JOINER[] = "\xE2\x81\xA0";
    const std::string plain = platform::ass_to_plain(ass);
    platform::is_animated(ass);
    const std::string bounded = platform::with_bounded_sizes(ass, LARGEST);
    fuzz::require(largest_size(bounded) <= LARGEST, "no letters are larger than the bound");
    const std::string broken = platform::with_break_places(ass);
    // The rest holds for text alone.
    if (!platform::is_utf8(ass))
        return;
    fuzz::require(platform::is_utf8(plain), "a text stays text");
    const std::string again = platform::ass_to_plain(platform::plain_to_ass(plain));
    fuzz::require(without(again, WORD_JOINER) == without(plain, WORD_JOINER),
                  "a plain text is shown as it is");
    fuzz::require(without(without(broken, "{\\fscx0} {\\fscx}"), ZERO_WIDTH_SPACE) ==
                      without(without(ass, "{\\fscx0} {\\fscx}"), ZERO_WIDTH_SPACE),
                  "places to break a line change nothing else");
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size == 0)
        return 0;
    const std::string bytes(fuzz::text_of(data + 1, size - 1));
    std::string encoding;
    const auto text = platform::text_to_utf8(bytes, encoding);
    if (!text)
        return 0;
    fuzz::require(platform::is_utf8(*text), "every encoding becomes UTF-8");
    fuzz::require(text->find('\r') == std::string::npos, "every line ends with a line feed");
    fuzz::require(!encoding.empty(), "the encoding is told");

    platform::read_powerdivx(*text);
    platform::read_ttxt(*text);
    platform::first_sami_language(*text);
    std::string error;
    const auto script = platform::read_script(*text, ENDINGS[*data % std::size(ENDINGS)], error);
    fuzz::require(script.has_value() == error.empty(), "what cannot be read has a reason");
    if (!script)
        return 0;
    int64_t last = 0;
    for (const platform::AssEvent &event : script->events) {
        fuzz::require(event.start_ms >= last && event.duration_ms > 0,
                      "texts come in the order of their times, and have some");
        last = event.start_ms;
        event.has_effect();
        read_texts(event.text());
    }
    return 0;
}
