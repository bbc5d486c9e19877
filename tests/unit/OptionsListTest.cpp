#include "player_fixture.h"

#include <cstdlib>

#include "widget_extension.h"

using testing::IsEmpty;

namespace {

// Rows of the open popup.
enum { OFF = 0, PLAY_ALL = 1, FIRST = 2, SECOND = 3 };

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

    void store_mode(int word) { fake_.store.values[ConfigKey::DEMO_MODE] = word; }
    int stored_mode() { return fake_.store.get(ConfigKey::DEMO_MODE); }
};

// ---- Initial focus ----

TEST_F(OptionsListTest, ShowingTheListSetsTheFocusWhenIdle)
{
    store_mode(2);

    EXPECT_EQ(fake_.widgets.fire(player_.m_pGenlist, EVAS_CALLBACK_SHOW, nullptr), 1);
    EXPECT_THAT(fake_.lines(), LinesAre("I \"\"", "ecore_idler_add(controller)"));
    fake_.forget();

    fake_.loop.run_idle();

    EXPECT_THAT(fake_.lines(), LinesAre("I \"callback enter\"", "I \"\"", "I \"2 -1\"",
                                        "elm_object_focus_set(genlist#1, true)",
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

// A selection has eight bits in the stored word, so a high entry is stored as another one.
TEST_F(OptionsListTest, AfterAHighRowWasChosenTheFocusIsWhereTheStoredWordSays)
{
    constexpr int HIGH_ENTRY = 300;
    constexpr int STORED_ENTRY = HIGH_ENTRY % 256;
    std::vector<std::string> names;
    for (int i = 1; i <= HIGH_ENTRY; ++i)
        names.push_back(std::to_string(i) + ".mp4");
    for (const ENDEMO_ROTATION_TYPE panel : {ROTATION_TYPE_LANDSCAPE, ROTATION_TYPE_PORTRAIT}) {
        set_panel(panel);
        store_mode(0);
        player_.m_iPlayIndex = 0;
        open_with(names);

        fake_.widgets.press_row(player_.m_pGenlist, PLAY_ALL + HIGH_ENTRY);

        EXPECT_EQ(player_.m_iPlayIndex, HIGH_ENTRY);
        EXPECT_EQ(player_.m_strPlayPath, std::string(FOLDER) + "300.mp4");
        EXPECT_EQ(stored_mode(), panel == ROTATION_TYPE_PORTRAIT ? STORED_ENTRY << 8 : HIGH_ENTRY);
        open_with(names);
        fake_.widgets.fire(player_.m_pGenlist, EVAS_CALLBACK_SHOW, nullptr);
        fake_.loop.run_idle();
        EXPECT_EQ(fake_.widgets.focused_row(player_.m_pGenlist), PLAY_ALL + STORED_ENTRY);
    }
}

// ---- m_GetRecentlySelectedItem ----

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

TEST_F(OptionsListTest, APointerWithoutEventMovesNothing)
{
    CPlayerInspector::m_OnGenListMouseInCB(controller_.get(), nullptr, player_.m_pGenlist, nullptr);

    EXPECT_THAT(fake_.calls(), IsEmpty());
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

TEST_F(OptionsListTest, NothingRegistersTheSelectionCallback)
{
    EXPECT_EQ(fake_.widgets.fire_smart(player_.m_pGenlist, "selected"), 0);
}

} // namespace
