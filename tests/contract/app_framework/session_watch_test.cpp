// Whether the session is on the screen, as the login manager tells it.

#include <algorithm>
#include <csignal>

#include <gmock/gmock.h>

#include "desktop_support/fake_manager.h"
#include "desktop_support/login_manager_test.h"

namespace desktop_test {
namespace {

using SessionWatchTest = LoginManagerTest;

TEST_F(SessionWatchTest, ASessionThatLeavesTheScreenPausesAndItsReturnResumes)
{
    auto app = known_app();
    manager_->say("active 0");
    EXPECT_TRUE(app->hears("pause"));
    manager_->say("active 1");
    EXPECT_TRUE(app->hears("resume"));
    EXPECT_EQ(quit(*app), 0) << app->errors();
    const auto &lines = app->lines();
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "pause"), 1);
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "resume"), 1);
}

TEST_F(SessionWatchTest, AStartInASessionThatIsNotOnTheScreenIsPausedOnceItHasItsRequest)
{
    manager_->say("active 0");
    ASSERT_TRUE(manager_->hears("active 0"));
    auto app = start();
    EXPECT_TRUE(app->hears("ready"));
    EXPECT_TRUE(app->hears("pause"));
    EXPECT_EQ(quit(*app), 0) << app->errors();
}

TEST_F(SessionWatchTest, AProcessOfNoSessionGoesOnWhateverBecomesOfOthers)
{
    manager_->say("strangers 1");
    ASSERT_TRUE(manager_->hears("strangers 1"));
    auto app = start_and_show();
    ASSERT_TRUE(manager_->hears("asked by a stranger"));
    manager_->say("active 0");
    ASSERT_TRUE(manager_->hears("active 0"));

    EXPECT_FALSE(app->hears("pause", 0.3));
    EXPECT_EQ(quit(*app), 0) << app->errors();
}

/** Under a service manager, which would start the application again. */
class ServiceInASessionTest : public LoginManagerTest {
  protected:
    ServiceInASessionTest() { variables_["NOTIFY_SOCKET"] = folder_ / "notify"; }

    /** One that has left the screen and then ended. */
    std::unique_ptr<Program> waiting_app()
    {
        auto app = known_app();
        manager_->say("active 0");
        EXPECT_TRUE(app->hears("pause"));
        app->say("quit");
        EXPECT_TRUE(app->hears("terminate"));
        EXPECT_TRUE(
            service_manager_.hears("STATUS=Waiting until the session has the screen again."))
            << app->errors();
        return app;
    }

    FakeManager service_manager_{folder_ / "notify"};
};

TEST_F(ServiceInASessionTest, TheEndWaitsUntilTheSessionIsBack)
{
    auto app = waiting_app();
    EXPECT_EQ(app->finish(0.2), -1000) << "it goes on";

    manager_->say("active 1");

    EXPECT_EQ(app->finish(), 0) << app->errors();
    EXPECT_THAT(app->lines(), testing::Not(testing::Contains(testing::HasSubstr("after the end"))));
}

TEST_F(ServiceInASessionTest, ASignalEndsItAllTheSame)
{
    auto app = waiting_app();
    app->signal(SIGHUP);
    EXPECT_EQ(app->finish(), 0) << app->errors();
}

TEST_F(ServiceInASessionTest, ASignalBeforeItsEndLeavesNothingToWaitFor)
{
    auto app = known_app();
    manager_->say("active 0");
    EXPECT_TRUE(app->hears("pause"));
    app->signal(SIGTERM);
    EXPECT_EQ(app->finish(), 0) << app->errors();
}

} // namespace
} // namespace desktop_test
