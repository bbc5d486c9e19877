#include "wayland/idle_inhibitor.h"

#include <utility>

#include "idle-inhibit-unstable-v1-client-protocol.h"
#include "log/platform_log.h"
#include "wayland/wayland_globals.h"

namespace platform {

std::unique_ptr<IdleInhibitor> IdleInhibitor::create(wl_registry *registry, wl_surface *surface)
{
    if (!surface)
        return nullptr;
    auto *manager = static_cast<zwp_idle_inhibit_manager_v1 *>(
        bind_wayland_global(registry, zwp_idle_inhibit_manager_v1_interface, 1));
    if (!manager) {
        static bool told = false;
        if (!std::exchange(told, true))
            PLATFORM_LOGI("window", "the compositor may blank the screen: it cannot be asked not "
                                    "to; its own idle time has to be switched off");
        return nullptr;
    }
    return std::unique_ptr<IdleInhibitor>(new IdleInhibitor(manager, surface));
}

IdleInhibitor::IdleInhibitor(zwp_idle_inhibit_manager_v1 *manager, wl_surface *surface)
    : manager_(manager), inhibitor_(zwp_idle_inhibit_manager_v1_create_inhibitor(manager, surface))
{
}

IdleInhibitor::~IdleInhibitor()
{
    zwp_idle_inhibitor_v1_destroy(inhibitor_);
    zwp_idle_inhibit_manager_v1_destroy(manager_);
}

} // namespace platform
