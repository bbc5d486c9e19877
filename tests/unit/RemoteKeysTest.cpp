#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "lines.h"
#include "platform.h"
#include "player/util/OstrelDemoUtil.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

// The keys that the set keeps, in the order in which they are taken out of the list.
const std::vector<std::string> PASSED_ON = {"XF86PowerOff",
                                            "XF86AudioRaiseVolume",
                                            "XF86AudioLowerVolume",
                                            "XF86AudioMute",
                                            "XF86Home",
                                            "XF86Display",
                                            "XF86SysMenu",
                                            "XF86Exit",
                                            "XF86Ambient",
                                            "XF86PanelUp",
                                            "XF86PanelDown",
                                            "XF86PanelPlus",
                                            "XF86PanelMinus",
                                            "XF86Netflix",
                                            "XF86Amazon",
                                            "XF86WWW",
                                            "XF86LaunchApp1",
                                            "XF86LaunchApp2",
                                            "XF86KeyTVPlus",
                                            "XF86KeyRotatePanel",
                                            "XF86KeyAod",
                                            "XF86MultiView",
                                            "XF86KeyGlobo",
                                            "XF86KeyGraphicZoom",
                                            "XF86Disney",
                                            "XF86Tving",
                                            "XF86VirtualOption",
                                            "XF86AndroidMenu"};

using KeyPair = std::pair<const char *, int>;

constexpr KeyPair KEY_TYPES[] = {{"XF86Back", 0},
                                 {"Return", 1},
                                 {"XF86AudioPlay", 2},
                                 {"XF86AudioPause", 3},
                                 {"XF86AudioStop", 4},
                                 {"XF86PlayBack", 5},
                                 {"XF86PlayBackGame", 6},
                                 {"XF86AudioRewind", 7},
                                 {"XF86AudioNext", 8},
                                 {"Left", 9},
                                 {"Right", 10},
                                 {"XF86PreviousChapter", 9},
                                 {"XF86NextChapter", 10},
                                 {"XF86Color", 12},
                                 {"XF86More", 12},
                                 {"XF86PanelEnter", 13},
                                 {"XF86RaiseChannel", 14},
                                 {"XF86LowerChannel", 15},
                                 {"XF86ChannelGuide", 16}};

class RemoteKeysTest : public testing::Test {
  protected:
    RemoteKeysTest() : fake_(fake::reset())
    {
        fake_.registry.add(&place_, "surface", fake::Registry::Owner::Platform);
    }
    ~RemoteKeysTest() override
    {
        EXPECT_THAT(fake_.script.unused(), IsEmpty()) << "failures that never came about";
    }

    wl_surface *surface() { return reinterpret_cast<wl_surface *>(&place_); }

    static std::vector<std::string> removals(bool with_panel_enter)
    {
        std::vector<std::string> lines;
        for (const std::string &name : PASSED_ON)
            lines.push_back("KeyRouter_Remove_Key(\"" + name + "\", 5)");
        if (with_panel_enter)
            lines.push_back("KeyRouter_Remove_Key(\"XF86PanelEnter\", 5)");
        return lines;
    }

    fake::Platform &fake_;
    char place_ = 0;
};

// ---- InitVirtualKey ----

TEST_F(RemoteKeysTest, InitStartsTheServiceAndListensForDevices)
{
    COstrelDemoUtil::InitVirtualKey();

    EXPECT_THAT(fake_.lines(), LinesAre("I \"\"", "VirtualKey_Initialize(0)",
                                        "ecore_event_handler_add(DEVICE_ADD, null)"));
}

TEST_F(RemoteKeysTest, AnAddedDeviceIsLoggedAndPassedOn)
{
    COstrelDemoUtil::InitVirtualKey();
    fake_.forget();

    EXPECT_THAT(fake_.loop.raise(fake::MainLoop::EVENT_DEVICE_ADD, nullptr), ElementsAre(true));

    EXPECT_EQ(ECORE_CALLBACK_PASS_ON, 1);
    EXPECT_THAT(fake_.lines(), LinesAre("I \"\""));
}

// ---- KeyRouterInitialize ----

TEST_F(RemoteKeysTest, TheRouterIsFoundAmongTheGlobals)
{
    fake_.keys.router_global = 23;

    COstrelDemoUtil::KeyRouterInitialize();

    EXPECT_THAT(fake_.lines(), LinesAre("I \"\"", "I \"Found Keyrouter Object\"",
                                        "KeyRouter_Initialize(display#1, registry#1, seat#1, 23)"));
    EXPECT_THAT(fake_.of({"ecore_wl2_connected"}),
                LinesAre("ecore_wl2_connected_display_get(null)"));
    EXPECT_THAT(fake_.leftovers(), LinesAre("key router")) << "the iterator is to be freed";
}

TEST_F(RemoteKeysTest, AMissingRouterIsInitializedWithZero)
{
    fake_.keys.router_present = false;

    COstrelDemoUtil::KeyRouterInitialize();

    EXPECT_THAT(fake_.lines(),
                LinesAre("I \"\"", "KeyRouter_Initialize(display#1, registry#1, seat#1, 0)"));
    EXPECT_THAT(fake_.leftovers(), LinesAre("key router"));
}

TEST_F(RemoteKeysTest, WithoutADisplayNothingIsInitialized)
{
    fake_.keys.display_connected = false;

    COstrelDemoUtil::KeyRouterInitialize();

    EXPECT_THAT(fake_.lines(), LinesAre("I \"\""));
    EXPECT_THAT(fake_.leftovers(), IsEmpty());
}

// ---- RegisterKeys ----

TEST_F(RemoteKeysTest, ANullSurfaceRegistersNothing)
{
    COstrelDemoUtil::RegisterKeys(nullptr);

    EXPECT_THAT(fake_.lines(), LinesAre("W \"pWlSurface is null\""));
}

TEST_F(RemoteKeysTest, RegistrationTakesAllKeysButThoseOfTheSet)
{
    fake_.rotator.supported = true;

    COstrelDemoUtil::RegisterKeys(surface());

    std::vector<std::string> expected = {"KeyRouter_Initialize(display#1, registry#1, seat#1, 7)",
                                         "KeyRouter_Reset_KeyList()", "KeyRouter_Add_All_Key(5)"};
    const std::vector<std::string> removed = removals(false);
    expected.insert(expected.end(), removed.begin(), removed.end());
    expected.push_back("KeyRouter_Set_KeyList(surface#1)");
    EXPECT_EQ(fake_.calls(), expected);
}

TEST_F(RemoteKeysTest, ASetWithoutRotatorKeepsThePanelKey)
{
    COstrelDemoUtil::RegisterKeys(surface());

    EXPECT_EQ(fake_.of({"KeyRouter_Remove_Key"}), removals(true));
    EXPECT_EQ(fake_.keys.grabbed.count("XF86PanelEnter"), 0U);
}

TEST_F(RemoteKeysTest, OnARotatingSetThePanelKeyIsGrabbed)
{
    fake_.rotator.supported = true;

    COstrelDemoUtil::RegisterKeys(surface());

    EXPECT_EQ(fake_.keys.grabbed.count("XF86PanelEnter"), 1U);
}

TEST_F(RemoteKeysTest, EveryKeyOfThePlayerIsGrabbedForItAlone)
{
    fake_.rotator.supported = true;

    COstrelDemoUtil::RegisterKeys(surface());

    for (const KeyPair &key : KEY_TYPES) {
        ASSERT_EQ(fake_.keys.grabbed.count(key.first), 1U) << key.first;
        EXPECT_EQ(fake_.keys.grabbed[key.first], 5) << key.first;
    }
    for (const std::string &name : PASSED_ON)
        EXPECT_EQ(fake_.keys.grabbed.count(name), 0U) << name;
}

TEST_F(RemoteKeysTest, AKeyThatCannotBeRemovedDoesNotKeepTheOthers)
{
    fake_.rotator.supported = true;
    fake_.fail("KeyRouter_Remove_Key", 0, 5);

    COstrelDemoUtil::RegisterKeys(surface());

    EXPECT_EQ(fake_.of({"KeyRouter_Remove_Key"}), removals(false));
    EXPECT_THAT(fake_.logs(), testing::Contains("E \"remove Key XF86Home failed\""));
    EXPECT_EQ(fake_.keys.grabbed.count("XF86Display"), 0U);
}

TEST_F(RemoteKeysTest, EveryFailedRemovalIsLogged)
{
    fake_.script.fail_always("KeyRouter_Remove_Key", 0);

    COstrelDemoUtil::RegisterKeys(surface());

    std::vector<std::string> errors;
    for (const std::string &line : fake_.lines()) {
        if (line.rfind("E ", 0) == 0)
            errors.push_back(line);
    }
    ASSERT_EQ(errors.size(), 29U);
    for (size_t i = 0; i < PASSED_ON.size(); ++i)
        EXPECT_EQ(errors[i], "E \"remove Key " + PASSED_ON[i] + " failed\"");
    EXPECT_EQ(errors.back(), "E \"remove XF86PanelEnter Key failed\"");
    EXPECT_EQ(fake_.calls().back(), "KeyRouter_Set_KeyList(surface#1)");
}

TEST_F(RemoteKeysTest, ARefusedListIsLoggedAndNothingUndone)
{
    fake_.rotator.supported = true;
    fake_.fail("KeyRouter_Set_KeyList", 0);

    COstrelDemoUtil::RegisterKeys(surface());

    EXPECT_EQ(fake_.logs().back(), "E \"Keyrouter set list not Success\"");
    EXPECT_EQ(fake_.calls().back(), "KeyRouter_Set_KeyList(surface#1)");
}

// ---- UnregisterKeys ----

TEST_F(RemoteKeysTest, UnregisteringReleasesEveryKey)
{
    COstrelDemoUtil::RegisterKeys(surface());
    fake_.forget();

    COstrelDemoUtil::UnregisterKeys(surface());

    EXPECT_THAT(fake_.lines(),
                LinesAre("I \"\"", "VirtualKey_Finalize()", "KeyRouter_Reset_KeyList()",
                         "KeyRouter_Add_All_Key(0)", "KeyRouter_UnSet_KeyList(surface#1)",
                         "KeyRouter_Finalize()"));
    EXPECT_THAT(fake_.keys.grabbed, IsEmpty());
    EXPECT_THAT(fake_.leftovers(), IsEmpty());
}

TEST_F(RemoteKeysTest, UnregisteringWithoutASurfaceOnlyEndsTheVirtualKeys)
{
    COstrelDemoUtil::UnregisterKeys(nullptr);

    EXPECT_THAT(fake_.lines(), LinesAre("I \"\"", "VirtualKey_Finalize()"));
}

TEST_F(RemoteKeysTest, ARefusedReleaseStillDisconnects)
{
    fake_.fail("KeyRouter_UnSet_KeyList", 0);

    COstrelDemoUtil::UnregisterKeys(surface());

    EXPECT_THAT(fake_.logs(), LinesAre("I \"\""));
    EXPECT_EQ(fake_.calls().back(), "KeyRouter_Finalize()");
}

// ---- GetKeyType ----

class KeyTypeTest : public RemoteKeysTest, public testing::WithParamInterface<KeyPair> {};

TEST_P(KeyTypeTest, TheNameYieldsItsType)
{
    EXPECT_EQ(COstrelDemoUtil::GetKeyType(GetParam().first), GetParam().second);

    EXPECT_THAT(fake_.lines(), LinesAre(std::string("I \"") + GetParam().first + "\""));
}

TEST_P(KeyTypeTest, TheComparisonIsExact)
{
    const std::string name = GetParam().first;
    std::string lower = name;
    for (char &character : lower)
        character = static_cast<char>(std::tolower(character));

    EXPECT_EQ(COstrelDemoUtil::GetKeyType(lower.c_str()), 17);
    EXPECT_EQ(COstrelDemoUtil::GetKeyType((name + " ").c_str()), 17);
    EXPECT_EQ(COstrelDemoUtil::GetKeyType(name.substr(1).c_str()), 17);
}

INSTANTIATE_TEST_SUITE_P(All, KeyTypeTest, testing::ValuesIn(KEY_TYPES));

TEST_F(RemoteKeysTest, ThereAreNineteenKeyNames)
{
    EXPECT_EQ(std::size(KEY_TYPES), 19U);
}

TEST_F(RemoteKeysTest, UnknownNamesYieldSeventeen)
{
    EXPECT_EQ(COstrelDemoUtil::GetKeyType(""), 17);
    EXPECT_EQ(COstrelDemoUtil::GetKeyType("a"), 17);
    EXPECT_EQ(COstrelDemoUtil::GetKeyType("XF86Unheard"), 17);
    for (const std::string &name : PASSED_ON)
        EXPECT_EQ(COstrelDemoUtil::GetKeyType(name.c_str()), 17) << name;
}

TEST_F(RemoteKeysTest, ANullNameYieldsSeventeen)
{
    EXPECT_EQ(COstrelDemoUtil::GetKeyType(nullptr), 17);

    ASSERT_EQ(fake_.logs().size(), 1U);
    EXPECT_EQ(fake_.logs()[0].rfind("I ", 0), 0U);
}

TEST_F(RemoteKeysTest, NoNameYieldsEleven)
{
    for (const KeyPair &key : KEY_TYPES)
        EXPECT_NE(COstrelDemoUtil::GetKeyType(key.first), 11) << key.first;
    for (const std::string &name : PASSED_ON)
        EXPECT_NE(COstrelDemoUtil::GetKeyType(name.c_str()), 11) << name;
}

} // namespace
