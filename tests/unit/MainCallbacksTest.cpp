#include "main_fixture.h"

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

/** A name as the store tells it, and the key that is read for it; null for none. */
struct KeyName {
    const char *name;
    const char *key;
};

// All of the first key's name has to fit; of the second key's name only the beginning. Capitals and
// small letters are the same.
constexpr KeyName KEY_NAMES[] = {
    {"db/ostrel-demo-player-tv/demo_mode", DEMO_MODE},
    {"DB/OSTREL-Demo-Player-TV/Demo_Mode", DEMO_MODE},
    {"db/ostrel-demo-player-tv/demo_mode2", nullptr},
    {"db/ostrel-demo-player-tv/demo_mode/more", nullptr},
    {"db/ostrel-demo-player-tv/demo_mod", nullptr},
    {"db/ostrel-demo-player-tv/file_mode", nullptr},
    {"db/menu/support/use_mode", USE_MODE},
    {"DB/Menu/Support/USE_MODE", USE_MODE},
    {"db/menu/support/use_mode2", USE_MODE},
    {"db/menu/support/use_mode/more", USE_MODE},
    {"db/menu/support/use_mod", nullptr},
    {"", nullptr},
};

TEST_F(WatchedKeyTest, OnlyItsQuitValueEndsTheProgram)
{
    run_launched([this] {
        for (const KeyName &told : KEY_NAMES) {
            for (const int value : {INT32_MIN, -2, -1, 0, 1, 0x0102, INT32_MAX}) {
                SCOPED_TRACE(testing::Message() << told.name << " " << value);
                fake_.store.values[DEMO_MODE] = value;
                fake_.store.values[USE_MODE] = value;
                fake_.forget();

                fake_.store.notify(DEMO_MODE, told.name);

                Lines expected = {"I \"\""};
                if (told.key != nullptr && value == (told.key == DEMO_MODE ? -1 : 0))
                    expected = join({expected, exit_lines()});
                expected.push_back(std::string("I \"pKeyName:") + told.name + " iKeyValue:" +
                                   std::to_string(told.key != nullptr ? value : 0) + "\"");
                EXPECT_EQ(fake_.lines(), expected);
            }
        }
    });
}

TEST_F(WatchedKeyTest, AKeyThatCannotBeReadEndsNothing)
{
    run_launched([this] {
        for (const char *key : {DEMO_MODE, USE_MODE}) {
            fake_.store.values.erase(key);
            fake_.forget();

            fake_.store.notify(key, key);

            EXPECT_THAT(fake_.lines(),
                        LinesAre("I \"\"", std::string("I \"pKeyName:") + key + " iKeyValue:0\""));
        }
    });
}

TEST_F(WatchedKeyTest, AMissingNodeOnlyLogs)
{
    run_launched([this] {
        fake_.store.follower(DEMO_MODE)(nullptr, nullptr);

        EXPECT_THAT(fake_.lines(), LinesAre("I \"\""));
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

        EXPECT_THAT(fake_.lines(), LinesAre("I \"\"", "E \"\"", "ui_app_exit()"));
    });
}

TEST_F(MainTest, AResumeOnlyLogs)
{
    run_created([this] {
        fake_.app.resume();

        EXPECT_THAT(fake_.lines(), LinesAre("I \"\""));
    });
}

TEST_F(MainTest, AChangedLanguageIsTaken)
{
    run_created([this] {
        for (const bool right_to_left : {true, false}) {
            fake_.system.language = "ar_AE";
            fake_.system.ui_orientation = right_to_left ? 1 : 0;
            fake_.forget();

            fake_.app.change_language();

            EXPECT_THAT(fake_.lines(), LinesAre("D \"\"",
                                                right_to_left ? "elm_config_mirrored_set(true)"
                                                              : "elm_config_mirrored_set(false)",
                                                "elm_language_set(\"ar_AE\")", "D \"ar_AE\""));
        }
    });
}

TEST_F(MainTest, ALanguageThatCannotBeReadIsNotTaken)
{
    run_created([this] {
        for (const bool missing : {false, true}) {
            fake_.system.language_missing = missing;
            if (!missing)
                fake_.fail("runtime_info_get_value_string");
            fake_.forget();

            fake_.app.change_language();

            EXPECT_THAT(fake_.lines(), LinesAre("D \"\"", "elm_config_mirrored_set(false)",
                                                "E \"Get System Language Failed\""));
        }
    });
}

// ---- Terminate ----

class TerminateTest : public MainTest {
  protected:
    static Lines set_released()
    {
        return {"I \"\"",
                "D \"0\"",
                "SettingsAPI::RemoveDisabledItemsByAppname(\"org.tizen.ostrel-demo-player-tv\")",
                "app_context_manager_fini()",
                writes(RELAUNCH_TIMER, 1),
                "device_power_unsubscribe_standby()",
                "device_power_unsubscribe_poweroff()",
                "vconf_ignore_key_changed(\"db/menu/support/use_mode\")",
                "vconf_ignore_key_changed(\"db/ostrel-demo-player-tv/demo_mode\")"};
    }
};

TEST_F(TerminateTest, TheSetIsReleasedInItsOrderAndTheControllerLast)
{
    run([this] {
        fake_.app.create();
        fake_.app.launch();
        fake_.forget();

        fake_.app.terminate();

        EXPECT_EQ(fake_.lines(), join({set_released(),
                                       {"I \"\"",
                                        "I \"\"",
                                        "player_unprepare()",
                                        "I \"\"",
                                        "I \"Destroy end\"",
                                        "D \"\"",
                                        "player_destroy()",
                                        "I \"\"",
                                        "ecore_pipe_del(pipe#1)",
                                        "display_rotator_remove_cb()",
                                        "I \"\"",
                                        "VirtualKey_Finalize()",
                                        "KeyRouter_Reset_KeyList()",
                                        "KeyRouter_Add_All_Key(0)",
                                        "KeyRouter_UnSet_KeyList(surface#1)",
                                        "KeyRouter_Finalize()",
                                        "I \"Block E-POP = 0 \"",
                                        "app_context_manager_unset_epop_block()",
                                        "ecore_event_handler_del(key-down handler#1)",
                                        "evas_object_del(window#1)",
                                        "ui_config_manager_fini()",
                                        "elm_velt_manager_fini()"}}));
        EXPECT_FALSE(has_controller());

        // A second end finds no controller.
        fake_.forget();
        fake_.app.terminate();
        EXPECT_EQ(fake_.lines(), set_released());
    });
}

// The results of these are not looked at.
TEST_F(TerminateTest, WhatCannotBeReleasedHoldsNothingElseUp)
{
    run([this] {
        for (const char *function :
             {"device_power_unsubscribe_standby", "device_power_unsubscribe_poweroff"})
            fake_.fail(function);
        fake_.forget();

        // Nothing was created before, either.
        fake_.app.terminate();

        EXPECT_EQ(fake_.lines(), set_released());
    });
}

TEST_F(TerminateTest, ASignalThatCannotBeStoredIsLogged)
{
    run([this] {
        fake_.app.create();
        fake_.fail("vconf_set_int");
        fake_.forget();

        fake_.app.terminate();

        Lines expected = set_released();
        expected.insert(
            expected.begin() + 5,
            "E \"SetConfigInt key memory/usb-launcher-service/start_relaunch_timer,fail\"");
        EXPECT_EQ(fake_.lines(), expected);
    });
}

TEST_F(TerminateTest, WithoutTheApplicationsDataTheSetIsReleased)
{
    run([this] {
        fake_.app.create();
        fake_.forget();

        fake_.app.terminate_without_data();

        EXPECT_EQ(fake_.lines(), set_released());
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

} // namespace
