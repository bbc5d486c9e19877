/**
 * When the real window is mapped, that is on the screen. One at a time; main-loop thread only.
 */
#pragma once

#include <functional>

#include "efl_on_tv.h"

struct wl_buffer;

namespace platform {

/**
 * Keeps a window off the screen until there is something to see, and on it until it is deleted.
 *
 * Compositors lay black below a window that is full screen, and some show black for one that has
 * lost its picture. So it would not do to be transparent. What the toolkit draws is held back from
 * the compositor instead, which goes on showing what it has shown before, and the toolkit's wish to
 * have the window without a picture right before it is deleted is passed over.
 */
class WindowMapping {
  public:
    /** @param window whose frames are held back; null for none */
    explicit WindowMapping(Ecore_Wl2_Window *window);
    ~WindowMapping();
    WindowMapping(const WindowMapping &) = delete;
    WindowMapping &operator=(const WindowMapping &) = delete;

    Ecore_Wl2_Window *window() const { return window_; }

    /** Whether the window is kept off the screen. */
    bool held() const { return held_; }

    /**
     * Shows the window as it was drawn last, or from its next frame on.
     *
     * @return false when nothing was drawn that could be shown
     */
    bool show();

    /** What was drawn is good for nothing any more: the window has another size, or was hidden. */
    void forget() { buffer_ = nullptr; }

    /**
     * From now on the window leaves the screen only as it is deleted, which is to follow; the
     * toolkit may be long about that.
     *
     * @param gone called when it has left, maybe after the end of this object
     */
    void stay(std::function<void()> gone);

    /** The toolkit has deleted the window, as it does when the compositor asks for its end. */
    void deleted() { window_ = nullptr; }

    /** Takes what the toolkit is about to give to the compositor. @return false to let it pass */
    bool takes(const Ecore_Wl2_Window *window, void *buffer);

  private:
    void give_back();

    Ecore_Wl2_Window *window_;
    bool held_;
    wl_buffer *buffer_ = nullptr; ///< the toolkit's
};

} // namespace platform
