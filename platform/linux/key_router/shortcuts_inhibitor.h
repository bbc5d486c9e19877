/**
 * Asks the compositor to put its own keyboard shortcuts aside while a surface has the keyboard.
 * Main-loop thread only.
 */
#pragma once

#include <memory>

struct wl_registry;
struct wl_seat;
struct wl_surface;
struct zwp_keyboard_shortcuts_inhibit_manager_v1;
struct zwp_keyboard_shortcuts_inhibitor_v1;

namespace platform {

class ShortcutsInhibitor {
  public:
    /** @return null where the compositor does not offer it */
    static std::unique_ptr<ShortcutsInhibitor> create(wl_registry *registry, wl_seat *seat,
                                                      wl_surface *surface);
    ~ShortcutsInhibitor();
    ShortcutsInhibitor(const ShortcutsInhibitor &) = delete;
    ShortcutsInhibitor &operator=(const ShortcutsInhibitor &) = delete;

  private:
    ShortcutsInhibitor(zwp_keyboard_shortcuts_inhibit_manager_v1 *manager, wl_seat *seat,
                       wl_surface *surface);

    zwp_keyboard_shortcuts_inhibit_manager_v1 *manager_;
    zwp_keyboard_shortcuts_inhibitor_v1 *inhibitor_;
};

} // namespace platform
