#include "video_plane/wayland_plane.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <system_error>
#include <utility>

#include <Ecore.h>
#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>

#include "efl_on_tv.h"
#include "log/platform_log.h"
#include "wayland/wayland_globals.h"

namespace platform {

namespace {

/** Buffers kept for the next frames; making one costs milliseconds. */
constexpr size_t KEPT_BUFFERS = 4;
/**
 * How long the window has had nothing to show before the plane covers it. A compositor may have no
 * use for frames of a window that cannot be seen, and the toolkit draws none before the compositor
 * has answered its last.
 */
constexpr double QUIET_TIME_S = 0.5;
/** Buffers at most, so that a compositor that gives none back cannot eat the memory. */
constexpr size_t MOST_BUFFERS = 16;
/**
 * Buffers for the frames after the first one, made while that is on the screen: filling in their
 * thousands of pages holds up whoever maps memory in the process, and before that frame those are
 * the threads that open the film.
 */
constexpr size_t BUFFERS_AHEAD = 3;
/**
 * How long the main loop waits for the plane's thread. Told to stop it ends at once, but for the
 * case that it waits for the main loop itself: then this is a hitch, and the rest is done later.
 */
constexpr auto LONGEST_WAIT_FOR_THREAD = std::chrono::milliseconds(200);

std::shared_ptr<WaylandPlane> refuse(const char *reason)
{
    PLATFORM_LOGW("video plane", "none: %s", reason);
    return nullptr;
}

/** Binds a global at exactly this version, through a registry whose objects are on our queue. */
template <typename Object>
WaylandPtr<Object> bind(wl_registry *registry, const wl_interface &interface, uint32_t version)
{
    WaylandPtr<Object> bound(
        static_cast<Object *>(bind_wayland_global(registry, interface, version)));
    if (bound && wl_proxy_get_version(reinterpret_cast<wl_proxy *>(bound.get())) < version)
        bound.reset();
    return bound;
}

} // namespace

WaylandPlane::Waker::Waker() : event_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

void WaylandPlane::Waker::wake() const
{
    eventfd_write(event_.number(), 1);
}

void WaylandPlane::Waker::drain() const
{
    eventfd_t count = 0;
    eventfd_read(event_.number(), &count);
}

WaylandPlane::WaylandPlane(wl_display *display) : display_(display)
{
    // A frame on its way to the screen must not have to allocate.
    buffers_.reserve(MOST_BUFFERS);
    spare_.reserve(KEPT_BUFFERS);
}

std::shared_ptr<WaylandPlane> WaylandPlane::create(Evas_Object *window, const PlaneSize &size)
{
    if (size.pixel_width <= 0 || size.pixel_height <= 0 || size.width <= 0 || size.height <= 0)
        return refuse("the size of the panel is not known yet");
    Ecore_Evas *canvas = ecore_evas_ecore_evas_get(evas_object_evas_get(window));
    Ecore_Wl2_Window *native = canvas ? ecore_evas_wayland2_window_get(canvas) : nullptr;
    wl_surface *parent = native ? ecore_wl2_window_surface_get(native) : nullptr;
    if (!parent)
        return refuse("the window has no Wayland surface");
    Ecore_Wl2_Display *connection = ecore_wl2_connected_display_get(nullptr);
    wl_display *display = connection ? ecore_wl2_display_get(connection) : nullptr;
    if (!display)
        return refuse("no Wayland display");

    std::shared_ptr<WaylandPlane> plane(new WaylandPlane(display));
    if (!plane->bind_globals(connection))
        return refuse("the compositor lacks wl_compositor 4, wl_subcompositor or wl_shm");
    if (!plane->make_surface(parent, size) || !plane->start_dispatching()) {
        plane->close(); // the black picture holds the plane
        return refuse("no memory");
    }
    // The window has its own, which a compositor may pass over while the plane covers it.
    plane->idle_inhibitor_ =
        IdleInhibitor::create(ecore_wl2_display_registry_get(connection), plane->surface_.get());
    return plane;
}

bool WaylandPlane::bind_globals(Ecore_Wl2_Display *connection)
{
    queue_.reset(wl_display_create_queue(display_));
    if (!queue_)
        return false;
    // Through a wrapper the new objects are on our queue from the start. A registry of our own
    // would need a round trip, which hangs where Ecore is in the middle of a read.
    const WaylandWrapper<wl_registry> registry(ecore_wl2_display_registry_get(connection),
                                               queue_.get());
    if (!registry.get())
        return false;
    compositor_ = bind<wl_compositor>(registry.get(), wl_compositor_interface, 4);
    subcompositor_ = bind<wl_subcompositor>(registry.get(), wl_subcompositor_interface, 1);
    shm_ = bind<wl_shm>(registry.get(), wl_shm_interface, 1);
    viewporter_ = bind<wp_viewporter>(registry.get(), wp_viewporter_interface, 1);
    return compositor_ && subcompositor_ && shm_;
}

bool WaylandPlane::make_surface(wl_surface *parent, const PlaneSize &size)
{
    surface_.reset(wl_compositor_create_surface(compositor_.get()));
    if (!surface_)
        return false;
    subsurface_.reset(
        wl_subcompositor_get_subsurface(subcompositor_.get(), surface_.get(), parent));
    if (!subsurface_)
        return false;
    parent_ = parent;
    wl_subsurface_set_position(subsurface_.get(), 0, 0);
    wl_subsurface_place_below(subsurface_.get(), parent);
    wl_subsurface_set_desync(subsurface_.get());

    const WaylandPtr<wl_region> nothing(wl_compositor_create_region(compositor_.get()));
    if (!nothing)
        return false;
    wl_surface_set_input_region(surface_.get(), nothing.get());
    if (viewporter_)
        viewport_.reset(wp_viewporter_get_viewport(viewporter_.get(), surface_.get()));
    if (!apply_size(size))
        return false;

    // Some compositors never map a subsurface that has no buffer when its parent is committed, so
    // the plane starts with a black one.
    const PlaneBufferPtr black = acquire();
    if (!black)
        return false;
    attach(static_cast<ShmBuffer *>(black.get()), black);
    wl_surface_commit(parent);
    wl_display_flush(display_);
    return true;
}

/** Becomes visible with the surface's next commit. */
bool WaylandPlane::apply_size(const PlaneSize &size)
{
    const WaylandPtr<wl_region> opaque(wl_compositor_create_region(compositor_.get()));
    if (!opaque)
        return false;
    wl_region_add(opaque.get(), 0, 0, size.width, size.height);
    wl_surface_set_opaque_region(surface_.get(), opaque.get());
    const bool resized = width_ != 0;
    // Without a viewport a picture covers as many units of the window as it has pixels.
    width_ = viewport_ ? size.pixel_width : size.width;
    height_ = viewport_ ? size.pixel_height : size.height;
    // A plane that has been pixel for pixel from the start spares the compositor the question.
    stretched_ =
        stretched_ || resized || size.pixel_width != size.width || size.pixel_height != size.height;
    if (viewport_ && stretched_)
        wp_viewport_set_destination(viewport_.get(), size.width, size.height);
    return true;
}

void WaylandPlane::set_covered(bool covered)
{
    place_above_timer_.reset();
    if (!parent_)
        return;
    if (covered) {
        if (std::exchange(above_, false))
            restack(wl_subsurface_place_below);
        return;
    }
    place_above_timer_.reset(ecore_timer_add(
        QUIET_TIME_S,
        [](void *data) -> Eina_Bool {
            static_cast<WaylandPlane *>(data)->place_above();
            return ECORE_CALLBACK_CANCEL;
        },
        this));
}

void WaylandPlane::place_above()
{
    static_cast<void>(place_above_timer_.release()); // its callback ends it
    above_ = true;
    restack(wl_subsurface_place_above);
}

// Committed at once, and not with the window's next frame: the toolkit may be waiting for an answer
// to its last one, which a compositor may owe to a window that cannot be seen.
void WaylandPlane::restack(void (*place)(wl_subsurface *, wl_surface *))
{
    place(subsurface_.get(), parent_);
    wl_surface_commit(parent_);
    wl_display_flush(display_);
}

void WaylandPlane::resize(const PlaneSize &size)
{
    if (size.pixel_width <= 0 || size.pixel_height <= 0 || size.width <= 0 || size.height <= 0)
        return;
    const std::lock_guard<std::mutex> lock(mutex_);
    if (closed_ || broken_ || !apply_size(size))
        return;
    wl_surface_commit(surface_.get());
    wl_display_flush(display_);
    for (const auto &buffer : spare_)
        forget(buffer.get());
    spare_.clear();
    PLATFORM_LOGI("video plane", "now %d x %d", width(), height());
}

bool WaylandPlane::has_size(const ShmBuffer &buffer) const
{
    return buffer.width() == width_ && buffer.height() == height_;
}

void WaylandPlane::forget(const ShmBuffer *buffer)
{
    buffers_.erase(std::remove(buffers_.begin(), buffers_.end(), buffer), buffers_.end());
    if (last_attached_ == buffer)
        last_attached_ = nullptr;
}

bool WaylandPlane::start_dispatching()
{
    if (waker_.descriptor() < 0)
        return false;
    try {
        thread_ = std::thread([this] { dispatch(); });
    } catch (const std::system_error &) {
        return false;
    }
    pthread_setname_np(thread_.native_handle(), "video-plane");
    return true;
}

WaylandPlane::~WaylandPlane()
{
    close();
}

PlaneBufferPtr WaylandPlane::acquire()
{
    const auto wrap = [this](std::unique_ptr<ShmBuffer> buffer) {
        const auto recycle = [self = shared_from_this()](ShmBuffer *used) {
            self->recycle(std::unique_ptr<ShmBuffer>(used));
        };
        return PlaneBufferPtr(std::shared_ptr<ShmBuffer>(buffer.release(), recycle));
    };
    {
        std::unique_lock<std::mutex> lock(mutex_);
        if (closed_ || (spare_.empty() && buffers_.size() >= MOST_BUFFERS))
            return nullptr;
        if (!spare_.empty()) {
            auto buffer = std::move(spare_.back()); // the last one used is the warmest
            spare_.pop_back();
            lock.unlock();
            return wrap(std::move(buffer));
        }
    }
    auto buffer = ShmBuffer::create(width_, height_);
    if (!buffer)
        return nullptr;
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (closed_ || buffers_.size() >= MOST_BUFFERS || !buffer->share(shm_.get()))
            return nullptr;
        static const wl_buffer_listener listener = {on_release};
        wl_buffer_add_listener(buffer->handle.get(), &listener, this);
        buffers_.push_back(buffer.get());
    }
    return wrap(std::move(buffer));
}

/** @param stand_in_after after how many pictures this stands in for one; nothing: it is one */
bool WaylandPlane::put_up(const PlaneBufferPtr &buffer, std::optional<uint64_t> stand_in_after)
{
    auto *own = dynamic_cast<ShmBuffer *>(buffer.get());
    PlaneBufferPtr shown = buffer; // before the lock, so that it can go after it
    std::unique_lock<std::mutex> lock(mutex_);
    if (closed_ || broken_ || (stand_in_after && *stand_in_after != presented_))
        return false;
    if (std::find(buffers_.begin(), buffers_.end(), own) == buffers_.end()) {
        PLATFORM_LOGE("video plane", "a picture of another plane was presented");
        return false;
    }
    if (own->held && own == last_attached_)
        return true; // it is on the screen
    if (own->held) {
        // Attached a second time before its release has come, one release could mean either use.
        lock.unlock();
        shown = copy_of(own);
        lock.lock();
        if (closed_ || !shown) {
            count_dropped();
            return !closed_;
        }
        own = static_cast<ShmBuffer *>(shown.get());
    }
    attach(own, shown);
    if (wl_display_flush(display_) < 0) {
        if (errno != EAGAIN)
            return fail("flush");
        waker_.wake(); // the thread waits until the compositor reads on
    }
    if (stand_in_after)
        return true;
    const bool first = presented_++ == 0;
    lock.unlock();
    if (first)
        tell_shown();
    return true;
}

void WaylandPlane::attach(ShmBuffer *buffer, const PlaneBufferPtr &reference)
{
    buffer->held = reference;
    last_attached_ = buffer;
    wl_surface_attach(surface_.get(), buffer->handle.get(), 0, 0);
    wl_surface_damage_buffer(surface_.get(), 0, 0, buffer->width(), buffer->height());
    wl_surface_commit(surface_.get());
}

PlaneBufferPtr WaylandPlane::copy_of(ShmBuffer *buffer)
{
    PlaneBufferPtr copy = acquire();
    if (copy && copy->size() != buffer->size())
        return nullptr; // the plane has taken another size
    if (copy)
        memcpy(copy->pixels(), buffer->pixels(), buffer->size());
    return copy;
}

void WaylandPlane::recycle(std::unique_ptr<ShmBuffer> buffer)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    if (!closed_ && spare_.size() < KEPT_BUFFERS && has_size(*buffer)) {
        spare_.push_back(std::move(buffer));
        return;
    }
    forget(buffer.get());
    buffer.reset(); // under the lock: close() must not take the display away meanwhile
}

void WaylandPlane::on_release(void *data, wl_buffer *handle)
{
    auto *plane = static_cast<WaylandPlane *>(data);
    PlaneBufferPtr released; // goes after the lock, for its way back takes the lock again
    const std::lock_guard<std::mutex> lock(plane->mutex_);
    for (ShmBuffer *buffer : plane->buffers_) {
        if (buffer->handle.get() == handle) {
            released = std::move(buffer->held);
            break;
        }
    }
}

void WaylandPlane::make_ahead(size_t count)
{
    std::vector<PlaneBufferPtr> made(count);
    for (PlaneBufferPtr &buffer : made)
        buffer = acquire();
}

void WaylandPlane::dispatch()
{
    make_ahead(1);
    bool first_shown = false;
    while (!stopping_ && dispatch_once()) {
        // The compositor gives the black picture back once it shows the first frame.
        if (presented_ > 0 && !std::exchange(first_shown, true))
            make_ahead(BUFFERS_AHEAD);
    }
    const std::lock_guard<std::mutex> lock(mutex_);
    thread_ended_ = true;
    thread_end_.notify_all();
}

bool WaylandPlane::dispatch_once()
{
    while (wl_display_prepare_read_queue(display_, queue_.get()) != 0) {
        if (wl_display_dispatch_queue_pending(display_, queue_.get()) < 0)
            return fail("dispatch");
    }
    pollfd waits[] = {{wl_display_get_fd(display_), POLLIN, 0}, {waker_.descriptor(), POLLIN, 0}};
    // A failed flush is no reason to stop: what the compositor said last can still be read.
    if (wl_display_flush(display_) < 0 && errno == EAGAIN)
        waits[0].events |= POLLOUT;
    const int ready = poll(waits, 2, -1);
    if (waits[1].revents)
        waker_.drain();
    if (ready <= 0 || !(waits[0].revents & ~POLLOUT) || stopping_) {
        wl_display_cancel_read(display_);
        return ready >= 0 || errno == EINTR || fail("poll");
    }
    // Ecore has announced a read of its own whenever the main loop sleeps, and libwayland lets
    // both threads go on together: no event of the main loop's is swallowed here.
    if (wl_display_read_events(display_) < 0)
        return fail("read");
    return wl_display_dispatch_queue_pending(display_, queue_.get()) >= 0 || fail("dispatch");
}

bool WaylandPlane::fail(const char *step)
{
    if (!broken_.exchange(true))
        PLATFORM_LOGW("video plane", "the compositor is gone: %s: %s", step, strerror(errno));
    return false;
}

void WaylandPlane::close()
{
    std::vector<PlaneBufferPtr> held; // they go after the lock
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (closed_)
            return;
        closed_ = true;
        parent_ = nullptr;
        place_above_timer_.reset();
        for (ShmBuffer *buffer : buffers_) {
            if (buffer->held)
                held.push_back(std::move(buffer->held));
        }
        idle_inhibitor_.reset();
        viewport_.reset();
        subsurface_.reset();
        surface_.reset();
        wl_display_flush(display_);
    }
    held.clear();
    if (!thread_.joinable()) {
        release_objects();
        return;
    }
    stopping_ = true;
    waker_.wake();
    std::unique_lock<std::mutex> lock(mutex_);
    const bool ended =
        thread_end_.wait_for(lock, LONGEST_WAIT_FOR_THREAD, [this] { return thread_ended_; });
    lock.unlock();
    if (ended || !finish_later()) {
        thread_.join();
        release_objects();
    }
}

bool WaylandPlane::finish_later()
{
    // When a callback of the main loop's file descriptors closes the plane, the thread may be
    // waiting for the read that this very iteration of the main loop still owes libwayland.
    auto self = std::make_unique<std::shared_ptr<WaylandPlane>>(weak_from_this().lock());
    if (!*self)
        return false;
    const auto finish = [](void *data) {
        const std::unique_ptr<std::shared_ptr<WaylandPlane>> plane(
            static_cast<std::shared_ptr<WaylandPlane> *>(data));
        (*plane)->thread_.join();
        (*plane)->release_objects();
    };
    if (!ecore_job_add(finish, self.get()))
        return false;
    (void)self.release();
    return true;
}

void WaylandPlane::release_objects()
{
    const std::lock_guard<std::mutex> lock(mutex_);
    for (ShmBuffer *buffer : buffers_)
        buffer->handle.reset();
    for (const auto &buffer : spare_)
        forget(buffer.get());
    spare_.clear();
    viewporter_.reset();
    shm_.reset();
    subcompositor_.reset();
    compositor_.reset();
    queue_.reset();
}

size_t WaylandPlane::buffer_count() const
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return buffers_.size();
}

} // namespace platform
