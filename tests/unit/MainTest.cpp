#include "launch_lines.h"
#include "start_lines.h"

namespace {

// ---- main, elm_main ----

TEST_F(MainTest, MainStartsElementaryAndTheFramework)
{
    fake_.app.exit_status = 7;

    EXPECT_EQ(run([] {
                  EXPECT_STREQ(app_data()->id, "org.tizen.ostrel-demo-player-tv");
                  EXPECT_EQ(app_data()->controller, nullptr) << "until the first launch request";
              }),
              7);

    EXPECT_THAT(fake_.all(), LinesAre("ecore_time_unix_get()", "elm_init(1, argv)", "D \"\"",
                                      "ui_app_add_event_handler(LANGUAGE_CHANGED, null)",
                                      "ui_app_main(1, argv)", "elm_shutdown()"));
    EXPECT_EQ(_elm_startup_time, 1000.0);
}

TEST_F(MainTest, WithoutNewsOfTheLanguageTheProgramRuns)
{
    fake_.fail("ui_app_add_event_handler");
    bool ran = false;

    EXPECT_EQ(run([&ran] { ran = true; }), 0);

    EXPECT_TRUE(ran);
}

// ---- Create ----

class MainCreateTest : public MainTest {
  protected:
    static Lines keys_and_panel(int state)
    {
        return {"I \"\"",
                "I \"\"",
                "VirtualKey_Initialize(0)",
                "ecore_event_handler_add(DEVICE_ADD, null)",
                reads("db/sysman/rotation_state"),
                "I \"Roation Value = " + std::to_string(state) + " \""};
    }

    static Lines set_up()
    {
        return {"ea_init()",
                "elm_app_base_scale_set(2)",
                "device_power_subscribe_poweroff()",
                "device_power_subscribe_standby()",
                "device_power_subscribe_wakeup()",
                "device_power_subscribe_state_changed_event()",
                "app_context_manager_init()",
                "D \"1\"",
                "SettingsAPI::Get()",
                "SettingsAPI::DisableItemsByList(\"broadcasting picturesize pip game-mode "
                "delete-contents-list tools-demo-update tools-picture-demo\", "
                "\"org.tizen.ostrel-demo-player-tv\")",
                "ua_UI_orientation_get()"};
    }

    void expect_creation(const Lines &expected)
    {
        run([&] {
            fake_.forget();
            EXPECT_TRUE(fake_.app.create());
            EXPECT_EQ(fake_.all(), expected);
        });
    }
};

TEST_F(MainCreateTest, TheSetIsSetUpInItsOrder)
{
    expect_creation(join({keys_and_panel(1), set_up(), {"elm_config_mirrored_set(false)"}}));

    EXPECT_EQ(COstrelDemoUtil::GetWindowRotationType(), ROTATION_TYPE_LANDSCAPE);
}

TEST_F(MainCreateTest, ARightToLeftSetIsMirrored)
{
    fake_.system.ui_orientation = 1;

    expect_creation(join({keys_and_panel(1),
                          set_up(),
                          {"I \"RTL_UI_ORIENTATION\"", "elm_config_mirrored_set(true)"}}));
}

TEST_F(MainCreateTest, TheStoredRotationIsTaken)
{
    fake_.store.values["db/sysman/rotation_state"] = 2;

    expect_creation(join({keys_and_panel(2), set_up(), {"elm_config_mirrored_set(false)"}}));

    EXPECT_EQ(COstrelDemoUtil::GetWindowRotationType(), ROTATION_TYPE_PORTRAIT);
}

TEST_F(MainCreateTest, AnUnreadableRotationHoldsNothingUp)
{
    fake_.store.values.erase("db/sysman/rotation_state");

    Lines keys = keys_and_panel(0);
    keys.back() = "E \"GetConfigInt key [db/sysman/rotation_state] faild\"";
    expect_creation(join({keys, set_up(), {"elm_config_mirrored_set(false)"}}));
}

// The results of these are not looked at.
TEST_F(MainCreateTest, AServiceThatFailsHoldsNothingUp)
{
    for (const char *function :
         {"ea_init", "device_power_subscribe_poweroff", "device_power_subscribe_standby",
          "device_power_subscribe_wakeup", "device_power_subscribe_state_changed_event",
          "app_context_manager_init"})
        fake_.script.fail_always(function);

    expect_creation(join({keys_and_panel(1), set_up(), {"elm_config_mirrored_set(false)"}}));
}

// ---- Launch requests ----

class LaunchTest : public MainTest {
  protected:
    // The folder that is scanned, and whether it is looked for on the sticks.
    static Lines folder(const Extras &extras)
    {
        const auto path = extras.find("folder_path");
        const std::string built_in = "opendir(\"/opt/data/demo_movie/\")";
        if (path == extras.end())
            return has_extra(extras, "path_location", "usb")
                       ? Lines{built_in, "usb_device_get_device_list(8)",
                               "opendir(\"/media/a//opt/data/demo_movie//\")"}
                       : Lines{built_in, built_in};
        if (path->second.empty())
            return {built_in, built_in};
        if (!has_extra(extras, "path_location", "usb"))
            return {"opendir(\"" + path->second + "\")"};
        return {"usb_device_get_device_list(8)", "opendir(\"/media/a/" + path->second + "/\")"};
    }

    void add_folders()
    {
        fake_.storage.sticks = {"/media/a"};
        for (const char *folder :
             {"/demo/show", "/media/a/demo/show", "/media/a/opt/data/demo_movie"})
            fake_.storage.add_folder(folder, {"x.mp4"});
    }

    // A request whose extras cannot be had is as one without any.
    void expect_launched_without_extras();

    void expect_launch(const Extras &extras)
    {
        run_created([&] {
            fake_.app.launch(extras);

            const Lines expected = request_lines(extras);
            const Lines all = fake_.all();
            EXPECT_EQ(has_controller(), !is_refused(extras));
            EXPECT_EQ(exits(), is_stop(extras) ? 1 : 0);
            if (is_refused(extras)) {
                EXPECT_EQ(all, expected);
                return;
            }
            ASSERT_GE(all.size(), expected.size() + 2);
            const auto rest = all.begin() + static_cast<long>(expected.size());
            EXPECT_EQ(Lines(all.begin(), rest), expected);
            EXPECT_EQ(Lines(rest, rest + 2), Lines({"D \"\"", "D \"\""})) << "the controller";
            EXPECT_EQ(fake_.of({"usb_device_get_device_list", "opendir"}), folder(extras));
            EXPECT_EQ(all.back(), "I \"change TV_VCONF_START_RELAUNCH_TIMER to 3\"");
        });
    }
};

void LaunchTest::expect_launched_without_extras()
{
    run_created([this] {
        fake_.app.launch({{"mode", "factory_stop"}, {"folder_path", "/demo/show/"}});

        const Lines expected = request_lines({});
        const Lines all = fake_.all();
        ASSERT_GE(all.size(), expected.size());
        EXPECT_EQ(Lines(all.begin(), all.begin() + static_cast<long>(expected.size())), expected);
        EXPECT_TRUE(has_controller());
        EXPECT_EQ(exits(), 0);
    });
}

class LaunchScene : public LaunchTest {
  public:
    void TestBody() override {}

    void expect(const Extras &extras)
    {
        add_folders();
        expect_launch(extras);
    }
};

// Null for an extra that is not there.
struct LaunchExtra {
    const char *key;
    std::vector<const char *> values;
};

TEST(LaunchTableTest, EveryCombinationOfExtrasIsReadInOrder)
{
    const LaunchExtra extras[] = {
        {"__K_RELOCATE_BELOW", {nullptr, "com.norvane.tv.aod", "com.norvane.tv.other", ""}},
        {"mode", {nullptr, "factory_stop", "factory_start", "Factory_Stop", ""}},
        {"demo_player_mode", {nullptr, "folder_contents_player", "Folder_Contents_Player"}},
        {"repeat_mode", {nullptr, "no"}},
        {"folder_path", {nullptr, "/demo/show/", ""}},
        {"path_location", {nullptr, "usb", "USB"}}};
    size_t combinations = 1;
    for (const LaunchExtra &entry : extras)
        combinations *= entry.values.size();

    for (size_t n = 0; n < combinations && !testing::Test::HasFailure(); ++n) {
        fake::Application::Extras chosen;
        std::string trace;
        size_t rest = n;
        for (const LaunchExtra &entry : extras) {
            const char *value = entry.values[rest % entry.values.size()];
            rest /= entry.values.size();
            if (value == nullptr)
                continue;
            chosen[entry.key] = value;
            trace += std::string(entry.key) + "=" + value + " ";
        }
        SCOPED_TRACE(trace);
        LaunchScene().expect(chosen);
    }
}

TEST_F(MainTest, ALaunchWithoutDataOnlyWarns)
{
    run_created([this] {
        fake_.app.launch_without_data({{"mode", "factory_stop"}});

        EXPECT_THAT(fake_.all(), LinesAre("I \"\"", "W \"pAppData is null\""));
    });
}

TEST_F(MainTest, FolderContentsModeEnablesRewindAndForward)
{
    run_created([this] {
        launch_and_start({{"demo_player_mode", "folder_contents_player"}});
        fake_.media.fire_prepared();
        fake_.loop.drain_pipe();
        fake_.loop.press_key("XF86AudioNext");
        fake_.loop.drain_pipe();

        EXPECT_EQ(fake_.media.rate, 2.0F);
    });
}

struct RepeatMode {
    const char *value; /**< null for none */
    bool repeats;
};

class RepeatModeTest : public MainTest, public testing::WithParamInterface<RepeatMode> {};

TEST_P(RepeatModeTest, DecidesWhatFollowsTheFirstVideo)
{
    run_created([this] {
        fake::Application::Extras extras;
        if (GetParam().value != nullptr)
            extras["repeat_mode"] = GetParam().value;
        launch_and_start(extras);
        fake_.media.fire_prepared();
        fake_.loop.drain_pipe();

        fake_.media.fire_completed();
        fake_.loop.drain_pipe();

        EXPECT_EQ(fake_.media.preparing(), GetParam().repeats);
        EXPECT_EQ(exits(), GetParam().repeats ? 0 : 1);
    });
}

// The comparison with "no" is exact.
INSTANTIATE_TEST_SUITE_P(Values, RepeatModeTest,
                         testing::Values(RepeatMode{nullptr, true}, RepeatMode{"no", false},
                                         RepeatMode{"No", true}, RepeatMode{"NO", true},
                                         RepeatMode{"yes", true}, RepeatMode{"", true},
                                         RepeatMode{"none", true}));

TEST_F(LaunchTest, ARelaunchStartsTheOldListAnew)
{
    fake_.storage.add_folder("/demo/show", {"x.mp4"});
    const Extras other = {{"folder_path", "/demo/show/"},
                          {"repeat_mode", "no"},
                          {"demo_player_mode", "folder_contents_player"}};

    run_created([&] {
        fake_.app.launch();
        fake_.registry.name(app_controller(), "controller");
        fake_.forget();

        fake_.app.launch(other);

        // The request itself chooses all.
        const Start start = {false, ROTATION_TYPE_LANDSCAPE, 1, 0, false};
        const OnScreen nothing = {false, 0, PLAYER_STATE_IDLE, ""};
        EXPECT_EQ(fake_.all(),
                  join({request_lines(other),
                        selection_lines(start),
                        panel_check_lines(start),
                        disclaimer_feature_lines(false),
                        timed_rotation_lines(start),
                        {"D \"0\""},
                        folder_lines(),
                        entry_lines("/opt/data/demo_movie/a.mp4", "", false, nothing, false)}));

        // The new repeat mode is not taken either, nor the keys of the new player mode.
        fake_.media.fire_prepared();
        fake_.loop.drain_pipe();
        fake_.loop.press_key("XF86AudioNext");
        fake_.loop.drain_pipe();
        EXPECT_EQ(fake_.media.rate, 1.0F);
        fake_.media.fire_completed();
        fake_.loop.drain_pipe();
        EXPECT_EQ(exits(), 0);
    });
}

TEST_F(MainTest, ARelaunchWithAnotherChosenFolderKeepsTheOldOne)
{
    fake_.storage.add_folder("/demo/old", {"x.mp4"});
    fake_.storage.add_folder("/demo/new", {"y.mp4"});
    const Extras old_folder = {{"demo_player_mode", "folder_contents_player"},
                               {"folder_path", "/demo/old/"}};
    const Extras new_folder = {{"demo_player_mode", "folder_contents_player"},
                               {"folder_path", "/demo/new/"}};

    run_created([&] {
        fake_.app.launch(old_folder);
        fake_.app.launch(new_folder);

        EXPECT_THAT(fake_.of({"player_set_uri"}), LinesAre("player_set_uri(\"/demo/old/x.mp4\")"));
    });
}

TEST_F(MainTest, ARelaunchWatchesTheKeysAgain)
{
    run_created([this] {
        fake_.app.launch();
        fake_.forget();

        fake_.app.launch();

        EXPECT_EQ(fake_.transcript.count("vconf_notify_key_changed"), 2);
        EXPECT_THAT(fake_.store.watched(), LinesAre(DEMO_MODE, USE_MODE));
    });
}

TEST_F(MainTest, KeysThatCannotBeWatchedDoNotStopTheLaunch)
{
    fake_.script.fail_always("vconf_notify_key_changed");

    run_created([this] {
        fake_.app.launch();

        EXPECT_TRUE(has_controller());
        EXPECT_EQ(exits(), 0);
    });
}

class FailedCreationTest : public MainTest {
  protected:
    void expect_end_with_status(int status)
    {
        run_created([&] {
            fake_.app.launch();

            EXPECT_EQ(exits(), 1);
            const Lines lines = fake_.all();
            ASSERT_GE(lines.size(), 4U);
            EXPECT_EQ(Lines(lines.end() - 4, lines.end()),
                      Lines({writes("memory/ostrel-demo-player-tv/playback_status", status),
                             "E \"Create ostrel demo player failed\"", "E \"\"", "ui_app_exit()"}));
        });
    }
};

TEST_F(FailedCreationTest, WithoutContentEndsTheProgram)
{
    fake_.storage.add_folder("/opt/data/demo_movie", {});

    expect_end_with_status(2);
}

TEST_F(FailedCreationTest, WithoutAVideoPlayerEndsTheProgram)
{
    fake_.fail("player_create");

    expect_end_with_status(3);
}

TEST_F(LaunchTest, UnreadableExtrasAreTakenForAbsent)
{
    fake_.script.fail_always("app_control_get_extra_data");

    expect_launched_without_extras();
}

TEST_F(LaunchTest, NullExtrasAreTakenForAbsent)
{
    fake_.app.extras_are_null = true;

    expect_launched_without_extras();
}

} // namespace
