/**
 * The video plane on a Wayland window: an opaque subsurface below the window's surface, or above it
 * while that shows nothing, with its own event queue that a thread of its own serves, so that
 * frames go on while the main loop is busy.
 *
 * create() and close() are for the main-loop thread, the rest for any thread.
 */
#pragma once

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include <Evas.h>

#include "base/descriptor.h"
#include "base/toolkit_handles.h"
#include "efl_on_tv.h"
#include "video_plane/shm_buffer.h"
#include "video_plane/video_plane.h"
#include "video_plane/wayland_handles.h"
#include "wayland/idle_inhibitor.h"

namespace platform {

/** How large a plane is. */
struct PlaneSize {
    int pixel_width = 0; ///< of its pictures
    int pixel_height = 0;
    int width = 0; ///< on the window, in the window's units
    int height = 0;
};

class WaylandPlane : public VideoPlane, public std::enable_shared_from_this<WaylandPlane> {
  public:
    /** Makes the plane and shows it black. @return null, with a log line, when it cannot be. */
    static std::shared_ptr<WaylandPlane> create(Evas_Object *window, const PlaneSize &size);

    ~WaylandPlane() override;
    WaylandPlane(const WaylandPlane &) = delete;
    WaylandPlane &operator=(const WaylandPlane &) = delete;

    /**
     * Takes the plane off the window. Buffers that somebody still has stay valid memory; present()
     * returns false from now on. Does nothing the second time.
     */
    void close();

    /**
     * Takes another size. Pictures that were drawn for the former one can still be presented; what
     * is on the screen is stretched until the next picture comes.
     */
    void resize(const PlaneSize &size);

    /**
     * Whether the window has anything to show. While it has the plane lies below it, at the latest
     * from the window's next frame on; while it has not, above it. Main-loop thread only.
     */
    void set_covered(bool covered);

    int width() const override { return width_; }
    int height() const override { return height_; }
    PlaneBufferPtr acquire() override;
    bool present(const PlaneBufferPtr &buffer) override { return put_up(buffer, {}); }
    bool present_stand_in(const PlaneBufferPtr &buffer, uint64_t presented) override
    {
        return put_up(buffer, presented);
    }

    /** Buffers that exist now, for tests. */
    size_t buffer_count() const;

  private:
    /** Wakes the dispatch thread from its poll. */
    class Waker {
      public:
        Waker();
        int descriptor() const { return event_.number(); }
        void wake() const;
        void drain() const;

      private:
        const Descriptor event_;
    };

    explicit WaylandPlane(wl_display *display);
    bool bind_globals(Ecore_Wl2_Display *connection);
    bool make_surface(wl_surface *parent, const PlaneSize &size);
    bool start_dispatching();
    bool apply_size(const PlaneSize &size);
    bool has_size(const ShmBuffer &buffer) const;
    void forget(const ShmBuffer *buffer);
    void make_ahead(size_t count);
    void dispatch();
    bool dispatch_once();
    bool fail(const char *step);
    bool put_up(const PlaneBufferPtr &buffer, std::optional<uint64_t> stand_in_after);
    void attach(ShmBuffer *buffer, const PlaneBufferPtr &reference);
    PlaneBufferPtr copy_of(ShmBuffer *buffer);
    void recycle(std::unique_ptr<ShmBuffer> buffer);
    bool finish_later();
    void release_objects();
    void place_above();
    void restack(void (*place)(wl_subsurface *, wl_surface *));
    static void on_release(void *data, wl_buffer *handle);

    wl_display *const display_; // Ecore's
    std::atomic<int> width_{0};
    std::atomic<int> height_{0};

    // Owners go in the reverse order of these lines, the queue last.
    WaylandPtr<wl_event_queue> queue_;
    WaylandPtr<wl_compositor> compositor_;
    WaylandPtr<wl_subcompositor> subcompositor_;
    WaylandPtr<wl_shm> shm_;
    WaylandPtr<wp_viewporter> viewporter_; // null where the compositor has none
    WaylandPtr<wl_surface> surface_;
    WaylandPtr<wl_subsurface> subsurface_;
    WaylandPtr<wp_viewport> viewport_;
    std::unique_ptr<IdleInhibitor> idle_inhibitor_;

    wl_surface *parent_ = nullptr; // the window's; null once the plane has been closed
    bool above_ = false;
    TimerPtr place_above_timer_;

    mutable std::mutex mutex_; // guards what follows, and the surface against close()
    bool closed_ = false;
    bool stretched_ = false;           // a picture's pixels need not be the window's units
    std::vector<ShmBuffer *> buffers_; // every buffer there is
    std::vector<std::unique_ptr<ShmBuffer>> spare_; // those that nobody uses
    const ShmBuffer *last_attached_ = nullptr;      // for comparison only
    bool thread_ended_ = false;
    std::condition_variable thread_end_;

    std::atomic<bool> broken_{false};
    std::atomic<bool> stopping_{false};
    Waker waker_;
    std::thread thread_;
};

} // namespace platform
