/**
 * Text of unknown encoding to UTF-8. Subtitles come from everywhere: UTF-8 and UTF-16 are told by
 * their marks and their structure, the legacy encodings are guessed from the letters.
 */
#pragma once

#include <optional>
#include <string>

namespace platform {

/**
 * Converts a whole text file to valid UTF-8 without byte order mark, with "\n" as line end. Bytes
 * that mean nothing in the encoding become U+FFFD. Any thread.
 *
 * @param bytes    the file's content
 * @param encoding receives the name of the encoding that was found
 * @return nothing when the content is no text at all
 */
std::optional<std::string> text_to_utf8(const std::string &bytes, std::string &encoding);

} // namespace platform
