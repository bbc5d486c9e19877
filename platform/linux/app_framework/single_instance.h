/**
 * One player per login session: the first one owns a name on the session bus, a later start hands
 * its launch request to it. Main-loop thread only.
 */
#pragma once

#include <functional>

#include "base/toolkit_handles.h"
#include "bus/bus_connection.h"
#include "launch/launch_request.h"

namespace platform {

class SingleInstance {
  public:
    enum class Outcome {
        First,      ///< this is the session's player now
        Alone,      ///< there is no bus to find another one by
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
        std::function<void(Eldbus_Connection *connection)> bus;
        /** While this player was without a bus another one has become the session's. */
        std::function<void()> superseded;
    };

    explicit SingleInstance(Listener listener);
    ~SingleInstance();
    SingleInstance(const SingleInstance &) = delete;
    SingleInstance &operator=(const SingleInstance &) = delete;

    /**
     * Becomes the session's player or hands the request over. Blocks, at most ten seconds. A player
     * without a bus, from the start or later, looks for it from time to time.
     */
    Outcome claim(const Extras &extras);

    /** The session bus, or null. */
    Eldbus_Connection *connection() const { return connection_.get(); }

  private:
    enum class Name { Owned, Taken, Unavailable };

    static Eldbus_Message *on_launch_call(const Eldbus_Service_Interface *interface,
                                          const Eldbus_Message *message);

    static void on_disconnected(void *data, Eldbus_Connection *connection, void *event);

    void join();
    void leave();
    void look_for_bus();
    void rejoin();
    Name own_name();
    bool hand_over(const Extras &extras, double timeout_s);

    const Listener listener_;
    BusConnectionPtr connection_;
    ServiceInterfacePtr interface_;
    JobPtr lost_;
    TimerPtr search_;
};

} // namespace platform
