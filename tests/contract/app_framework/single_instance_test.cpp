// The session's one player, on a bus that does not answer.

#include <memory>

#include <gtest/gtest.h>

#include "app_framework/single_instance.h"
#include "bus/bus_names.h"
#include "store_support/private_bus.h"
#include "store_support/scratch.h"

namespace platform {
namespace {

using store_test::PrivateBus;
using store_test::run_loop_until;

class SilentBusTest : public testing::Test {
  protected:
    SilentBusTest()
    {
        setenv("ECORE_NO_SYSTEM_MODULES", "1", 1);
        ecore_init();
    }
    ~SilentBusTest() override
    {
        instance_.reset();
        ecore_shutdown();
    }

    SingleInstance::Outcome claim()
    {
        SingleInstance::Listener listener;
        listener.launch = [](const Extras &) { return true; };
        listener.bus = [this](sd_bus *bus) { ++(bus ? found_ : lost_); };
        listener.superseded = [this] { superseded_ = true; };
        instance_ = std::make_unique<SingleInstance>(std::move(listener), 0.05);
        return instance_->claim({});
    }

    /** Whether the main loop goes round, long enough for the bus to be looked for. */
    static bool loop_goes_on()
    {
        int turns = 0;
        const TimerPtr clock(ecore_timer_add(
            0.01,
            [](void *data) -> Eina_Bool {
                ++*static_cast<int *>(data);
                return ECORE_CALLBACK_RENEW;
            },
            &turns));
        // Sooner than a call would be over that waits for its answer.
        return run_loop_until([&] { return turns == 10; }, 4.0);
    }

    const store_test::ScratchDir folder_;
    std::unique_ptr<PrivateBus> bus_ = std::make_unique<PrivateBus>(folder_ / "bus");
    const store_test::Environment address_{"DBUS_SESSION_BUS_ADDRESS",
                                           "unix:path=" + (folder_ / "bus")};
    std::unique_ptr<SingleInstance> instance_;
    int found_ = 0;
    int lost_ = 0;
    bool superseded_ = false;
};

TEST_F(SilentBusTest, APlayerStartsWithoutTheNameAndHasItWhenTheBusGoesOn)
{
    bus_->signal(SIGSTOP);
    EXPECT_EQ(claim(), SingleInstance::Outcome::Alone);
    EXPECT_TRUE(loop_goes_on());
    EXPECT_EQ(found_, 0);

    bus_->signal(SIGCONT);

    EXPECT_TRUE(run_loop_until([&] { return found_ > 0; }));
    EXPECT_FALSE(superseded_);
}

TEST_F(SilentBusTest, APlayerGivesWayToTheOneThatTheBusKnowsOf)
{
    const BusPtr other = connect_session_bus();
    ASSERT_GE(sd_bus_request_name(other.get(), BUS_NAME, 0), 0);
    bus_->signal(SIGSTOP);
    EXPECT_EQ(claim(), SingleInstance::Outcome::Alone);

    bus_->signal(SIGCONT);

    EXPECT_TRUE(run_loop_until([&] { return superseded_; }));
    EXPECT_EQ(found_, 0);
}

TEST_F(SilentBusTest, ABusThatComesBackAndHangsHoldsNothingUp)
{
    EXPECT_EQ(claim(), SingleInstance::Outcome::First);
    bus_.reset();
    std::filesystem::remove(folder_ / "bus");
    ASSERT_TRUE(run_loop_until([&] { return lost_ > 0; }));
    bus_ = std::make_unique<PrivateBus>(folder_ / "bus");
    bus_->signal(SIGSTOP);
    EXPECT_TRUE(loop_goes_on());
    EXPECT_EQ(found_, 0);

    bus_->signal(SIGCONT);

    EXPECT_TRUE(run_loop_until([&] { return found_ > 0; }));
    EXPECT_EQ(lost_, 1);
}

} // namespace
} // namespace platform
