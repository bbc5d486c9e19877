#include "player_test.h"

#include <cstdlib>

#include "widget_extension.h"

using testing::IsEmpty;

namespace {

// Rows of the open popup.
enum { OFF = 0, PLAY_ALL = 1, FIRST = 2, SECOND = 3, BELOW = 9 };

class OptionsListTest : public PlayerTest {
  protected:
    OptionsListTest()
    {
        make_window();
        make_video_player();
        open_with({"a.mp4", "b.mp4"});
    }

    void open_with(const std::vector<std::string> &names)
    {
        player_.DestroyPopup();
        fake_.loop.advance(0.5);
        fill_play_list(names);
        player_.m_InitItemList();
        open_popup();
    }

    // A photo list with a photo on the screen.
    void show_photo()
    {
        open_with({"a.jpg", "b.jpg"});
        player_.m_iPlayingType = 1;
        make_picture();
    }

    void store_mode(int word) { fake_.store.values[ConfigKey::DEMO_MODE] = word; }
    int stored_mode() { return fake_.store.get(ConfigKey::DEMO_MODE); }

    bool closing() { return player_.m_pDestroyPopupTimer != nullptr; }
};

// ---- Initial focus ----

TEST_F(OptionsListTest, ShowingTheListSetsTheFocusWhenIdle)
{
    store_mode(2);

    EXPECT_EQ(fake_.widgets.fire(player_.m_pGenlist, EVAS_CALLBACK_SHOW, nullptr), 1);
    EXPECT_THAT(fake_.lines(), LinesAre("I \"\"", "ecore_idler_add()"));
    fake_.forget();

    fake_.loop.run_idle();

    EXPECT_THAT(fake_.lines(),
                LinesAre("I \"callback enter\"", "I \"\"", "E \"eMode=0 iMenuType=2\"",
                         "I \"2 -1\"", "elm_object_focus_set(genlist#1, true)",
                         "elm_genlist_item_show(row#4, IN)",
                         "elm_genlist_item_selected_set(row#4, true)",
                         "elm_object_item_focus_set(row#4, true)"));
    EXPECT_EQ(fake_.widgets.focused_row(player_.m_pGenlist), SECOND);
    EXPECT_EQ(fake_.loop.idlers(), 0U) << "the idler runs once";
}

TEST_F(OptionsListTest, AStaleSelectionOpensWithoutAFocusedRow)
{
    store_mode(9);
    fake_.widgets.fire(player_.m_pGenlist, EVAS_CALLBACK_SHOW, nullptr);
    fake_.forget();

    fake_.loop.run_idle();

    EXPECT_EQ(fake_.logs().back(), "W \"pItem is null\"");
    EXPECT_THAT(fake_.calls(), IsEmpty());
    EXPECT_EQ(fake_.loop.idlers(), 0U);
}

// ---- m_GetRecentlySelectedItem ----

TEST_F(OptionsListTest, TheStoredSelectionIsLookedForNotThePlayedOne)
{
    store_mode(1);
    player_.m_iPlayIndex = 2;

    EXPECT_EQ(player_.m_GetRecentlySelectedItem(player_.m_pGenlist),
              fake_.widgets.row(player_.m_pGenlist, FIRST));
    EXPECT_THAT(fake_.lines(), LinesAre("I \"\"", "E \"eMode=0 iMenuType=1\"", "I \"1 -1\""));
}

TEST_F(OptionsListTest, TheSelectionOfTheOrientationIsLookedFor)
{
    store_mode(0x0201);
    set_panel(ROTATION_TYPE_PORTRAIT);

    EXPECT_EQ(player_.m_GetRecentlySelectedItem(player_.m_pGenlist),
              fake_.widgets.row(player_.m_pGenlist, SECOND));
}

TEST_F(OptionsListTest, OffAndPlayAllHaveTheirRows)
{
    store_mode(0);
    EXPECT_EQ(player_.m_GetRecentlySelectedItem(player_.m_pGenlist),
              fake_.widgets.row(player_.m_pGenlist, PLAY_ALL));
    store_mode(-1);
    EXPECT_EQ(player_.m_GetRecentlySelectedItem(player_.m_pGenlist),
              fake_.widgets.row(player_.m_pGenlist, OFF));
}

TEST_F(OptionsListTest, WithoutAListThereIsNoRow)
{
    EXPECT_EQ(player_.m_GetRecentlySelectedItem(nullptr), nullptr);

    EXPECT_THAT(fake_.lines(), LinesAre("I \"\"", "W \"pGenList is null\""));
}

TEST_F(OptionsListTest, AnEmptyListHasNoRow)
{
    Evas_Object *list = elm_velt_genlist_add(player_.m_pWindow);
    fake_.forget();

    EXPECT_EQ(player_.m_GetRecentlySelectedItem(list), nullptr);

    EXPECT_THAT(fake_.lines(), LinesAre("I \"\""));
}

TEST_F(OptionsListTest, AFirstRowWithoutRecordEndsTheSearch)
{
    std::unique_ptr<stItemData> record(
        static_cast<stItemData *>(fake_.widgets.take_row_data(player_.m_pGenlist, OFF)));

    EXPECT_EQ(player_.m_GetRecentlySelectedItem(player_.m_pGenlist), nullptr);

    EXPECT_THAT(fake_.lines(), LinesAre("I \"\"", "I \"pItemData == NULL\""));
}

TEST_F(OptionsListTest, ALaterRowWithoutRecordIsReturned)
{
    store_mode(2);
    std::unique_ptr<stItemData> record(
        static_cast<stItemData *>(fake_.widgets.take_row_data(player_.m_pGenlist, FIRST)));

    EXPECT_EQ(player_.m_GetRecentlySelectedItem(player_.m_pGenlist),
              fake_.widgets.row(player_.m_pGenlist, FIRST));
}

// ---- Pointer ----

TEST_F(OptionsListTest, TheFocusFollowsThePointer)
{
    fake_.widgets.move_to_row(player_.m_pGenlist, SECOND);

    EXPECT_EQ(fake_.widgets.focused_row(player_.m_pGenlist), SECOND);
    EXPECT_THAT(fake_.calls(), LinesAre("elm_object_item_focus_set(row#4, true)"));
}

TEST_F(OptionsListTest, APointerWithoutEventMovesNothing)
{
    CPlayerInspector::m_OnGenListMouseInCB(controller_.get(), nullptr, player_.m_pGenlist, nullptr);

    EXPECT_THAT(fake_.calls(), IsEmpty());
}

TEST_F(OptionsListTest, ChoosingAnEntryPlaysItAndCloses)
{
    player_.m_iPlayIndex = 0;

    fake_.widgets.press_row(player_.m_pGenlist, SECOND);

    EXPECT_EQ(player_.m_iPlayIndex, 2);
    EXPECT_EQ(stored_mode(), 2);
    EXPECT_EQ(fake_.media.uri, "/opt/data/demo_movie/b.mp4");
    EXPECT_TRUE(closing());
    EXPECT_THAT(
        fake_.of({"vconf_set_int", "player_prepare_async", "evas_object_hide", "ecore_timer_add"}),
        LinesAre(writes(ConfigKey::DEMO_MODE, 2), "player_prepare_async(controller)",
                 "evas_object_hide(popup#1)", "ecore_timer_add(0.5)"));
}

TEST_F(OptionsListTest, ChoosingTheRowInForceOnlyCloses)
{
    player_.m_iPlayIndex = 2;

    fake_.widgets.press_row(player_.m_pGenlist, SECOND);

    EXPECT_THAT(fake_.calls(),
                LinesAre("evas_object_hide(popup#1)", "app_context_manager_unset_epop_block()",
                         "ecore_timer_add(0.5)"));
    EXPECT_EQ(fake_.logs().front(), "I \"\"");
}

TEST_F(OptionsListTest, ChoosingPlayAllWhileAVideoPlaysRestartsNothing)
{
    player_.m_iPlayIndex = 1;

    fake_.widgets.press_row(player_.m_pGenlist, PLAY_ALL);

    EXPECT_EQ(player_.m_iPlayIndex, 0);
    EXPECT_THAT(fake_.calls(),
                LinesAre(writes(ConfigKey::DEMO_MODE, 0), "evas_object_hide(popup#1)",
                         "app_context_manager_unset_epop_block()", "ecore_timer_add(0.5)"));
}

TEST_F(OptionsListTest, ChoosingPlayAllWhileAPhotoIsShownStartsTheSlideShow)
{
    show_photo();
    player_.m_iPlayIndex = 1;

    fake_.widgets.press_row(player_.m_pGenlist, PLAY_ALL);

    EXPECT_THAT(fake_.calls(),
                LinesAre(writes(ConfigKey::DEMO_MODE, 0), "ecore_timer_add(5)",
                         "evas_object_hide(popup#2)", "app_context_manager_unset_epop_block()",
                         "ecore_timer_add(0.5)"));
    EXPECT_TRUE(player_.m_bSlideShowStarted);
}

TEST_F(OptionsListTest, ChoosingOffStoresTheWholeWordAndEndsTheProgram)
{
    store_mode(0x0102);
    player_.m_iPlayIndex = 0;

    fake_.widgets.press_row(player_.m_pGenlist, OFF);

    EXPECT_EQ(player_.m_iPlayIndex, -1);
    EXPECT_EQ(stored_mode(), -1);
    EXPECT_THAT(fake_.calls(),
                LinesAre(writes(ConfigKey::DEMO_MODE, -1), "ui_app_exit()",
                         "evas_object_hide(popup#1)", "app_context_manager_unset_epop_block()",
                         "ecore_timer_add(0.5)"));
}

TEST_F(OptionsListTest, AChoiceIsStoredForThePresentOrientation)
{
    store_mode(0x0102);
    set_panel(ROTATION_TYPE_PORTRAIT);
    player_.m_iPlayIndex = 1;

    fake_.widgets.press_row(player_.m_pGenlist, SECOND);

    EXPECT_EQ(stored_mode(), 0x0202);
}

TEST_F(OptionsListTest, AChoiceHidesTheDisclaimer)
{
    fake_.system.has_disclaimer = true;
    player_.m_CreateDisclaimer();
    player_.m_ShowDisclaimer();
    fake_.forget();

    fake_.widgets.press_row(player_.m_pGenlist, FIRST);

    EXPECT_EQ(player_.m_pDisclaimerTimer, nullptr);
    EXPECT_FALSE(fake_.widgets.visible(player_.m_pDisclaimerRootLayout));
    EXPECT_FALSE(fake_.widgets.visible(player_.m_pDisclaimerImageBox));
    const Lines calls = fake_.calls();
    ASSERT_GE(calls.size(), 4U);
    EXPECT_EQ(calls[0].rfind("evas_object_hide(layout#", 0), 0U) << calls[0];
    EXPECT_EQ(calls[1], "evas_object_hide(imagebox#1)");
    EXPECT_EQ(calls[2].rfind("ecore_timer_del(", 0), 0U) << calls[2];
    EXPECT_EQ(calls[3], writes(ConfigKey::DEMO_MODE, 1));
}

TEST_F(OptionsListTest, TheRowInForceLeavesTheDisclaimerShown)
{
    fake_.system.has_disclaimer = true;
    player_.m_CreateDisclaimer();
    player_.m_ShowDisclaimer();
    player_.m_iPlayIndex = 1;

    fake_.widgets.press_row(player_.m_pGenlist, FIRST);

    EXPECT_TRUE(fake_.widgets.visible(player_.m_pDisclaimerRootLayout));
    EXPECT_NE(player_.m_pDisclaimerTimer, nullptr);
}

TEST_F(OptionsListTest, OtherButtonsChooseNothing)
{
    fake_.widgets.press_row(player_.m_pGenlist, SECOND, 2);
    fake_.widgets.press_row(player_.m_pGenlist, SECOND, 3);

    EXPECT_THAT(fake_.lines(), LinesAre("I \"\"", "I \"\""));
}

TEST_F(OptionsListTest, APressBesideTheRowsLeavesThePopupOpen)
{
    fake_.widgets.press_row(player_.m_pGenlist, BELOW);

    EXPECT_THAT(fake_.lines(), LinesAre("I \"\""));
    EXPECT_FALSE(closing());
}

TEST_F(OptionsListTest, APressOnARowWithoutRecordLeavesThePopupOpen)
{
    std::unique_ptr<stItemData> record(
        static_cast<stItemData *>(fake_.widgets.take_row_data(player_.m_pGenlist, FIRST)));

    fake_.widgets.press_row(player_.m_pGenlist, FIRST);

    EXPECT_THAT(fake_.lines(), LinesAre("I \"\""));
}

TEST_F(OptionsListTest, APressWithoutEventOrControllerChoosesNothing)
{
    Evas_Event_Mouse_Down event = {};
    event.button = 1;
    event.canvas.y = FIRST * fake::Widgets::ROW_HEIGHT + 1;

    CPlayerInspector::m_OnGenListMouseDownCB(controller_.get(), nullptr, player_.m_pGenlist,
                                             nullptr);
    CPlayerInspector::m_OnGenListMouseDownCB(nullptr, nullptr, player_.m_pGenlist, &event);

    EXPECT_THAT(fake_.lines(), LinesAre("I \"\"", "I \"\""));
}

// ---- Row class ----

TEST_F(OptionsListTest, TheMainTextIsACopyForTheListToFree)
{
    stItemData record;
    record.strText = "film";

    char *text = CPlayerInspector::m_GetTextCB(&record, nullptr, "MainText");

    EXPECT_STREQ(text, "film");
    EXPECT_NE(text, record.strText.c_str());
    std::free(text);
    EXPECT_EQ(CPlayerInspector::m_GetTextCB(&record, nullptr, "SubText"), nullptr);
    EXPECT_THAT(fake_.logs(), IsEmpty());
}

TEST_F(OptionsListTest, ATextWithoutRecordOrPartWarns)
{
    stItemData record;

    EXPECT_EQ(CPlayerInspector::m_GetTextCB(nullptr, nullptr, "MainText"), nullptr);
    EXPECT_EQ(CPlayerInspector::m_GetTextCB(&record, nullptr, nullptr), nullptr);

    EXPECT_THAT(fake_.logs(),
                LinesAre("W \"pItemData or part is null\"", "W \"pItemData or part is null\""));
}

TEST_F(OptionsListTest, ADeletedRowDestroysItsRecord)
{
    // The leak checker sees to it that the record goes.
    CPlayerInspector::m_OnItemDeletedCB(new stItemData{1, "film"}, nullptr);
    CPlayerInspector::m_OnItemDeletedCB(nullptr, nullptr);

    EXPECT_THAT(fake_.lines(), LinesAre("D \"\"", "D \"\""));
}

// ---- m_OnItemSelectedCB, which nothing registers ----

TEST_F(OptionsListTest, TheSelectionCallbackWritesTheNumberItselfAndDestroysTheRecord)
{
    store_mode(0x0102);
    set_panel(ROTATION_TYPE_PORTRAIT);
    fake_.system.has_disclaimer = true;
    player_.m_CreateDisclaimer();
    player_.m_ShowDisclaimer();
    Evas_Object *list = player_.m_pGenlist;
    fake_.forget();

    CPlayerInspector::m_OnItemSelectedCB(controller_.get(), list, fake_.widgets.row(list, SECOND));
    // The record is gone; the row must not destroy it again.
    fake_.widgets.take_row_data(list, SECOND);

    EXPECT_EQ(player_.m_iPlayIndex, 2);
    EXPECT_EQ(stored_mode(), 2) << "the whole word, not the half of the orientation";
    EXPECT_EQ(fake_.media.uri, "/opt/data/demo_movie/b.mp4");
    EXPECT_NE(player_.m_pDisclaimerTimer, nullptr) << "the disclaimer stays";
}

TEST_F(OptionsListTest, NothingRegistersTheSelectionCallback)
{
    EXPECT_EQ(fake_.widgets.fire_smart(player_.m_pGenlist, "selected"), 0);
}

// ---- m_SelectSoundSpeaker ----

class SoundRouteTest : public PlayerTest,
                       public testing::WithParamInterface<std::pair<int, int>> {};

TEST_P(SoundRouteTest, TheRouteIsToggled)
{
    fake_.system.sound_route = GetParam().first;

    player_.m_SelectSoundSpeaker();

    const std::string from = std::to_string(GetParam().first);
    const std::string to = std::to_string(GetParam().second);
    EXPECT_THAT(fake_.lines(),
                LinesAre("I \"enCurOutputRoute = " + from + ",enOutputRoute = " + to + "\"",
                         "sound_manager_set_speaker_selection(" + to + ")"));
}

INSTANTIATE_TEST_SUITE_P(Routes, SoundRouteTest,
                         testing::Values(std::make_pair(0, 8), std::make_pair(8, 0),
                                         std::make_pair(3, 0), std::make_pair(-1, 0)));

TEST_F(OptionsListTest, AnUnreadableRouteChangesNothing)
{
    fake_.fail("sound_manager_get_speaker_selection");

    player_.m_SelectSoundSpeaker();

    EXPECT_THAT(fake_.lines(), IsEmpty());
}

TEST_F(OptionsListTest, ARefusedRouteIsLoggedAndNotRetried)
{
    fake_.fail("sound_manager_set_speaker_selection");

    player_.m_SelectSoundSpeaker();

    EXPECT_THAT(fake_.lines(),
                LinesAre("I \"enCurOutputRoute = 0,enOutputRoute = 8\"",
                         "sound_manager_set_speaker_selection(8)", "E \"select speaker failed\""));
}

} // namespace
