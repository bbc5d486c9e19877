// Translated templates and what is put into their slots, divided by null bytes.

#include <algorithm>

#include "fuzz.h"
#include "platform.h"
#include "player/util/OstrelDemoUtil.h"

namespace {

constexpr size_t TOKEN_LENGTH = 5;
// However often a text names a slot, it is expanded no more often than this.
constexpr size_t MOST_IN_TURN = 257;

/** What comes of a template whose slots' texts hold no mark and are not empty. */
std::string filled(std::string_view format, const std::string &first, const std::string &second)
{
    std::string result;
    while (!format.empty()) {
        const std::string_view token = format.substr(0, TOKEN_LENGTH);
        if (token == "<<A>>" || token == "<<B>>") {
            result += token[2] == 'A' ? first : second;
            format.remove_prefix(TOKEN_LENGTH);
        } else {
            result += format.front();
            format.remove_prefix(1);
        }
    }
    return result;
}

bool is_plain(const std::string &text)
{
    return !text.empty() && text.find_first_of("<>") == std::string::npos;
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    // A template that doubles itself at each turn takes long enough as it is.
    constexpr size_t LONGEST = 300;
    std::vector<std::string> texts = fuzz::pieces(fuzz::text_of(data, size), '\0');
    if (size > LONGEST)
        return 0;
    texts.resize(3);
    fake::reset();

    const std::string result = COstrelDemoUtil::CombinateString(texts[0], texts[1], texts[2]);

    if (is_plain(texts[1]) && is_plain(texts[2]))
        fuzz::require(result == filled(texts[0], texts[1], texts[2]), "each slot has its text");
    const size_t slots = texts[0].size() / TOKEN_LENGTH;
    fuzz::require(result.size() <= texts[0].size() + (slots + 1) * MOST_IN_TURN *
                                                         std::max(texts[1].size(), texts[2].size()),
                  "no text grows without end");
    return 0;
}
