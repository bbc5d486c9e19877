// When the panel turns next by itself, told from what can be seen of the application.

#include <Ecore_Input.h>

#include "config_store.h"
#include "config_store/config_files.h"
#include "panel/timed_rotation.h"
#include "panel_test.h"

namespace {

using panel_test::PanelTest;

constexpr char SWITCH[] = "db/ostrel-demo-player-tv/rotation_auto_mode";
constexpr char LANDSCAPE[] = "db/ostrel-demo-player-tv/landscape_timer";
constexpr char PORTRAIT[] = "db/ostrel-demo-player-tv/portrait_timer";

class TimedRotationTest : public PanelTest {
  protected:
    explicit TimedRotationTest(
        const std::string &settings = "[panel]\nrotator = true\nturning_time_s = 0.05\n")
        : PanelTest(settings)
    {
        ecore_event_init();
        rotation_.start();
    }
    ~TimedRotationTest() override
    {
        rotation_.stop();
        ecore_event_shutdown();
    }

    /** Seconds left, rounded to whole ones; -1 for none. */
    int left() const
    {
        const auto seconds = rotation_.left_s();
        return seconds ? static_cast<int>(*seconds + 0.5) : -1;
    }

    /** Writes a key as another program would. */
    void others_write(const std::string &key, int value)
    {
        EXPECT_TRUE(platform::ConfigFiles(folder_ / "state", folder_ / "run").write(key, value));
    }

    static void press(const char *name)
    {
        if (ECORE_EVENT_KEY_DOWN == 0)
            ECORE_EVENT_KEY_DOWN = ecore_event_type_new();
        auto *event = static_cast<Ecore_Event_Key *>(calloc(1, sizeof(Ecore_Event_Key)));
        event->keyname = name;
        event->key = name;
        ecore_event_add(ECORE_EVENT_KEY_DOWN, event, nullptr, nullptr);
    }

    platform::TimedRotation &rotation_ = platform::TimedRotation::get();
};

TEST_F(TimedRotationTest, EachStoredIntervalHasItsSeconds)
{
    const int seconds[] = {300, 330, 360, 390, 420, 450, 480, 540, 600, 900};
    EXPECT_EQ(rotation_.interval_s(false), 300) << "nothing is stored yet";
    for (int index = 0; index < 10; ++index) {
        EXPECT_EQ(vconf_set_int(LANDSCAPE, index), 0);
        EXPECT_EQ(rotation_.interval_s(false), seconds[index]);
    }
    for (const int unknown : {-1, 10, 1000}) {
        EXPECT_EQ(vconf_set_int(PORTRAIT, unknown), 0);
        EXPECT_EQ(rotation_.interval_s(true), 300);
    }
}

TEST_F(TimedRotationTest, RunsFromTheLaunchWhereItWasSwitchedOnBefore)
{
    others_write(SWITCH, 1);
    others_write(LANDSCAPE, 2);
    EXPECT_EQ(left(), -1) << "nothing plays yet";
    rotation_.launched();
    EXPECT_TRUE(rotation_.on());
    EXPECT_EQ(left(), 360);
}

TEST_F(TimedRotationTest, StartsAndEndsWithTheSwitchOfTheApplication)
{
    rotation_.launched();
    EXPECT_FALSE(rotation_.on());
    EXPECT_EQ(left(), -1);
    EXPECT_EQ(vconf_set_int(SWITCH, 1), 0);
    EXPECT_TRUE(rotation_.on());
    EXPECT_EQ(left(), 300);
    EXPECT_EQ(vconf_set_int(SWITCH, 0), 0);
    EXPECT_FALSE(rotation_.on());
    EXPECT_EQ(left(), -1);
}

TEST_F(TimedRotationTest, NewIntervalOfThePresentOrientationStartsItAnew)
{
    rotation_.launched();
    EXPECT_EQ(vconf_set_int(SWITCH, 1), 0);
    EXPECT_EQ(vconf_set_int(PORTRAIT, 9), 0);
    EXPECT_EQ(left(), 300) << "that of the other side has to wait";
    EXPECT_EQ(vconf_set_int(LANDSCAPE, 1), 0);
    EXPECT_EQ(left(), 330);
}

TEST_F(TimedRotationTest, WhatOthersWriteCountsWhenItIsReadNext)
{
    rotation_.launched();
    EXPECT_EQ(vconf_set_int(SWITCH, 1), 0);
    others_write(LANDSCAPE, 9);
    others_write(SWITCH, 0);
    EXPECT_TRUE(rotation_.on());
    EXPECT_EQ(left(), 300);
    rotation_.launched();
    EXPECT_TRUE(rotation_.on()) << "the switch is read once, at the first launch";
    EXPECT_EQ(left(), 900);
}

TEST_F(TimedRotationTest, FinishedTurnStartsTheIntervalOfTheNewSide)
{
    EXPECT_EQ(vconf_set_int(PORTRAIT, 4), 0);
    rotation_.launched();
    EXPECT_EQ(vconf_set_int(SWITCH, 1), 0);
    EXPECT_TRUE(panel_.turn_to(90));
    EXPECT_EQ(left(), -1) << "it is turning now";
    finish_turn();
    EXPECT_EQ(left(), 420);
}

TEST_F(TimedRotationTest, PanelKeyThatTurnsNothingEndsIt)
{
    rotation_.launched();
    EXPECT_EQ(vconf_set_int(SWITCH, 1), 0);
    press("XF86PanelUp");
    press("XF86PanelEnter");
    EXPECT_EQ(left(), 300);
    EXPECT_TRUE(store_test::run_loop_until([this] { return left() == -1; }));
    EXPECT_TRUE(rotation_.on());
}

TEST_F(TimedRotationTest, StoppedItForgetsEverything)
{
    rotation_.launched();
    EXPECT_EQ(vconf_set_int(SWITCH, 1), 0);
    rotation_.stop();
    EXPECT_FALSE(rotation_.on());
    EXPECT_EQ(left(), -1);
    EXPECT_EQ(vconf_set_int(SWITCH, 1), 0);
    EXPECT_FALSE(rotation_.on());
}

class TimedRotationOfAFixedSetTest : public TimedRotationTest {
  protected:
    TimedRotationOfAFixedSetTest() : TimedRotationTest("[panel]\nrotator = false\n") {}
};

TEST_F(TimedRotationOfAFixedSetTest, NeverTurns)
{
    others_write(SWITCH, 1);
    rotation_.launched();
    EXPECT_TRUE(rotation_.on());
    EXPECT_EQ(left(), -1);
}

} // namespace
