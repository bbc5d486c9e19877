// A bus connection in the main loop.

#include <algorithm>
#include <chrono>
#include <memory>
#include <thread>
#include <utility>

#include "bus/bus_loop.h"
#include "bus/bus_on_trial.h"

namespace platform {
namespace {

using store_test::run_loop_until;

constexpr char PATH[] = "/test";
constexpr char INTERFACE[] = "test.Object";

class BusLoopTest : public OnABusTest {
  protected:
    BusLoopTest()
    {
        setenv("ECORE_NO_SYSTEM_MODULES", "1", 1);
        ecore_init();
        EXPECT_NE(name_on(connection_), "");
        loop_ = std::make_unique<BusLoop>(connection_.get(), [this] {
            ++ends_;
            loop_.reset();
            connection_.reset();
        });
    }

    ~BusLoopTest() override
    {
        loop_.reset();
        ecore_shutdown();
    }

    /** Offers an object whose calls are counted, and has another connection call it so often. */
    void be_called(int times, std::chrono::microseconds each)
    {
        static const sd_bus_vtable methods[] = {
            SD_BUS_VTABLE_START(0),
            SD_BUS_METHOD("Call", nullptr, nullptr, on_call, SD_BUS_VTABLE_UNPRIVILEGED),
            SD_BUS_VTABLE_END};
        cost_ = each;
        sd_bus_add_object_vtable(connection_.get(), nullptr, PATH, INTERFACE, methods, this);
        for (int i = 0; i < times; ++i)
            sd_bus_call_method_async(caller_.get(), nullptr, name_on(connection_).c_str(), PATH,
                                     INTERFACE, "Call", on_answer, this, nullptr);
        // What comes back for this call comes after the bus has passed on the others.
        BusMessagePtr reply;
        EXPECT_GE(sd_bus_call_method(caller_.get(), DAEMON, "/org/freedesktop/DBus", DAEMON,
                                     "GetId", nullptr, BusOutput(reply), nullptr),
                  0);
    }

    static int on_call(sd_bus_message *call, void *data, sd_bus_error *)
    {
        auto *self = static_cast<BusLoopTest *>(data);
        const auto end = std::chrono::steady_clock::now() + self->cost_;
        while (std::chrono::steady_clock::now() < end) {
        }
        ++self->calls_;
        ++self->calls_in_turn_;
        return sd_bus_reply_method_return(call, nullptr);
    }

    static int on_answer(sd_bus_message *reply, void *data, sd_bus_error *)
    {
        EXPECT_FALSE(sd_bus_message_is_method_error(reply, nullptr));
        ++static_cast<BusLoopTest *>(data)->answers_;
        return 1;
    }

    /** Sends more than the bus takes while it is stopped. */
    void send_too_much()
    {
        const std::string much(10000, 'x');
        for (uint64_t i = 0; unsent() < 2 * BusLoop::MOST_UNSENT; ++i)
            ASSERT_GE(
                sd_bus_emit_signal(connection_.get(), PATH, INTERFACE, "Much", "s", much.c_str()),
                0);
    }

    uint64_t unsent() const
    {
        uint64_t unsent = 0;
        sd_bus_get_n_queued_write(connection_.get(), &unsent);
        return unsent;
    }

    const BusPtr caller_ = connect_session_bus();
    std::unique_ptr<BusLoop> loop_;
    std::chrono::microseconds cost_{0};
    int calls_ = 0;
    int calls_in_turn_ = 0;
    int answers_ = 0;
    int ends_ = 0;
};

TEST_F(BusLoopTest, WhatTheBusCouldNotTakeAtOnceGoesOutWhenItCan)
{
    bus_.signal(SIGSTOP);
    send_too_much();
    sd_bus_call_method_async(connection_.get(), nullptr, DAEMON, "/org/freedesktop/DBus", DAEMON,
                             "GetId", on_answer, this, nullptr);
    bus_.signal(SIGCONT);
    EXPECT_TRUE(run_loop_until([&] { return answers_ == 1; }));
}

TEST_F(BusLoopTest, NoCallIsReadWhileManyAnswersWait)
{
    constexpr int CALLS = 300;
    be_called(CALLS, {});
    bus_.signal(SIGSTOP);
    send_too_much();
    EXPECT_FALSE(run_loop_until([&] { return calls_ > 1; }, 0.1)) << calls_;
    bus_.signal(SIGCONT);
    const BusLoop caller(caller_.get());
    EXPECT_TRUE(run_loop_until([&] { return answers_ == CALLS; })) << answers_;
}

TEST_F(BusLoopTest, AFloodOfCallsLeavesTheLoopItsTurns)
{
    constexpr int CALLS = 100;
    int most = 0;
    be_called(CALLS, std::chrono::milliseconds(1));
    struct Turns {
        int &calls;
        int &most;
    } turns = {calls_in_turn_, most};
    const TimerPtr each_turn(ecore_timer_add(
        0.0,
        [](void *data) -> Eina_Bool {
            auto *seen = static_cast<Turns *>(data);
            seen->most = std::max(seen->most, std::exchange(seen->calls, 0));
            return ECORE_CALLBACK_RENEW;
        },
        &turns));
    EXPECT_TRUE(run_loop_until([&] { return calls_ == CALLS; }));
    EXPECT_LE(most, 3);
}

TEST_F(BusLoopTest, ACallThatNobodyAnswersIsOverInItsTime)
{
    bool late = false;
    const auto given_up = [](sd_bus_message *reply, void *data, sd_bus_error *) {
        *static_cast<bool *>(data) =
            sd_bus_message_is_method_error(reply, SD_BUS_ERROR_NO_REPLY) != 0;
        return 1;
    };
    sd_bus_call_async(connection_.get(), nullptr, call_to(name_on(caller_).c_str(), "GetId").get(),
                      given_up, &late, 50000);
    EXPECT_TRUE(run_loop_until([&] { return late; }));
}

TEST_F(BusLoopTest, TheEndOfTheBusIsToldOnce)
{
    bus_.signal(SIGKILL);
    EXPECT_TRUE(run_loop_until([&] { return ends_ > 0; }));
    EXPECT_FALSE(run_loop_until([&] { return ends_ > 1; }, 0.05));
}

TEST_F(BusLoopTest, TheEndThatSendingBringsToLightIsToldToo)
{
    bus_.signal(SIGKILL);
    // Until the system has closed the bus's end.
    while (sd_bus_emit_signal(connection_.get(), PATH, INTERFACE, "Sent", nullptr) >= 0)
        std::this_thread::yield();
    EXPECT_TRUE(run_loop_until([&] { return ends_ > 0; }));
}

} // namespace
} // namespace platform
