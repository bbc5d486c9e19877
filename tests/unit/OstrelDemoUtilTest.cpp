#include "player/util/OstrelDemoUtil.h"

#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "lines.h"
#include "platform.h"

using testing::IsEmpty;

namespace {

class OstrelDemoUtilTest : public testing::Test {
  protected:
    OstrelDemoUtilTest() : fake_(fake::reset()) {}
    ~OstrelDemoUtilTest() override
    {
        EXPECT_THAT(fake_.script.unused(), IsEmpty()) << "failures that never came about";
    }

    fake::Platform &fake_;
};

// ---- GetConfigInt, SetConfigInt ----

TEST_F(OstrelDemoUtilTest, GetConfigIntReadsTheKeySilently)
{
    fake_.store.values["db/some/key"] = 42;
    int value = -1;

    EXPECT_TRUE(COstrelDemoUtil::GetConfigInt("db/some/key", value));

    EXPECT_EQ(value, 42);
    EXPECT_THAT(fake_.all(), LinesAre("vconf_get_int(\"db/some/key\")"));
}

TEST_F(OstrelDemoUtilTest, GetConfigIntOfAMissingKeyLeavesThePresetValue)
{
    int value = -7;

    EXPECT_FALSE(COstrelDemoUtil::GetConfigInt("db/no/key", value));

    EXPECT_EQ(value, -7);
    EXPECT_THAT(fake_.all(), LinesAre("vconf_get_int(\"db/no/key\")",
                                      "E \"GetConfigInt key [db/no/key] faild\""));
}

TEST_F(OstrelDemoUtilTest, SetConfigIntWritesTheKeySilently)
{
    EXPECT_TRUE(COstrelDemoUtil::SetConfigInt("memory/some/key", 3));

    EXPECT_EQ(fake_.store.get("memory/some/key"), 3);
    EXPECT_THAT(fake_.all(), LinesAre("vconf_set_int(\"memory/some/key\", 3)"));
}

TEST_F(OstrelDemoUtilTest, SetConfigIntTellsAFailure)
{
    fake_.fail("vconf_set_int");

    EXPECT_FALSE(COstrelDemoUtil::SetConfigInt("memory/some/key", 3));

    EXPECT_THAT(fake_.all(), LinesAre("vconf_set_int(\"memory/some/key\", 3)",
                                      "E \"SetConfigInt key memory/some/key,fail\""));
}

// ---- bShowDisclaimer ----

constexpr char DISCLAIMER_QUERY[] = "system_info_get_custom_bool(\"com.norvane/featureconf/"
                                    "ostrel_demo_player.show_disclaimer\")";

TEST_F(OstrelDemoUtilTest, TheDisclaimerFollowsTheProductFeature)
{
    for (const bool has_it : {true, false}) {
        fake_.system.has_disclaimer = has_it;
        fake_.forget();

        EXPECT_EQ(COstrelDemoUtil::bShowDisclaimer(), has_it);

        EXPECT_THAT(fake_.all(), LinesAre(DISCLAIMER_QUERY, has_it ? "I \"bShowDisclaimer = 1\""
                                                                   : "I \"bShowDisclaimer = 0\""));
    }
}

TEST_F(OstrelDemoUtilTest, AnUnreadableFeatureMeansNoDisclaimer)
{
    fake_.system.has_disclaimer = true;
    fake_.fail("system_info_get_custom_bool");

    EXPECT_FALSE(COstrelDemoUtil::bShowDisclaimer());

    EXPECT_THAT(fake_.all(),
                LinesAre(DISCLAIMER_QUERY, "E \"get video_player.controller_ui.auto_show fail\"",
                         "I \"bShowDisclaimer = 0\""));
}

TEST_F(OstrelDemoUtilTest, TheDisclaimerFeatureIsAskedAfreshEachTime)
{
    EXPECT_FALSE(COstrelDemoUtil::bShowDisclaimer());
    fake_.system.has_disclaimer = true;
    EXPECT_TRUE(COstrelDemoUtil::bShowDisclaimer());
}

// ---- isDirectBacklightModel ----

class DirectBacklightTest : public OstrelDemoUtilTest, public testing::WithParamInterface<int> {};

TEST_P(DirectBacklightTest, OnlyTheValueOneMeansDirectBacklight)
{
    fake_.system.store_content_type = GetParam();

    EXPECT_EQ(COstrelDemoUtil::isDirectBacklightModel(), GetParam() == 1);

    EXPECT_THAT(fake_.all(), LinesAre("system_info_get_value_int(713)",
                                      "W \"SYSTEM_INFO_KEY_STORE_CONTENT_TYPE [" +
                                          std::to_string(GetParam()) + "]\""));
}

INSTANTIATE_TEST_SUITE_P(Values, DirectBacklightTest, testing::Values(-1, 0, 1, 2, 713));

TEST_F(OstrelDemoUtilTest, AnUnreadableStoreContentTypeIsNoDirectBacklight)
{
    fake_.system.store_content_type = 1;
    fake_.fail("system_info_get_value_int");

    EXPECT_FALSE(COstrelDemoUtil::isDirectBacklightModel());

    EXPECT_THAT(fake_.all(), LinesAre("system_info_get_value_int(713)"));
}

// ---- IsRTLOrientation ----

TEST_F(OstrelDemoUtilTest, OrientationOneIsRightToLeft)
{
    fake_.system.ui_orientation = 1;

    EXPECT_TRUE(COstrelDemoUtil::IsRTLOrientation());

    EXPECT_THAT(fake_.all(), LinesAre("ua_UI_orientation_get()", "I \"RTL_UI_ORIENTATION\""));
}

TEST_F(OstrelDemoUtilTest, EveryOtherOrientationIsLeftToRight)
{
    for (const int orientation : {0, 2, -1, 255}) {
        fake_.system.ui_orientation = orientation;
        fake_.forget();
        EXPECT_FALSE(COstrelDemoUtil::IsRTLOrientation()) << orientation;
        EXPECT_THAT(fake_.all(), LinesAre("ua_UI_orientation_get()"));
    }
}

// ---- SetBlockEPOP ----

TEST_F(OstrelDemoUtilTest, BlockingPopUps)
{
    EXPECT_TRUE(COstrelDemoUtil::SetBlockEPOP(true));

    EXPECT_THAT(fake_.all(),
                LinesAre("I \"Block E-POP = 1 \"", "app_context_manager_set_epop_block()"));
}

TEST_F(OstrelDemoUtilTest, ReleasingPopUps)
{
    EXPECT_TRUE(COstrelDemoUtil::SetBlockEPOP(false));

    EXPECT_THAT(fake_.all(),
                LinesAre("I \"Block E-POP = 0 \"", "app_context_manager_unset_epop_block()"));
}

TEST_F(OstrelDemoUtilTest, ARefusedBlockIsTold)
{
    fake_.fail("app_context_manager_set_epop_block");

    EXPECT_FALSE(COstrelDemoUtil::SetBlockEPOP(true));

    EXPECT_THAT(fake_.all(),
                LinesAre("I \"Block E-POP = 1 \"", "app_context_manager_set_epop_block()",
                         "E \"app_context_manager_set_epop_block falied\""));
}

TEST_F(OstrelDemoUtilTest, ARefusedReleaseIsToldAndTheNextMaySucceed)
{
    fake_.fail("app_context_manager_unset_epop_block", 5);

    EXPECT_FALSE(COstrelDemoUtil::SetBlockEPOP(false));
    EXPECT_TRUE(COstrelDemoUtil::SetBlockEPOP(false));

    EXPECT_THAT(fake_.all(),
                LinesAre("I \"Block E-POP = 0 \"", "app_context_manager_unset_epop_block()",
                         "E \"app_context_manager_unset_epop_block falied\"",
                         "I \"Block E-POP = 0 \"", "app_context_manager_unset_epop_block()"));
}

// ---- DisableMenuItem ----

TEST_F(OstrelDemoUtilTest, SevenMenuItemsAreBlockedInTheirOrder)
{
    COstrelDemoUtil::DisableMenuItem(true);

    EXPECT_THAT(fake_.all(),
                LinesAre("D \"1\"", "SettingsAPI::Get()",
                         "SettingsAPI::DisableItemsByList(\"broadcasting picturesize pip "
                         "game-mode delete-contents-list tools-demo-update "
                         "tools-picture-demo\", \"org.tizen.ostrel-demo-player-tv\")"));
}

TEST_F(OstrelDemoUtilTest, MenuItemsAreReleasedByApplicationOnly)
{
    COstrelDemoUtil::DisableMenuItem(false);

    EXPECT_THAT(fake_.all(), LinesAre("D \"0\"", "SettingsAPI::Get()",
                                      "SettingsAPI::RemoveDisabledItemsByAppname("
                                      "\"org.tizen.ostrel-demo-player-tv\")"));
}

// ---- CombinateString ----

struct Combination {
    const char *format;
    const char *first;
    const char *second;
    const char *result;
};

class CombinateStringTest : public OstrelDemoUtilTest,
                            public testing::WithParamInterface<Combination> {};

TEST_P(CombinateStringTest, FillsTheSlots)
{
    const Combination &entry = GetParam();

    EXPECT_EQ(COstrelDemoUtil::CombinateString(entry.format, entry.first, entry.second),
              entry.result);

    EXPECT_THAT(fake_.all(), LinesAre(std::string("I \"strResult: ") + entry.result + "\""));
}

INSTANTIATE_TEST_SUITE_P(
    Formats, CombinateStringTest,
    testing::Values(
        Combination{"<<A>> of <<B>>", "3", "10", "3 of 10"},
        Combination{"<<B>> <<A>>", "x", "y", "y x"}, Combination{"plain", "x", "y", "plain"},
        Combination{"", "x", "y", ""}, Combination{"<<A>><<A>>", "x", "y", "xx"},
        Combination{"a<<A>>b", "", "y", "ab"},
        // Letters without a slot.
        Combination{"<<C>> <<A>>", "x", "y", "<<C>> x"}, Combination{"<<Z>>", "x", "y", "<<Z>>"},
        Combination{"<<a>>", "x", "y", "<<a>>"}, Combination{"<<@>>", "x", "y", "<<@>>"},
        Combination{"<<1>>", "x", "y", "<<1>>"},
        // Tokens that are none.
        Combination{"<<A>", "x", "y", "<<A>"}, Combination{"<<A", "x", "y", "<<A"},
        Combination{"<<", "x", "y", "<<"}, Combination{"<< A>>", "x", "y", "<< A>>"},
        Combination{"<<A >>", "x", "y", "<<A >>"}, Combination{"<A>", "x", "y", "<A>"},
        Combination{"<<>>", "x", "y", "<<>>"}, Combination{"<<AB>>", "x", "y", "<<AB>>"},
        // A token right behind another mark.
        Combination{"<<<A>>>", "x", "y", "<x>"},
        // Slot texts are expanded in turn.
        Combination{"<<A>>", "<<B>>", "y", "y"}, Combination{"<<A>>", " <<B>>", "y", " y"},
        Combination{"<<A>> <<B>>", "<<B>>", "y", "y y"},
        // Behind a text that begins with no mark the search goes on one character later.
        Combination{"<<A>><<B>>", "", "y", "<<B>>"}, Combination{"<<A>><<B>>", "x", "y", "xy"},
        Combination{"<<A>><B>>", "<", "y", "<<B>>"},
        // A text that names itself does not go on for ever.
        Combination{"<<A>>", "<<A>>", "y", "<<A>>"}));

std::string repeated(const std::string &text, int times)
{
    std::string result;
    for (int i = 0; i < times; ++i)
        result += text;
    return result;
}

// However many slots a format has: only what the slots' own texts bring along is bounded.
TEST_F(OstrelDemoUtilTest, AFormatOfManySlotsIsExpandedWhole)
{
    EXPECT_EQ(COstrelDemoUtil::CombinateString(repeated("<<A>>", 300), "x", "y"),
              repeated("x", 300));
    EXPECT_EQ(COstrelDemoUtil::CombinateString(repeated("<<A>> ", 300), "-<<B>>", "y"),
              repeated("-y ", 300));
}

TEST_F(OstrelDemoUtilTest, ATextThatGrowsFromItselfComesToAnEnd)
{
    EXPECT_THAT(COstrelDemoUtil::CombinateString("<<A>>", "x<<A>>", "y"),
                testing::MatchesRegex("x+<<A>>"));
    EXPECT_THAT(COstrelDemoUtil::CombinateString("<<A>>", "<<B>>x", "<<A>>y"),
                testing::MatchesRegex("<<[AB]>>[xy]+"));
    EXPECT_EQ(COstrelDemoUtil::CombinateString("<<A>> <<B>>", "<<A>>", "y"), "<<A>> y");
}

// ---- GetDefaultPath, CheckPathExist ----

TEST_F(OstrelDemoUtilTest, TheBuiltInFolderEndsInASlash)
{
    fake_.storage.add_folder("/opt/data/demo_movie");

    EXPECT_EQ(COstrelDemoUtil::GetDefaultPath(), "/opt/data/demo_movie/");

    EXPECT_THAT(fake_.all(), LinesAre("opendir(\"/opt/data/demo_movie/\")", "closedir()"));
    EXPECT_THAT(fake_.leftovers(), IsEmpty()) << "the folder is to be closed again";
}

TEST_F(OstrelDemoUtilTest, AMissingBuiltInFolderYieldsNoPath)
{
    EXPECT_EQ(COstrelDemoUtil::GetDefaultPath(), "");
    EXPECT_THAT(fake_.all(), LinesAre("opendir(\"/opt/data/demo_movie/\")"));
}

TEST_F(OstrelDemoUtilTest, APlainFileIsNoBuiltInFolder)
{
    fake_.storage.add_file("/opt/data/demo_movie");

    EXPECT_EQ(COstrelDemoUtil::GetDefaultPath(), "");
    EXPECT_THAT(fake_.all(), LinesAre("opendir(\"/opt/data/demo_movie/\")"));
}

TEST_F(OstrelDemoUtilTest, OnlyAFolderExists)
{
    fake_.storage.add_folder("/media/usb/folder");
    fake_.storage.add_file("/media/usb/file");
    const std::pair<const char *, bool> paths[] = {
        {"/media/usb/folder/", true}, {"/media/usb/file", false}, {"/media/usb/none", false}};
    for (const auto &[path, exists] : paths) {
        fake_.forget();

        EXPECT_EQ(COstrelDemoUtil::CheckPathExist(path), exists) << path;

        EXPECT_THAT(fake_.all(), LinesAre("I \"\"", std::string("stat(\"") + path + "\")"));
    }
}

TEST_F(OstrelDemoUtilTest, NoNameIsNoPath)
{
    EXPECT_FALSE(COstrelDemoUtil::CheckPathExist(""));
}

// ---- ExitApplication ----

TEST_F(OstrelDemoUtilTest, ExitAsksTheFrameworkAndLeavesAnErrorLine)
{
    COstrelDemoUtil::ExitApplication();

    EXPECT_THAT(fake_.all(), LinesAre("E \"\"", "ui_app_exit()"));
}

} // namespace
