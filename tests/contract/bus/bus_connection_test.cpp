// Finding a message bus, and calling over it.

#include <gmock/gmock.h>

#include "bus/bus_on_trial.h"
#include "store_support/captured_log.h"

namespace platform {
namespace {

using store_test::CapturedLog;
using store_test::Environment;
using store_test::PrivateBus;

constexpr double LONGEST_CALL_S = 30.0;

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
         {std::string(), std::string("autolaunch:"), "unix:path=" + (folder_ / "nobody"),
          "unix:path=" + (folder_ / "file")}) {
        const Environment session("DBUS_SESSION_BUS_ADDRESS", address);
        EXPECT_EQ(connect_session_bus(), nullptr) << address;
    }
    const Environment no_folder("XDG_RUNTIME_DIR");
    EXPECT_EQ(connect_session_bus(), nullptr);
    EXPECT_EQ(connect_system_bus(), nullptr);
    EXPECT_EQ(log.text(), "");
}

class BusCallTest : public OnABusTest {
  protected:
    BusMessagePtr call(const char *name, const char *method, double timeout_s = LONGEST_CALL_S)
    {
        return call_and_wait(connection_.get(), call_to(name, method).get(), timeout_s);
    }
};

TEST_F(BusCallTest, HasItsReply)
{
    const BusMessagePtr reply = call(DAEMON, "GetId");
    ASSERT_TRUE(reply);
    const char *id = nullptr;
    ASSERT_GT(sd_bus_message_read(reply.get(), "s", &id), 0);
    EXPECT_EQ(std::string(id).size(), 32u);
}

TEST_F(BusCallTest, HasItsErrorAndNothingIsSaid)
{
    const CapturedLog log;
    const BusMessagePtr reply = call(DAEMON, "NoSuchMethod");
    ASSERT_TRUE(reply);
    EXPECT_TRUE(sd_bus_message_is_method_error(reply.get(), SD_BUS_ERROR_UNKNOWN_METHOD));
    EXPECT_EQ(log.text(), "");
}

TEST_F(BusCallTest, IsGivenUpWhenNobodyAnswers)
{
    const BusPtr silent = connect_session_bus();
    EXPECT_EQ(call(name_on(silent).c_str(), "GetId", 0.05), nullptr);
}

TEST_F(BusCallTest, IsGivenUpWhenTheBusTakesNobodyIn)
{
    bus_.signal(SIGSTOP);
    const BusPtr waiting = connect_session_bus();
    ASSERT_TRUE(waiting) << "the system has taken the connection";
    connection_ = connect_session_bus();
    EXPECT_EQ(call(DAEMON, "GetId", 0.05), nullptr);
    bus_.signal(SIGCONT);
}

TEST_F(BusCallTest, IsGivenUpWhenTheBusEnds)
{
    ASSERT_TRUE(call(DAEMON, "GetId"));
    bus_.signal(SIGKILL);
    EXPECT_EQ(call(DAEMON, "GetId"), nullptr);
}

} // namespace
} // namespace platform
