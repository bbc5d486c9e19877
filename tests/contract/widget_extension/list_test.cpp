// Rows: plain texts, long texts, many rows, right-to-left layout.

#include <memory>

#include "widget_test.h"

using namespace testing;

namespace {

class ListTest : public WidgetTest {};

const std::string LONG_NAME = "A journey along the coast, from the first light of the morning to "
                              "the last boat of the evening";

std::vector<std::string> many_rows(int count)
{
    std::vector<std::string> rows;
    for (int i = 0; i < count; ++i)
        rows.push_back("Clip number " + std::to_string(i));
    return rows;
}

std::size_t realized_rows(const Evas_Object *genlist)
{
    Eina_List *rows = elm_genlist_realized_items_get(genlist);
    const std::size_t count = eina_list_count(rows);
    eina_list_free(rows);
    return count;
}

/** Waits for a row to get the focus, which a long list gives once it has laid itself out. */
bool gets_focus(ShownPopup &shown, int row)
{
    return Stage::until([&] { return shown.stage.draw() && shown.scene.focused_row() == row; });
}

bool row_is_in_view(const PopupScene &scene, unsigned int index)
{
    const RowView view(scene.row(index));
    return view && lies_in(view.place(), Stage::geometry(scene.genlist));
}

/** Waits for a row to be scrolled to. */
bool comes_into_view(ShownPopup &shown, unsigned int row)
{
    return Stage::until([&] { return shown.stage.draw() && row_is_in_view(shown.scene, row); });
}

struct FreeRowClass {
    void operator()(Elm_Genlist_Item_Class *row_class) const
    {
        elm_genlist_item_class_free(row_class);
    }
};

std::unique_ptr<Elm_Genlist_Item_Class, FreeRowClass> row_class_of(const char *style)
{
    Elm_Genlist_Item_Class *row_class = elm_genlist_item_class_new();
    row_class->item_style = style;
    return std::unique_ptr<Elm_Genlist_Item_Class, FreeRowClass>(row_class);
}

} // namespace

TEST_F(ListTest, ARowShowsItsTextAsItIs)
{
    ShownPopup shown({"<b>x</b> & co", "a &lt; b", "50 % <br/>"}, 0);
    EXPECT_EQ(RowView(shown.scene.row(0)).text(), "<b>x</b> & co");
    EXPECT_EQ(RowView(shown.scene.row(1)).text(), "a &lt; b");
    EXPECT_EQ(RowView(shown.scene.row(2)).text(), "50 % <br/>");
}

TEST_F(ListTest, FiveRowsFillTheListOnEveryPanel)
{
    for (const int width : {1280, 1920, 3840}) {
        const ShownPopup shown(many_rows(20), 0, {width, width * 9 / 16});
        const int height = RowView(shown.scene.row(0)).place().h;
        EXPECT_NEAR(height * 5, Stage::geometry(shown.scene.genlist).h, 5) << width;
    }
}

TEST_F(ListTest, ALongNameIsCutToTheRowUntilItIsFocused)
{
    ShownPopup shown({"Off", LONG_NAME}, 0);
    const RowView view(shown.scene.row(1));
    EXPECT_LE(view.part("MainText").w, view.part("text_room").w);
    EXPECT_EQ(view.state("MainText"), "default");
    EXPECT_EQ(view.text(), LONG_NAME);
}

TEST_F(ListTest, ALongNameSlidesWhileItIsFocusedAndStopsWhenNot)
{
    ShownPopup shown({"Off", LONG_NAME}, 1);
    const RowView view(shown.scene.row(1));
    const int start = view.part("text_room").x;
    const auto drawn = [&shown] { return shown.stage.draw() != nullptr; };
    EXPECT_TRUE(Stage::until([&] { return drawn() && view.part("MainText").x < start - 50; }));
    EXPECT_GT(view.part("MainText").w, view.part("text_room").w);
    shown.stage.press_key("Up");
    EXPECT_EQ(view.state("MainText"), "default");
    EXPECT_EQ(view.part("MainText").x, start);
}

TEST_F(ListTest, TheEndsOfANameAreSoftOnlyWhileItSlides)
{
    ShownPopup shown({"Off", LONG_NAME}, 1);
    const RowView view(shown.scene.row(1));
    const Eina_Rectangle room = view.part("text_room");
    // The name sits on the white focus: beside its first letter there is nothing else.
    const auto edge = [&] { return shown.stage.pixel(room.x + room.w - 2, room.y + room.h / 2); };
    EXPECT_TRUE(Stage::until([&] { return view.part("MainText").x < room.x - 100; }));
    EXPECT_EQ(edge(), 0xffffffffu);
    EXPECT_EQ(view.state("fade"), "sliding");
    shown.stage.press_key("Up");
    EXPECT_EQ(view.state("fade"), "default");
}

TEST_F(ListTest, AShortNameStaysWhenFocused)
{
    ShownPopup shown({"Off", LONG_NAME, "City"}, 2);
    const RowView view(shown.scene.row(2));
    const Eina_Rectangle before = view.part("MainText");
    // Long enough for the sliding to have begun.
    Stage::until([&shown] { return shown.stage.draw() == nullptr; }, 1.5);
    EXPECT_EQ(view.part("MainText").x, before.x);
    EXPECT_EQ(view.state("MainText"), "focused");
}

TEST_F(ListTest, OnlyTheRowInForceIsTicked)
{
    ShownPopup shown(many_rows(5), 3);
    EXPECT_EQ(RowView(shown.scene.row(3)).state("tick"), "focused");
    EXPECT_EQ(RowView(shown.scene.row(2)).state("tick"), "default");
    shown.stage.press_key("Up");
    EXPECT_EQ(RowView(shown.scene.row(3)).state("tick"), "visible");
    EXPECT_EQ(RowView(shown.scene.row(2)).state("tick"), "default");
}

TEST_F(ListTest, AListThatIsNotOfOptionsTicksNothing)
{
    Stage stage(1920, 1080);
    PopupScene scene(stage.window(), "Demo", many_rows(5), 3);
    elm_velt_genlist_listoption_enable(scene.genlist, false);
    scene.show();
    stage.settle();
    EXPECT_EQ(RowView(scene.row(3)).state("tick"), "default");
    elm_velt_genlist_listoption_enable(scene.genlist, true);
    stage.settle();
    EXPECT_EQ(RowView(scene.row(3)).state("tick"), "focused");
}

TEST_F(ListTest, AThousandRowsOpenAtTheRowInForce)
{
    ShownPopup shown(many_rows(1000), 612);
    EXPECT_TRUE(gets_focus(shown, 612));
    shown.stage.settle();
    EXPECT_TRUE(row_is_in_view(shown.scene, 612));
    EXPECT_EQ(RowView(shown.scene.row(612)).state("tick"), "focused");
}

TEST_F(ListTest, OfAThousandRowsOnlyThoseNearTheViewAreDrawn)
{
    ShownPopup shown(many_rows(1000), 500);
    EXPECT_TRUE(gets_focus(shown, 500));
    shown.stage.settle();
    EXPECT_GE(realized_rows(shown.scene.genlist), 5u);
    EXPECT_LE(realized_rows(shown.scene.genlist), 80u);
}

TEST_F(ListTest, TheViewFollowsTheFocusThroughALongList)
{
    ShownPopup shown(many_rows(1000), 300);
    EXPECT_TRUE(gets_focus(shown, 300));
    shown.stage.settle();
    for (int i = 0; i < 12; ++i)
        shown.stage.press_key("Down");
    EXPECT_EQ(shown.scene.focused_row(), 312);
    EXPECT_TRUE(comes_into_view(shown, 312));
    int focused = 0;
    for (unsigned int i = 295; i < 320; ++i) {
        const RowView view(shown.scene.row(i));
        focused += view && view.state("pill") == "focused" ? 1 : 0;
    }
    EXPECT_EQ(focused, 1);
}

TEST_F(ListTest, AFocusedRowThatScrollsOutAndInAgainStillLooksFocused)
{
    ShownPopup shown(many_rows(1000), 10);
    EXPECT_TRUE(gets_focus(shown, 10));
    elm_genlist_item_show(shown.scene.row(900), ELM_GENLIST_ITEM_SCROLLTO_TOP);
    EXPECT_TRUE(comes_into_view(shown, 900));
    EXPECT_NE(RowView(shown.scene.row(900)).state("pill"), "focused");
    elm_genlist_item_show(shown.scene.row(10), ELM_GENLIST_ITEM_SCROLLTO_TOP);
    EXPECT_TRUE(comes_into_view(shown, 10));
    shown.stage.settle();
    EXPECT_EQ(RowView(shown.scene.row(10)).state("pill"), "focused");
}

TEST_F(ListTest, RowsMirrorInARightToLeftLayout)
{
    for (const bool mirrored : {false, true}) {
        SCOPED_TRACE(mirrored ? "right to left" : "left to right");
        Stage stage(1920, 1080);
        elm_config_mirrored_set(mirrored ? EINA_TRUE : EINA_FALSE);
        PopupScene scene(stage.window(), "Demo", many_rows(20), 0);
        scene.show();
        stage.settle();
        const RowView view(scene.row(0));
        const int middle = view.place().x + view.place().w / 2;
        const Eina_Rectangle text = view.part("MainText");
        const Eina_Rectangle tick = view.part("tick");
        EXPECT_EQ(text.x > middle, mirrored);
        EXPECT_EQ(tick.x > text.x, mirrored);
        int bar = 0;
        edje_object_part_geometry_get(elm_layout_edje_get(scene.genlist), "elm.dragable.vbar", &bar,
                                      nullptr, nullptr, nullptr);
        EXPECT_EQ(bar < 0, mirrored);
    }
}

TEST_F(ListTest, ATextAgainstTheLayoutSlidesFromItsOwnBeginning)
{
    Stage stage(1920, 1080);
    elm_config_mirrored_set(EINA_TRUE);
    PopupScene scene(stage.window(), "Demo", {"Off", LONG_NAME}, 1);
    scene.show();
    stage.settle();
    const RowView view(scene.row(1));
    const Eina_Rectangle room = view.part("text_room");
    EXPECT_TRUE(Stage::until([&] { return stage.draw() && view.part("MainText").w > room.w; }));
    // It begins at the text's left end, not at the far right one.
    EXPECT_NEAR(view.part("MainText").x, room.x, 40);
}

TEST_F(ListTest, RowsGiveBackTheDataTheyWereAppendedWith)
{
    Stage stage(1920, 1080);
    Evas_Object *list = elm_velt_genlist_add(stage.window());
    const auto row_class = row_class_of("C_TextTile_SingleLine_02");
    int number = 7;
    Elm_Object_Item *item = elm_velt_genlist_item_append(list, row_class.get(), &number, nullptr,
                                                         ELM_GENLIST_ITEM_NONE, nullptr, nullptr);
    EXPECT_EQ(elm_velt_genlist_item_data_get(item), &number);
    EXPECT_EQ(elm_velt_genlist_item_data_get(nullptr), nullptr);
    EXPECT_EQ(elm_velt_genlist_item_append(list, nullptr, &number, nullptr, ELM_GENLIST_ITEM_NONE,
                                           nullptr, nullptr),
              nullptr);
}

TEST_F(ListTest, ARowOfAStockListHasNoDataOfOurs)
{
    Stage stage(1920, 1080);
    Evas_Object *list = elm_genlist_add(stage.window());
    Elm_Object_Item *item =
        elm_genlist_item_append(list, row_class_of("default").get(), nullptr, nullptr,
                                ELM_GENLIST_ITEM_NONE, nullptr, nullptr);
    EXPECT_EQ(elm_velt_genlist_item_data_get(item), nullptr);
}

TEST_F(ListTest, ClearingTheListDeletesEveryRecordOnce)
{
    ShownPopup shown(many_rows(100), 50);
    evas_object_hide(shown.scene.popup);
    shown.stage.settle();
    elm_genlist_clear(shown.scene.genlist);
    shown.stage.settle();
    EXPECT_EQ(shown.scene.rows_deleted, 100);
    EXPECT_EQ(shown.scene.focused_row(), -1);
}

// Options that are closed at once are asked to take the focus when they are hidden already.
TEST_F(ListTest, OneThatIsToTakeTheFocusWhileItIsHiddenIsForgottenWhenItGoes)
{
    Stage stage(FULL_HD.width, FULL_HD.height);
    PopupScene scene(stage.window(), "Demo", {"Off", "Play all"}, 1);
    evas_object_show(scene.popup);
    evas_object_hide(scene.popup);
    elm_object_focus_set(scene.genlist, EINA_TRUE);
    scene.delete_closed();
    Evas_Object *button = elm_velt_button_add(stage.window());
    evas_object_show(button);
    // What was deleted has gone for good some frames later.
    for (int x = 0; x < 10; x++) {
        evas_object_resize(button, 100 + x, 50);
        stage.settle();
        stage.draw();
    }
    elm_object_focus_set(button, EINA_TRUE);

    EXPECT_THAT(library_errors(), IsEmpty());
}
