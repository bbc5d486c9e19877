#include "content_watch/folder_events.h"

#include <cerrno>
#include <cstring>
#include <utility>

#include <sys/inotify.h>
#include <unistd.h>

#include "log/platform_log.h"

namespace platform {

namespace {

constexpr uint32_t EVENTS = IN_CREATE | IN_MODIFY | IN_CLOSE_WRITE | IN_ATTRIB | IN_DELETE |
                            IN_MOVED_FROM | IN_MOVED_TO | IN_DELETE_SELF | IN_MOVE_SELF |
                            IN_ONLYDIR;

// A folder that is away for a while may come back; anything else is for somebody to mend.
bool is_absence(int reason)
{
    return reason == ENOENT || reason == ENOTDIR;
}

} // namespace

FolderEvents::Queue::Queue() : inotify_(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {}

FolderRest::Watch FolderEvents::Queue::watch(const std::string &path)
{
    const int watch = inotify_add_watch(inotify_.number(), path.c_str(), EVENTS);
    const int reason = errno;
    const int former = std::exchange(watch_, watch);
    if (watch >= 0 && watch == former)
        return FolderRest::Watch::Same;
    if (former >= 0)
        inotify_rm_watch(inotify_.number(), former);
    if (watch >= 0)
        return FolderRest::Watch::New;
    if (!is_absence(reason) && !std::exchange(reported_, true))
        PLATFORM_LOGW("content_watch", "%s cannot be watched (%s); it is looked at once a minute",
                      path.c_str(), std::strerror(reason));
    return FolderRest::Watch::Nobody;
}

FolderEvents::FolderEvents(std::function<void()> happened)
    : happened_(std::move(happened)), queue_(std::make_shared<Queue>()),
      handler_(queue_->number() < 0 ? nullptr
                                    : ecore_main_fd_handler_add(
                                          queue_->number(), ECORE_FD_READ,
                                          [](void *data, Ecore_Fd_Handler *) -> Eina_Bool {
                                              static_cast<FolderEvents *>(data)->read();
                                              return ECORE_CALLBACK_RENEW;
                                          },
                                          this, nullptr, nullptr))
{
}

// What has happened does not matter: the folder is looked at. A queue that overflows says so by an
// event as well.
void FolderEvents::read()
{
    alignas(inotify_event) char buffer[4096];
    while (::read(queue_->number(), buffer, sizeof buffer) > 0) {
    }
    happened_();
}

} // namespace platform
