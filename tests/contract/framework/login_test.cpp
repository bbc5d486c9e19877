// What the login manager says: power events and whether the session is on the screen.

#include <algorithm>

#include <gmock/gmock.h>

#include "desktop.h"

namespace framework_test {
namespace {

class LoginManagerTest : public DesktopTest {
  protected:
    LoginManagerTest() : system_bus_(folder_ / "system")
    {
        variables_["DBUS_SYSTEM_BUS_ADDRESS"] = system_bus_.address();
        manager_ = std::make_unique<Program>(std::vector<std::string>{LOGIN_MANAGER}, variables_);
        EXPECT_TRUE(manager_->hears("serving")) << manager_->errors();
    }

    /** An application that the login manager has answered. */
    std::unique_ptr<Program> known_app()
    {
        auto app = start_and_show();
        EXPECT_TRUE(manager_->hears("locked shutdown:sleep delay"));
        return app;
    }

    bool locks_are(int count)
    {
        return wait_until([&] {
            manager_->say("locks");
            return manager_->hears("locks " + std::to_string(count), 0.2);
        });
    }

    Bus system_bus_;
    std::unique_ptr<Program> manager_;
};

TEST_F(LoginManagerTest, AShutdownIsAPowerOff)
{
    auto app = known_app();
    manager_->say("shutdown 1");
    EXPECT_TRUE(app->hears("power off"));
    EXPECT_TRUE(app->hears("power state 0"));
    EXPECT_EQ(quit(*app), 0) << app->errors();
}

TEST_F(LoginManagerTest, SleepIsStandbyAndItsEndAWakeUp)
{
    auto app = known_app();
    manager_->say("sleep 1");
    EXPECT_TRUE(app->hears("power standby"));
    EXPECT_TRUE(app->hears("power state 1"));
    manager_->say("sleep 0");
    EXPECT_TRUE(app->hears("power wakeup"));
    EXPECT_TRUE(app->hears("power state 2"));
    EXPECT_EQ(quit(*app), 0) << app->errors();
}

TEST_F(LoginManagerTest, TheMachineWaitsForTheEndButNotForEver)
{
    auto app = known_app();
    EXPECT_TRUE(locks_are(1));
    manager_->say("shutdown 1");
    EXPECT_TRUE(app->hears("power off"));
    EXPECT_TRUE(locks_are(0));
    EXPECT_EQ(quit(*app), 0) << app->errors();
}

TEST_F(LoginManagerTest, AnEndedApplicationHoldsNothingUp)
{
    auto app = known_app();
    EXPECT_EQ(quit(*app), 0) << app->errors();
    EXPECT_TRUE(locks_are(0));
}

TEST_F(LoginManagerTest, ASessionThatLeavesTheScreenPausesAndItsReturnResumes)
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

TEST_F(LoginManagerTest, AStartInASessionThatIsNotOnTheScreenIsPausedOnceItHasItsRequest)
{
    manager_->say("active 0");
    ASSERT_TRUE(manager_->hears("active 0"));
    auto app = start();
    EXPECT_TRUE(app->hears("ready"));
    EXPECT_TRUE(app->hears("pause"));
    EXPECT_EQ(quit(*app), 0) << app->errors();
}

TEST_F(LoginManagerTest, ABusThatGoesAwayIsNoPowerEvent)
{
    auto app = known_app();
    system_bus_.kill();
    app->say("sync");
    EXPECT_TRUE(app->hears("done sync"));
    EXPECT_EQ(quit(*app), 0) << app->errors();
    EXPECT_THAT(app->lines(), testing::Not(testing::Contains(testing::HasSubstr("power"))));
}

} // namespace
} // namespace framework_test
