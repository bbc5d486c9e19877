/**
 * Connections to the message buses, over libsystemd's sd-bus: what owns its handles, and how to
 * wait for an answer where there is no main loop. A machine without a bus is an ordinary case here:
 * the answer is null and nothing is logged, so that each service decides what that means to it. A
 * connection belongs to one thread; the player's belong to the main loop's (bus_loop.h).
 */
#pragma once

#include <functional>
#include <memory>

#include <systemd/sd-bus.h>

#include "base/toolkit_handles.h"

namespace platform {

/** Ends the connection as it stands: what the bus has not taken by then is lost. */
using BusPtr = std::unique_ptr<sd_bus, HandleEnd<sd_bus_close_unref>>;
using BusMessagePtr = std::unique_ptr<sd_bus_message, HandleEnd<sd_bus_message_unref>>;

/**
 * A call that waits for its answer, a signal that is listened to, or an object that is offered. Its
 * end takes the callback back, which is not called for it.
 */
using BusSlotPtr = std::unique_ptr<sd_bus_slot, HandleEnd<sd_bus_slot_unref>>;

/** Where a function of sd-bus leaves what it hands out: `sd_bus_new(BusOutput(owner))`. */
template <typename Owner> class BusOutput {
  public:
    explicit BusOutput(Owner &owner) : owner_(owner) {}
    ~BusOutput() { owner_.reset(handle_); }
    BusOutput(const BusOutput &) = delete;
    BusOutput &operator=(const BusOutput &) = delete;
    operator typename Owner::pointer *() { return &handle_; }

  private:
    Owner &owner_;
    typename Owner::pointer handle_ = nullptr;
};

/**
 * The bus of the login session, as sd_bus_open_user(3) finds it. Nothing is waited for: the bus may
 * still turn this process away, or never answer.
 *
 * @return null when nobody listens there; a bus is never launched for the purpose
 */
BusPtr connect_session_bus();

/** The machine's bus; as above. */
BusPtr connect_system_bus();

/**
 * Handles what comes over a connection, and sends, until a condition holds: for a program that has
 * no main loop, or has not begun it.
 *
 * @param done asked between two messages
 * @return whether it held before the time was up or the connection ended
 */
bool serve_until(sd_bus *bus, double timeout_s, const std::function<bool()> &done);

/**
 * Makes a call and waits for its reply; what else comes meanwhile is handled.
 *
 * @return the reply, which may be an error; null when none came in time
 */
BusMessagePtr call_and_wait(sd_bus *bus, sd_bus_message *call, double timeout_s);

} // namespace platform
