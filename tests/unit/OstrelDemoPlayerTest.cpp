// The controller's birth and the start of the demo.

#include "player_test.h"

#include <optional>

#include "player_lines.h"

using testing::IsEmpty;

namespace {

class OstrelDemoPlayerTest : public PlayerTest {
  protected:
    // A controller that was created and is ready to start.
    void created(const std::vector<std::string> &files)
    {
        ASSERT_TRUE(create(files));
        fake_.forget();
    }
};

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

/** One start of the demo. No value means that the key cannot be read, which leaves zero. */
struct Start {
    bool rotator;
    int panel;
    std::optional<int> file_mode;
    std::optional<int> word;
    bool timed;
};

class Scene : public PlayerTest {
  public:
    explicit Scene(const Start &start)
        : now_(start), upright_(start.panel % 2 == 1), file_mode_(start.file_mode.value_or(0))
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
        Lines expected = selection_lines();
        int result = 1;
        if (mode_ == -1) {
            expected += "I \"\"";
            expected += exit_lines();
        } else if (expected += rotator_lines(now_.rotator); turns(expected)) {
            result = 0;
        } else {
            expected += disclaimer_feature_lines(false);
            expected += timer_lines();
            expected += playing_lines();
        }
        const bool plays = result == 1 && mode_ != -1;

        EXPECT_EQ(player_.StartDemoPlayer(), result);

        EXPECT_EQ(fake_.all(), expected);
        EXPECT_EQ(player_.m_iPlayIndex, plays ? mode_ : -1);
        EXPECT_EQ(player_.m_uiCurPlayIndex, !plays || mode_ == 2 ? 1U : 0U);
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

    static Lines read_lines(const std::string &key, std::optional<int> value)
    {
        Lines lines = {reads(key)};
        if (!value)
            lines += "E \"GetConfigInt key [" + key + "] faild\"";
        return lines;
    }

    Lines selection_lines()
    {
        Lines lines = read_lines(ConfigKey::FILE_MODE, now_.file_mode);
        lines += read_lines(ConfigKey::DEMO_MODE, now_.word);
        mode_ = now_.word.value_or(0);
        if (mode_ == 0 || mode_ == -1)
            return lines;
        bool upper = file_mode_ == 2;
        if (file_mode_ == 0) {
            lines += panel_line(upright_);
            upper = upright_;
        }
        mode_ = upper ? mode_ / 0x100 : mode_ % 0x100;
        lines += "E \"eMode=" + std::to_string(file_mode_) + " iMenuType=" + std::to_string(mode_) +
                 "\"";
        return lines;
    }

    // Whether the panel is turned first, because a selection was made for the other orientation.
    bool turns(Lines &lines) const
    {
        if (!now_.rotator || mode_ == 0)
            return false;
        lines += panel_line(upright_);
        const bool wants_upright = file_mode_ == 2;
        if (wants_upright == upright_)
            return false;
        lines += {writes(ConfigKey::FILE_MODE, wants_upright ? 2 : 1), "I \"\"",
                  "VirtualKey_Send_KeyCode(569, 2)"};
        return true;
    }

    Lines timer_lines() const
    {
        Lines lines = {"I \"\""};
        lines += rotator_lines(now_.rotator);
        if (!now_.rotator || !now_.timed)
            return lines;
        lines += {panel_line(upright_),
                  reads(upright_ ? ConfigKey::PORTRAIT_TIMER : ConfigKey::LANDSCAPE_TIMER),
                  "I \"set timer 300 sec\"", "ecore_timer_add(300, controller)"};
        return lines;
    }

    Lines playing_lines() const
    {
        Lines lines = {"D \"" + std::to_string(mode_) + "\""};
        lines += folder_lines();
        if (mode_ > 2)
            lines += writes(ConfigKey::DEMO_MODE, 0);
        const std::string path = std::string(FOLDER) + (mode_ == 2 ? "b.mp4" : "a.mp4");
        lines += {"D \"" + path + "\"", "D \"0 0\""};
        lines += video_lines(path, "", PLAYER_STATE_IDLE, false);
        return lines;
    }

    const Start now_;
    const bool upright_;
    const int file_mode_;
    int mode_ = 0;
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
    EXPECT_THAT(fake_.of({"evas_object_del", "elm_velt_layout_add", "player_stop",
                          "player_unprepare", "player_set_uri"}),
                LinesAre("evas_object_del(layout#1)", "evas_object_del(imagebox#1)",
                         "elm_velt_layout_add(window#1)", "player_stop()", "player_unprepare()",
                         "player_set_uri(\"/opt/data/demo_movie/a.mp4\")"));
}

} // namespace
