/**
 * A bus connection in the toolkit's main loop. Main-loop thread only.
 */
#pragma once

#include <functional>

#include <Ecore.h>

#include "base/toolkit_handles.h"
#include "bus/bus_connection.h"

namespace platform {

/**
 * Handles what comes over a connection, and sends what could not be sent at once, while the main
 * loop runs. No flood holds up the loop for longer than a moment at a time.
 *
 * What a peer does not read stays with the bus, by the bus's own limits. Where the bus itself does
 * not read, answers gather in this process; so no further call is read while `MOST_UNSENT` messages
 * wait to be written. What is sent unasked comes on top.
 */
class BusLoop {
  public:
    static constexpr uint64_t MOST_UNSENT = 64;

    /**
     * @param bus    stays the caller's, who keeps it for as long as this object
     * @param on_end the connection has ended: called once, from the main loop. It may end this
     *               object and the connection; nothing else that is called from the connection may
     */
    explicit BusLoop(sd_bus *bus, std::function<void()> on_end = {});
    BusLoop(const BusLoop &) = delete;
    BusLoop &operator=(const BusLoop &) = delete;

  private:
    bool congested() const;
    void follow();
    void turn();
    void end();

    sd_bus *const bus_;
    std::function<void()> on_end_;
    int flags_ = ECORE_FD_READ | ECORE_FD_WRITE;
    uint64_t due_us_ = UINT64_MAX;
    FdHandlerPtr socket_;
    IdleEntererPtr before_sleep_;
    TimerPtr timeout_;
};

} // namespace platform
