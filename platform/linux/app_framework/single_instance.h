/**
 * One player per login session: the first one owns a name on the session bus, a later start hands
 * its launch request to it. Main-loop thread only.
 */
#pragma once

#include <functional>

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

    /**
     * @param on_launch called for each request that a later start hands over. It returns false when
     *                  the request comes too late; the later start then waits for this process to
     *                  end and takes its place.
     */
    explicit SingleInstance(std::function<bool(Extras)> on_launch);
    SingleInstance(const SingleInstance &) = delete;
    SingleInstance &operator=(const SingleInstance &) = delete;

    /** Becomes the session's player or hands the request over. Blocks, at most ten seconds. */
    Outcome claim(const Extras &extras);

    /** The session bus, or null. */
    Eldbus_Connection *connection() const { return connection_.get(); }

  private:
    enum class Name { Owned, Taken, Unavailable };

    static Eldbus_Message *on_launch_call(const Eldbus_Service_Interface *interface,
                                          const Eldbus_Message *message);

    bool publish();
    Name own_name();
    bool hand_over(const Extras &extras, double timeout_s);

    std::function<bool(Extras)> on_launch_;
    BusConnectionPtr connection_;
    ServiceInterfacePtr interface_;
};

} // namespace platform
