#include "window/window_mapping.h"

#include <cstdint>
#include <dlfcn.h>
#include <utility>

#include <wayland-client.h>

#include "window/ecore_wl2_more.h"

namespace platform {

namespace {

WindowMapping *current = nullptr;

/** The window that is being deleted. */
struct Leaving {
    const Ecore_Wl2_Window *window = nullptr;
    std::function<void()> gone;
};
Leaving leaving;

template <typename Function> Function *toolkits_own(const char *name)
{
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

void attach(Ecore_Wl2_Window *window, void *buffer, int x, int y, Eina_Bool implicit)
{
    static const auto own =
        toolkits_own<decltype(ecore_wl2_window_buffer_attach)>("ecore_wl2_window_buffer_attach");
    own(window, buffer, x, y, implicit);
}

} // namespace

WindowMapping::WindowMapping(Ecore_Wl2_Window *window) : window_(window), held_(window != nullptr)
{
    current = this;
}

WindowMapping::~WindowMapping()
{
    current = nullptr;
}

bool WindowMapping::takes(const Ecore_Wl2_Window *window, void *buffer)
{
    if (!held_ || window != window_)
        return false;
    give_back();
    buffer_ = static_cast<wl_buffer *>(buffer);
    return true;
}

// Committed at once, and not with a frame of the toolkit's, which has nothing new to draw.
bool WindowMapping::show()
{
    held_ = false;
    if (!buffer_ || !window_)
        return false;
    attach(window_, std::exchange(buffer_, nullptr), 0, 0, EINA_FALSE);
    wl_surface *surface = ecore_wl2_window_surface_get(window_);
    wl_surface_damage(surface, 0, 0, INT32_MAX, INT32_MAX);
    wl_surface_commit(surface);
    ecore_wl2_display_flush(ecore_wl2_window_display_get(window_));
    return true;
}

void WindowMapping::stay(std::function<void()> gone)
{
    if (window_)
        leaving = {window_, std::move(gone)};
    else
        gone();
}

// The toolkit does not draw into a buffer again before the compositor has said that it does not
// need it; this one never got there.
void WindowMapping::give_back()
{
    wl_buffer *buffer = std::exchange(buffer_, nullptr);
    if (!buffer)
        return;
    auto *proxy = reinterpret_cast<wl_proxy *>(buffer);
    const auto *listener = static_cast<const wl_buffer_listener *>(wl_proxy_get_listener(proxy));
    if (listener && listener->release)
        listener->release(wl_proxy_get_user_data(proxy), buffer);
}

} // namespace platform

// The toolkit gives a frame to the compositor by attaching it through this function.
extern "C" void ecore_wl2_window_buffer_attach(Ecore_Wl2_Window *window, void *buffer, int x, int y,
                                               Eina_Bool implicit)
{
    if (!platform::current || !platform::current->takes(window, buffer))
        platform::attach(window, buffer, x, y, implicit);
}

// It takes a window's picture away with this one ...
extern "C" void ecore_wl2_window_hide(Ecore_Wl2_Window *window)
{
    static const auto own =
        platform::toolkits_own<decltype(ecore_wl2_window_hide)>("ecore_wl2_window_hide");
    if (window != platform::leaving.window)
        own(window);
}

// ... and the window itself with this one.
extern "C" void ecore_wl2_window_free(Ecore_Wl2_Window *window)
{
    static const auto own =
        platform::toolkits_own<decltype(ecore_wl2_window_free)>("ecore_wl2_window_free");
    own(window);
    if (platform::current && platform::current->window() == window)
        platform::current->deleted();
    if (!window || window != platform::leaving.window)
        return;
    std::exchange(platform::leaving, {}).gone();
}
