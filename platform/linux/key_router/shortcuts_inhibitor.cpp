#include "key_router/shortcuts_inhibitor.h"

#include "keyboard-shortcuts-inhibit-unstable-v1-client-protocol.h"
#include "wayland/wayland_globals.h"

namespace platform {

std::unique_ptr<ShortcutsInhibitor> ShortcutsInhibitor::create(wl_registry *registry, wl_seat *seat,
                                                               wl_surface *surface)
{
    auto *manager = static_cast<zwp_keyboard_shortcuts_inhibit_manager_v1 *>(
        bind_wayland_global(registry, zwp_keyboard_shortcuts_inhibit_manager_v1_interface, 1));
    if (!manager)
        return nullptr;
    return std::unique_ptr<ShortcutsInhibitor>(new ShortcutsInhibitor(manager, seat, surface));
}

ShortcutsInhibitor::ShortcutsInhibitor(zwp_keyboard_shortcuts_inhibit_manager_v1 *manager,
                                       wl_seat *seat, wl_surface *surface)
    : manager_(manager), inhibitor_(zwp_keyboard_shortcuts_inhibit_manager_v1_inhibit_shortcuts(
                             manager, surface, seat))
{
}

ShortcutsInhibitor::~ShortcutsInhibitor()
{
    zwp_keyboard_shortcuts_inhibitor_v1_destroy(inhibitor_);
    zwp_keyboard_shortcuts_inhibit_manager_v1_destroy(manager_);
}

} // namespace platform
