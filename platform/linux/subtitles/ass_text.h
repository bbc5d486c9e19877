/**
 * The text field of ASS events, the common form that every subtitle is brought into: taking the
 * markup out of it, and putting plain text into it.
 */
#pragma once

#include <string>

namespace platform {

/** The text a viewer reads: no override tags, no drawings, "\n" between lines, trimmed. */
std::string ass_to_plain(const std::string &ass);

/** Plain UTF-8 text as an ASS text field that shows exactly this text. */
std::string plain_to_ass(const std::string &plain);

/** Whether an ASS text field looks different at different times of its own duration. */
bool is_animated(const std::string &ass);

} // namespace platform
