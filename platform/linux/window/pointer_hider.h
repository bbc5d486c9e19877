/**
 * Takes the pointer off the screen while nobody moves it. Main-loop thread only.
 */
#pragma once

#include <functional>

#include <Ecore.h>

namespace platform {

class PointerHider {
  public:
    /** @param on_hidden called when the pointer has been taken off the screen */
    explicit PointerHider(std::function<void()> on_hidden);
    ~PointerHider();
    PointerHider(const PointerHider &) = delete;
    PointerHider &operator=(const PointerHider &) = delete;

    /** Whether the pointer is off the screen now. */
    bool hidden() const { return hidden_; }

  private:
    static Eina_Bool on_move(void *data, int type, void *event);
    static Eina_Bool on_enter(void *data, int type, void *event);

    void moved();
    void show();
    void hide();

    const std::function<void()> on_hidden_;
    Ecore_Event_Handler *move_;
    Ecore_Event_Handler *enter_;
    Ecore_Timer *timer_ = nullptr;
    double last_move_ = 0.0;
    bool hidden_ = false;
};

} // namespace platform
