/** Which bytes are UTF-8, as Unicode has it: no surrogates, nothing overlong or above 10FFFF. */
#pragma once

#include <cstddef>
#include <string_view>

namespace platform {

/**
 * Length in bytes of the character that begins at a place of a text; 0 where none does. Any thread.
 *
 * @param position a place inside the text
 */
size_t utf8_length(std::string_view text, size_t position);

/** Whether a text consists of UTF-8 characters alone. Any thread. */
bool is_utf8(std::string_view text);

} // namespace platform
