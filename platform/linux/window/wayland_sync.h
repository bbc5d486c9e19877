/**
 * Waits for the compositor without getting in the way of the toolkit's own reader. Main-loop thread
 * only.
 */
#pragma once

#include <Ecore.h>

struct wl_display;

namespace platform {

/**
 * The toolkit announces itself as a reader of the Wayland connection before the main loop goes to
 * sleep and takes the announcement back when it serves the connection's descriptor. Whoever reads
 * on the same thread in between waits for itself for ever. This watch tells when that is so.
 */
class ReaderWatch {
  public:
    ReaderWatch();
    ~ReaderWatch();
    ReaderWatch(const ReaderWatch &) = delete;
    ReaderWatch &operator=(const ReaderWatch &) = delete;

    /** Whether the toolkit may be announced as a reader just now. */
    bool toolkit_reads() const { return toolkit_reads_; }

  private:
    int never_readable_;
    Ecore_Fd_Handler *handler_;
    bool toolkit_reads_ = false;
};

/**
 * Sends all requests and waits until the compositor has handled them, at most one second.
 *
 * @return false when the time ran out or the connection is broken
 */
bool wayland_roundtrip(wl_display *display);

} // namespace platform
