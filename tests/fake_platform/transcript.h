/**
 * The ordered record of what the player did: one readable line per platform call and per log line.
 * Tests compare whole transcripts, so a step that is missing, doubled or out of order shows.
 */
#pragma once

#include <initializer_list>
#include <string>
#include <type_traits>
#include <vector>

namespace fake {

/** One line that the player wrote to the platform log. */
struct LogLine {
    int priority = 0;
    std::string file;
    std::string function;
    int line = 0;
    std::string text; /**< without prefix and colour */
    std::string raw;  /**< as it reached the log */
};

class Transcript {
  public:
    using Lines = std::vector<std::string>;

    /** What a line stands for. */
    enum class Kind {
        Effect, /**< a call that changes something outside the player */
        Query,  /**< a call that only asks */
        Log,
    };

    void add(Kind kind, const std::string &function, const std::string &text);
    void add_log(const LogLine &line);

    /** Forgets everything so far: what follows belongs to the part under test. */
    void clear();

    /** The calls that change something, in order. */
    Lines calls() const;

    /** Log lines as `I "text"`, with the priority's letter D, I, W or E, in order. */
    Lines logs() const;

    /**
     * What was done: calls and log lines together, in order. Left out are the calls that only ask,
     * and the log lines of the functions that only answer: how often they are asked is free.
     */
    Lines lines() const;

    /** Everything, in order: for operations that are themselves a question. */
    Lines all() const;

    /** Calls of any kind whose function name starts with one of the prefixes, in order. */
    Lines of(std::initializer_list<const char *> prefixes) const;

    /** How often a function was called. */
    int count(const std::string &function) const;

    const std::vector<LogLine> &log_lines() const { return log_lines_; }

  private:
    struct Entry {
        Kind kind;
        std::string function;
        std::string text;
    };

    template <typename Wanted> Lines texts_of(Wanted wanted) const;

    std::vector<Entry> entries_;
    std::vector<LogLine> log_lines_;
};

/** Text that goes into a transcript as it is. */
struct Raw {
    std::string text;
};

/** Names the priority by its letter. */
char priority_letter(int priority);

std::string describe(const void *pointer);
std::string describe(const char *text);
std::string describe(bool value);
std::string describe(double value);
std::string describe(const Raw &raw);

inline std::string describe(const std::string &text)
{
    return describe(text.c_str());
}
inline std::string describe(float value)
{
    return describe(static_cast<double>(value));
}
/** EFL's boolean. */
inline std::string describe(unsigned char value)
{
    return describe(value != 0);
}
inline std::string describe(char *text)
{
    return describe(static_cast<const char *>(text));
}

template <typename T> std::enable_if_t<std::is_integral_v<T>, std::string> describe(T value)
{
    return std::to_string(value);
}

template <typename T> std::enable_if_t<std::is_enum_v<T>, std::string> describe(T value)
{
    return std::to_string(static_cast<long long>(value));
}

/** `function(first, second, …)` with every argument in readable form. */
template <typename... Args> std::string format_call(const char *function, const Args &...args)
{
    std::string text = std::string(function) + "(";
    [[maybe_unused]] const char *separator = "";
    ((text += separator + describe(args), separator = ", "), ...);
    return text + ")";
}

} // namespace fake
