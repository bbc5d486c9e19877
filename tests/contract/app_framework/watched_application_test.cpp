// What a service manager hears of an application that it has started.

#include <gmock/gmock.h>

#include "desktop_support/desktop.h"
#include "desktop_support/fake_manager.h"
#include "store_support/scratch.h"

namespace desktop_test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

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

TEST_F(WatchedApplicationTest, IsAliveAtEachStepOfItsEnd)
{
    const std::string begging = "EXTEND_TIMEOUT_USEC=600000000"; // too far off for the timer
    auto app = start({}, {{"TEST_SLOW_TERMINATE", "1"},
                          {"TEST_QUIT_IN_CONTROL", "1"},
                          {"WATCHDOG_USEC", "600000000"}});
    ASSERT_TRUE(app->hears("terminate"));
    EXPECT_THAT(manager_.told(), ElementsAre(begging)) << "before the application ends";

    app->say("go on");

    EXPECT_EQ(app->finish(), 0) << app->errors();
    EXPECT_THAT(manager_.told(), ElementsAre(begging, begging))
        << "before the services end, and before what is not written is waited for";
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
