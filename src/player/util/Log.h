/**
 * The player's four log macros. Each writes one line to the platform log with the source file's
 * base name, the function and the line in front of the text, and the text in the colour of its
 * level. Callable from any thread.
 */
#pragma once

#include "dlog.h"

#define OSTRELDEMO_LOG_TAG "OSTRELDEMO_PLAYER"

#define OSTRELDEMO_COLOR_GREEN "\033[32m"
#define OSTRELDEMO_COLOR_YELLOW "\033[33m"
#define OSTRELDEMO_COLOR_RED "\033[31m"
#define OSTRELDEMO_COLOR_END "\033[0m"

/** Base name of a path literal, found while compiling. */
constexpr const char *LogBaseName(const char *pPath)
{
    const char *pBase = pPath;
    for (const char *p = pPath; *p != '\0'; ++p) {
        if (*p == '/')
            pBase = p + 1;
    }
    return pBase;
}

// The text must be a literal: it is joined with the prefix and the colours, and the compiler checks
// the arguments against the whole.
#define OSTRELDEMO_LOG(priority, color, text, ...)                                                 \
    __dlog_print(LOG_ID_APPS, priority, OSTRELDEMO_LOG_TAG,                                        \
                 "%s: %s(%d) > " color text OSTRELDEMO_COLOR_END, LogBaseName(__FILE__),           \
                 __FUNCTION__, __LINE__, ##__VA_ARGS__)

#define LOGD(text, ...) OSTRELDEMO_LOG(DLOG_DEBUG, OSTRELDEMO_COLOR_GREEN, text, ##__VA_ARGS__)
#define LOGI(text, ...) OSTRELDEMO_LOG(DLOG_INFO, OSTRELDEMO_COLOR_GREEN, text, ##__VA_ARGS__)
#define LOGW(text, ...) OSTRELDEMO_LOG(DLOG_WARN, OSTRELDEMO_COLOR_YELLOW, text, ##__VA_ARGS__)
#define LOGE(text, ...) OSTRELDEMO_LOG(DLOG_ERROR, OSTRELDEMO_COLOR_RED, text, ##__VA_ARGS__)
