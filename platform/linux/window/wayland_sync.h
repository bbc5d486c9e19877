/**
 * Waits for the compositor without getting in the way of the toolkit's own reader. Main-loop thread
 * only.
 */
#pragma once

#include <functional>

#include <Ecore.h>

#include "base/descriptor.h"
#include "base/toolkit_handles.h"

struct wl_display;

namespace platform {

/**
 * Keeps an eye on the toolkit's connection.
 *
 * The toolkit announces itself as a reader of the connection before the main loop goes to sleep and
 * takes the announcement back when it serves the connection's descriptor. Whoever reads on the same
 * thread in between waits for itself for ever; this watch tells when that is so. It also tells when
 * the connection has broken, which the toolkit keeps to itself.
 */
class ConnectionWatch {
  public:
    /** @param on_broken called once, on the main loop, when the compositor has gone for good */
    ConnectionWatch(wl_display *display, std::function<void()> on_broken);
    ConnectionWatch(const ConnectionWatch &) = delete;
    ConnectionWatch &operator=(const ConnectionWatch &) = delete;

    /** Whether the toolkit may be announced as a reader just now. */
    bool toolkit_reads() const { return toolkit_reads_; }

  private:
    void before_sleep();
    void after_sleep();

    wl_display *display_;
    std::function<void()> on_broken_;
    const Descriptor alarm_;
    const FdHandlerPtr handler_;
    bool toolkit_reads_ = false;
    bool broken_ = false;
};

/**
 * Sends all requests and waits until the compositor has handled them, at most one second.
 *
 * @return false when the time ran out or the connection is broken
 */
bool wayland_roundtrip(wl_display *display);

} // namespace platform
