// Events of the staff and the panel: a chosen row, a turned window.

#include "event_dispatcher_test.h"

using testing::IsEmpty;

namespace {

// ---- 7: item selected ----

class ItemSelectedTest : public EventDispatcherTest {
  protected:
    // Rows: 0 off, 1 play all, 2 and on the entries.
    void choose(size_t row)
    {
        player_.m_InitItemList();
        if (player_.m_pPopup == nullptr)
            open_popup();
        fake_.widgets.focus_row(player_.m_pGenlist, row);
        dispatch(ENDEMO_EVENT_ITEM_SELECTED);
    }
};

TEST_F(ItemSelectedTest, AChosenEntryIsStoredAndPlayed)
{
    choose(3);

    EXPECT_EQ(player_.m_iPlayIndex, 2);
    EXPECT_THAT(fake_.of({"vconf_set_int", "player_set_uri", "evas_object_hide"}),
                LinesAre(writes(ConfigKey::DEMO_MODE, 2),
                         "player_set_uri(\"/opt/data/demo_movie/b.mp4\")"));
}

TEST_F(ItemSelectedTest, TheEntryInForceChangesNothing)
{
    player_.m_iPlayIndex = 2;

    choose(3);

    EXPECT_THAT(lines(), IsEmpty());
}

TEST_F(ItemSelectedTest, PlayAllDuringAVideoOnlyStoresTheChoice)
{
    player_.m_iPlayIndex = 1;

    choose(1);

    EXPECT_EQ(player_.m_iPlayIndex, 0);
    EXPECT_EQ(lines(), Lines({writes(ConfigKey::DEMO_MODE, 0)}));
}

TEST_F(ItemSelectedTest, PlayAllDuringAPhotoStartsTheSlideShow)
{
    show_photo();
    player_.m_iPlayIndex = 1;

    choose(1);

    EXPECT_EQ(lines(), Lines({writes(ConfigKey::DEMO_MODE, 0), "I \"\"", "ecore_timer_add(5)"}));
}

TEST_F(ItemSelectedTest, OffEndsTheProgram)
{
    choose(0);

    EXPECT_EQ(player_.m_iPlayIndex, -1);
    EXPECT_EQ(lines(), join({{writes(ConfigKey::DEMO_MODE, -1), "D \"-1\""}, exit_lines()}));
}

TEST_F(ItemSelectedTest, AChoiceHidesTheDisclaimer)
{
    fake_.system.has_disclaimer = true;
    player_.m_CreateDisclaimer();
    player_.m_ShowDisclaimer();

    choose(2);

    EXPECT_EQ(player_.m_pDisclaimerTimer, nullptr);
    EXPECT_FALSE(fake_.widgets.visible(player_.m_pDisclaimerRootLayout));
}

TEST_F(ItemSelectedTest, WithoutAFocusedRowNothingHappens)
{
    player_.m_InitItemList();
    open_popup();

    dispatch(ENDEMO_EVENT_ITEM_SELECTED);

    EXPECT_THAT(lines(), IsEmpty());
}

TEST_F(ItemSelectedTest, ARowWithoutRecordChoosesNothing)
{
    player_.m_InitItemList();
    open_popup();
    std::unique_ptr<stItemData> record(
        static_cast<stItemData *>(fake_.widgets.take_row_data(player_.m_pGenlist, 2)));
    fake_.widgets.focus_row(player_.m_pGenlist, 2);

    dispatch(ENDEMO_EVENT_ITEM_SELECTED);

    EXPECT_THAT(lines(), IsEmpty());
}

TEST_F(ItemSelectedTest, WithoutAnOpenPopupNothingHappens)
{
    dispatch(ENDEMO_EVENT_ITEM_SELECTED);

    EXPECT_THAT(lines(), IsEmpty());
}

// ---- 10: window rotated ----

class WindowRotatedTest : public EventDispatcherTest {
  protected:
    WindowRotatedTest()
    {
        fake_.rotator.supported = true;
        fake_.storage.add_folder(FOLDER, {"a.mp4", "portrait_b.mp4", "portrait_c.mp4"});
        player_.m_CreatePlayList();
        player_.m_InitPlayList();
        player_.m_InitItemList();
    }
};

TEST_F(WindowRotatedTest, TheListIsRebuiltForTheNewOrientationAndPlayed)
{
    set_panel(ROTATION_TYPE_PORTRAIT);

    dispatch(ENDEMO_EVENT_WINDOW_ROTATED);

    EXPECT_EQ(player_.m_vdcPlayList.size(), 2U);
    ASSERT_EQ(player_.m_vdcItemList.size(), 4U);
    EXPECT_EQ(player_.m_vdcItemList[2].strText, "portrait_b");
    EXPECT_THAT(fake_.of({"vconf_set_int", "dgettext", "player_set_uri"}),
                LinesAre(writes(ConfigKey::FILE_MODE, 2),
                         "dgettext(\"ostrel-demo-player-tv\", \"SID_OFF\")",
                         "dgettext(\"ostrel-demo-player-tv\", \"COM_HTS_SID_PLAY_ALL\")",
                         "player_set_uri(\"/opt/data/demo_movie/portrait_b.mp4\")"));
    EXPECT_EQ(lines().front(), "I \"\"");
}

TEST_F(WindowRotatedTest, BackInLandscapeTheStoredOrientationFollows)
{
    dispatch(ENDEMO_EVENT_WINDOW_ROTATED);

    EXPECT_THAT(fake_.of({"vconf_set_int"}), LinesAre(writes(ConfigKey::FILE_MODE, 1)));
    EXPECT_EQ(player_.m_vdcPlayList.size(), 1U);
}

TEST_F(WindowRotatedTest, AnOpenPopupIsClosed)
{
    open_popup();
    set_panel(ROTATION_TYPE_PORTRAIT);

    dispatch(ENDEMO_EVENT_WINDOW_ROTATED);

    EXPECT_EQ(fake_.calls().front(), "evas_object_hide(popup#1)");
    EXPECT_NE(player_.m_pDestroyPopupTimer, nullptr);
}

TEST_F(WindowRotatedTest, WithoutContentForItThePanelIsTurnedBack)
{
    player_.m_vdcPortraitVideos.clear();
    set_panel(ROTATION_TYPE_PORTRAIT);

    dispatch(ENDEMO_EVENT_WINDOW_ROTATED);

    EXPECT_THAT(fake_.calls(), LinesAre(writes(ConfigKey::FILE_MODE, 1), "ecore_timer_add(0.8)"));
    EXPECT_THAT(player_.m_vdcPlayList, IsEmpty());
    EXPECT_THAT(player_.m_vdcItemList, IsEmpty());
}

TEST_F(WindowRotatedTest, WithNothingToPlayTheProgramEnds)
{
    player_.m_vdcPortraitVideos.clear();
    player_.m_vdcLandscapeVideos.clear();

    dispatch(ENDEMO_EVENT_WINDOW_ROTATED);

    EXPECT_THAT(fake_.calls(), LinesAre(writes(ConfigKey::PLAYBACK_STATUS, 2), "ui_app_exit()"));
}

} // namespace
