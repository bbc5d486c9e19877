/**
 * The compositor's globals beyond those that the toolkit binds itself. Main-loop thread only.
 */
#pragma once

#include <cstdint>

struct wl_interface;
struct wl_registry;

namespace platform {

/**
 * Binds a global of the toolkit's connection.
 *
 * @param version the newest version that the caller knows
 * @return the global, to be destroyed by the caller, or null where the compositor has none
 */
void *bind_wayland_global(wl_registry *registry, const wl_interface &interface, uint32_t version);

} // namespace platform
