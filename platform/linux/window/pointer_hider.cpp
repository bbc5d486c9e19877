#include "window/pointer_hider.h"

#include <dlfcn.h>
#include <utility>

#include <Ecore_Input.h>

#include "window/ecore_wl2_more.h"

namespace platform {

namespace {

constexpr double SECONDS_AT_REST = 3.0;

/** What the toolkit last made of the pointer: its picture and where in it the tip is. */
struct PointerShape {
    wl_surface *surface = nullptr;
    int hot_x = 0;
    int hot_y = 0;
};

PointerShape shape;
bool hidden = false; ///< the toolkit's shape is kept for later

void set_pointer(Ecore_Wl2_Input *input, const PointerShape &wanted)
{
    static const auto toolkits_own = reinterpret_cast<decltype(&ecore_wl2_input_pointer_set)>(
        dlsym(RTLD_NEXT, "ecore_wl2_input_pointer_set"));
    toolkits_own(input, wanted.surface, wanted.hot_x, wanted.hot_y);
}

Ecore_Wl2_Input *default_input()
{
    Ecore_Wl2_Display *display = ecore_wl2_connected_display_get(nullptr);
    return display ? ecore_wl2_input_default_input_get(display) : nullptr;
}

} // namespace

PointerHider::PointerHider(std::function<void()> on_hidden)
    : on_hidden_(std::move(on_hidden)),
      move_(ecore_event_handler_add(ECORE_EVENT_MOUSE_MOVE, on_move, this))
{
    hidden = true;
}

PointerHider::~PointerHider()
{
    hidden = false;
}

Eina_Bool PointerHider::on_move(void *data, int /*type*/, void * /*event*/)
{
    static_cast<PointerHider *>(data)->moved();
    return ECORE_CALLBACK_PASS_ON;
}

void PointerHider::moved()
{
    if (hidden)
        show();
    last_move_ = ecore_loop_time_get();
    // One timer runs on through any number of moves and is set anew only when it ends.
    if (timer_)
        return;
    timer_.reset(ecore_timer_add(
        SECONDS_AT_REST,
        [](void *data) -> Eina_Bool {
            auto *hider = static_cast<PointerHider *>(data);
            const double rest = ecore_loop_time_get() - hider->last_move_;
            if (rest < SECONDS_AT_REST) {
                ecore_timer_interval_set(hider->timer_.get(), SECONDS_AT_REST - rest);
                return ECORE_CALLBACK_RENEW;
            }
            static_cast<void>(hider->timer_.release()); // it goes by itself
            hider->hide();
            return ECORE_CALLBACK_CANCEL;
        },
        this));
}

void PointerHider::show()
{
    hidden = false;
    if (Ecore_Wl2_Input *input = default_input())
        set_pointer(input, shape);
}

void PointerHider::hide()
{
    Ecore_Wl2_Input *input = default_input();
    if (!input)
        return;
    hidden = true;
    set_pointer(input, PointerShape());
    on_hidden_();
}

} // namespace platform

// The toolkit draws the pointer itself, also one that enters, and sets its picture through this
// function. Nothing else tells what to put back when the pointer is to be seen again.
extern "C" void ecore_wl2_input_pointer_set(Ecore_Wl2_Input *input, wl_surface *surface, int hot_x,
                                            int hot_y)
{
    platform::shape = {surface, hot_x, hot_y};
    platform::set_pointer(input, platform::hidden ? platform::PointerShape() : platform::shape);
}
