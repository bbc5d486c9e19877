// Finding a message bus, and calling over it.

#include <gmock/gmock.h>

#include "bus/bus_connection.h"
#include "store_support/captured_log.h"
#include "store_support/private_bus.h"

namespace platform {
namespace {

using store_test::CapturedLog;
using store_test::Environment;
using store_test::PrivateBus;

constexpr char BUS[] = "org.freedesktop.DBus";
constexpr char BUS_PATH[] = "/org/freedesktop/DBus";
constexpr double LONGEST_CALL_S = 30.0;

/** A place without any bus. */
class BusTest : public testing::Test {
  protected:
    BusTest() { ecore_init(); }
    ~BusTest() override { ecore_shutdown(); }

    /** Who this process is on a bus; empty where there is none. */
    static std::string name_on(const BusConnectionPtr &connection)
    {
        const char *name =
            connection ? eldbus_connection_unique_name_get(connection.get()) : nullptr;
        return name ? name : "";
    }

    const store_test::ScratchDir folder_;
    const Environment modules_{"ECORE_NO_SYSTEM_MODULES", "1"};
    const Environment session_{"DBUS_SESSION_BUS_ADDRESS"};
    const Environment system_{"DBUS_SYSTEM_BUS_ADDRESS", "unix:path=" + (folder_ / "nobody")};
    const Environment runtime_{"XDG_RUNTIME_DIR", folder_.path()};
};

// The bus library reads the variables once in a process.
class NamedBusTest : public BusTest, public testing::WithParamInterface<const char *> {};

TEST_P(NamedBusTest, IsTheOneThatIsConnectedTo)
{
    const bool system = GetParam() == std::string("SYSTEM");
    const PrivateBus bus(folder_ / "named");
    const Environment named("DBUS_" + std::string(GetParam()) + "_BUS_ADDRESS", bus.address());
    EXPECT_NE(name_on(system ? connect_system_bus() : connect_session_bus()), "");
    EXPECT_EQ(system ? connect_session_bus() : connect_system_bus(), nullptr);
}

INSTANTIATE_TEST_SUITE_P(Each, NamedBusTest, testing::Values("SESSION", "SYSTEM"),
                         [](const auto &given) { return std::string(given.param); });

TEST_F(BusTest, SessionBusWithoutANameIsTheOneInTheRuntimeFolder)
{
    const PrivateBus bus(folder_ / "bus");
    EXPECT_NE(name_on(connect_session_bus()), "");
}

TEST_F(BusTest, NoBusIsNoConnectionAndNothingIsSaid)
{
    store_test::write_file(folder_ / "file", "no socket");
    const CapturedLog log;
    for (const std::string &address :
         {std::string(), "unix:path=" + (folder_ / "nobody"), "unix:path=" + (folder_ / "file")}) {
        const Environment session("DBUS_SESSION_BUS_ADDRESS", address);
        EXPECT_EQ(connect_session_bus(), nullptr) << address;
    }
    const Environment no_folder("XDG_RUNTIME_DIR");
    EXPECT_EQ(connect_session_bus(), nullptr);
    EXPECT_EQ(connect_system_bus(), nullptr);
    EXPECT_EQ(log.text(), "");
}

/** On a bus. */
class BusCallTest : public BusTest {
  protected:
    BusMessagePtr call(const BusProxy &proxy, const char *method, double timeout_s = LONGEST_CALL_S)
    {
        return call_and_wait(proxy, eldbus_proxy_method_call_new(proxy.get(), method), timeout_s);
    }

    const PrivateBus bus_{folder_ / "bus"};
    const BusConnectionPtr connection_ = connect_session_bus();
    const BusProxy daemon_{connection_.get(), BUS, BUS_PATH, BUS};
};

TEST_F(BusCallTest, HasItsReply)
{
    const BusMessagePtr reply = call(daemon_, "GetId");
    ASSERT_TRUE(reply);
    const char *id = nullptr;
    ASSERT_TRUE(eldbus_message_arguments_get(reply.get(), "s", &id));
    EXPECT_EQ(std::string(id).size(), 32u);
}

TEST_F(BusCallTest, AnErrorIsNoReplyAndNothingIsSaid)
{
    const CapturedLog log;
    EXPECT_EQ(call(daemon_, "NoSuchMethod"), nullptr);
    EXPECT_EQ(log.text(), "");
}

TEST_F(BusCallTest, IsGivenUpWhenNobodyAnswers)
{
    // This process itself, which does not come to answer while it waits.
    const BusProxy nobody(connection_.get(), name_on(connection_).c_str(), BUS_PATH, BUS);
    EXPECT_EQ(call(nobody, "GetId", 0.05), nullptr);
}

} // namespace
} // namespace platform
