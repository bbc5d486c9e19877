/**
 * Every key type in every situation. What a key has to do is written down once more here, as steps
 * of the controller's other operations, which have tests of their own; the same situation is then
 * set up anew, and the key's event must leave the same transcript and the same controller behind.
 */
#include "player_test.h"

#include <ostream>

#include "player/util/EventManager.h"
#include "player/util/Log.h"

namespace {

enum class Kind { Video, Photo, Nothing };
enum class Popup { Closed, Open, Closing };

struct Situation {
    Kind kind;
    Popup popup;
    bool rotator;
    bool rotating;
    bool folder_contents;
    bool upright;
    bool one_entry;
};

std::ostream &operator<<(std::ostream &out, const Situation &now)
{
    constexpr const char *KINDS[] = {"video", "photo", "nothing"};
    constexpr const char *POPUPS[] = {"closed", "open", "closing"};
    return out << KINDS[static_cast<int>(now.kind)] << ", popup "
               << POPUPS[static_cast<int>(now.popup)] << ", rotator " << now.rotator
               << ", rotating " << now.rotating << ", folder contents " << now.folder_contents
               << ", upright " << now.upright << ", one entry " << now.one_entry;
}

/** One controller in a situation. */
class Scene : public PlayerTest {
  public:
    explicit Scene(const Situation &situation) : now_(situation)
    {
        fake_.rotator.supported = now_.rotator;
        fake_.store.values[ConfigKey::DEMO_MODE] = now_.upright ? 0x0200 : 0x0002;
        fake_.store.values[ConfigKey::PORTRAIT_TIMER] = 9;
        fake_.store.values[ConfigKey::LANDSCAPE_TIMER] = 3;
        if (now_.upright)
            set_panel(ROTATION_TYPE_PORTRAIT_REVERSE);
        make_window();
        make_video_player_in(PLAYER_STATE_PLAYING);
        player_.m_bFolderContentsPlayer = now_.folder_contents;
        player_.m_strFolderPath = "/demo/show/";
        player_.m_bRotationAutoMode = true;
        player_.m_bRotating = now_.rotating;
        player_.m_iPlayIndex = 2;
        player_.m_vdcLandscapeVideos.emplace_back();
        player_.m_vdcPortraitPhotos.emplace_back();
        show();
        if (now_.popup != Popup::Closed)
            open_popup();
        if (now_.popup == Popup::Closing)
            player_.DestroyPopup();
        player_.m_UpdateZavoTimer();
        fake_.forget();
    }

    void TestBody() override {}

    void press(int type)
    {
        stPipeRecord record = {ENDEMO_EVENT_KEY, type, 0, 0, 0, 0};
        CPlayerInspector::m_OnHandleEcorePipeCB(controller_.get(), &record, sizeof record);
    }

    void do_by_hand(int type)
    {
        switch (type) {
        case 0:
            if (player_.DestroyPopup())
                return;
            LOGI("exit ostrel demo player");
            player_.ReleaseResource();
            player_.m_DeactiveWindow();
            COstrelDemoUtil::SetConfigInt(ConfigKey::PLAYBACK_STATUS, 0);
            COstrelDemoUtil::ExitApplication();
            return;
        case 1:
            if (player_.DestroyPopup())
                return;
            if (on_screen(1))
                player_.StopSlideShow();
            if (!now_.rotating)
                player_.m_CreatePopUp();
            return;
        case 9:
        case 10:
            if (player_.m_vdcPlayList.size() < 2)
                return;
            if (on_screen(1))
                player_.StopSlideShow();
            type == 9 ? player_.m_PlayPreviousFile() : player_.m_PlayNextFile();
            return;
        default:
            play_by_hand(type);
            turn_by_hand(type);
        }
    }

    // What the controller and the set are like afterwards.
    std::vector<std::string> state()
    {
        std::vector<std::string> facts;
        const auto add = [&facts](const std::string &name, double value) {
            facts.push_back(name + " " + std::to_string(value));
        };
        add("repeat", player_.m_bRepeat);
        add("slide show", player_.m_bSlideShowStarted);
        add("auto mode", player_.m_bRotationAutoMode);
        add("rotating", player_.m_bRotating);
        add("play index", player_.m_iPlayIndex);
        add("current", player_.m_uiCurPlayIndex);
        add("kind", player_.m_iPlayingType);
        add("video state", player_.m_iVideoPlayerState);
        add("popup", player_.m_pPopup != nullptr);
        add("list", player_.m_pGenlist != nullptr);
        add("toast", player_.m_pNotificationLabel != nullptr);
        add("picture", player_.m_pPicture != nullptr);
        add("exits", fake_.app.exit_requests);
        add("sound", fake_.system.sound_route);
        for (const auto &[key, value] : fake_.store.values)
            add(key, value);
        for (const double interval : fake_.loop.timers())
            add("timer", interval);
        facts.push_back(player_.m_strPlayPath + ", " + player_.m_strSubtitlePath);
        return facts;
    }

    Lines all() const { return fake_.all(); }

  private:
    void show()
    {
        if (now_.kind == Kind::Video) {
            fill_play_list({"a.mp4", "b.mp4", "c.mp4"});
        } else if (now_.kind == Kind::Photo) {
            player_.StopVideo();
            fill_play_list({"a.jpg", "b.jpg", "c.mp4"});
            player_.m_iPlayingType = 1;
            make_picture();
            player_.StartSlideShow();
        }
        if (now_.one_entry && now_.kind != Kind::Nothing)
            player_.m_vdcPlayList.resize(1);
        player_.m_InitItemList();
    }

    bool on_screen(int type)
    {
        return player_.GetPlayingType(static_cast<int>(player_.m_uiCurPlayIndex)) == type;
    }

    void play_by_hand(int type)
    {
        switch (type) {
        case 2:
            if (now_.kind == Kind::Photo) {
                player_.m_SetFileMode(ENDEMO_FILE_MODE_CURRENT, 0);
                player_.m_iPlayIndex = 0;
                player_.StartSlideShow();
            } else if (on_screen(0)) {
                player_.OnResume();
            }
            break;
        case 3:
            if (now_.kind == Kind::Photo)
                player_.StopSlideShow();
            else if (on_screen(0))
                player_.OnPause();
            break;
        case 4:
            if (!on_screen(0))
                break;
            player_.StopVideo();
            player_.m_DeactiveWindow();
            COstrelDemoUtil::ExitApplication();
            break;
        case 5:
            if (on_screen(0))
                player_.OnResumeOrPause();
            break;
        case 6:
            player_.m_SelectSoundSpeaker();
            break;
        case 7:
            if (now_.folder_contents)
                player_.m_Rewind();
            break;
        case 8:
            if (now_.folder_contents)
                player_.m_Forward();
            break;
        default:
            break;
        }
    }

    void turn_by_hand(int type)
    {
        if (type == 13) {
            player_.m_ChangeRotationType();
            return;
        }
        if (type < 12 || type > 16 || !COstrelDemoUtil::IsSupportRotator())
            return;
        int value = 0;
        switch (type) {
        case 12:
            player_.m_CreateRotationOnOffLabel();
            player_.m_UpdateZavoTimer();
            break;
        case 14:
            COstrelDemoUtil::GetConfigInt(ConfigKey::PORTRAIT_TIMER, value);
            COstrelDemoUtil::SetConfigInt(ConfigKey::PORTRAIT_TIMER, 0);
            if (COstrelDemoUtil::IsPortraitMode())
                player_.m_UpdateZavoTimer();
            player_.m_ShowPopup(ROTATION_STATUS_PORTRAIT_TIMER, 0);
            break;
        case 15:
            COstrelDemoUtil::GetConfigInt(ConfigKey::LANDSCAPE_TIMER, value);
            COstrelDemoUtil::SetConfigInt(ConfigKey::LANDSCAPE_TIMER, 4);
            if (!COstrelDemoUtil::IsPortraitMode())
                player_.m_UpdateZavoTimer();
            player_.m_ShowPopup(ROTATION_STATUS_LANDSCAPE_TIMER, 4);
            break;
        default:
            COstrelDemoUtil::SetConfigInt(ConfigKey::LANDSCAPE_TIMER, 0);
            COstrelDemoUtil::SetConfigInt(ConfigKey::PORTRAIT_TIMER, 0);
            player_.m_UpdateZavoTimer();
            player_.m_ShowPopup(ROTATION_STATUS_TIMER_RESET, 0);
            break;
        }
    }

    const Situation now_;
};

class KeyTableTest : public testing::TestWithParam<int> {
  protected:
    static void expect_as_by_hand(int type, const Situation &situation)
    {
        SCOPED_TRACE(testing::Message() << situation);
        Lines expected;
        std::vector<std::string> state;
        {
            Scene scene(situation);
            scene.do_by_hand(type);
            expected = scene.all();
            state = scene.state();
        }
        Scene scene(situation);

        scene.press(type);

        const Lines all = scene.all();
        ASSERT_GE(all.size(), 2U);
        EXPECT_EQ(all[0].rfind("I \"pEvent = 0x", 0), 0U) << all[0];
        EXPECT_EQ(all[1], "I \"EventID = 8,iParam1 = " + std::to_string(type) + "\"");
        EXPECT_EQ(Lines(all.begin() + 2, all.end()), expected);
        EXPECT_EQ(scene.state(), state);
    }
};

TEST_P(KeyTableTest, DoesWhatTheTableSays)
{
    for (const Kind kind : {Kind::Video, Kind::Photo, Kind::Nothing}) {
        for (const Popup popup : {Popup::Closed, Popup::Open, Popup::Closing}) {
            for (int bits = 0; bits < 32; ++bits) {
                expect_as_by_hand(GetParam(), {kind, popup, (bits & 1) != 0, (bits & 2) != 0,
                                               (bits & 4) != 0, (bits & 8) != 0, (bits & 16) != 0});
                if (HasFailure())
                    return;
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Types, KeyTableTest, testing::Range(-1, 19));

} // namespace
