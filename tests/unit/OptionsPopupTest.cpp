#include "player_lines.h"

using testing::AllOf;
using testing::ElementsAre;
using testing::Field;
using testing::IsEmpty;

namespace {

testing::Matcher<const stItemData &> row(int index, const std::string &text)
{
    return AllOf(Field("iIndex", &stItemData::iIndex, index),
                 Field("strText", &stItemData::strText, text));
}

class OptionsPopupTest : public PlayerTest {
  protected:
    OptionsPopupTest()
    {
        make_window();
        fake_.system.texts = option_texts();
    }

    void build_rows(const std::vector<std::string> &names)
    {
        fill_play_list(names);
        player_.m_InitItemList();
        fake_.forget();
    }

    void press_button(int button) { fake_.widgets.press(fake_.widgets.get("button"), button); }

    static Lines closing()
    {
        return {"evas_object_hide(popup#1)", "I \"Block E-POP = 0 \"",
                "app_context_manager_unset_epop_block()", "ecore_timer_add(0.5, controller)"};
    }
};

// ---- m_InitItemList ----

TEST_F(OptionsPopupTest, TheListBeginsWithOffAndPlayAll)
{
    fill_play_list({"a.mp4", "b.jpg"});

    EXPECT_TRUE(player_.m_InitItemList());

    EXPECT_THAT(player_.m_vdcItemList,
                ElementsAre(row(-1, "Off"), row(0, "Play all"), row(1, "a"), row(2, "b")));
    EXPECT_THAT(fake_.lines(), LinesAre("D \"\"", "I \"1 a\"", "I \"2 b\""));
    EXPECT_THAT(fake_.of({"dgettext"}),
                LinesAre("dgettext(\"ostrel-demo-player-tv\", \"SID_OFF\")",
                         "dgettext(\"ostrel-demo-player-tv\", \"COM_HTS_SID_PLAY_ALL\")"));
}

TEST_F(OptionsPopupTest, AnEmptyPlayListLeavesOffAndPlayAll)
{
    EXPECT_TRUE(player_.m_InitItemList());

    EXPECT_THAT(player_.m_vdcItemList, ElementsAre(row(-1, "Off"), row(0, "Play all")));
}

TEST_F(OptionsPopupTest, ARowEndsAtTheLastDotOfTheName)
{
    fill_play_list({"clip.final.mp4", ".mp4", "x."});

    player_.m_InitItemList();

    EXPECT_THAT(player_.m_vdcItemList, ElementsAre(row(-1, "Off"), row(0, "Play all"),
                                                   row(1, "clip.final"), row(2, ""), row(3, "x")));
}

TEST_F(OptionsPopupTest, AnEntryWithoutADotHasNoRowAndTheNextKeepsItsNumber)
{
    fill_play_list({"a.mp4", "nodot", "c.mp4"});

    player_.m_InitItemList();

    EXPECT_THAT(player_.m_vdcItemList,
                ElementsAre(row(-1, "Off"), row(0, "Play all"), row(1, "a"), row(3, "c")));
    EXPECT_THAT(fake_.logs(), LinesAre("D \"\"", "I \"1 a\"", "I \"2 a\"", "I \"3 c\""));
}

TEST_F(OptionsPopupTest, ARebuiltListReplacesTheOldOne)
{
    build_rows({"a.mp4"});
    fake_.system.texts["SID_OFF"] = "Aus";
    fill_play_list({"b.mp4"});

    player_.m_InitItemList();

    EXPECT_THAT(player_.m_vdcItemList,
                ElementsAre(row(-1, "Aus"), row(0, "Play all"), row(1, "b")));
}

// ---- m_CreatePopUp ----

TEST_F(OptionsPopupTest, ThePopupIsBuiltInItsOrder)
{
    build_rows({"a.mp4"});

    EXPECT_TRUE(player_.m_CreatePopUp());

    const std::string append = "elm_velt_genlist_item_append(genlist#1, row-class#1, "
                               "C_TextTile_SingleLine_02, null, NONE, null, controller)";
    EXPECT_EQ(fake_.lines(),
              Lines({"I \"\"",
                     "elm_velt_popup_add(window#1)",
                     "elm_velt_popup_style_set(popup#1, 0)",
                     "elm_popup_orient_set(popup#1, CENTER)",
                     "elm_velt_popup_title_set(popup#1, \"Demo\")",
                     "elm_velt_layout_add(popup#1)",
                     "elm_velt_layout_type_set(layout#1, 1)",
                     "elm_velt_object_size_min_set(layout#1, 960, 440)",
                     "elm_velt_object_resize_policy_set(layout#1, 4, 1)",
                     "elm_velt_layout_align_set(layout#1, 5)",
                     "elm_velt_genlist_add(layout#1)",
                     "elm_velt_genlist_listoption_enable(genlist#1, true)",
                     "elm_velt_object_resize_policy_set(genlist#1, 4, 1)",
                     "elm_genlist_select_mode_set(genlist#1, DEFAULT)",
                     "elm_velt_layout_item_append(layout#1, genlist#1, 960, 440)",
                     "elm_velt_popup_content_set(popup#1, layout#1, 960, 440)",
                     "elm_genlist_item_class_new()",
                     append,
                     append,
                     append,
                     "elm_velt_button_add(popup#1)",
                     "elm_velt_button_style_set(button#1, 0, 0)",
                     "elm_velt_button_text_set(button#1, \"OK\")",
                     "elm_velt_popup_button_focus_set(popup#1, 5)",
                     "elm_velt_popup_button_set(popup#1, button#1, 0)",
                     "evas_object_smart_callback_add(button#1, \"clicked\", controller)",
                     "evas_object_event_callback_add(button#1, MOUSE_IN, controller)",
                     "evas_object_event_callback_add(button#1, MOUSE_DOWN, controller)",
                     "elm_popup_timeout_set(popup#1, 30)",
                     "evas_object_smart_callback_add(popup#1, \"timeout\", controller)",
                     "evas_object_event_callback_add(genlist#1, KEY_DOWN, controller)",
                     "evas_object_event_callback_add(genlist#1, SHOW, controller)",
                     "evas_object_event_callback_add(genlist#1, MOUSE_IN, controller)",
                     "evas_object_event_callback_add(genlist#1, MOUSE_DOWN, controller)",
                     "elm_genlist_item_class_free(row-class#1)",
                     "I \"Block E-POP = 1 \"",
                     "app_context_manager_set_epop_block()",
                     "evas_object_show(popup#1)"}));
}

TEST_F(OptionsPopupTest, TheListShowsTheRowsTexts)
{
    build_rows({"a.mp4", "b.mp4"});
    open_popup();

    EXPECT_THAT(fake_.widgets.row_texts(player_.m_pGenlist), LinesAre("Off", "Play all", "a", "b"));
    EXPECT_TRUE(fake_.widgets.visible(player_.m_pPopup));
}

TEST_F(OptionsPopupTest, TheRowsKeepTheirTextsWhenTheItemListChanges)
{
    build_rows({"a.mp4"});
    open_popup();

    player_.m_vdcItemList.clear();

    EXPECT_THAT(fake_.widgets.row_texts(player_.m_pGenlist), LinesAre("Off", "Play all", "a"));
}

TEST_F(OptionsPopupTest, WithoutARowClassThePopupStaysUnshown)
{
    build_rows({"a.mp4"});
    fake_.fail("elm_genlist_item_class_new");

    EXPECT_FALSE(player_.m_CreatePopUp());

    EXPECT_EQ(fake_.lines().back(), "W \"pItemClass is null\"");
    EXPECT_EQ(fake_.calls().back(), "elm_genlist_item_class_new()");
    EXPECT_NE(player_.m_pPopup, nullptr);
    EXPECT_EQ(fake_.widgets.row_count(player_.m_pGenlist), 0U);
    EXPECT_FALSE(fake_.widgets.visible(player_.m_pPopup));

    EXPECT_TRUE(player_.DestroyPopup());
    fake_.loop.advance(0.5);
    EXPECT_EQ(player_.m_pPopup, nullptr);
}

TEST_F(OptionsPopupTest, WithoutAListThePopupOpensAllTheSameAndKeepsNoRecords)
{
    build_rows({"a.mp4"});
    fake_.fail("elm_velt_genlist_add");

    // The sanitizers see to the records.
    EXPECT_TRUE(player_.m_CreatePopUp());

    EXPECT_EQ(player_.m_pGenlist, nullptr);
    EXPECT_EQ(fake_.registry.living("row"), 0);
    EXPECT_EQ(fake_.transcript.count("elm_velt_genlist_item_append"), 3);
    EXPECT_TRUE(fake_.widgets.visible(player_.m_pPopup));
}

// ---- DestroyPopup ----

TEST_F(OptionsPopupTest, WithoutAPopupThereIsNothingToClose)
{
    EXPECT_FALSE(player_.DestroyPopup());

    EXPECT_THAT(fake_.lines(), LinesAre("I \"\""));
}

TEST_F(OptionsPopupTest, HalfASecondLaterTheObjectsGo)
{
    build_rows({"a.mp4"});
    open_popup();
    player_.DestroyPopup();
    fake_.forget();

    fake_.loop.advance(0.5);

    const Lines deleted_row = {"D \"\""};
    EXPECT_EQ(fake_.lines(), join({{"I \"\"", "evas_object_del(genlist#1)"},
                                   deleted_row,
                                   deleted_row,
                                   deleted_row,
                                   {"evas_object_del(layout#1)", "evas_object_del(popup#1)"}}));
    EXPECT_EQ(player_.m_pPopup, nullptr);
    EXPECT_EQ(player_.m_pPopupLayout, nullptr);
    EXPECT_EQ(player_.m_pGenlist, nullptr);
    EXPECT_EQ(player_.m_pDestroyPopupTimer, nullptr);
    EXPECT_THAT(fake_.loop.timers(), IsEmpty());
    EXPECT_THAT(fake_.leftovers(), LinesAre("window#1", "rectangle#1"));
}

TEST_F(OptionsPopupTest, ClosingAgainRestartsTheHalfSecond)
{
    open_popup();
    player_.DestroyPopup();
    fake_.loop.advance(0.4);
    fake_.forget();

    EXPECT_TRUE(player_.DestroyPopup());

    EXPECT_THAT(fake_.lines(),
                LinesAre("I \"\"", "evas_object_hide(popup#1)", "I \"Block E-POP = 0 \"",
                         "app_context_manager_unset_epop_block()", "ecore_timer_del(timer#1)",
                         "ecore_timer_add(0.5, controller)"));
    fake_.loop.advance(0.4);
    EXPECT_NE(player_.m_pPopup, nullptr);
    fake_.loop.advance(0.1);
    EXPECT_EQ(player_.m_pPopup, nullptr);
}

TEST_F(OptionsPopupTest, TheTearDownWithoutAControllerDoesNothing)
{
    EXPECT_EQ(CPlayerInspector::m_OnDestroyPopTimerCB(nullptr), ECORE_CALLBACK_CANCEL);

    EXPECT_THAT(fake_.lines(), LinesAre("I \"\""));
}

TEST_F(OptionsPopupTest, APopupMayBeOpenedAgainAfterItsTearDown)
{
    build_rows({"a.mp4"});
    for (int i = 0; i < 3; ++i) {
        open_popup();
        player_.DestroyPopup();
        fake_.loop.advance(0.5);
    }

    EXPECT_THAT(fake_.leftovers(), LinesAre("window#1", "rectangle#1"));
}

// ---- Button and time-out ----

TEST_F(OptionsPopupTest, AClickOnTheButtonCloses)
{
    open_popup();

    EXPECT_EQ(fake_.widgets.fire_smart(fake_.widgets.get("button"), "clicked"), 1);

    EXPECT_EQ(fake_.lines(), join({{"D \"\"", "I \"\""}, closing()}));
}

TEST_F(OptionsPopupTest, TheTimeOutClosesLikeTheButton)
{
    open_popup();
    EXPECT_EQ(fake_.widgets.timeout(player_.m_pPopup), 30.0);

    EXPECT_EQ(fake_.widgets.fire_smart(player_.m_pPopup, "timeout"), 1);

    EXPECT_EQ(fake_.lines(), join({{"D \"\"", "I \"\""}, closing()}));
}

TEST_F(OptionsPopupTest, AResponseWithoutAControllerOnlyLogs)
{
    open_popup();

    CPlayerInspector::m_OnButtonResponseCB(nullptr, player_.m_pPopup, nullptr);

    EXPECT_THAT(fake_.lines(), LinesAre("D \"\""));
}

TEST_F(OptionsPopupTest, APrimaryPressOnTheButtonCloses)
{
    open_popup();

    press_button(1);

    EXPECT_EQ(fake_.lines(), join({{"I \"\"", "I \"\""}, closing()}));
}

TEST_F(OptionsPopupTest, APressAndItsClickCloseOnce)
{
    open_popup();

    press_button(1);
    fake_.widgets.fire_smart(fake_.widgets.get("button"), "clicked");
    fake_.loop.advance(0.5);

    EXPECT_EQ(player_.m_pPopup, nullptr);
    EXPECT_THAT(fake_.loop.timers(), IsEmpty());
}

TEST_F(OptionsPopupTest, OtherPressesOnTheButtonDoNothing)
{
    open_popup();
    Evas_Event_Mouse_Down event = {};
    event.button = 1;

    press_button(2);
    press_button(3);
    CPlayerInspector::m_OnCommonButtonMouseDownCB(controller_.get(), nullptr, nullptr, nullptr);
    CPlayerInspector::m_OnCommonButtonMouseDownCB(nullptr, nullptr, nullptr, &event);

    EXPECT_THAT(fake_.lines(), LinesAre("I \"\"", "I \"\"", "I \"\"", "I \"\""));
}

TEST_F(OptionsPopupTest, ThePointerGivesTheButtonTheFocus)
{
    open_popup();
    Evas_Event_Mouse_In event = {};

    EXPECT_EQ(fake_.widgets.fire(fake_.widgets.get("button"), EVAS_CALLBACK_MOUSE_IN, &event), 1);

    EXPECT_THAT(fake_.calls(), LinesAre("elm_object_focus_set(button#1, true)"));
}

} // namespace
