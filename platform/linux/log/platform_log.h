/**
 * Log lines of the platform's own services. Same destination as the player's lines, with the tag
 * "PLATFORM" and the service's name in front of the text. Any thread.
 */
#pragma once

#include "dlog.h"

// The format stays a literal, so that the compiler checks the arguments.
#define PLATFORM_LOG(priority, service, format, ...)                                               \
    __dlog_print(LOG_ID_MAIN, priority, "PLATFORM", "%s: " format, service, ##__VA_ARGS__)
#define PLATFORM_LOGD(service, format, ...) PLATFORM_LOG(DLOG_DEBUG, service, format, ##__VA_ARGS__)
#define PLATFORM_LOGI(service, format, ...) PLATFORM_LOG(DLOG_INFO, service, format, ##__VA_ARGS__)
#define PLATFORM_LOGW(service, format, ...) PLATFORM_LOG(DLOG_WARN, service, format, ##__VA_ARGS__)
#define PLATFORM_LOGE(service, format, ...) PLATFORM_LOG(DLOG_ERROR, service, format, ##__VA_ARGS__)
