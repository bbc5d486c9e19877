/** Reading what inotify has seen. */
#pragma once

#include <cerrno>

#include <sys/inotify.h>
#include <unistd.h>

namespace platform {

/**
 * Hands over every event that waits in a non-blocking inotify descriptor.
 *
 * @param take called with each `const inotify_event &`; it may add and remove watches
 */
template <typename Take> void read_inotify_events(int descriptor, Take take)
{
    alignas(inotify_event) char buffer[4096];
    for (;;) {
        const ssize_t length = ::read(descriptor, buffer, sizeof buffer);
        if (length < 0 && errno == EINTR)
            continue;
        if (length <= 0)
            return;
        for (ssize_t at = 0; at < length;) {
            const auto &event = *reinterpret_cast<const inotify_event *>(buffer + at);
            take(event);
            at += static_cast<ssize_t>(sizeof event + event.len);
        }
    }
}

} // namespace platform
