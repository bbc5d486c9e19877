#include <string>
#include <utility>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "lines.h"
#include "platform.h"
#include "player/util/OstrelDemoUtil.h"

namespace {

class RotationTest : public testing::Test {
  protected:
    RotationTest() : fake_(fake::reset()) { set_type(0); }

    void set_type(int type)
    {
        COstrelDemoUtil::SetWindowRotationType(static_cast<ENDEMO_ROTATION_TYPE>(type));
        fake_.forget();
    }

    int type()
    {
        const int current = COstrelDemoUtil::GetWindowRotationType();
        return current;
    }

    fake::Platform &fake_;
};

// ---- IsSupportRotator ----

TEST_F(RotationTest, ASetWithoutRotatorSaysSo)
{
    EXPECT_FALSE(COstrelDemoUtil::IsSupportRotator());

    EXPECT_THAT(fake_.logs(), LinesAre("E \"TV does not support rotation\""));
}

TEST_F(RotationTest, AnIdleRotatorIsSupported)
{
    fake_.rotator.supported = true;

    EXPECT_TRUE(COstrelDemoUtil::IsSupportRotator());

    EXPECT_THAT(fake_.logs(),
                LinesAre("I \"current rotator status is 0\"", "I \"TV support rotation\""));
}

TEST_F(RotationTest, ATurningRotatorIsSupported)
{
    fake_.rotator.supported = true;
    fake_.rotator.status = 2;

    EXPECT_TRUE(COstrelDemoUtil::IsSupportRotator());

    EXPECT_THAT(fake_.logs(),
                LinesAre("I \"current rotator status is 2\"", "I \"TV support rotation\""));
}

TEST_F(RotationTest, ANegativeStatusIsNoRotator)
{
    fake_.rotator.supported = true;
    fake_.rotator.status = -2;

    EXPECT_FALSE(COstrelDemoUtil::IsSupportRotator());

    EXPECT_THAT(fake_.logs(), LinesAre("I \"current rotator status is -2\""));
}

TEST_F(RotationTest, TheRotatorIsAskedAfreshEachTime)
{
    EXPECT_FALSE(COstrelDemoUtil::IsSupportRotator());
    fake_.rotator.supported = true;
    EXPECT_TRUE(COstrelDemoUtil::IsSupportRotator());
    EXPECT_EQ(fake_.transcript.count("display_rotator_get_status"), 2);
}

// ---- IsPortraitMode ----

TEST_F(RotationTest, NinetyAndTwoHundredSeventyDegreesArePortrait)
{
    for (const int portrait : {1, 3}) {
        set_type(portrait);
        EXPECT_TRUE(COstrelDemoUtil::IsPortraitMode()) << portrait;
        EXPECT_THAT(fake_.logs(), LinesAre("I \"In Portrait Mode\""));
    }
}

TEST_F(RotationTest, LandscapeIsToldAtErrorLevel)
{
    for (const int landscape : {0, 2}) {
        set_type(landscape);
        EXPECT_FALSE(COstrelDemoUtil::IsPortraitMode()) << landscape;
        EXPECT_THAT(fake_.logs(), LinesAre("E \"In Landscape Mode\""));
    }
}

// ---- GetWindowRotationType, SetWindowRotationType ----

TEST_F(RotationTest, TheTypeIsStoredAndLogged)
{
    COstrelDemoUtil::SetWindowRotationType(ROTATION_TYPE_PORTRAIT_REVERSE);

    EXPECT_EQ(COstrelDemoUtil::GetWindowRotationType(), ROTATION_TYPE_PORTRAIT_REVERSE);
    EXPECT_THAT(fake_.logs(), LinesAre("I \"current window rotation type = 3\"",
                                       "I \"current window rotation type = 3\""));
}

// ---- InitWindowRotationType ----

class InitialRotationTest : public RotationTest,
                            public testing::WithParamInterface<std::pair<int, int>> {};

TEST_P(InitialRotationTest, TheStoredStateYieldsTheType)
{
    set_type((GetParam().second + 1) % 4);
    fake_.store.values[ConfigKey::ROTATION_STATE] = GetParam().first;

    EXPECT_TRUE(COstrelDemoUtil::InitWindowRotationType());

    EXPECT_THAT(fake_.of({"vconf"}), LinesAre("vconf_get_int(\"db/sysman/rotation_state\")"));
    EXPECT_EQ(fake_.logs().front(),
              "I \"Roation Value = " + std::to_string(GetParam().first) + " \"");
    EXPECT_EQ(type(), GetParam().second);
}

INSTANTIATE_TEST_SUITE_P(States, InitialRotationTest,
                         testing::Values(std::make_pair(0, 3), std::make_pair(1, 0),
                                         std::make_pair(2, 1), std::make_pair(3, 2),
                                         std::make_pair(7, 0), std::make_pair(-1, 0)));

TEST_F(RotationTest, AnUnreadableStateLeavesTheType)
{
    set_type(2);

    EXPECT_FALSE(COstrelDemoUtil::InitWindowRotationType());

    EXPECT_THAT(fake_.logs(), LinesAre("E \"GetConfigInt key [db/sysman/rotation_state] faild\""));
    EXPECT_EQ(type(), 2);
}

// ---- ChangePanelRotation ----

TEST_F(RotationTest, ThePanelIsTurnedByItsKey)
{
    COstrelDemoUtil::ChangePanelRotation();

    EXPECT_THAT(fake_.lines(), LinesAre("I \"\"", "VirtualKey_Send_KeyCode(569, 2)"));
}

} // namespace
