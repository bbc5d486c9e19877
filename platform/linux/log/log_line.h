/**
 * The text of one log line: who wrote it in front, colours kept or dropped, everything that could
 * break a line or confuse a terminal made visible. No I/O, no state; any thread.
 */
#pragma once

#include <string>
#include <string_view>

namespace platform {

/** How lines look where they go. */
struct LogStyle {
    bool colours = false; ///< keep the terminal colour escapes of the text
    bool journal = false; ///< begin with the syslog level in angle brackets, as journald reads it
};

/**
 * Length in bytes of the printable UTF-8 character at a position of a text; 0 for anything else:
 * control characters, broken, overlong and surrogate sequences.
 */
size_t printable_length(std::string_view text, size_t position);

/**
 * A text with everything that is no printable UTF-8 shown as \n, \t or \xNN; and what has the
 * letters behind it run in another direction or line, so that nobody sees another text.
 */
std::string visible_text(std::string_view text);

/** The letter of a priority, a log_priority value: D, I, W or E. */
char log_priority_letter(int priority);

/**
 * One whole line, newline at the end included.
 *
 * @param priority a log_priority value
 * @param tag      short name of the writer
 * @param text     any bytes; those that are no printable UTF-8 come out as \n, \t or \xNN
 */
std::string format_log_line(const LogStyle &style, int priority, std::string_view tag, int pid,
                            std::string_view text);

} // namespace platform
