// Whether the session is on the screen, as the login manager tells it.

#include <algorithm>

#include <gmock/gmock.h>

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

} // namespace
} // namespace desktop_test
