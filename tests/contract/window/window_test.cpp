// The set's window in a real compositor: what is on the screen, and what pointer and keys do.

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <regex>

#include <gmock/gmock.h>

#include "base/orientation.h"
#include "desktop_support/desktop.h"
#include "window/tv_window.h"

namespace desktop_test {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::Not;

constexpr Colour RED = {255, 0, 0};
constexpr Colour BLACK = {0, 0, 0};

// The test application draws a red mark of 100 by 60 at 20,10 of its content, and has a button at
// 200,100 of 80 by 40.
struct Turn {
    int state; // stored rotation state
    int angle;
    const char *size;   // of the content
    int mark_x, mark_y; // the middle of the mark on the screen
    int button_x, button_y;
    int free_x, free_y; // a place with nothing but the hole, and where the content sees it
    const char *free_in_content;
};

// On a panel turned clockwise by a quarter, the content's top is at the screen's left.
constexpr Turn TURNS[] = {
    {1, 0, "640x400", 70, 40, 240, 120, 500, 300, "500,300"},
    {2, 90, "400x640", 40, 329, 120, 159, 500, 300, "99,500"},
    {3, 180, "640x400", 569, 359, 399, 279, 100, 50, "539,349"},
    {0, 270, "400x640", 599, 70, 519, 240, 100, 50, "50,539"},
};

std::string screen_line(const char *what, const Turn &turn)
{
    return std::string(what) + " angle " + std::to_string(turn.angle) + " screen 0,0 " + turn.size;
}

/** Has the application draw one red rectangle, or nothing where it is empty. */
void show_only(Program &app, const platform::Rect &place)
{
    app.say("only " + std::to_string(place.x) + " " + std::to_string(place.y) + " " +
            std::to_string(place.width) + " " + std::to_string(place.height));
}

/** The toolkit lays a turned picture as much as one pixel beside its place. */
bool is_about(const platform::Rect &seen, const platform::Rect &place)
{
    constexpr int FAR = 2;
    return std::abs(seen.x - place.x) < FAR && std::abs(seen.y - place.y) < FAR &&
           std::abs(seen.right() - place.right()) < FAR &&
           std::abs(seen.bottom() - place.bottom()) < FAR;
}

class TurnedWindowTest : public DesktopTest, public testing::WithParamInterface<Turn> {
  protected:
    /** An application that was turned to the angle while it ran. */
    std::unique_ptr<Program> turned_app()
    {
        const Turn turn = GetParam();
        auto app = start_and_show();
        if (turn.angle == 0) {
            app->say("turn 90");
            EXPECT_TRUE(app->hears("rotator 0 at 90"));
        }
        app->say("turn " + std::to_string(turn.angle));
        EXPECT_TRUE(app->hears("rotator 0 at " + std::to_string(turn.angle)));
        return app;
    }

    void expect_upright()
    {
        const Turn turn = GetParam();
        EXPECT_TRUE(wait_until([&] {
            return Screen::get().colour(turn.mark_x, turn.mark_y) == RED;
        })) << "the mark is not where it belongs";
        for (const Turn &other : TURNS) {
            if (other.angle != turn.angle) {
                EXPECT_TRUE(wait_until([&] {
                    return Screen::get().colour(other.mark_x, other.mark_y) == BLACK;
                })) << "something is left of angle "
                    << other.angle;
            }
        }
    }
};

TEST_P(TurnedWindowTest, StartsAtTheStoredAngle)
{
    const Turn turn = GetParam();
    store_test::write_file(folder_ / "state/db/sysman/rotation_state",
                           std::to_string(turn.state) + "\n");
    auto app = start();
    EXPECT_TRUE(app->hears(screen_line("made", turn)));
    EXPECT_TRUE(app->hears("visibility 1"));
    expect_upright();
    EXPECT_EQ(quit(*app), 0);
}

TEST_P(TurnedWindowTest, FollowsATurn)
{
    const Turn turn = GetParam();
    auto app = turned_app();
    EXPECT_THAT(app->lines(), Contains(screen_line("rotation", turn)));
    expect_upright();
    EXPECT_TRUE(wait_until([&] {
        return stored_rotation_state() == std::to_string(turn.state) + "\n";
    })) << stored_rotation_state();
    EXPECT_EQ(quit(*app), 0);
}

// As when the options make room for a toast, which lies within them.
TEST_P(TurnedWindowTest, ShowsAllThatIsDrawnAndNothingElse)
{
    auto app = turned_app();
    const auto orientation = platform::Orientation::clockwise(360 - GetParam().angle);
    for (const platform::Rect &part :
         {platform::Rect(), platform::Rect{40, 40, 200, 300}, platform::Rect{90, 200, 60, 20},
          platform::Rect(), platform::Rect{90, 200, 60, 20}, platform::Rect{300, 20, 50, 90},
          platform::Rect{40, 40, 330, 300}}) {
        show_only(*app, part);
        const platform::Rect laid = orientation.place(part, {SCREEN_WIDTH, SCREEN_HEIGHT});
        const bool shown = wait_until([&] {
            const platform::Rect lit = Screen::get().lit_part();
            return part.empty() ? lit.empty() : is_about(lit, laid);
        });
        ASSERT_TRUE(shown) << "instead of " << laid.x << "," << laid.y << " " << laid.width << "x"
                           << laid.height;
        // A frame in which nothing of the content changes.
        app->say("redraw");
        EXPECT_TRUE(app->hears("redrawn"));
    }
    EXPECT_EQ(quit(*app), 0);
}

TEST_P(TurnedWindowTest, ThePointerHitsWhatItShows)
{
    const Turn turn = GetParam();
    auto app = turned_app();
    expect_upright();
    Screen::get().input(
        {"mousemove", std::to_string(turn.free_x), std::to_string(turn.free_y), "click", "1"});
    EXPECT_TRUE(app->hears(std::string("down 1 at ") + turn.free_in_content));
    Screen::get().input(
        {"mousemove", std::to_string(turn.button_x), std::to_string(turn.button_y), "click", "1"});
    EXPECT_TRUE(app->hears("clicked"));
    EXPECT_EQ(quit(*app), 0);
    // A window hears of what is meant for a widget as well, and of everything once.
    EXPECT_THAT(app->lines(), Contains(HasSubstr("down")).Times(2));
}

TEST_P(TurnedWindowTest, KeysReachTheFocusedWidgetAndThenTheApplication)
{
    auto app = turned_app();
    ASSERT_TRUE(gets_keyboard(*app));
    Screen::get().input({"key", "Escape"});
    EXPECT_TRUE(app->hears("widget key XF86Back"));
    EXPECT_TRUE(app->hears("key XF86Back XF86Back"));
    EXPECT_EQ(quit(*app), 0) << app->errors();
}

INSTANTIATE_TEST_SUITE_P(Angles, TurnedWindowTest, testing::ValuesIn(TURNS), [](const auto &given) {
    return std::to_string(given.param.angle) + "Degrees";
});

using WindowTest = DesktopTest;

/** Whether, by its trace, an application gave the compositor a picture of its window. */
bool gave_a_picture(const std::string &trace)
{
    std::smatch window;
    const bool made =
        std::regex_search(trace, window, std::regex("get_xdg_surface.*, (wl_surface@\\d+)"));
    EXPECT_TRUE(made) << trace;
    return made && trace.find(window[1].str() + ".attach(wl_buffer") != std::string::npos;
}

TEST_F(WindowTest, IsPreparedOnceAtThePanelsSizeBeforeItIsShown)
{
    auto app = start();
    EXPECT_TRUE(app->hears("window yes, again no"));
    EXPECT_TRUE(app->hears("hint 1"));
    EXPECT_TRUE(app->hears("surface yes"));
    EXPECT_TRUE(app->hears("made angle 0 screen 0,0 640x400"));
    EXPECT_TRUE(app->hears("shown"));
    EXPECT_TRUE(app->hears("grab 1"));
    EXPECT_EQ(quit(*app), 0);
}

TEST_F(WindowTest, TellsItsVisibilityAfterTheFirstFrameAndOnceOnly)
{
    auto app = start();
    EXPECT_TRUE(app->hears("visibility 1"));
    EXPECT_THAT(app->lines(), Contains("ready")) << "which comes before the first frame";
    EXPECT_TRUE(wait_until([] { return Screen::get().colour(70, 40) == RED; }));
    app->say("turn 90");
    EXPECT_TRUE(app->hears("rotator 0 at 90"));
    EXPECT_EQ(quit(*app), 0);
    const auto &lines = app->lines();
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "visibility 1"), 1);
    EXPECT_THAT(lines, Not(Contains("visibility 0")));
}

// A compositor shows black for a window that is there and transparent.
TEST_F(WindowTest, IsDrawnButStaysOffTheScreenUntilThereIsSomethingToSee)
{
    auto app = start({}, {{"TEST_NOTHING_SEEN", "1"}, {"WAYLAND_DEBUG", "client"}});
    EXPECT_TRUE(app->hears("visibility 1"));
    // More often than the toolkit has buffers to draw into.
    for (int frame = 0; frame < 6; ++frame) {
        app->say("redraw");
        EXPECT_TRUE(app->hears("redrawn"));
    }
    app->say("sync");
    EXPECT_TRUE(app->hears("done sync"));
    EXPECT_FALSE(gave_a_picture(app->errors()));

    const platform::Rect place = {20, 10, 100, 60};
    show_only(*app, place);
    EXPECT_TRUE(wait_until([&] { return Screen::get().lit_part() == place; }));
    EXPECT_EQ(quit(*app), 0);
}

// The frame that was held back has another size than the window then.
TEST_F(WindowTest, ThatHasAnotherSizeSinceItsLastFrameComesOntoTheScreenAllTheSame)
{
    auto app = start({}, {{"TEST_NOTHING_SEEN", "1"}});
    EXPECT_TRUE(app->hears("visibility 1"));
    app->say("reveal-resized");
    EXPECT_TRUE(app->hears("done reveal-resized"));

    const platform::Rect place = {20, 10, 100, 60};
    show_only(*app, place);
    EXPECT_TRUE(wait_until([&] { return Screen::get().lit_part() == place; }));
    EXPECT_EQ(quit(*app), 0);
}

// As when a film's first picture comes while the application ends.
TEST_F(WindowTest, ThatIsHiddenBeforeItCameOntoTheScreenStaysOffIt)
{
    for (const char *end : {"hide", "delete"}) {
        auto app = start({}, {{"TEST_NOTHING_SEEN", "1"}, {"WAYLAND_DEBUG", "client"}});
        EXPECT_TRUE(app->hears("visibility 1"));
        app->say(end);
        app->say("reveal-resized");
        EXPECT_EQ(end == std::string("hide") ? quit(*app) : app->finish(), 0);
        EXPECT_FALSE(gave_a_picture(app->errors()));
        EXPECT_THAT(app->errors(), Not(HasSubstr("ERR<")));
    }
}

// Over a film each pixel that is given over costs the compositor time, and the application before
// it.
TEST_F(WindowTest, GivesTheCompositorNoMoreThanWhatChanged)
{
    auto app = start_and_show({{"WAYLAND_DEBUG", "1"}});
    // Each of its buffers is filled as a whole the first time.
    for (const int x : {400, 20, 400, 20}) {
        const platform::Rect place = {x, 10, 100, 60};
        show_only(*app, place);
        EXPECT_TRUE(wait_until([&] { return Screen::get().lit_part() == place; }));
    }
    EXPECT_EQ(quit(*app), 0);
    const std::regex whole("wl_surface@(\\d+)\\.damage_buffer\\(0, 0, 640, 400\\)");
    std::smatch first;
    ASSERT_TRUE(std::regex_search(app->errors(), first, whole)) << app->errors();
    const std::string damage = "wl_surface@" + first[1].str() + ".damage_buffer(";
    const size_t last = app->errors().rfind(damage);
    EXPECT_NE(app->errors().substr(last + damage.size(), 8), "0, 0, 64") << app->errors();
}

TEST_F(WindowTest, SaysOnceThatThisCompositorCannotBeAskedToKeepTheScreenOn)
{
    auto app = start_and_show();
    EXPECT_EQ(quit(*app), 0);
    const std::string &log = app->errors();
    const std::regex line("I/PLATFORM.*: window: the compositor may blank the screen");
    EXPECT_EQ(std::distance(std::sregex_iterator(log.begin(), log.end(), line), {}), 1) << log;
}

TEST(WindowListener, NeedsToHearOnlyOfWhatItCaresFor)
{
    const platform::TvWindow::Listener deaf;
    EXPECT_NO_THROW(deaf.closed());
    EXPECT_NO_THROW(deaf.seen(true));
    EXPECT_NO_THROW(deaf.content_seen(true));
    EXPECT_NO_THROW(deaf.without_picture());
    EXPECT_NO_THROW(deaf.compositor_gone());
    EXPECT_NO_THROW(deaf.gone());
}

TEST_F(WindowTest, LeavesTheScreenWhenItIsHidden)
{
    auto app = start_and_show();
    EXPECT_TRUE(wait_until([] { return Screen::get().colour(70, 40) == RED; }));
    app->say("hide");
    app->say("sync");
    EXPECT_TRUE(app->hears("visibility 0"));
    EXPECT_TRUE(wait_until([] { return Screen::get().colour(70, 40) == BLACK; }));
    EXPECT_EQ(quit(*app), 0);
}

TEST_F(WindowTest, DeletingItEndsTheApplicationAsItsPolicySays)
{
    auto app = start_and_show();
    app->say("delete");
    EXPECT_EQ(app->finish(), 0) << app->errors();
    EXPECT_EQ(app->lines().back(), "terminate");
}

TEST_F(WindowTest, ClosingItEndsTheApplication)
{
    // Kiosk compositors offer no way to close a window; the application passes on what the toolkit
    // makes of a compositor's request.
    auto app = start_and_show();
    app->say("close");
    EXPECT_EQ(app->finish(), 0) << app->errors();
    EXPECT_EQ(app->lines().back(), "terminate");
    EXPECT_THAT(app->errors(), HasSubstr("the window was closed"));
}

TEST_F(WindowTest, ResizesTheContentInFrontOfTheRotationEvent)
{
    auto app = start_and_show();
    app->say("turn 90");
    EXPECT_TRUE(app->hears("rotator 2 at 0"));
    EXPECT_TRUE(app->hears("resize 400x640"));
    EXPECT_TRUE(app->hears("resized angle 90 screen 0,0 400x640"));
    EXPECT_TRUE(app->hears("rotation angle 90 screen 0,0 400x640"));
    EXPECT_TRUE(app->hears("rotator 0 at 90"));
    EXPECT_EQ(quit(*app), 0);
}

TEST_F(WindowTest, DoesNotTurnOnASetWithoutRotator)
{
    write_settings("[panel]\nrotator = false\n");
    auto app = start_and_show();
    app->say("panel-key");
    EXPECT_TRUE(app->hears("done panel-key"));
    app->say("turn 90");
    EXPECT_TRUE(app->hears("done turn 90"));
    EXPECT_EQ(quit(*app), 0);
    EXPECT_THAT(app->lines(), Not(Contains(HasSubstr("rotat"))));
}

TEST_F(WindowTest, ThePointerIsSeenAndFeltOnlyWhileItIsMoved)
{
    // The trace tells what the compositor is asked for, even where it is taken back at once.
    auto app = start_and_show({{"WAYLAND_DEBUG", "client"}});
    const auto set_to = [&app](const std::string &what) {
        return std::regex_search(app->errors(), std::regex("set_cursor\\([0-9]+, " + what));
    };
    const auto seen_at = [](int x, int y) {
        for (int dy = 0; dy < 14; ++dy) {
            for (int dx = 0; dx < 10; ++dx) {
                if (!(Screen::get().colour(x + dx, y + dy) == BLACK))
                    return true;
            }
        }
        return false;
    };
    EXPECT_TRUE(wait_until([&] { return set_to("nil"); }));
    // The toolkit looks where the pointer is when the content below it changes.
    app->say("turn 90");
    EXPECT_TRUE(app->hears("rotator 0 at 90"));
    EXPECT_FALSE(set_to("wl_surface"));
    EXPECT_THAT(app->lines(), Not(Contains(testing::HasSubstr("pointer"))));

    Screen::get().input({"mousemove", "450", "300"});
    EXPECT_TRUE(app->hears("pointer at 99,450"));
    EXPECT_TRUE(wait_until([&] { return seen_at(450, 300); })) << app->errors();
    EXPECT_TRUE(wait_until([&] { return !seen_at(450, 300); }));
    EXPECT_TRUE(app->hears("pointer gone")) << "what it stood on is still pointed at";
    Screen::get().input({"mousemove", "480", "200"});
    EXPECT_TRUE(wait_until([&] { return seen_at(480, 200); }));
    EXPECT_EQ(quit(*app), 0);
}

TEST_F(WindowTest, ThePointerStaysForAsLongAsItIsMoved)
{
    auto app = start_and_show({{"WAYLAND_DEBUG", "client"}});
    int x = 300;
    const auto move = [&x] {
        x = 700 - x;
        Screen::get().input({"mousemove", std::to_string(x), "300"});
    };
    const std::regex seen("set_cursor\\([0-9]+, wl_surface");
    EXPECT_TRUE(wait_until([&] {
        move();
        return std::regex_search(app->errors(), seen);
    }));
    const size_t before = app->errors().size();
    // Longer than it would stay at rest.
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(3500);
    while (std::chrono::steady_clock::now() < end)
        move();
    app->say("sync");
    EXPECT_TRUE(app->hears("done sync"));
    EXPECT_THAT(app->errors().substr(before), Not(testing::ContainsRegex("set_cursor.*nil")));
    EXPECT_EQ(quit(*app), 0);
}

TEST_F(WindowTest, AnnouncesInputDevices)
{
    auto app = start_and_show();
    const auto added = [&] {
        return std::count(app->lines().begin(), app->lines().end(), "device added");
    };
    const auto devices = added();
    EXPECT_GT(devices, 0);
    // The first numbers of events are the toolkit's own, this signal's among them.
    app->signal(SIGUSR1);
    app->say("sync");
    EXPECT_TRUE(app->hears("done sync"));
    EXPECT_EQ(quit(*app), 0);
    EXPECT_EQ(added(), devices);
}

} // namespace
} // namespace desktop_test
