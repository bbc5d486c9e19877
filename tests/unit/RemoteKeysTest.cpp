#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "lines.h"
#include "platform.h"
#include "player/util/OstrelDemoUtil.h"
#include "set_keys.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

static_assert(std::is_same_v<std::underlying_type_t<ENDEMO_KEY_TYPE>, int>,
              "the numbers travel in events, as int");

using set_keys::PASSED_ON;

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

    fake::Platform &fake_;
    char place_ = 0;
};

// ---- InitVirtualKey ----

TEST_F(RemoteKeysTest, InitStartsTheServiceAndListensForDevices)
{
    COstrelDemoUtil::InitVirtualKey();

    EXPECT_THAT(fake_.all(), LinesAre("I \"\"", "VirtualKey_Initialize(0)",
                                      "ecore_event_handler_add(DEVICE_ADD, null)"));
}

TEST_F(RemoteKeysTest, AnAddedDeviceIsLoggedAndPassedOn)
{
    COstrelDemoUtil::InitVirtualKey();
    fake_.forget();

    EXPECT_THAT(fake_.loop.raise(fake::MainLoop::EVENT_DEVICE_ADD, nullptr), ElementsAre(true));

    EXPECT_EQ(ECORE_CALLBACK_PASS_ON, 1);
    EXPECT_THAT(fake_.all(), LinesAre("I \"\""));
}

// ---- KeyRouterInitialize ----

// What connecting to the router leaves, questions and all.
Lines connection_lines(bool display, bool router, const std::string &id)
{
    Lines lines = {"I \"\"", "ecore_wl2_connected_display_get(null)"};
    if (!display)
        return lines;
    for (const char *question : {"ecore_wl2_display_get(ecore-display#1)",
                                 "ecore_wl2_display_globals_get(ecore-display#1)",
                                 "ecore_wl2_display_registry_get(ecore-display#1)",
                                 "ecore_wl2_input_default_input_get(ecore-display#1)",
                                 "ecore_wl2_input_seat_get(input#1)"})
        lines.emplace_back(question);
    if (router)
        lines.emplace_back("I \"Found Keyrouter Object\"");
    lines.emplace_back("eina_iterator_free()");
    lines.push_back("KeyRouter_Initialize(display#1, registry#1, seat#1, " + id + ")");
    return lines;
}

TEST_F(RemoteKeysTest, TheConnectionGoesAsFarAsTheCompositorAllows)
{
    const std::tuple<bool, bool, std::string> cases[] = {
        {false, true, ""}, {false, false, ""}, {true, false, "0"}, {true, true, "23"}};
    for (const auto &[display, router, id] : cases) {
        fake_.keys.display_connected = display;
        fake_.keys.router_present = router;
        fake_.keys.router_global = 23;
        fake_.forget();

        COstrelDemoUtil::KeyRouterInitialize();

        EXPECT_EQ(fake_.all(), connection_lines(display, router, id));
        EXPECT_EQ(fake_.leftovers(), display ? Lines({"key router"}) : Lines())
            << "the iterator is to be freed";
    }
}

TEST_F(RemoteKeysTest, WithoutAListOfGlobalsTheRouterIsMissing)
{
    fake_.fail("ecore_wl2_display_globals_get");

    COstrelDemoUtil::KeyRouterInitialize();

    EXPECT_EQ(fake_.all(), connection_lines(true, false, "0"));
}

// ---- RegisterKeys ----

TEST_F(RemoteKeysTest, ANullSurfaceRegistersNothing)
{
    COstrelDemoUtil::RegisterKeys(nullptr);

    EXPECT_THAT(fake_.all(), LinesAre("W \"pWlSurface is null\""));
}

// Which of the removals fail, counted from 1; the list as a whole comes last.
enum { NO_FAILURE = 0, PANEL_KEY_FAILS = 29, LIST_FAILS = 30 };

class RegistrationTest : public RemoteKeysTest,
                         public testing::WithParamInterface<std::tuple<bool, int>> {};

TEST_P(RegistrationTest, AFailureIsLoggedAndTheRegistrationGoesOn)
{
    const auto [rotator, failing] = GetParam();
    fake_.rotator.supported = rotator;
    Lines expected = connection_lines(true, true, "7");
    expected.insert(expected.end(), {"KeyRouter_Reset_KeyList()", "KeyRouter_Add_All_Key(5)"});
    int number = 0;
    for (const std::string name : PASSED_ON) {
        expected.push_back("KeyRouter_Remove_Key(\"" + name + "\", 5)");
        if (++number == failing)
            expected.push_back("E \"remove Key " + name + " failed\"");
    }
    expected.emplace_back("display_rotator_get_status()");
    if (rotator) {
        expected.insert(expected.end(),
                        {"I \"current rotator status is 0\"", "I \"TV support rotation\""});
    } else {
        expected.insert(expected.end(), {"E \"TV does not support rotation\"",
                                         "KeyRouter_Remove_Key(\"XF86PanelEnter\", 5)"});
        if (failing == PANEL_KEY_FAILS)
            expected.emplace_back("E \"remove XF86PanelEnter Key failed\"");
    }
    expected.emplace_back("KeyRouter_Set_KeyList(surface#1)");
    if (failing == LIST_FAILS) {
        fake_.fail("KeyRouter_Set_KeyList", 0);
        expected.emplace_back("E \"Keyrouter set list not Success\"");
    } else if (failing != NO_FAILURE && !(rotator && failing == PANEL_KEY_FAILS)) {
        // Where there is a rotator, the panel key is not removed at all.
        fake_.fail("KeyRouter_Remove_Key", 0, failing);
    }

    COstrelDemoUtil::RegisterKeys(surface());

    EXPECT_EQ(fake_.all(), expected);
    const size_t grabbed = failing == LIST_FAILS ? 0U : 1U;
    for (size_t i = 0; i < std::size(PASSED_ON); ++i)
        EXPECT_EQ(fake_.keys.grabbed.count(PASSED_ON[i]), static_cast<int>(i) + 1 == failing)
            << PASSED_ON[i];
    EXPECT_EQ(fake_.keys.grabbed.count("XF86PanelEnter"),
              rotator || failing == PANEL_KEY_FAILS ? grabbed : 0U);
    EXPECT_EQ(fake_.keys.grabbed.count("Return"), grabbed);
}

INSTANTIATE_TEST_SUITE_P(Failures, RegistrationTest,
                         testing::Combine(testing::Bool(), testing::Range(0, LIST_FAILS + 1)));

TEST_F(RemoteKeysTest, EveryFailedRemovalIsLogged)
{
    fake_.script.fail_always("KeyRouter_Remove_Key", 0);

    COstrelDemoUtil::RegisterKeys(surface());

    Lines expected = connection_lines(true, true, "7");
    expected.insert(expected.end(), {"KeyRouter_Reset_KeyList()", "KeyRouter_Add_All_Key(5)"});
    for (const std::string name : PASSED_ON) {
        expected.push_back("KeyRouter_Remove_Key(\"" + name + "\", 5)");
        expected.push_back("E \"remove Key " + name + " failed\"");
    }
    expected.insert(expected.end(),
                    {"display_rotator_get_status()", "E \"TV does not support rotation\"",
                     "KeyRouter_Remove_Key(\"XF86PanelEnter\", 5)",
                     "E \"remove XF86PanelEnter Key failed\"", "KeyRouter_Set_KeyList(surface#1)"});
    EXPECT_EQ(fake_.all(), expected);
}

TEST_F(RemoteKeysTest, WithoutADisplayTheKeysAreRegisteredAllTheSame)
{
    fake_.keys.display_connected = false;

    COstrelDemoUtil::RegisterKeys(surface());

    EXPECT_THAT(fake_.of({"KeyRouter_Init", "KeyRouter_Reset", "KeyRouter_Add", "KeyRouter_Set"}),
                LinesAre("KeyRouter_Reset_KeyList()", "KeyRouter_Add_All_Key(5)",
                         "KeyRouter_Set_KeyList(surface#1)"));
    EXPECT_EQ(fake_.transcript.count("KeyRouter_Remove_Key"), 29);
}

TEST_F(RemoteKeysTest, EveryKeyOfThePlayerIsGrabbedForItAlone)
{
    fake_.rotator.supported = true;

    COstrelDemoUtil::RegisterKeys(surface());

    for (const set_keys::Key &key : set_keys::USED) {
        ASSERT_EQ(fake_.keys.grabbed.count(key.name), 1U) << key.name;
        EXPECT_EQ(fake_.keys.grabbed[key.name], 5) << key.name;
    }
    for (const std::string name : PASSED_ON)
        EXPECT_EQ(fake_.keys.grabbed.count(name), 0U) << name;
}

// ---- UnregisterKeys ----

TEST_F(RemoteKeysTest, UnregisteringReleasesEveryKeyWhateverTheRouterAnswers)
{
    for (const bool refused : {false, true}) {
        COstrelDemoUtil::RegisterKeys(surface());
        if (refused)
            fake_.fail("KeyRouter_UnSet_KeyList", 0);
        fake_.forget();

        COstrelDemoUtil::UnregisterKeys(surface());

        EXPECT_THAT(fake_.all(),
                    LinesAre("I \"\"", "VirtualKey_Finalize()", "KeyRouter_Reset_KeyList()",
                             "KeyRouter_Add_All_Key(0)", "KeyRouter_UnSet_KeyList(surface#1)",
                             "KeyRouter_Finalize()"));
        EXPECT_THAT(fake_.keys.grabbed, IsEmpty());
        EXPECT_THAT(fake_.leftovers(), IsEmpty());
    }
}

TEST_F(RemoteKeysTest, UnregisteringWithoutASurfaceOnlyEndsTheVirtualKeys)
{
    COstrelDemoUtil::UnregisterKeys(nullptr);

    EXPECT_THAT(fake_.all(), LinesAre("I \"\"", "VirtualKey_Finalize()"));
}

// ---- GetKeyType ----

class KeyTypeTest : public RemoteKeysTest, public testing::WithParamInterface<set_keys::Key> {};

TEST_P(KeyTypeTest, TheNameYieldsItsType)
{
    EXPECT_EQ(COstrelDemoUtil::GetKeyType(GetParam().name), GetParam().type);

    EXPECT_THAT(fake_.all(), LinesAre(std::string("I \"") + GetParam().name + "\""));
}

TEST_P(KeyTypeTest, TheComparisonIsExact)
{
    const std::string name = GetParam().name;
    std::string lower = name;
    for (char &character : lower)
        character = static_cast<char>(std::tolower(character));

    EXPECT_EQ(COstrelDemoUtil::GetKeyType(lower.c_str()), 17) << lower;
    EXPECT_EQ(COstrelDemoUtil::GetKeyType((name + " ").c_str()), 17);
    EXPECT_EQ(COstrelDemoUtil::GetKeyType(name.substr(1).c_str()), 17);
}

INSTANTIATE_TEST_SUITE_P(All, KeyTypeTest, testing::ValuesIn(set_keys::USED));

TEST_F(RemoteKeysTest, ThereAreNineteenKeyNames)
{
    EXPECT_EQ(std::size(set_keys::USED), 19U);
}

TEST_F(RemoteKeysTest, UnknownNamesYieldSeventeen)
{
    EXPECT_EQ(COstrelDemoUtil::GetKeyType(""), 17);
    EXPECT_EQ(COstrelDemoUtil::GetKeyType("a"), 17);
    EXPECT_EQ(COstrelDemoUtil::GetKeyType("XF86Unheard"), 17);
    for (const std::string name : PASSED_ON)
        EXPECT_EQ(COstrelDemoUtil::GetKeyType(name.c_str()), 17) << name;
}

TEST_F(RemoteKeysTest, ANullNameYieldsSeventeen)
{
    EXPECT_EQ(COstrelDemoUtil::GetKeyType(nullptr), 17);

    EXPECT_THAT(fake_.all(), LinesAre("I \"(null)\""));
}

TEST_F(RemoteKeysTest, NoNameYieldsEleven)
{
    for (const set_keys::Key &key : set_keys::USED)
        EXPECT_NE(COstrelDemoUtil::GetKeyType(key.name), 11) << key.name;
    for (const std::string name : PASSED_ON)
        EXPECT_NE(COstrelDemoUtil::GetKeyType(name.c_str()), 11) << name;
}

} // namespace
