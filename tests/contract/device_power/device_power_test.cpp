// What the login manager says about power.

#include <gmock/gmock.h>

#include "desktop_support/login_manager_test.h"
#include "device_power.h"
#include "device_power/power_service.h"

namespace desktop_test {
namespace {

using DevicePowerTest = LoginManagerTest;

TEST_F(DevicePowerTest, AShutdownIsAPowerOff)
{
    auto app = known_app();
    manager_->say("shutdown 1");
    EXPECT_TRUE(app->hears("power off"));
    EXPECT_TRUE(app->hears("power state 0"));
    EXPECT_EQ(quit(*app), 0) << app->errors();
}

TEST_F(DevicePowerTest, APowerOffIsToldToWhoWantsNothingElse)
{
    auto app = known_app({{"TEST_POWER_OFF_ONLY", "1"}});
    manager_->say("shutdown 1");
    EXPECT_TRUE(app->hears("power off"));
    EXPECT_EQ(quit(*app), 0) << app->errors();
}

TEST_F(DevicePowerTest, WhoEndsHisSubscriptionHearsNothingMoreAndTheOthersDo)
{
    const store_test::Environment no_bus("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nowhere");
    static std::string heard;
    const auto leaving = [](void *) { heard += "leaving "; };
    const auto staying = [](void *) { heard += "staying "; };
    ASSERT_EQ(device_power_subscribe_poweroff(leaving, nullptr), 0);
    ASSERT_EQ(device_power_subscribe_poweroff(staying, nullptr), 0);
    EXPECT_EQ(device_power_unsubscribe_poweroff(leaving), 0);
    EXPECT_EQ(device_power_unsubscribe_poweroff(leaving), -1) << "it has ended";
    platform::PowerService::get().raise(platform::PowerEvent::Off);
    EXPECT_EQ(heard, "staying ");
    platform::PowerService::get().stop();
}

TEST_F(DevicePowerTest, SleepIsStandbyAndItsEndAWakeUp)
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

TEST_F(DevicePowerTest, TheMachineWaitsForTheEndButNotForEver)
{
    auto app = known_app();
    EXPECT_TRUE(locks_are(1));
    manager_->say("shutdown 1");
    EXPECT_TRUE(app->hears("power off"));
    EXPECT_TRUE(locks_are(0));
    EXPECT_EQ(quit(*app), 0) << app->errors();
}

TEST_F(DevicePowerTest, AnEndedApplicationHoldsNothingUp)
{
    auto app = known_app();
    EXPECT_EQ(quit(*app), 0) << app->errors();
    EXPECT_TRUE(locks_are(0));
}

TEST_F(DevicePowerTest, ABusThatGoesAwayIsNoPowerEvent)
{
    auto app = known_app();
    system_bus_.signal(SIGKILL);
    app->say("sync");
    EXPECT_TRUE(app->hears("done sync"));
    EXPECT_EQ(quit(*app), 0) << app->errors();
    EXPECT_THAT(app->lines(), testing::Not(testing::Contains(testing::HasSubstr("power"))));
}

} // namespace
} // namespace desktop_test
