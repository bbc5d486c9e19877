/**
 * One player per login session: the first one owns a name on the session bus, a later start hands
 * its launch request to it. Main-loop thread only.
 */
#pragma once

#include <functional>
#include <optional>

#include "base/toolkit_handles.h"
#include "bus/bus_connection.h"
#include "bus/bus_loop.h"
#include "launch/launch_request.h"

namespace platform {

class SingleInstance {
  public:
    enum class Outcome {
        First,      ///< this is the session's player now
        Alone,      ///< there is no bus to find another one by, or it has not answered yet
        HandedOver, ///< the running player took the request
        Failed,     ///< a player runs but does not answer; logged
    };

    struct Listener {
        /**
         * A request that a later start hands over. It returns false when the request comes too
         * late; the later start then waits for this process to end and takes its place.
         */
        std::function<bool(Extras)> launch;
        /** After claim(): the session bus has gone, null, or is there and this is its player. */
        std::function<void(sd_bus *bus)> bus;
        /** While this player was without a bus another one has become the session's. */
        std::function<void()> superseded;
    };

    /**
     * @param patience_s how long the start waits for the bus to give it a name, and how often a
     *                   player without a bus looks for one, which costs a system call: a bus that
     *                   is restarted is back within a moment
     */
    explicit SingleInstance(Listener listener, double patience_s = 5.0);
    SingleInstance(const SingleInstance &) = delete;
    SingleInstance &operator=(const SingleInstance &) = delete;

    /**
     * Becomes the session's player or hands the request over. Blocks, at most ten seconds and the
     * patience; nothing later does. A player without a bus, from the start or later, looks for it
     * from time to time, and one whose bus has not answered goes on waiting for the answer.
     */
    Outcome claim(const Extras &extras);

    /** The session bus, or null. */
    sd_bus *connection() const { return bus_.get(); }

  private:
    enum class Name { Asked, Owned, Taken, Unavailable };

    static int on_launch_call(sd_bus_message *call, void *self, sd_bus_error *error);

    bool join();
    void leave();
    void look_for_bus();
    void ask_for_name();
    void follow_bus();
    void name_told();
    Outcome alone(const char *reason);
    bool hand_over(const Extras &extras, double timeout_s);

    const Listener listener_;
    const double patience_s_;
    TimerPtr search_;
    BusPtr bus_;
    BusSlotPtr object_;
    BusSlotPtr request_;
    Name name_ = Name::Unavailable;
    std::optional<BusLoop> loop_;
};

} // namespace platform
