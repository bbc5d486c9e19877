// Keys on their way from the keyboard to the application.

#include <utility>

#include <gmock/gmock.h>

#include "desktop_support/desktop.h"

namespace desktop_test {
namespace {

using testing::HasSubstr;
using testing::Not;

using TypedKeysTest = DesktopTest;

TEST_F(TypedKeysTest, InjectedKeysKeepTheirName)
{
    auto app = start_and_show();
    for (const char *name : {"XF86RaiseChannel", "XF86PanelEnter", "space"}) {
        app->say(std::string("press ") + name);
        EXPECT_TRUE(app->hears(std::string("key ") + name + " " + name));
    }
    EXPECT_EQ(quit(*app), 0);
}

TEST_F(TypedKeysTest, ThePanelKeyThatAProgramSendsTurnsThePanelThereAndBack)
{
    auto app = start_and_show();
    app->say("panel-key");
    EXPECT_TRUE(app->hears("sent 0"));
    EXPECT_TRUE(app->hears("rotation angle 90 screen 0,0 400x640"));
    EXPECT_TRUE(app->hears("rotator 0 at 90"));
    app->say("panel-key");
    EXPECT_TRUE(app->hears("rotation angle 0 screen 0,0 640x400"));
    EXPECT_EQ(quit(*app), 0);
}

TEST_F(TypedKeysTest, ConfiguredKeysGoBeforeTheTable)
{
    write_settings("[keys]\nF5 = XF86ChannelGuide\nEscape = XF86Exit\n");
    auto app = start_and_show();
    ASSERT_TRUE(gets_keyboard(*app));
    Screen::get().input({"key", "F5"});
    EXPECT_TRUE(app->hears("key XF86ChannelGuide XF86ChannelGuide"));
    Screen::get().input({"key", "Escape"});
    EXPECT_TRUE(app->hears("key XF86Exit XF86Exit"));
    EXPECT_EQ(quit(*app), 0);
}

TEST_F(TypedKeysTest, ConfiguredKeyThatTheSetDoesNotHaveIsWarnedOf)
{
    write_settings("[keys]\nF9 = XF86Bak\nF10 = XF86Back\n");
    auto app = start_and_show();
    EXPECT_EQ(quit(*app), 0);
    EXPECT_THAT(app->errors(), HasSubstr("[keys] F9 in tv.conf: the set has no key \"XF86Bak\"\n"));
    EXPECT_THAT(app->errors(), Not(HasSubstr("F10")));
}

TEST_F(TypedKeysTest, EveryKeyOfThePlayerCanBeTyped)
{
    const std::pair<const char *, const char *> keys[] = {
        {"Escape", "XF86Back"},
        {"Return", "Return"},
        {"p", "XF86AudioPlay"},
        {"h", "XF86AudioPause"},
        {"s", "XF86AudioStop"},
        {"space", "XF86PlayBack"},
        {"o", "XF86PlayBackGame"},
        {"r", "XF86AudioRewind"},
        {"f", "XF86AudioNext"},
        {"b", "XF86PreviousChapter"},
        {"n", "XF86NextChapter"},
        {"Left", "Left"},
        {"Right", "Right"},
        {"a", "XF86Color"},
        {"m", "XF86More"},
        {"t", "XF86PanelEnter"},
        {"Prior", "XF86RaiseChannel"},
        {"Next", "XF86LowerChannel"},
        {"g", "XF86ChannelGuide"},
    };
    auto app = start_and_show();
    ASSERT_TRUE(gets_keyboard(*app));
    for (const auto &[typed, name] : keys) {
        Screen::get().input({"key", typed});
        EXPECT_TRUE(app->hears(std::string("key ") + name + " " + name)) << typed;
    }
    EXPECT_EQ(quit(*app), 0);
}

} // namespace
} // namespace desktop_test
