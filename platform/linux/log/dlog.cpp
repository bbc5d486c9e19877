#include "dlog.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <exception>
#include <string>

#include "log/log_writer.h"

namespace {

// The formatted text, however long. Returns false when the format cannot be carried out.
bool format_text(std::string &text, const char *format, va_list arguments)
{
    va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, arguments);
    if (length >= 0) {
        text.resize(static_cast<size_t>(length));
        std::vsnprintf(text.data(), text.size() + 1, format, again);
    }
    va_end(again);
    return length >= 0;
}

} // namespace

int __dlog_print(int, int priority, const char *tag, const char *format, ...)
{
    // A log line must never change what its caller sees of an earlier failure.
    const int saved_errno = errno;
    int result = -1;
    try {
        platform::LogWriter &writer = platform::LogWriter::get();
        if (!writer.wants(priority)) {
            result = 0;
        } else if (format != nullptr) {
            va_list arguments;
            va_start(arguments, format);
            std::string text;
            if (format_text(text, format, arguments))
                result = writer.write(priority, tag != nullptr ? tag : "", text);
            va_end(arguments);
        }
    } catch (const std::exception &) {
        // Out of memory: the line is lost, and there is nowhere to say so.
        result = -1;
    }
    errno = saved_errno;
    return result;
}
