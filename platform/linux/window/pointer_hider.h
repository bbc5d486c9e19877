/**
 * Keeps the pointer off the screen while nobody moves it, from the first frame on. One at a time;
 * main-loop thread only.
 */
#pragma once

#include <functional>

#include <Ecore.h>

#include "base/toolkit_handles.h"

namespace platform {

class PointerHider {
  public:
    /** @param on_hidden called when the pointer has been taken off the screen */
    explicit PointerHider(std::function<void()> on_hidden);
    ~PointerHider();
    PointerHider(const PointerHider &) = delete;
    PointerHider &operator=(const PointerHider &) = delete;

  private:
    static Eina_Bool on_move(void *data, int type, void *event);

    void moved();
    void show();
    void hide();

    const std::function<void()> on_hidden_;
    const EventHandlerPtr move_;
    TimerPtr timer_;
    double last_move_ = 0.0;
};

} // namespace platform
