// A status is asked for while a stick does not answer.
#include <future>
#include <memory>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "control/status_answers.h"
#include "control_fixture.h"

namespace {

using testing::HasSubstr;

class HangingStorage : public ControlFixture {
  protected:
    void SetUp() override
    {
        ASSERT_EQ(mkfifo((scratch_ / "gate").c_str(), 0600), 0);
        start_player();
    }

    /** A tvctl whose call has reached the player, and for which the storage is being read. */
    std::unique_ptr<store_test::Child> ask()
    {
        auto status = std::make_unique<store_test::Child>(
            std::vector<std::string>{TVCTL, "status", "--json"});
        EXPECT_TRUE(player_says("reading the storage"));
        return status;
    }

    /** Lets one reading go on. */
    void open_gate() { close(open((scratch_ / "gate").c_str(), O_WRONLY)); }

    store_test::Environment gate_{"TEST_STORAGE_GATE", scratch_ / "gate"};
};

TEST_F(HangingStorage, LetsThePlayerDoOtherThingsBeforeItAnswers)
{
    const auto status = ask();
    EXPECT_EQ(tvctl({"key", "XF86RaiseChannel"}).status, 0);
    EXPECT_TRUE(player_says("key XF86RaiseChannel"));
    open_gate();
    EXPECT_EQ(status->finish(), 0) << status->err_text();
    EXPECT_THAT(status->out_text(), HasSubstr("\"state\": \"playing\""));
}

TEST_F(HangingStorage, IsLeftOutOfTheStatusInTheEndAndAskedAnewAfterwards)
{
    const auto status = ask();
    store_test::Child other({TVCTL, "status"});
    EXPECT_EQ(status->finish(), 0) << status->err_text();
    EXPECT_THAT(status->out_text(), HasSubstr("\"usb\": null"));
    EXPECT_EQ(other.finish(), 0) << other.err_text();
    EXPECT_THAT(other.out_text(),
                HasSubstr("USB storage:    unknown, because it cannot be read\n"));

    open_gate();
    player_->out_text().clear();
    const auto again = ask();
    open_gate();
    EXPECT_EQ(again->finish(), 0) << again->err_text();
    EXPECT_THAT(again->out_text(), HasSubstr("\"usb\": ["));
}

TEST_F(HangingStorage, DoesNotKeepThePlayerFromEnding)
{
    const auto status = ask();
    player_->signal(SIGTERM);
    EXPECT_EQ(player_->finish(), 0) << player_->err_text();
    EXPECT_EQ(status->finish(), 1);
    EXPECT_EQ(status->err_text(), "tvctl: the player does not answer\n");
}

TEST_F(HangingStorage, IsWaitedForByNoMoreThanAFewAtATime)
{
    ecore_init();
    std::promise<void> gate;
    const std::shared_future<void> open = gate.get_future().share();
    auto answers = platform::StatusAnswers::create(
        [open](const platform::StorageQuestion &) {
            open.wait();
            return platform::StorageFacts();
        },
        [] { return timespec(); });
    int answered = 0;
    const auto ask = [&] { return answers->ask([&](const platform::Status &) { ++answered; }); };

    int taken = 0;
    while (taken < 1000 && ask())
        ++taken;

    EXPECT_GT(taken, 4);
    EXPECT_LT(taken, 100);
    gate.set_value();
    EXPECT_TRUE(store_test::run_loop_until([&] { return answered == taken; }));
    EXPECT_TRUE(ask());
    answers.reset();
    ecore_shutdown();
}

} // namespace
