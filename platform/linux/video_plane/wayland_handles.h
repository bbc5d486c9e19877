/**
 * Owners for the Wayland objects of the video plane: destroyed, and the compositor told so, when
 * the owner goes. An owner must go before its event queue and before the display connection.
 */
#pragma once

#include <memory>

#include <wayland-client.h>

#include "viewporter-client-protocol.h"

namespace platform {

struct WaylandDeleter {
    void operator()(wl_event_queue *queue) const { wl_event_queue_destroy(queue); }
    void operator()(wl_compositor *compositor) const { wl_compositor_destroy(compositor); }
    void operator()(wl_subcompositor *global) const { wl_subcompositor_destroy(global); }
    void operator()(wl_shm *shm) const { wl_shm_destroy(shm); }
    void operator()(wl_shm_pool *pool) const { wl_shm_pool_destroy(pool); }
    void operator()(wl_surface *surface) const { wl_surface_destroy(surface); }
    void operator()(wl_subsurface *subsurface) const { wl_subsurface_destroy(subsurface); }
    void operator()(wl_region *region) const { wl_region_destroy(region); }
    void operator()(wl_buffer *buffer) const { wl_buffer_destroy(buffer); }
    void operator()(wp_viewporter *viewporter) const { wp_viewporter_destroy(viewporter); }
    void operator()(wp_viewport *viewport) const { wp_viewport_destroy(viewport); }
};

template <typename Object> using WaylandPtr = std::unique_ptr<Object, WaylandDeleter>;

/** A second face of somebody else's object, whose new objects report to another queue. */
template <typename Object> class WaylandWrapper {
  public:
    WaylandWrapper(Object *object, wl_event_queue *queue)
        : wrapper_(static_cast<Object *>(wl_proxy_create_wrapper(object)))
    {
        if (wrapper_)
            wl_proxy_set_queue(reinterpret_cast<wl_proxy *>(wrapper_), queue);
    }
    ~WaylandWrapper()
    {
        if (wrapper_)
            wl_proxy_wrapper_destroy(wrapper_);
    }
    WaylandWrapper(const WaylandWrapper &) = delete;
    WaylandWrapper &operator=(const WaylandWrapper &) = delete;

    Object *get() const { return wrapper_; }

  private:
    Object *wrapper_;
};

} // namespace platform
