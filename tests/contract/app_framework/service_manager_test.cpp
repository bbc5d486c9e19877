// What a service manager is told, and what it is asked for.

#include <cstdlib>

#include <gmock/gmock.h>
#include <unistd.h>

#include "app_framework/fake_manager.h"
#include "app_framework/service_manager.h"
#include "desktop_support/desktop.h"
#include "store_support/captured_log.h"
#include "store_support/scratch.h"

namespace desktop_test {
namespace {

using namespace std::chrono_literals;
using platform::ServiceManager;
using store_test::Environment;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
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
    EXPECT_EQ(manager.alive_interval(), 1s);
}

TEST_F(ServiceManagerTest, TellsOnlyWhatItDoesWhereNothingIsWatched)
{
    FakeManager heard(address_);
    ServiceManager manager({address_, 0s});
    EXPECT_EQ(manager.alive_interval(), 0s);

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

/** An application that a manager watches. */
class WatchedApplicationTest : public DesktopTest {
  protected:
    static constexpr char BEGGING[] = "EXTEND_TIMEOUT_USEC=60000";

    WatchedApplicationTest()
    {
        variables_["NOTIFY_SOCKET"] = folder_ / "notify";
        variables_["WATCHDOG_USEC"] = "60000";
    }

    FakeManager manager_{folder_ / "notify"};
};

TEST_F(WatchedApplicationTest, IsAliveInItsMainLoopAndNotReadyWithoutAPicture)
{
    auto app = start_and_show();

    EXPECT_TRUE(manager_.hears(BEGGING));
    std::vector<std::string> told;
    EXPECT_TRUE(wait_until([&] {
        for (std::string &state : manager_.told())
            told.push_back(std::move(state));
        return told.size() >= 5;
    }));

    EXPECT_THAT(told, testing::Each(BEGGING)) << "the toolkit spoke for it";
    EXPECT_EQ(quit(*app), 0) << app->errors();
}

TEST_F(WatchedApplicationTest, IsSilentWhileItsMainLoopStands)
{
    auto app = start({}, {{"TEST_SLOW_TERMINATE", "1"}, {"TEST_QUIT_IN_CONTROL", "1"}});
    ASSERT_TRUE(app->hears("terminate"));
    manager_.told();

    EXPECT_FALSE(wait_until([&] { return !manager_.told().empty(); }, 0.3));

    app->say("go on");
    EXPECT_EQ(app->finish(), 0) << app->errors();
}

TEST_F(WatchedApplicationTest, WaitsAfterPlayersThatEndedSoon)
{
    using std::chrono::milliseconds;
    const auto now = std::chrono::duration_cast<milliseconds>(
        std::chrono::steady_clock::now().time_since_epoch());
    store_test::write_file(folder_ / "run/start", "1 " + std::to_string(now.count()) + "\n");

    auto app = start_and_show();

    EXPECT_THAT(app->errors(), HasSubstr("ended soon; this one waits for 250 ms"));
    EXPECT_THAT(store_test::read_file(folder_ / "run/start"), StartsWith("2 "));
    EXPECT_EQ(quit(*app), 0) << app->errors();
}

TEST_F(WatchedApplicationTest, WithoutAManagerNobodyWaits)
{
    auto app = start_and_show({{"NOTIFY_SOCKET", ""}});
    EXPECT_EQ(quit(*app), 0) << app->errors();

    EXPECT_EQ(store_test::read_file(folder_ / "run/start"), "");
    EXPECT_THAT(manager_.told(), IsEmpty());
}

} // namespace
} // namespace desktop_test
