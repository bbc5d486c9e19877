// Rows: plain texts, long texts, many rows, right-to-left layout.

#include "widget_test.h"

using namespace testing;

namespace {

class ListTest : public WidgetTest {};

const std::string long_name = "A journey along the coast, from the first light of the morning to "
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

bool row_is_in_view(const PopupScene &scene, unsigned int index)
{
    const RowView view(scene.row(index));
    return view && lies_in(view.place(), Stage::geometry(scene.genlist));
}

} // namespace

TEST_F(ListTest, ARowShowsItsTextAsItIs)
{
    Stage stage(1920, 1080);
    PopupScene scene(stage.window(), "Demo", {"<b>x</b> & co", "a &lt; b", "50 % <br/>"}, 0);
    scene.show();
    stage.settle();
    EXPECT_EQ(RowView(scene.row(0)).text(), "<b>x</b> & co");
    EXPECT_EQ(RowView(scene.row(1)).text(), "a &lt; b");
    EXPECT_EQ(RowView(scene.row(2)).text(), "50 % <br/>");
}

TEST_F(ListTest, FiveRowsFillTheListOnEveryPanel)
{
    for (const int width : {1280, 1920, 3840}) {
        Stage stage(width, width * 9 / 16);
        PopupScene scene(stage.window(), "Demo", many_rows(20), 0);
        scene.show();
        stage.settle();
        const int height = RowView(scene.row(0)).place().h;
        EXPECT_NEAR(height * 5, Stage::geometry(scene.genlist).h, 5) << width;
    }
}

TEST_F(ListTest, ALongNameIsCutToTheRowUntilItIsFocused)
{
    Stage stage(1920, 1080);
    PopupScene scene(stage.window(), "Demo", {"Off", long_name}, 0);
    scene.show();
    stage.settle();
    const RowView view(scene.row(1));
    EXPECT_LE(view.part("MainText").w, view.part("text_room").w);
    EXPECT_EQ(view.state("MainText"), "default");
    EXPECT_EQ(view.text(), long_name);
}

TEST_F(ListTest, ALongNameSlidesWhileItIsFocusedAndStopsWhenNot)
{
    Stage stage(1920, 1080);
    PopupScene scene(stage.window(), "Demo", {"Off", long_name}, 1);
    scene.show();
    stage.settle();
    const RowView view(scene.row(1));
    const int start = view.part("text_room").x;
    const auto drawn = [&stage] { return stage.draw() != nullptr; };
    EXPECT_TRUE(Stage::until([&] { return drawn() && view.part("MainText").x < start - 50; }));
    EXPECT_GT(view.part("MainText").w, view.part("text_room").w);
    stage.press_key("Up");
    EXPECT_EQ(view.state("MainText"), "default");
    EXPECT_EQ(view.part("MainText").x, start);
}

TEST_F(ListTest, TheEndsOfANameAreSoftOnlyWhileItSlides)
{
    Stage stage(1920, 1080);
    PopupScene scene(stage.window(), "Demo", {"Off", long_name}, 1);
    scene.show();
    stage.settle();
    const RowView view(scene.row(1));
    const Eina_Rectangle room = view.part("text_room");
    // The name sits on the white focus: beside its first letter there is nothing else.
    const auto edge = [&] { return stage.pixel(room.x + room.w - 2, room.y + room.h / 2); };
    EXPECT_TRUE(Stage::until([&] { return view.part("MainText").x < room.x - 100; }));
    EXPECT_EQ(edge(), 0xffffffffu);
    EXPECT_EQ(view.state("fade"), "sliding");
    stage.press_key("Up");
    EXPECT_EQ(view.state("fade"), "default");
}

TEST_F(ListTest, AShortNameStaysWhenFocused)
{
    Stage stage(1920, 1080);
    PopupScene scene(stage.window(), "Demo", {"Off", long_name, "City"}, 2);
    scene.show();
    stage.settle();
    const RowView view(scene.row(2));
    const Eina_Rectangle before = view.part("MainText");
    // Long enough for the sliding to have begun.
    Stage::until([&stage] { return stage.draw() == nullptr; }, 1.5);
    EXPECT_EQ(view.part("MainText").x, before.x);
    EXPECT_EQ(view.state("MainText"), "focused");
}

TEST_F(ListTest, OnlyTheRowInForceIsTicked)
{
    Stage stage(1920, 1080);
    PopupScene scene(stage.window(), "Demo", many_rows(5), 3);
    scene.show();
    stage.settle();
    EXPECT_EQ(RowView(scene.row(3)).state("tick"), "focused");
    EXPECT_EQ(RowView(scene.row(2)).state("tick"), "default");
    stage.press_key("Up");
    EXPECT_EQ(RowView(scene.row(3)).state("tick"), "visible");
    EXPECT_EQ(RowView(scene.row(2)).state("tick"), "default");
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
    Stage stage(1920, 1080);
    PopupScene scene(stage.window(), "Demo", many_rows(1000), 612);
    scene.show();
    EXPECT_TRUE(Stage::until([&] { return stage.draw() && scene.focused_row() == 612; }));
    stage.settle();
    EXPECT_TRUE(row_is_in_view(scene, 612));
    EXPECT_EQ(RowView(scene.row(612)).state("tick"), "focused");
}

TEST_F(ListTest, OfAThousandRowsOnlyThoseNearTheViewAreDrawn)
{
    Stage stage(1920, 1080);
    PopupScene scene(stage.window(), "Demo", many_rows(1000), 500);
    scene.show();
    EXPECT_TRUE(Stage::until([&] { return stage.draw() && scene.focused_row() == 500; }));
    stage.settle();
    EXPECT_GE(realized_rows(scene.genlist), 5u);
    EXPECT_LE(realized_rows(scene.genlist), 80u);
}

TEST_F(ListTest, TheViewFollowsTheFocusThroughALongList)
{
    Stage stage(1920, 1080);
    PopupScene scene(stage.window(), "Demo", many_rows(1000), 300);
    scene.show();
    EXPECT_TRUE(Stage::until([&] { return stage.draw() && scene.focused_row() == 300; }));
    stage.settle();
    for (int i = 0; i < 12; ++i)
        stage.press_key("Down");
    EXPECT_EQ(scene.focused_row(), 312);
    EXPECT_TRUE(Stage::until([&] { return stage.draw() && row_is_in_view(scene, 312); }));
    int focused = 0;
    for (unsigned int i = 295; i < 320; ++i) {
        const RowView view(scene.row(i));
        focused += view && view.state("pill") == "focused" ? 1 : 0;
    }
    EXPECT_EQ(focused, 1);
}

TEST_F(ListTest, AFocusedRowThatScrollsOutAndInAgainStillLooksFocused)
{
    Stage stage(1920, 1080);
    PopupScene scene(stage.window(), "Demo", many_rows(1000), 10);
    scene.show();
    EXPECT_TRUE(Stage::until([&] { return stage.draw() && scene.focused_row() == 10; }));
    elm_genlist_item_show(scene.row(900), ELM_GENLIST_ITEM_SCROLLTO_TOP);
    EXPECT_TRUE(Stage::until([&] { return stage.draw() && row_is_in_view(scene, 900); }));
    EXPECT_NE(RowView(scene.row(900)).state("pill"), "focused");
    elm_genlist_item_show(scene.row(10), ELM_GENLIST_ITEM_SCROLLTO_TOP);
    EXPECT_TRUE(Stage::until([&] { return stage.draw() && row_is_in_view(scene, 10); }));
    stage.settle();
    EXPECT_EQ(RowView(scene.row(10)).state("pill"), "focused");
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
    PopupScene scene(stage.window(), "Demo", {"Off", long_name}, 1);
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
    Elm_Genlist_Item_Class *row_class = elm_genlist_item_class_new();
    row_class->item_style = "C_TextTile_SingleLine_02";
    int number = 7;
    Elm_Object_Item *item = elm_velt_genlist_item_append(list, row_class, &number, nullptr,
                                                         ELM_GENLIST_ITEM_NONE, nullptr, nullptr);
    elm_genlist_item_class_free(row_class);
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
    Elm_Genlist_Item_Class *row_class = elm_genlist_item_class_new();
    row_class->item_style = "default";
    Elm_Object_Item *item = elm_genlist_item_append(list, row_class, nullptr, nullptr,
                                                    ELM_GENLIST_ITEM_NONE, nullptr, nullptr);
    elm_genlist_item_class_free(row_class);
    EXPECT_EQ(elm_velt_genlist_item_data_get(item), nullptr);
}

TEST_F(ListTest, ClearingTheListDeletesEveryRecordOnce)
{
    Stage stage(1920, 1080);
    PopupScene scene(stage.window(), "Demo", many_rows(100), 50);
    scene.show();
    stage.settle();
    evas_object_hide(scene.popup);
    stage.settle();
    elm_genlist_clear(scene.genlist);
    stage.settle();
    EXPECT_EQ(scene.rows_deleted, 100);
    EXPECT_EQ(scene.focused_row(), -1);
}
