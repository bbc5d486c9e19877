// What a service manager is told, and what it is asked for.

#include <cstdlib>

#include <gmock/gmock.h>
#include <unistd.h>

#include "desktop_support/fake_manager.h"
#include "service_manager/service_manager.h"
#include "store_support/captured_log.h"
#include "store_support/scratch.h"

namespace desktop_test {
namespace {

using namespace std::chrono_literals;
using platform::ServiceManager;
using store_test::Environment;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

class ServiceManagerTest : public testing::Test {
  protected:
    const store_test::ScratchDir folder_;
    const std::string address_ = folder_ / "notify";
};

TEST_F(ServiceManagerTest, BegsForTimeUntilItIsReadyAndThenTellsThatItIsAlive)
{
    FakeManager heard(address_);
    ServiceManager manager({address_, 3s});

    manager.tell_alive();
    EXPECT_THAT(heard.told(), ElementsAre("EXTEND_TIMEOUT_USEC=3000000"));

    manager.tell_ready();
    EXPECT_THAT(heard.told(), ElementsAre(StartsWith("READY=1\nSTATUS=")));

    manager.tell_alive();
    EXPECT_THAT(heard.told(), ElementsAre("WATCHDOG=1"));
}

TEST_F(ServiceManagerTest, TellsOnlyWhatItDoesWhereNothingIsWatched)
{
    FakeManager heard(address_);
    ServiceManager manager({address_, 0s});
    EXPECT_FALSE(manager.watch_main_loop());

    manager.tell_status("Waiting.");

    EXPECT_THAT(heard.told(), ElementsAre("STATUS=Waiting."));
}

TEST_F(ServiceManagerTest, ReachesAManagerWithoutAFile)
{
    const std::string name = "@contract-" + std::to_string(getpid());
    FakeManager heard(name);
    ServiceManager manager({name, 0s});

    manager.tell_status("Here.");

    EXPECT_TRUE(manager.present());
    EXPECT_THAT(heard.told(), ElementsAre("STATUS=Here."));
}

TEST_F(ServiceManagerTest, TellsAgainThatItIsReadyWhenThatWasNotHeard)
{
    ServiceManager manager({address_, 3s});
    manager.tell_ready();
    FakeManager heard(address_);

    manager.tell_alive();

    EXPECT_THAT(heard.told(), ElementsAre(StartsWith("READY=1\n")));
}

TEST_F(ServiceManagerTest, TellsNobodyWhereThereIsNone)
{
    ServiceManager manager({"", 3s});

    manager.tell_alive();
    manager.tell_ready();

    EXPECT_FALSE(manager.present());
}

TEST_F(ServiceManagerTest, AnAddressThatNoSocketHasIsToldOnce)
{
    for (const std::string &address : {std::string("notify"), "/" + std::string(200, 'x')}) {
        const store_test::CapturedLog log;
        ServiceManager manager({address, 3s});
        manager.tell_ready();
        EXPECT_FALSE(manager.present());
        EXPECT_THAT(log.text(), HasSubstr("cannot be told anything at " + address));
    }
}

TEST_F(ServiceManagerTest, TheRequestIsTakenOutOfTheEnvironment)
{
    const Environment address("NOTIFY_SOCKET", address_);
    const Environment silence("WATCHDOG_USEC", "3000000");
    const Environment watched("WATCHDOG_PID", std::to_string(getpid()));

    const ServiceManager::Request request = ServiceManager::take_request();

    EXPECT_EQ(request.address, address_);
    EXPECT_EQ(request.watchdog, 3s);
    for (const char *name : {"NOTIFY_SOCKET", "WATCHDOG_USEC", "WATCHDOG_PID"})
        EXPECT_EQ(std::getenv(name), nullptr) << name;
}

TEST_F(ServiceManagerTest, AWatchdogOfAnotherProcessOrWithoutATimeIsNone)
{
    const auto watchdog = [](const std::string &usec, const std::string &pid) {
        const Environment silence("WATCHDOG_USEC", usec);
        const Environment watched("WATCHDOG_PID", pid);
        return ServiceManager::take_request().watchdog;
    };
    EXPECT_EQ(watchdog("3000000", ""), 3s);
    EXPECT_EQ(watchdog("3000000", "1"), 0s);
    for (const char *nonsense : {"", "soon", "-1", "0"})
        EXPECT_EQ(watchdog(nonsense, ""), 0s) << nonsense;
}

} // namespace
} // namespace desktop_test
