#include "bus/bus_loop.h"

#include <algorithm>
#include <utility>

#include <poll.h>

namespace platform {

namespace {

// Messages differ in what they cost, so time is what is limited: an eighth of a frame at 60 Hz. The
// loop then draws and looks at everything else before it comes back.
constexpr double LONGEST_TURN_S = 0.002;

constexpr double MICROSECOND_S = 1e-6;

} // namespace

BusLoop::BusLoop(sd_bus *bus, std::function<void()> on_end)
    : bus_(bus), on_end_(std::move(on_end)),
      socket_(ecore_main_fd_handler_add(
          sd_bus_get_fd(bus), static_cast<Ecore_Fd_Handler_Flags>(flags_),
          [](void *data, Ecore_Fd_Handler *) -> Eina_Bool {
              static_cast<BusLoop *>(data)->turn();
              return ECORE_CALLBACK_RENEW;
          },
          this, nullptr, nullptr)),
      // Anybody may have sent something meanwhile; it is here that the loop works out its sleep.
      before_sleep_(ecore_idle_enterer_add(
          [](void *data) -> Eina_Bool {
              static_cast<BusLoop *>(data)->follow();
              return ECORE_CALLBACK_RENEW;
          },
          this))
{
}

bool BusLoop::congested() const
{
    uint64_t unsent = 0;
    return sd_bus_get_n_queued_write(bus_, &unsent) >= 0 && unsent >= MOST_UNSENT;
}

/** Has the loop wait for what the connection waits for. */
void BusLoop::follow()
{
    const int events = std::max(0, sd_bus_get_events(bus_));
    const int flags = (events & POLLIN && !congested() ? ECORE_FD_READ : 0) |
                      (events & POLLOUT ? ECORE_FD_WRITE : 0);
    if (flags != flags_)
        ecore_main_fd_handler_active_set(socket_.get(), static_cast<Ecore_Fd_Handler_Flags>(flags));
    flags_ = flags;

    uint64_t due_us = UINT64_MAX;
    sd_bus_get_timeout(bus_, &due_us);
    if (due_us == due_us_)
        return;
    due_us_ = due_us;
    timeout_.reset();
    if (due_us == UINT64_MAX)
        return;
    const double due_s = static_cast<double>(due_us) * MICROSECOND_S;
    timeout_.reset(ecore_timer_add(
        std::max(0.0, due_s - ecore_time_get()),
        [](void *data) -> Eina_Bool {
            auto *self = static_cast<BusLoop *>(data);
            static_cast<void>(self->timeout_.release()); // it goes by itself
            self->due_us_ = UINT64_MAX;
            self->turn();
            return ECORE_CALLBACK_CANCEL;
        },
        this));
}

void BusLoop::turn()
{
    const double end_s = ecore_time_get() + LONGEST_TURN_S;
    int result = 0;
    do {
        if (sd_bus_is_open(bus_) <= 0) {
            end();
            return;
        }
        result = sd_bus_process(bus_, nullptr);
    } while (result > 0 && !congested() && ecore_time_get() < end_s);
    if (result < 0)
        end();
}

// Before the library has closed the descriptor, which the toolkit would go on watching.
void BusLoop::end()
{
    before_sleep_.reset();
    timeout_.reset();
    socket_.reset();
    if (const auto on_end = std::exchange(on_end_, nullptr))
        on_end();
}

} // namespace platform
