/**
 * Texts of the extension are plain, Elementary's are markup: here is the way from one to the other.
 * Any thread.
 */
#pragma once

#include <string>

namespace platform {

/** The markup that shows exactly this text. Null is an empty text. */
std::string markup_of(const char *text);

/** Whether the text reads from right to left: its first letter with a direction decides. */
bool reads_right_to_left(const char *text);

} // namespace platform
