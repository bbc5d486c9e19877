/** A bus of a test's own and connections to it; and a place without any bus. */
#pragma once

#include <string>

#include <gtest/gtest.h>

#include "bus/bus_connection.h"
#include "store_support/private_bus.h"
#include "store_support/scratch.h"

namespace platform {

/** A place without any bus. */
class BusTest : public testing::Test {
  protected:
    /** Who this process is on a bus; empty where there is none. */
    static std::string name_on(const BusPtr &connection)
    {
        const char *name = nullptr;
        return connection && sd_bus_get_unique_name(connection.get(), &name) >= 0 ? name : "";
    }

    const store_test::ScratchDir folder_;
    const store_test::Environment session_{"DBUS_SESSION_BUS_ADDRESS"};
    const store_test::Environment system_{"DBUS_SYSTEM_BUS_ADDRESS",
                                          "unix:path=" + (folder_ / "nobody")};
    const store_test::Environment runtime_{"XDG_RUNTIME_DIR", folder_.path()};
};

class OnABusTest : public BusTest {
  protected:
    static constexpr char DAEMON[] = "org.freedesktop.DBus";

    /** A call to the interface of the bus's own name, whoever it goes to. */
    BusMessagePtr call_to(const char *name, const char *method)
    {
        BusMessagePtr message;
        sd_bus_message_new_method_call(connection_.get(), BusOutput(message), name,
                                       "/org/freedesktop/DBus", DAEMON, method);
        return message;
    }

    const store_test::PrivateBus bus_{folder_ / "bus"};
    BusPtr connection_ = connect_session_bus();
};

} // namespace platform
