// The controller's birth and the start of the demo.

#include "disclaimer_lines.h"
#include "start_lines.h"

using testing::IsEmpty;

namespace {

class OstrelDemoPlayerTest : public PlayerTest {};

// ---- Constructor ----

TEST_F(OstrelDemoPlayerTest, AFreshControllerHasItsInitialValues)
{
    EXPECT_TRUE(player_.m_bRepeat);
    EXPECT_FALSE(player_.m_bFolderContentsPlayer);
    EXPECT_FALSE(player_.m_bSlideShowStarted);
    EXPECT_FALSE(player_.m_bUsbLocation);
    EXPECT_FALSE(player_.m_bRotationAutoMode);
    EXPECT_FALSE(player_.m_bRotating);
    EXPECT_EQ(player_.m_pPictureDisplay, 0);
    EXPECT_EQ(player_.m_iPlayIndex, -1);
    EXPECT_EQ(player_.m_uiCurPlayIndex, 0U);
    EXPECT_EQ(player_.m_iPlayingType, 0);
    EXPECT_EQ(player_.m_iVideoPlayerState, 0);
    EXPECT_EQ(player_.m_strFolderPath, "");
    EXPECT_EQ(player_.m_strPlayPath, "");
    EXPECT_EQ(player_.m_strSubtitlePath, "");
}

TEST_F(OstrelDemoPlayerTest, AFreshControllerOwnsNothing)
{
    for (const Evas_Object *object :
         {player_.m_pWindow, player_.m_pPopup, player_.m_pPopupLayout, player_.m_pGenlist,
          player_.m_pNotificationLabel, player_.m_pDisclaimerRootLayout,
          player_.m_pDisclaimerImageBox})
        EXPECT_EQ(object, nullptr);
    for (const Ecore_Timer *timer :
         {player_.m_pSlideShowTimer, player_.m_pPhotoPlayEndTimer, player_.m_pDestroyPopupTimer,
          player_.m_pZavoTimer, player_.m_pDisclaimerTimer, player_.m_hRotationDelayTimer})
        EXPECT_EQ(timer, nullptr);
    EXPECT_EQ(player_.m_pKeyDownHandler, nullptr);
    EXPECT_EQ(player_.m_pWlSurface, nullptr);
    EXPECT_EQ(player_.m_pWlWindow, nullptr);
    EXPECT_EQ(player_.m_hPlayer, nullptr);
    EXPECT_EQ(player_.m_pPicture, nullptr);
    EXPECT_EQ(player_.m_hUsbDeviceList, nullptr);
    EXPECT_THAT(player_.m_vdcItemList, IsEmpty());
    EXPECT_THAT(player_.m_vdcPlayList, IsEmpty());
    EXPECT_THAT(player_.m_vdcLandscapeVideos, IsEmpty());
    EXPECT_THAT(player_.m_vdcPortraitVideos, IsEmpty());
    EXPECT_THAT(player_.m_vdcLandscapePhotos, IsEmpty());
    EXPECT_THAT(player_.m_vdcPortraitPhotos, IsEmpty());
}

TEST_F(OstrelDemoPlayerTest, TheConstructorOnlyLogs)
{
    COstrelDemoPlayer second;

    EXPECT_THAT(fake_.all(), LinesAre("D \"\""));
}

// ---- StartDemoPlayer ----

TEST_F(OstrelDemoPlayerTest, AnEmptyPlayListOnlyLogs)
{
    EXPECT_EQ(player_.StartDemoPlayer(), 0);

    EXPECT_THAT(fake_.all(), LinesAre("I \"play list is empty\""));
    EXPECT_EQ(fake_.app.exit_requests, 0);
}

class Scene : public PlayerTest {
  public:
    explicit Scene(const Start &start) : now_(start)
    {
        fake_.rotator.supported = now_.rotator;
        store(ConfigKey::FILE_MODE, now_.file_mode);
        store(ConfigKey::DEMO_MODE, now_.word);
        make_window();
        make_video_player();
        fill_play_list({"a.mp4", "b.mp4"});
        player_.m_bRotationAutoMode = now_.timed;
        player_.m_uiCurPlayIndex = 1;
        set_panel(static_cast<ENDEMO_ROTATION_TYPE>(now_.panel));
    }

    void TestBody() override {}

    void expect_start()
    {
        const int mode = now_.mode();
        Lines expected = selection_lines(now_);
        if (mode == -1) {
            expected += "I \"\"";
            expected += exit_lines();
        } else {
            expected += panel_check_lines(now_);
        }
        const bool plays = mode != -1 && !now_.turns();
        if (plays) {
            expected += disclaimer_feature_lines(false);
            expected += timed_rotation_lines(now_);
            expected += playing_lines(mode);
        }

        EXPECT_EQ(player_.StartDemoPlayer(), now_.turns() ? 0 : 1);

        EXPECT_EQ(fake_.all(), expected);
        EXPECT_EQ(player_.m_iPlayIndex, plays ? mode : -1);
        EXPECT_EQ(player_.m_uiCurPlayIndex, !plays || mode == 2 ? 1U : 0U);
        EXPECT_EQ(fake_.media.preparing(), plays);
    }

  private:
    void store(const char *key, std::optional<int> value)
    {
        if (value)
            fake_.store.values[key] = *value;
        else
            fake_.store.values.erase(key);
    }

    static Lines playing_lines(int mode)
    {
        Lines lines = {"D \"" + std::to_string(mode) + "\""};
        lines += folder_lines();
        if (mode > 2)
            lines += writes(ConfigKey::DEMO_MODE, 0);
        const std::string path = std::string(FOLDER) + (mode == 2 ? "b.mp4" : "a.mp4");
        lines += {"D \"" + path + "\"", "D \"0 0\""};
        lines += video_lines(path, "", PLAYER_STATE_IDLE, false);
        return lines;
    }

    const Start now_;
};

class StartTableTest : public testing::TestWithParam<std::tuple<bool, int, bool>> {};

TEST_P(StartTableTest, ThePanelIsTurnedOrTheSelectionIsPlayed)
{
    const auto &[rotator, panel, timed] = GetParam();
    for (const std::optional<int> file_mode : {std::optional<int>(), {-1}, {0}, {1}, {2}, {3}}) {
        for (const std::optional<int> word :
             {std::optional<int>(), {-1}, {0}, {0x0001}, {0x0100}, {0x0102}, {0x0201}, {0x0303}}) {
            SCOPED_TRACE(testing::Message() << "file mode " << file_mode.value_or(-99) << ", word "
                                            << word.value_or(-99));
            Scene scene({rotator, panel, file_mode, word, timed});
            scene.expect_start();
            if (HasFailure())
                return;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Panels, StartTableTest,
                         testing::Combine(testing::Bool(), testing::Values(0, 1, 2, 3),
                                          testing::Bool()));

TEST_F(OstrelDemoPlayerTest, StartBuildsTheDisclaimerBeforePlaying)
{
    fake_.system.has_disclaimer = true;
    created({"a.mp4"});

    player_.StartDemoPlayer();

    const Lines steps = fake_.of({"elm_velt_imagebox_add", "player_prepare_async"});
    EXPECT_THAT(steps,
                LinesAre("elm_velt_imagebox_add(layout#1)", "player_prepare_async(controller)"));
}

TEST_F(OstrelDemoPlayerTest, ARefusedFileIsReported)
{
    created({"a.mp4"});
    fake_.fail("player_set_uri");

    EXPECT_EQ(player_.StartDemoPlayer(), 0);
}

TEST_F(OstrelDemoPlayerTest, ARelaunchStartsAnewOnTheSameObject)
{
    const Start start = {false, ROTATION_TYPE_LANDSCAPE, 1, 1, false};
    install_disclaimer_pictures(fake_.system);
    fake_.system.has_disclaimer = true;
    created({"a.mp4", "b.mp4"});
    player_.StartDemoPlayer();
    fake_.media.fire_prepared();
    fake_.loop.drain_pipe();
    player_.m_PlayNextFile();
    fake_.media.state = PLAYER_STATE_PLAYING;
    fake_.store.values[ConfigKey::DEMO_MODE] = 1;
    fake_.forget();

    EXPECT_EQ(player_.StartDemoPlayer(), 1);

    EXPECT_EQ(player_.m_iPlayIndex, 1);
    EXPECT_EQ(player_.m_uiCurPlayIndex, 0U);
    Lines expected = selection_lines(start);
    expected += panel_check_lines(start);
    expected += disclaimer_creation_lines(true, Overlay::Full, false, "nothing");
    expected += timed_rotation_lines(start);
    expected += "D \"1\"";
    expected += folder_lines();
    expected += entry_lines("/opt/data/demo_movie/a.mp4", "", false,
                            {false, 0, PLAYER_STATE_PLAYING, ""}, false);
    EXPECT_EQ(fake_.all(), expected);
}

} // namespace
