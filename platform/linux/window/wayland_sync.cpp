#include "window/wayland_sync.h"

#include <chrono>
#include <memory>
#include <poll.h>
#include <sys/eventfd.h>
#include <utility>

#include <wayland-client.h>

namespace platform {

namespace {

using Clock = std::chrono::steady_clock;

constexpr auto LONGEST_WAIT = std::chrono::seconds(1);

struct QueueDeleter {
    void operator()(wl_event_queue *queue) const { wl_event_queue_destroy(queue); }
};
struct WrapperDeleter {
    void operator()(wl_display *wrapper) const { wl_proxy_wrapper_destroy(wrapper); }
};
struct CallbackDeleter {
    void operator()(wl_callback *callback) const { wl_callback_destroy(callback); }
};

void on_done(void *data, wl_callback * /*callback*/, uint32_t /*serial*/)
{
    *static_cast<bool *>(data) = true;
}

constexpr wl_callback_listener DONE_LISTENER = {on_done};

/** Waits for one batch of events. @return false when the connection is broken. */
bool read_once(wl_display *display, wl_event_queue *queue, Clock::time_point deadline)
{
    if (wl_display_prepare_read_queue(display, queue) != 0)
        return wl_display_dispatch_queue_pending(display, queue) >= 0;
    wl_display_flush(display);
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
    pollfd descriptor = {wl_display_get_fd(display), POLLIN, 0};
    if (poll(&descriptor, 1, left > 0 ? static_cast<int>(left) : 0) > 0) {
        if (wl_display_read_events(display) < 0)
            return false;
    } else {
        wl_display_cancel_read(display);
    }
    return wl_display_dispatch_queue_pending(display, queue) >= 0;
}

} // namespace

ConnectionWatch::ConnectionWatch(wl_display *display, std::function<void()> on_broken)
    : display_(display), on_broken_(std::move(on_broken)),
      alarm_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      // Handlers that are always called come after those whose descriptor is ready, in the order
      // they were added, so this one is called after the toolkit's.
      handler_(ecore_main_fd_handler_add(
          alarm_.number(), static_cast<Ecore_Fd_Handler_Flags>(ECORE_FD_READ | ECORE_FD_ALWAYS),
          [](void *data, Ecore_Fd_Handler *) -> Eina_Bool {
              static_cast<ConnectionWatch *>(data)->after_sleep();
              return ECORE_CALLBACK_RENEW;
          },
          this, nullptr, nullptr))
{
    ecore_main_fd_handler_prepare_callback_set(
        handler_.get(),
        [](void *data, Ecore_Fd_Handler *) {
            static_cast<ConnectionWatch *>(data)->before_sleep();
        },
        this);
}

void ConnectionWatch::before_sleep()
{
    toolkit_reads_ = true;
    // A broken connection never wakes the loop again, so the loop must not go to sleep on it.
    if (!broken_ && wl_display_get_error(display_) != 0)
        eventfd_write(alarm_.number(), 1);
}

void ConnectionWatch::after_sleep()
{
    toolkit_reads_ = false;
    eventfd_t alarms = 0;
    if (broken_ || eventfd_read(alarm_.number(), &alarms) != 0)
        return;
    broken_ = true;
    on_broken_();
}

bool wayland_roundtrip(wl_display *display)
{
    const auto deadline = Clock::now() + LONGEST_WAIT;
    const std::unique_ptr<wl_event_queue, QueueDeleter> queue(wl_display_create_queue(display));
    if (!queue)
        return false;
    const std::unique_ptr<wl_display, WrapperDeleter> wrapper(
        static_cast<wl_display *>(wl_proxy_create_wrapper(display)));
    if (!wrapper)
        return false;
    wl_proxy_set_queue(reinterpret_cast<wl_proxy *>(wrapper.get()), queue.get());

    bool done = false;
    const std::unique_ptr<wl_callback, CallbackDeleter> callback(wl_display_sync(wrapper.get()));
    if (!callback)
        return false;
    wl_callback_add_listener(callback.get(), &DONE_LISTENER, &done);
    while (!done && Clock::now() < deadline) {
        if (!read_once(display, queue.get(), deadline))
            return false;
    }
    return done;
}

} // namespace platform
