#include "base/utf8.h"

namespace platform {

size_t utf8_length(std::string_view text, size_t position)
{
    const auto byte = [text](size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char first = byte(position);
    if (first < 0x80)
        return 1;
    const size_t length = first >= 0xF5   ? 0
                          : first >= 0xF0 ? 4
                          : first >= 0xE0 ? 3
                          : first >= 0xC2 ? 2
                                          : 0;
    if (length == 0 || length > text.size() - position)
        return 0;
    for (size_t i = 1; i < length; ++i) {
        if ((byte(position + i) & 0xC0) != 0x80)
            return 0;
    }
    const unsigned char second = byte(position + 1);
    const bool overlong = (first == 0xE0 && second < 0xA0) || (first == 0xF0 && second < 0x90);
    const bool surrogate = first == 0xED && second > 0x9F;
    const bool too_high = first == 0xF4 && second > 0x8F;
    return overlong || surrogate || too_high ? 0 : length;
}

bool is_utf8(std::string_view text)
{
    for (size_t at = 0; at < text.size();) {
        const size_t length = utf8_length(text, at);
        if (length == 0)
            return false;
        at += length;
    }
    return true;
}

} // namespace platform
