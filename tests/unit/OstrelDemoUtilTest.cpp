#include "player/util/OstrelDemoUtil.h"

#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "lines.h"
#include "platform.h"

using testing::ElementsAre;
using testing::HasSubstr;
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
    EXPECT_THAT(fake_.lines(), IsEmpty());
}

TEST_F(OstrelDemoUtilTest, GetConfigIntOfAMissingKeyLeavesThePresetValue)
{
    int value = -7;

    EXPECT_FALSE(COstrelDemoUtil::GetConfigInt("db/no/key", value));

    EXPECT_EQ(value, -7);
    EXPECT_THAT(fake_.lines(), LinesAre("E \"GetConfigInt key [db/no/key] faild\""));
}

TEST_F(OstrelDemoUtilTest, SetConfigIntWritesTheKeySilently)
{
    EXPECT_TRUE(COstrelDemoUtil::SetConfigInt("memory/some/key", 3));

    EXPECT_EQ(fake_.store.get("memory/some/key"), 3);
    EXPECT_THAT(fake_.lines(), LinesAre("vconf_set_int(\"memory/some/key\", 3)"));
}

TEST_F(OstrelDemoUtilTest, SetConfigIntTellsAFailure)
{
    fake_.fail("vconf_set_int");

    EXPECT_FALSE(COstrelDemoUtil::SetConfigInt("memory/some/key", 3));

    EXPECT_THAT(fake_.logs(), LinesAre("E \"SetConfigInt key memory/some/key,fail\""));
}

// ---- bShowDisclaimer ----

TEST_F(OstrelDemoUtilTest, TheDisclaimerFollowsTheProductFeature)
{
    fake_.system.has_disclaimer = true;

    EXPECT_TRUE(COstrelDemoUtil::bShowDisclaimer());

    EXPECT_THAT(fake_.of({"system_info"}),
                LinesAre("system_info_get_custom_bool(\"com.norvane/featureconf/"
                         "ostrel_demo_player.show_disclaimer\")"));
    EXPECT_THAT(fake_.logs(), LinesAre("I \"bShowDisclaimer = 1\""));
}

TEST_F(OstrelDemoUtilTest, NoDisclaimerWithoutTheFeature)
{
    EXPECT_FALSE(COstrelDemoUtil::bShowDisclaimer());

    EXPECT_THAT(fake_.logs(), LinesAre("I \"bShowDisclaimer = 0\""));
}

TEST_F(OstrelDemoUtilTest, AnUnreadableFeatureMeansNoDisclaimer)
{
    fake_.system.has_disclaimer = true;
    fake_.fail("system_info_get_custom_bool");

    EXPECT_FALSE(COstrelDemoUtil::bShowDisclaimer());

    EXPECT_THAT(fake_.logs(), LinesAre("E \"get video_player.controller_ui.auto_show fail\"",
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

    EXPECT_THAT(fake_.of({"system_info"}), LinesAre("system_info_get_value_int(713)"));
    EXPECT_THAT(fake_.logs(),
                ElementsAre(testing::AllOf(testing::StartsWith("W \""),
                                           HasSubstr("[" + std::to_string(GetParam()) + "]"))));
}

INSTANTIATE_TEST_SUITE_P(Values, DirectBacklightTest, testing::Values(-1, 0, 1, 2, 713));

TEST_F(OstrelDemoUtilTest, AnUnreadableStoreContentTypeIsNoDirectBacklight)
{
    fake_.system.store_content_type = 1;
    fake_.fail("system_info_get_value_int");

    EXPECT_FALSE(COstrelDemoUtil::isDirectBacklightModel());

    EXPECT_THAT(fake_.logs(), IsEmpty());
}

// ---- IsRTLOrientation ----

TEST_F(OstrelDemoUtilTest, OrientationOneIsRightToLeft)
{
    fake_.system.ui_orientation = 1;

    EXPECT_TRUE(COstrelDemoUtil::IsRTLOrientation());

    EXPECT_THAT(fake_.logs(), LinesAre("I \"RTL_UI_ORIENTATION\""));
}

TEST_F(OstrelDemoUtilTest, EveryOtherOrientationIsLeftToRight)
{
    for (const int orientation : {0, 2, -1, 255}) {
        fake_.system.ui_orientation = orientation;
        EXPECT_FALSE(COstrelDemoUtil::IsRTLOrientation()) << orientation;
    }
    EXPECT_THAT(fake_.logs(), IsEmpty());
}

// ---- SetBlockEPOP ----

TEST_F(OstrelDemoUtilTest, BlockingPopUps)
{
    EXPECT_TRUE(COstrelDemoUtil::SetBlockEPOP(true));

    EXPECT_THAT(fake_.lines(),
                LinesAre("I \"Block E-POP = 1 \"", "app_context_manager_set_epop_block()"));
}

TEST_F(OstrelDemoUtilTest, ReleasingPopUps)
{
    EXPECT_TRUE(COstrelDemoUtil::SetBlockEPOP(false));

    EXPECT_THAT(fake_.lines(),
                LinesAre("I \"Block E-POP = 0 \"", "app_context_manager_unset_epop_block()"));
}

TEST_F(OstrelDemoUtilTest, ARefusedBlockIsTold)
{
    fake_.fail("app_context_manager_set_epop_block");

    EXPECT_FALSE(COstrelDemoUtil::SetBlockEPOP(true));

    EXPECT_THAT(fake_.lines(),
                LinesAre("I \"Block E-POP = 1 \"", "app_context_manager_set_epop_block()",
                         "E \"app_context_manager_set_epop_block falied\""));
}

TEST_F(OstrelDemoUtilTest, ARefusedReleaseIsToldAndTheNextMaySucceed)
{
    fake_.fail("app_context_manager_unset_epop_block", 5);

    EXPECT_FALSE(COstrelDemoUtil::SetBlockEPOP(false));
    EXPECT_TRUE(COstrelDemoUtil::SetBlockEPOP(false));

    EXPECT_THAT(fake_.logs(), LinesAre("I \"Block E-POP = 0 \"",
                                       "E \"app_context_manager_unset_epop_block falied\"",
                                       "I \"Block E-POP = 0 \""));
}

// ---- DisableMenuItem ----

TEST_F(OstrelDemoUtilTest, SevenMenuItemsAreBlockedInTheirOrder)
{
    COstrelDemoUtil::DisableMenuItem(true);

    EXPECT_THAT(fake_.lines(),
                LinesAre("D \"1\"",
                         "SettingsAPI::DisableItemsByList(\"broadcasting picturesize pip "
                         "game-mode delete-contents-list tools-demo-update "
                         "tools-picture-demo\", \"org.tizen.ostrel-demo-player-tv\")"));
}

TEST_F(OstrelDemoUtilTest, MenuItemsAreReleasedByApplicationOnly)
{
    COstrelDemoUtil::DisableMenuItem(false);

    EXPECT_THAT(fake_.lines(), LinesAre("D \"0\"", "SettingsAPI::RemoveDisabledItemsByAppname("
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

    EXPECT_THAT(fake_.lines(), LinesAre(std::string("I \"strResult: ") + entry.result + "\""));
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
        // Slot texts are expanded in turn, and one that names itself does not go on for ever.
        Combination{"<<A>>", "<<B>>", "y", "y"}, Combination{"<<A>>", " <<B>>", "y", " y"},
        Combination{"<<A>><<B>>", "", "y", "y"}, Combination{"<<A>>", "<<A>>", "y", "<<A>>"}));

// ---- GetDefaultPath, CheckPathExist ----

TEST_F(OstrelDemoUtilTest, TheBuiltInFolderEndsInASlash)
{
    fake_.storage.add_folder("/opt/data/demo_movie");

    EXPECT_EQ(COstrelDemoUtil::GetDefaultPath(), "/opt/data/demo_movie/");

    EXPECT_THAT(fake_.logs(), IsEmpty());
    EXPECT_THAT(fake_.leftovers(), IsEmpty()) << "the folder is to be closed again";
}

TEST_F(OstrelDemoUtilTest, AMissingBuiltInFolderYieldsNoPath)
{
    EXPECT_EQ(COstrelDemoUtil::GetDefaultPath(), "");
    EXPECT_THAT(fake_.logs(), IsEmpty());
}

TEST_F(OstrelDemoUtilTest, APlainFileIsNoBuiltInFolder)
{
    fake_.storage.add_file("/opt/data/demo_movie");

    EXPECT_EQ(COstrelDemoUtil::GetDefaultPath(), "");
}

TEST_F(OstrelDemoUtilTest, AFolderExists)
{
    fake_.storage.add_folder("/media/usb/demo");

    EXPECT_TRUE(COstrelDemoUtil::CheckPathExist("/media/usb/demo/"));

    EXPECT_THAT(fake_.logs(), LinesAre("I \"\""));
}

TEST_F(OstrelDemoUtilTest, ARegularFileIsNoExistingPath)
{
    fake_.storage.add_file("/media/usb/demo");

    EXPECT_FALSE(COstrelDemoUtil::CheckPathExist("/media/usb/demo"));
}

TEST_F(OstrelDemoUtilTest, AMissingPathDoesNotExist)
{
    EXPECT_FALSE(COstrelDemoUtil::CheckPathExist("/media/usb/demo"));
    EXPECT_FALSE(COstrelDemoUtil::CheckPathExist(""));
}

// ---- ExitApplication ----

TEST_F(OstrelDemoUtilTest, ExitAsksTheFrameworkAndLeavesAnErrorLine)
{
    COstrelDemoUtil::ExitApplication();

    EXPECT_THAT(fake_.lines(), LinesAre("E \"\"", "ui_app_exit()"));
}

} // namespace
