// What the first popup needs is loaded before anybody asks for it, unseen and without a trace.

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "opened_files.h"
#include "widget_extension/widget_manager.h"
#include "widget_test.h"

using namespace testing;
using platform::WidgetManager;

namespace {

class PopupPrerenderTest : public WidgetTest {};

const std::vector<std::string> ROWS = {"Off", "Play all", "City lights", "Ocean"};

bool prepared()
{
    return WidgetManager::get().is_prepared();
}

void open_popup(Stage &stage)
{
    PopupScene scene(stage.window(), "Demo", ROWS, 2);
    scene.show();
    stage.settle();
    evas_object_hide(scene.popup);
    scene.delete_closed();
    stage.settle();
}

/** Shows a popup and a toast, the first of this process, and ends it. */
[[noreturn]] void open_first_and_exit(bool prerendered)
{
    Stage stage(1920, 1080);
    if (prerendered && !Stage::until(prepared))
        std::_Exit(2);
    const OpenedFiles files;
    open_popup(stage);
    show_toast(stage.window(), "Landscape timer: 5 min 30 sec");
    stage.settle();
    const std::vector<std::string> opened = files.paths();
    for (const std::string &name : opened)
        std::fprintf(stderr, "opened %s\n", name.c_str());
    std::_Exit(opened.empty() ? 0 : 1);
}

unsigned int count_windows()
{
    Eina_List *windows = ecore_evas_ecore_evas_list_get();
    const unsigned int count = eina_list_count(windows);
    eina_list_free(windows);
    return count;
}

} // namespace

// Only a fresh process has a first popup, hence these two.
TEST_F(PopupPrerenderTest, WithoutOneTheFirstPopupOpensFontFiles)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(open_first_and_exit(false), ExitedWithCode(1), "opened .*[.]tt");
}

TEST_F(PopupPrerenderTest, AfterOneTheFirstPopupAndTheFirstToastOpenNoFile)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(open_first_and_exit(true), ExitedWithCode(0), "");
}

TEST_F(PopupPrerenderTest, AFileOfTheResourcesWouldBeNoticed)
{
    const std::string picture = BUILT_RESOURCE_DIR "/theme/images/tick.png";
    const OpenedFiles files;
    Eina_File *file = eina_file_open(picture.c_str(), EINA_FALSE);
    ASSERT_TRUE(file);
    eina_file_close(file);
    EXPECT_THAT(files.paths(), ElementsAre(picture));
}

TEST_F(PopupPrerenderTest, NothingOfItIsSeen)
{
    Stage stage(1280, 720);
    bool seen = false;
    const auto look = [&stage, &seen] {
        const std::uint32_t *pixels = stage.draw();
        seen = seen || std::any_of(pixels, pixels + 1280 * 720, [](auto pixel) { return pixel; });
        return prepared();
    };
    ASSERT_TRUE(Stage::until(look));
    EXPECT_FALSE(seen);
}

// The real window's second buffer is filled then. Its content alone would not do: of that, no more
// is shown than what is drawn, which is nothing yet.
TEST_F(PopupPrerenderTest, AfterItTheRealWindowIsDrawnAgainAndNotItsContent)
{
    Stage stage(1280, 720);
    ASSERT_TRUE(Stage::until(prepared));
    bool content_drawn = false;
    bool panel_drawn = false;
    const FrameWatch content(stage.canvas(), [&] { content_drawn = true; });
    const FrameWatch panel(stage.panel_canvas(), [&] { panel_drawn = true; });
    EXPECT_TRUE(Stage::until([&panel_drawn] { return panel_drawn; }));
    EXPECT_FALSE(content_drawn);
}

TEST_F(PopupPrerenderTest, NothingOfItIsLeft)
{
    Stage stage(1280, 720);
    const unsigned int windows = count_windows();
    ASSERT_TRUE(Stage::until(prepared));
    stage.settle();
    EXPECT_EQ(count_windows(), windows);
}

TEST_F(PopupPrerenderTest, APopupThatIsOpenMeanwhileKeepsItsFocus)
{
    ShownPopup shown(ROWS, 2, {1280, 720});
    ASSERT_FALSE(prepared());
    ASSERT_TRUE(Stage::until(prepared));
    shown.stage.settle();
    EXPECT_EQ(shown.scene.focused_row(), 2);
    shown.stage.press_key("Down");
    EXPECT_EQ(shown.scene.focused_row(), 3);
    EXPECT_EQ(shown.scene.rows_deleted, 0);
}

TEST_F(PopupPrerenderTest, AnotherLanguageBringsAnother)
{
    Stage stage(1280, 720);
    ASSERT_TRUE(Stage::until(prepared));
    evas_object_smart_callback_call(stage.window(), "language,changed", nullptr);
    EXPECT_FALSE(prepared());
    EXPECT_TRUE(Stage::until(prepared));
}

TEST_F(PopupPrerenderTest, TheWindowMayGoAtAnyPointOfIt)
{
    // Each round ends one step further into it: whatever is there then goes with the window.
    for (int steps = 0; steps < 6; ++steps) {
        Stage stage(1280, 720);
        int left = steps;
        ASSERT_TRUE(
            Stage::until([&] { return prepared() || (count_windows() > 2 && --left < 0); }));
        stage.delete_window();
        stage.settle();
        EXPECT_LE(count_windows(), 1u);
    }
}
