#include "main_test.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

namespace {

// ---- Watched keys ----

class WatchedKeyTest : public MainTest {
  protected:
    void run_launched(std::function<void()> script)
    {
        run_created([this, script = std::move(script)] {
            launch_and_start();
            fake_.forget();
            script();
        });
    }
};

TEST_F(WatchedKeyTest, DemoModeMinusOneEndsTheProgram)
{
    run_launched([this] {
        fake_.store.change(DEMO_MODE, -1);

        EXPECT_THAT(fake_.lines(),
                    ElementsAre(StartsWith("I \""), "E \"\"", "ui_app_exit()",
                                "I \"pKeyName:db/ostrel-demo-player-tv/demo_mode iKeyValue:-1\""));
    });
}

TEST_F(WatchedKeyTest, AnyOtherDemoModeIsOnlyLogged)
{
    run_launched([this] {
        for (const int value : {0, 1, 0x0102, -2}) {
            fake_.forget();
            fake_.store.change(DEMO_MODE, value);
            EXPECT_THAT(fake_.lines(),
                        ElementsAre(StartsWith("I \""),
                                    "I \"pKeyName:db/ostrel-demo-player-tv/demo_mode iKeyValue:" +
                                        std::to_string(value) + "\""));
        }
    });
}

TEST_F(WatchedKeyTest, UseModeZeroEndsTheProgram)
{
    run_launched([this] {
        fake_.store.change(USE_MODE, 0);

        EXPECT_THAT(fake_.lines(), ElementsAre(StartsWith("I \""), "E \"\"", "ui_app_exit()",
                                               "I \"pKeyName:db/menu/support/use_mode "
                                               "iKeyValue:0\""));
    });
}

TEST_F(WatchedKeyTest, AnyOtherUseModeIsOnlyLogged)
{
    run_launched([this] {
        fake_.store.change(USE_MODE, 1);
        fake_.store.change(USE_MODE, -1);

        EXPECT_EQ(exits(), 0);
    });
}

TEST_F(WatchedKeyTest, KeyNamesAreComparedWithoutCase)
{
    run_launched([this] {
        fake_.store.values["DB/OSTREL-Demo-Player-TV/Demo_Mode"] = -1;
        fake_.store.values[DEMO_MODE] = -1;
        fake_.store.notify(DEMO_MODE, "DB/OSTREL-Demo-Player-TV/Demo_Mode");
        EXPECT_EQ(exits(), 1);

        fake_.store.values["DB/Menu/Support/USE_MODE"] = 0;
        fake_.store.values[USE_MODE] = 0;
        fake_.store.notify(USE_MODE, "DB/Menu/Support/USE_MODE");
        EXPECT_EQ(exits(), 2);
    });
}

TEST_F(WatchedKeyTest, OtherKeysEndNothing)
{
    run_launched([this] {
        fake_.store.values[DEMO_MODE] = -1;
        fake_.store.values[USE_MODE] = 0;

        fake_.store.notify(DEMO_MODE, "db/ostrel-demo-player-tv/file_mode");

        EXPECT_EQ(exits(), 0);
    });
}

TEST_F(WatchedKeyTest, AKeyThatCannotBeReadEndsNothing)
{
    run_launched([this] {
        fake_.store.values.erase(DEMO_MODE);
        fake_.store.notify(DEMO_MODE, DEMO_MODE);
        fake_.store.values.erase(USE_MODE);
        fake_.store.notify(USE_MODE, USE_MODE);

        EXPECT_EQ(exits(), 0);
    });
}

TEST_F(WatchedKeyTest, AMissingNodeOnlyLogs)
{
    run_launched([this] {
        fake_.store.follower(DEMO_MODE)(nullptr, nullptr);

        EXPECT_THAT(fake_.lines(), ElementsAre(StartsWith("I \"")));
    });
}

TEST_F(WatchedKeyTest, ChoosingOffEndsTheProgramByTheKeyToo)
{
    run_launched([this] {
        fake_.widgets.press(fake_.widgets.window(), 1);
        fake_.widgets.press_row(fake_.widgets.get("genlist"), 0);
        EXPECT_EQ(fake_.store.get(DEMO_MODE), -1);
        const int before = exits();

        fake_.store.notify(DEMO_MODE, DEMO_MODE);

        EXPECT_EQ(exits(), before + 1);
    });
}

// ---- Power, pause, resume, language ----

TEST_F(MainTest, EveryPowerEventEndsTheProgram)
{
    run_created([this] {
        for (const char *event : {"poweroff", "standby", "wakeup"}) {
            fake_.forget();
            fake_.power.raise(event);
            EXPECT_THAT(fake_.lines(), LinesAre("E \"\"", "E \"\"", "ui_app_exit()")) << event;
        }
        fake_.forget();
        fake_.power.change_state(DEVICE_POWER_STATE_NORMAL);
        EXPECT_THAT(fake_.lines(), LinesAre("E \"\"", "E \"\"", "ui_app_exit()"));
    });
}

TEST_F(MainTest, APauseEndsTheProgram)
{
    run_created([this] {
        fake_.app.pause();

        EXPECT_THAT(fake_.lines(), ElementsAre(StartsWith("I \""), "E \"\"", "ui_app_exit()"));
    });
}

TEST_F(MainTest, AResumeOnlyLogs)
{
    run_created([this] {
        fake_.app.resume();

        EXPECT_THAT(fake_.lines(), ElementsAre(StartsWith("I \"")));
    });
}

TEST_F(MainTest, AChangedLanguageIsTaken)
{
    run_created([this] {
        fake_.system.language = "ar_AE";
        fake_.system.ui_orientation = 1;

        fake_.app.change_language();

        EXPECT_THAT(fake_.calls(),
                    LinesAre("elm_config_mirrored_set(true)", "elm_language_set(\"ar_AE\")"));
        EXPECT_THAT(fake_.of({"runtime_info"}), LinesAre("runtime_info_get_value_string(1)"));
        const Lines logs = fake_.logs();
        ASSERT_GE(logs.size(), 2U);
        EXPECT_THAT(logs.front(), StartsWith("D \""));
        EXPECT_THAT(logs.back(), testing::AllOf(StartsWith("D \""), testing::HasSubstr("ar_AE")));
    });
}

TEST_F(MainTest, ALanguageThatCannotBeReadIsNotTaken)
{
    fake_.fail("runtime_info_get_value_string");

    run_created([this] {
        fake_.app.change_language();

        EXPECT_THAT(fake_.lines(), ElementsAre(StartsWith("D \""), "elm_config_mirrored_set(false)",
                                               "E \"Get System Language Failed\""));
    });
}

TEST_F(MainTest, ANullLanguageIsNotTaken)
{
    fake_.system.language_missing = true;

    run_created([this] {
        fake_.app.change_language();

        EXPECT_THAT(fake_.of({"elm_language_set"}), IsEmpty());
    });
}

// ---- Terminate ----

TEST_F(MainTest, TerminationReleasesTheSetInItsOrder)
{
    run([this] {
        fake_.app.create();
        fake_.app.launch();
        fake_.forget();

        fake_.app.terminate();

        const Lines calls = fake_.calls();
        ASSERT_GE(calls.size(), 8U);
        EXPECT_EQ(
            Lines(calls.begin(), calls.begin() + 7),
            Lines({"SettingsAPI::RemoveDisabledItemsByAppname("
                   "\"org.tizen.ostrel-demo-player-tv\")",
                   "app_context_manager_fini()",
                   "vconf_set_int(\"memory/usb-launcher-service/start_relaunch_timer\", 1)",
                   "device_power_unsubscribe_standby()", "device_power_unsubscribe_poweroff()",
                   "vconf_ignore_key_changed(\"db/menu/support/use_mode\")",
                   "vconf_ignore_key_changed(\"db/ostrel-demo-player-tv/demo_mode\")"}));
        EXPECT_EQ(calls.back(), "elm_velt_manager_fini()") << "the controller goes last";
        EXPECT_THAT(fake_.logs().front(), StartsWith("I \""));
        EXPECT_FALSE(has_controller());
    });
}

TEST_F(MainTest, AfterTerminationOnlyTheIntendedIsLeft)
{
    fake_.rotator.supported = true;
    run_created([this] {
        launch_and_start();
        fake_.media.fire_prepared();
        fake_.loop.drain_pipe();
    });

    EXPECT_THAT(fake_.leftovers(), LinesAre("device-add handler#1", "subscription to wakeup",
                                            "subscription to the power state"));
}

TEST_F(MainTest, TerminationWithoutAControllerReleasesTheRest)
{
    run([this] {
        fake_.app.create();
        fake_.forget();

        fake_.app.terminate();

        EXPECT_EQ(fake_.store.get(RELAUNCH_TIMER), 1);
        EXPECT_THAT(fake_.of({"player_", "ecore_pipe_del", "elm_velt_manager_fini"}), IsEmpty());
    });
}

TEST_F(MainTest, TheControllersPointerIsClearedAtTermination)
{
    run([this] {
        fake_.app.create();
        fake_.app.launch();
        fake_.app.terminate();
        fake_.forget();

        // A second end finds no controller.
        fake_.app.terminate();

        EXPECT_THAT(fake_.of({"player_", "elm_velt_manager_fini"}), IsEmpty());
    });
}

} // namespace
