/**
 * The platform log. Every layer writes its lines here; the platform decides where they go (standard
 * error, the journal, a ring buffer on a set). Callable from any thread at any time, also before
 * the application framework has started.
 */
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

/** Priorities, in the platform's own numbering. */
typedef enum {
    DLOG_DEBUG = 3,
    DLOG_INFO = 4,
    DLOG_WARN = 5,
    DLOG_ERROR = 6,
} log_priority;

/** Log buffers; applications of the set write to the "apps" buffer. */
typedef enum {
    LOG_ID_MAIN = 0,
    LOG_ID_RADIO = 1,
    LOG_ID_APPS = 2,
} log_id_t;

/**
 * Writes one line. The text may hold terminal colour escapes; the platform drops them where the
 * output is no terminal, and makes every other control character of the formatted text visible, so
 * that one call is always one line.
 *
 * @param log_id   one of log_id_t
 * @param priority one of log_priority
 * @param tag      short name of the writer; not kept
 * @param format   printf format; not kept
 * @return bytes written, or a negative value when the line was lost
 */
int __dlog_print(int log_id, int priority, const char *tag, const char *format, ...)
    __attribute__((format(printf, 4, 5)));

#ifdef __cplusplus
}
#endif
