/**
 * Keeps the compositor from blanking the screen while a surface is visible. Main-loop thread only.
 */
#pragma once

#include <memory>

struct wl_registry;
struct wl_surface;
struct zwp_idle_inhibit_manager_v1;
struct zwp_idle_inhibitor_v1;

namespace platform {

class IdleInhibitor {
  public:
    /** @return null where the compositor does not offer it, with a line in the log, once */
    static std::unique_ptr<IdleInhibitor> create(wl_registry *registry, wl_surface *surface);
    ~IdleInhibitor();
    IdleInhibitor(const IdleInhibitor &) = delete;
    IdleInhibitor &operator=(const IdleInhibitor &) = delete;

  private:
    IdleInhibitor(zwp_idle_inhibit_manager_v1 *manager, wl_surface *surface);

    zwp_idle_inhibit_manager_v1 *manager_;
    zwp_idle_inhibitor_v1 *inhibitor_;
};

} // namespace platform
