// What the Linux platform knows about the player, held against the player itself.

#include <algorithm>
#include <chrono>
#include <climits>
#include <filesystem>
#include <fstream>
#include <set>

#include "main_fixture.h"
#include "player_rules/config_keys.h"
#include "player_rules/content_rules.h"
#include "player_rules/key_names.h"
#include "player_rules/launch_rules.h"
#include "player_rules/photo_time.h"
#include "player_rules/rotation_timer.h"
#include "player_rules/user_interface.h"
#include "widget_extension.h"

using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;
using testing::UnorderedElementsAre;
using testing::UnorderedElementsAreArray;

namespace {

class PlayerRulesTest : public PlayerTest {
  protected:
    void set_portrait(bool portrait)
    {
        set_panel(portrait ? ROTATION_TYPE_PORTRAIT : ROTATION_TYPE_LANDSCAPE);
    }
};

TEST_F(PlayerRulesTest, ConfigurationKeysHaveThePlayersNames)
{
    const std::vector<std::string> players = {
        ConfigKey::USE_MODE,        ConfigKey::DEMO_MODE,       ConfigKey::FILE_MODE,
        ConfigKey::LANDSCAPE_TIMER, ConfigKey::PORTRAIT_TIMER,  ConfigKey::ROTATION_AUTO_MODE,
        ConfigKey::ROTATION_STATE,  ConfigKey::PLAYBACK_STATUS, ConfigKey::START_RELAUNCH_TIMER};
    EXPECT_STREQ(platform::DEMO_MODE_KEY, ConfigKey::DEMO_MODE);
    EXPECT_STREQ(platform::LANDSCAPE_TIMER_KEY, ConfigKey::LANDSCAPE_TIMER);
    EXPECT_STREQ(platform::PORTRAIT_TIMER_KEY, ConfigKey::PORTRAIT_TIMER);
    EXPECT_STREQ(platform::ROTATION_AUTO_MODE_KEY, ConfigKey::ROTATION_AUTO_MODE);
    EXPECT_STREQ(platform::ROTATION_STATE_KEY, ConfigKey::ROTATION_STATE);
    std::vector<std::string> known;
    for (const platform::KnownKey &key : platform::known_keys())
        known.emplace_back(key.name);
    EXPECT_THAT(known, UnorderedElementsAreArray(players));
}

TEST_F(PlayerRulesTest, ConfigurationKeysHaveThePlayersValues)
{
    EXPECT_EQ(platform::NOTHING_TO_PLAY, PLAYBACK_STATUS_NO_CONTENT);
    EXPECT_EQ(platform::PLAYBACK_FAILED, PLAYBACK_STATUS_ERROR);
}

TEST_F(PlayerRulesTest, ANewSetBeginsInLandscapeWithThePlayersFirstValues)
{
    EXPECT_EQ(platform::find_known_key("file_mode")->factory, ENDEMO_FILE_MODE_LANDSCAPE);
    for (const char *key : {"demo_mode", "landscape_timer", "portrait_timer", "rotation_auto_mode"})
        EXPECT_EQ(platform::find_known_key(key)->factory, 0) << key;
}

TEST_F(PlayerRulesTest, KeysOfTheSetAreAllThatThePlayerKnows)
{
    std::set<int> types;
    for (const char *name : platform::tv_key_names())
        types.insert(COstrelDemoUtil::GetKeyType(name));
    for (int type = KEY_TYPE_BACK; type <= KEY_TYPE_UNKNOWN; ++type)
        EXPECT_EQ(types.count(type), type == 11 ? 0u : 1u) << "type " << type;
    EXPECT_EQ(COstrelDemoUtil::GetKeyType(platform::PANEL_KEY), KEY_TYPE_ROTATE);

    make_window();
    fake_.forget();
    COstrelDemoUtil::RegisterKeys(player_.m_pWlSurface);
    const Lines removed = fake_.of({"KeyRouter_Remove_Key"});
    ASSERT_FALSE(removed.empty());
    for (const std::string &line : removed) {
        const size_t begin = line.find('"') + 1;
        const std::string name = line.substr(begin, line.rfind('"') - begin);
        EXPECT_TRUE(platform::is_tv_key_name(name)) << line;
    }
}

TEST_F(PlayerRulesTest, FilesAreOfThePlayersKinds)
{
    std::vector<std::string> names = {
        "none",         ".hidden.mkv",    "b.",        "a.m",           "old.ts.bak",
        "portrait.avi", "PORTRAIT_x.Mp4", "portrait_", "xportrait_a.ts"};
    for (const char *extension :
         {"ts",   "avi", "mp4", "asf",  "wmv", "ogg", "flv", "mpeg", "mkv", "tp",  "jpg", "jpeg",
          "smp4", "TS",  "JPG", "mp4x", "jpe", "mov", "png", "srt",  "txt", "smi", "mpl", "mp3"}) {
        for (const char *stem : {"a.", "portrait_a."})
            names.push_back(stem + std::string(extension));
    }
    for (const bool direct_backlight : {false, true}) {
        fake_.system.store_content_type = direct_backlight ? 1 : 0;
        std::vector<std::string> expected[4];
        for (const std::string &name : names) {
            const platform::ContentKind kind = platform::content_kind(name, direct_backlight);
            if (kind == platform::ContentKind::Other)
                continue;
            expected[(platform::is_portrait_content(name) ? 1 : 0) +
                     (kind == platform::ContentKind::Photo ? 2 : 0)]
                .push_back(name);
        }
        fake_.storage.add_folder(FOLDER, names);
        player_.m_CreatePlayList();
        int number = 0;
        for (const auto *list : {&player_.m_vdcLandscapeVideos, &player_.m_vdcPortraitVideos,
                                 &player_.m_vdcLandscapePhotos, &player_.m_vdcPortraitPhotos}) {
            std::vector<std::string> played;
            for (const stPlayListItem &item : *list)
                played.push_back(item.strFileName);
            ASSERT_FALSE(played.empty());
            EXPECT_THAT(expected[number++], ElementsAreArray(played));
        }
    }
}

TEST_F(PlayerRulesTest, SubtitlesAreThoseThatThePlayerTakes)
{
    for (const char *extension : {"srt", "SRT", "sub", "ttxt", "txt", "ssa", "ass", "psb", "sami",
                                  "smi", "mpl", "vtt", "jpg", "mp4", "mp3", "s"}) {
        const std::string name = std::string("b a.") + extension;
        fake_.storage.add_folder(FOLDER, {"a.mkv", name});
        for (const bool direct_backlight : {false, true}) {
            fake_.system.store_content_type = direct_backlight ? 1 : 0;
            player_.m_CreatePlayList();
            const bool taken = player_.m_vdcLandscapeVideos.front().strSubtitleName == name;
            EXPECT_EQ(platform::is_subtitle(name, direct_backlight), taken) << name;
        }
    }
}

TEST_F(PlayerRulesTest, AFolderIsListedInThePlayersOrder)
{
    const std::filesystem::path folder = testing::TempDir() + "player-rules-folder";
    std::filesystem::create_directory(folder);
    for (const char *name :
         {"c.jpg", "a.mp4", "portrait_a.mp4", "b.mkv", "b.srt", "portrait_c.jpg"})
        std::ofstream(folder / name).put('x');
    std::vector<std::string> names;
    for (const auto &entry : std::filesystem::directory_iterator(folder))
        names.push_back(entry.path().filename());
    fake_.storage.add_folder(FOLDER, names);
    player_.m_CreatePlayList();
    for (const bool portrait : {false, true}) {
        set_portrait(portrait);
        ASSERT_EQ(player_.m_InitPlayList(), 1);
        std::vector<std::string> played;
        for (const stPlayListItem &item : player_.m_vdcPlayList)
            played.push_back(item.strFileName);

        const auto list = platform::content_list(folder / played.back(), false);

        ASSERT_TRUE(list);
        EXPECT_EQ(list->names, played);
        EXPECT_EQ(list->position, played.size() - 1);
    }
    std::filesystem::remove_all(folder);
}

TEST_F(PlayerRulesTest, SelectionIsDecodedAsThePlayerDecodesIt)
{
    for (const int word : {0, -1, -2, 1, 0xFF, 0x100, 0x0203, 0xFF00, 0xFFFF, 0x12345, INT_MIN}) {
        fake_.store.values[ConfigKey::DEMO_MODE] = word;
        for (const bool portrait : {false, true}) {
            set_portrait(portrait);
            EXPECT_EQ(platform::selection_of(word, portrait),
                      player_.m_GetFileMode(ENDEMO_FILE_MODE_CURRENT))
                << word << (portrait ? " upright" : "");
        }
    }
}

TEST_F(PlayerRulesTest, IntervalsAreThoseOfThePlayersTimer)
{
    fake_.rotator.supported = true;
    player_.m_bRotationAutoMode = true;
    const int count = static_cast<int>(platform::ROTATION_INTERVALS_S.size());
    for (int index = -1; index <= count; ++index) {
        fake_.store.values[ConfigKey::LANDSCAPE_TIMER] = index;
        player_.m_UpdateZavoTimer();
        EXPECT_THAT(fake_.loop.timers(), ElementsAre(platform::rotation_interval_s(index)))
            << index;
    }
}

/** The player with its remote control, and the platform's model of its rotation timer beside it. */
class PlayersRotationTimerTest : public PlayerRulesTest {
  protected:
    void begin(bool portrait, int stored)
    {
        fake_.rotator.supported = true;
        portrait_ = portrait;
        set_portrait(portrait);
        fake_.store.values[ConfigKey::ROTATION_STATE] = portrait ? 2 : 1;
        fake_.store.values[ConfigKey::ROTATION_AUTO_MODE] = stored;
        fake_.store.values[ConfigKey::LANDSCAPE_TIMER] = 8;
        fake_.store.values[ConfigKey::PORTRAIT_TIMER] = 2;
        created({"a.mp4", "b.mp4", "portrait_c.mp4", "portrait_d.mp4"});
        player_.StartDemoPlayer();
        model_.launched(stored != 0);
        model_.restart(fake_.loop.now(), interval());
        fake_.forget();
    }

    int interval()
    {
        return platform::rotation_interval_s(
            fake_.store.values[portrait_ ? ConfigKey::PORTRAIT_TIMER : ConfigKey::LANDSCAPE_TIMER]);
    }

    /** Presses a key, tells the model what the platform sees of it, and compares the two. */
    void press(const char *key)
    {
        fake_.loop.advance(1.0);
        fake_.forget();
        fake_.loop.press_key(key);
        fake_.loop.drain_pipe();
        if (key == std::string(platform::PANEL_KEY))
            model_.give_up();
        bool started = false;
        for (const std::string &line : fake_.of({"vconf_set_int"})) {
            const size_t name = line.find('"') + 1;
            const size_t name_end = line.find('"', name);
            const int value = std::stoi(line.substr(line.find(", ", name_end) + 2));
            if (model_.wrote(line.substr(name, name_end - name), value, portrait_)) {
                model_.restart(fake_.loop.now(), interval());
                started = model_.on();
            }
        }
        const std::string start = "ecore_timer_add(" + std::to_string(interval()) + ", controller)";
        const Lines timers = fake_.of({"ecore_timer_add"});
        EXPECT_EQ(std::count(timers.begin(), timers.end(), start), started ? 1 : 0) << key;
        expect_same(key);
    }

    void expect_same(const char *after)
    {
        EXPECT_EQ(model_.on(), player_.m_bRotationAutoMode) << after;
        EXPECT_EQ(model_.left_s(fake_.loop.now()).has_value(), player_.m_pZavoTimer != nullptr)
            << after;
    }

    platform::RotationTimerModel model_;
    bool portrait_ = false;
};

TEST_F(PlayersRotationTimerTest, IsFollowedThroughEveryKeyThatMovesIt)
{
    begin(false, 1);
    expect_same("the launch");
    for (const char *key : {"XF86LowerChannel", "XF86RaiseChannel", "XF86ChannelGuide", "XF86Color",
                            "XF86LowerChannel", "XF86More", "XF86LowerChannel"})
        press(key);
    press(platform::PANEL_KEY);
}

TEST_F(PlayersRotationTimerTest, IsFollowedOnTheUprightPanelFromASwitchThatWasOff)
{
    begin(true, 0);
    expect_same("the launch");
    for (const char *key : {"XF86RaiseChannel", "XF86Color", "XF86LowerChannel", "XF86RaiseChannel",
                            "XF86ChannelGuide", "XF86Color"})
        press(key);
}

TEST_F(PlayerRulesTest, WindowAndTextsHaveThePlayersNames)
{
    player_.m_CreateWindow();
    player_.m_InitItemList();
    const std::string window = std::string("(\"") + platform::WINDOW_NAME + "\")";
    EXPECT_THAT(fake_.of({"app_get_preinitialized_window"}), ElementsAre(EndsWith(window)));
    const std::string domain = std::string("dgettext(\"") + platform::TEXT_DOMAIN + "\", ";
    const Lines texts = fake_.of({"dgettext"});
    EXPECT_FALSE(texts.empty());
    EXPECT_THAT(texts, Each(StartsWith(domain)));
}

TEST_F(PlayerRulesTest, OptionsHaveThePlayersSizeAndRows)
{
    make_window();
    player_.m_InitItemList();
    EXPECT_TRUE(player_.m_CreatePopUp());
    const Lines rows = fake_.of({"elm_velt_genlist_item_append"});
    EXPECT_FALSE(rows.empty());
    EXPECT_THAT(rows, Each(HasSubstr(std::string(", ") + platform::OPTIONS_ROW_STYLE + ", ")));
    const std::string size =
        ", " + std::to_string(elm_velt_unit_to_pixel(platform::OPTIONS_WIDTH_UNITS)) + ", " +
        std::to_string(elm_velt_unit_to_pixel(platform::OPTIONS_HEIGHT_UNITS)) + ")";
    EXPECT_THAT(fake_.of({"elm_velt_popup_content_set"}), ElementsAre(EndsWith(size)));
}

TEST_F(PlayerRulesTest, PhotosStayAsLongAsThePlayerLeavesThem)
{
    for (const bool rotator : {false, true}) {
        fake_.rotator.supported = rotator;
        player_.StartSlideShow();
        const std::chrono::duration<double> time = platform::photo_time(rotator);
        EXPECT_THAT(fake_.loop.timers(), ElementsAre(time.count())) << rotator;
        player_.StopSlideShow();
    }
}

class PlayersLaunchTest : public MainTest {};

TEST_F(PlayersLaunchTest, ExtrasHaveTheNamesThatThePlayerAsksFor)
{
    run_created([&] { launch_and_start({{"path_location", "usb"}}); });
    std::set<std::string> asked;
    for (const std::string &line : fake_.of({"app_control_get_extra_data"})) {
        const size_t begin = line.find('"') + 1;
        asked.insert(line.substr(begin, line.rfind('"') - begin));
    }
    EXPECT_THAT(asked,
                UnorderedElementsAre(platform::FOLDER_PATH_EXTRA, platform::PATH_LOCATION_EXTRA,
                                     platform::PLAYER_MODE_EXTRA, platform::REPEAT_MODE_EXTRA,
                                     platform::MODE_EXTRA, platform::RELOCATE_BELOW_EXTRA));
}

TEST_F(PlayersLaunchTest, FolderOfARequestIsTheOneThatThePlayerLists)
{
    using platform::Extras;
    for (const Extras &extras :
         {Extras(), Extras{{"folder_path", "/media/named/"}}, Extras{{"folder_path", ""}},
          platform::request_for("/media/chosen/")}) {
        run_created([&] { fake_.app.launch({extras.begin(), extras.end()}); });
        const std::string folder = platform::listed_folder(extras).value();
        EXPECT_THAT(fake_.of({"opendir"}), Contains("opendir(\"" + folder + "\")"));
    }
    EXPECT_FALSE(platform::listed_folder({{"folder_path", "demo"}, {"path_location", "usb"}}));
}

TEST_F(PlayersLaunchTest, RequestsStartPlaybackWhereThePlayerStartsIt)
{
    for (const char *below : {"", "com.norvane.tv.aod", "com.norvane.tv.other"}) {
        for (const char *mode : {"", "factory_start", "factory_stop"}) {
            fake::Application::Extras extras = {{"path_location", "usb"}};
            if (*below != '\0')
                extras["__K_RELOCATE_BELOW"] = below;
            if (*mode != '\0')
                extras["mode"] = mode;
            bool started = false;
            run_created([&] {
                fake_.app.launch(extras);
                started = has_controller();
            });
            EXPECT_EQ(platform::starts_playback({extras.begin(), extras.end()}), started)
                << below << " " << mode;
        }
    }
}

} // namespace
