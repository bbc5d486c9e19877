// Events of the staff and the panel: a chosen row, a turned window.

#include "event_dispatcher_fixture.h"
#include "player_lines.h"

using testing::IsEmpty;

namespace {

// ---- 7: item selected ----

class ItemSelectedTest : public EventDispatcherTest {
  protected:
    // Rows: 0 off, 1 play all, 2 and on the entries.
    void choose(size_t row)
    {
        player_.m_InitItemList();
        open_popup();
        fake_.widgets.focus_row(player_.m_pGenlist, row);
        dispatch(ENDEMO_EVENT_ITEM_SELECTED);
    }

    // The landscape half of the selection takes the number of an entry.
    static Lines stored(int entry)
    {
        return {"E \"eMode=1 iMenuType=" + std::to_string(entry) + "\"",
                writes(ConfigKey::DEMO_MODE, entry)};
    }
};

TEST_F(ItemSelectedTest, AChosenEntryIsStoredAndPlayed)
{
    choose(3);

    EXPECT_EQ(player_.m_iPlayIndex, 2);
    EXPECT_EQ(rest(),
              join({stored(2),
                    {"D \"2\"", "D \"/opt/data/demo_movie/b.mp4\"", "D \"0 0\""},
                    video_lines("/opt/data/demo_movie/b.mp4", "", PLAYER_STATE_IDLE, false)}));
}

TEST_F(ItemSelectedTest, TheEntryInForceChangesNothing)
{
    player_.m_iPlayIndex = 2;

    choose(3);

    EXPECT_THAT(rest(), IsEmpty());
    EXPECT_EQ(player_.m_iPlayIndex, 2);
}

TEST_F(ItemSelectedTest, PlayAllDuringAVideoOnlyStoresTheChoice)
{
    player_.m_iPlayIndex = 1;

    choose(1);

    EXPECT_EQ(player_.m_iPlayIndex, 0);
    EXPECT_EQ(rest(), Lines({writes(ConfigKey::DEMO_MODE, 0)}));
}

TEST_F(ItemSelectedTest, PlayAllDuringAPhotoStartsTheSlideShow)
{
    show_photo();
    player_.m_iPlayIndex = 1;

    choose(1);

    EXPECT_EQ(rest(),
              Lines({writes(ConfigKey::DEMO_MODE, 0), "I \"\"", "ecore_timer_add(5, controller)"}));
}

TEST_F(ItemSelectedTest, OffEndsTheProgram)
{
    choose(0);

    EXPECT_EQ(player_.m_iPlayIndex, -1);
    EXPECT_EQ(rest(), join({{writes(ConfigKey::DEMO_MODE, -1), "D \"-1\""}, exit_lines()}));
}

TEST_F(ItemSelectedTest, AChoiceHidesTheDisclaimer)
{
    fake_.system.has_disclaimer = true;
    player_.m_CreateDisclaimer();
    player_.m_ShowDisclaimer();
    player_.m_iPlayIndex = 1;

    choose(1);

    EXPECT_EQ(rest(), Lines({"evas_object_hide(layout#1)", "evas_object_hide(imagebox#1)",
                             "ecore_timer_del(timer#1)", writes(ConfigKey::DEMO_MODE, 0)}));
    EXPECT_EQ(player_.m_pDisclaimerTimer, nullptr);
}

TEST_F(ItemSelectedTest, TheEntryInForceLeavesTheDisclaimer)
{
    fake_.system.has_disclaimer = true;
    player_.m_CreateDisclaimer();
    player_.m_ShowDisclaimer();

    choose(1);

    EXPECT_THAT(rest(), IsEmpty());
    EXPECT_NE(player_.m_pDisclaimerTimer, nullptr);
}

TEST_F(ItemSelectedTest, WithoutAFocusedRowNothingHappens)
{
    player_.m_InitItemList();
    open_popup();

    dispatch(ENDEMO_EVENT_ITEM_SELECTED);

    EXPECT_THAT(rest(), IsEmpty());
}

TEST_F(ItemSelectedTest, ARowWithoutRecordChoosesNothing)
{
    player_.m_InitItemList();
    open_popup();
    std::unique_ptr<stItemData> record(
        static_cast<stItemData *>(fake_.widgets.take_row_data(player_.m_pGenlist, 2)));
    fake_.widgets.focus_row(player_.m_pGenlist, 2);

    dispatch(ENDEMO_EVENT_ITEM_SELECTED);

    EXPECT_THAT(rest(), IsEmpty());
}

TEST_F(ItemSelectedTest, WithoutAnOpenPopupNothingHappens)
{
    dispatch(ENDEMO_EVENT_ITEM_SELECTED);

    EXPECT_THAT(rest(), IsEmpty());
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

    // No popup, and a new list for the panel as it stands.
    static Lines list_asked() { return {"I \"\"", "I \"\""}; }

    // Starting with everything, timed rotation off.
    static Lines started() { return {"I \"\"", "D \"0\""}; }
};

TEST_F(WindowRotatedTest, TheListIsRebuiltForTheNewOrientationAndPlayed)
{
    set_panel(ROTATION_TYPE_PORTRAIT);

    dispatch(ENDEMO_EVENT_WINDOW_ROTATED);

    EXPECT_EQ(
        rest(),
        join({list_asked(),
              {"I \"add portrait contents in play list\"", writes(ConfigKey::FILE_MODE, 2)},
              item_list_lines({"1 portrait_b", "2 portrait_c"}),
              started(),
              {"D \"/opt/data/demo_movie/portrait_b.mp4\"", "D \"0 0\""},
              video_lines("/opt/data/demo_movie/portrait_b.mp4", "", PLAYER_STATE_IDLE, false)}));
    EXPECT_EQ(player_.m_vdcPlayList.size(), 2U);
    EXPECT_EQ(player_.m_vdcItemList.size(), 4U);
}

TEST_F(WindowRotatedTest, BackInLandscapeTheStoredOrientationFollows)
{
    dispatch(ENDEMO_EVENT_WINDOW_ROTATED);

    EXPECT_EQ(rest(),
              join({list_asked(),
                    {"I \"add landscape files in play list\"", writes(ConfigKey::FILE_MODE, 1)},
                    item_list_lines({"1 a"}),
                    started(),
                    {"D \"/opt/data/demo_movie/a.mp4\"", "D \"0 0\""},
                    video_lines("/opt/data/demo_movie/a.mp4", "", PLAYER_STATE_IDLE, true)}));
}

TEST_F(WindowRotatedTest, AnOpenPopupIsClosedFirst)
{
    open_popup();
    set_panel(ROTATION_TYPE_PORTRAIT);

    dispatch(ENDEMO_EVENT_WINDOW_ROTATED);

    const Lines closing = popup_closing_lines("popup#1");
    const Lines lines = rest();
    ASSERT_GT(lines.size(), closing.size());
    EXPECT_EQ(Lines(lines.begin(), lines.begin() + static_cast<long>(closing.size())), closing);
    EXPECT_EQ(fake_.media.uri, "/opt/data/demo_movie/portrait_b.mp4");
}

TEST_F(WindowRotatedTest, WithoutContentForItThePanelIsTurnedBack)
{
    player_.m_vdcPortraitVideos.clear();
    set_panel(ROTATION_TYPE_PORTRAIT);

    dispatch(ENDEMO_EVENT_WINDOW_ROTATED);

    EXPECT_EQ(rest(),
              join({list_asked(),
                    {writes(ConfigKey::FILE_MODE, 1), "ecore_timer_add(0.8, controller)"}}));
    EXPECT_THAT(player_.m_vdcPlayList, IsEmpty());
    EXPECT_THAT(player_.m_vdcItemList, IsEmpty());
}

TEST_F(WindowRotatedTest, WhenLeavingNothingIsTurnedBackAndNothingPlayed)
{
    player_.m_vdcPortraitVideos.clear();
    fake_.store.values[ConfigKey::DEMO_MODE] = -1;
    set_panel(ROTATION_TYPE_PORTRAIT);

    dispatch(ENDEMO_EVENT_WINDOW_ROTATED);

    EXPECT_EQ(rest(), join({list_asked(),
                            {writes(ConfigKey::FILE_MODE, 2)},
                            item_list_lines({}),
                            {"I \"play list is empty\""}}));
    EXPECT_EQ(player_.m_vdcItemList.size(), 2U);
}

TEST_F(WindowRotatedTest, WithNothingToPlayTheProgramEnds)
{
    player_.m_vdcPortraitVideos.clear();
    player_.m_vdcLandscapeVideos.clear();

    dispatch(ENDEMO_EVENT_WINDOW_ROTATED);

    EXPECT_EQ(rest(), join({list_asked(), {writes(ConfigKey::PLAYBACK_STATUS, 2)}, exit_lines()}));
}

} // namespace
