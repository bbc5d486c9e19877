#include "wayland/wayland_globals.h"

#include <algorithm>
#include <cstring>

#include <wayland-client.h>

#include "base/toolkit_handles.h"
#include "efl_on_tv.h"

namespace platform {

void *bind_wayland_global(wl_registry *registry, const wl_interface &interface, uint32_t version)
{
    Ecore_Wl2_Display *display = ecore_wl2_connected_display_get(nullptr);
    if (!registry || !display)
        return nullptr;
    void *bound = nullptr;
    const IteratorPtr globals(ecore_wl2_display_globals_get(display));
    void *data = nullptr;
    while (!bound && eina_iterator_next(globals.get(), &data)) {
        const auto *global = static_cast<const Ecore_Wl2_Global *>(data);
        if (std::strcmp(global->interface, interface.name) == 0)
            bound = wl_registry_bind(registry, global->id, &interface,
                                     std::min<uint32_t>(global->version, version));
    }
    return bound;
}

} // namespace platform
