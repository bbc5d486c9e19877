// The stored rotation state.

#include "config_store.h"
#include "panel/rotation_state.h"
#include "panel_test.h"

namespace {

using panel_test::PanelTest;

using RotationStateTest = PanelTest;

TEST_F(RotationStateTest, StatesAndAnglesBelongTogether)
{
    const std::pair<int, int> pairs[] = {{1, 0}, {2, 90}, {3, 180}, {0, 270}};
    for (const auto &[state, angle] : pairs) {
        EXPECT_EQ(platform::angle_of_rotation_state(state), angle);
        EXPECT_EQ(platform::rotation_state_of_angle(angle), state);
    }
    EXPECT_EQ(platform::angle_of_rotation_state(7), 0);
    EXPECT_EQ(platform::angle_of_rotation_state(-1), 0);
}

TEST_F(RotationStateTest, AStoredStateIsThePanelsFirstAngleAndStays)
{
    store_test::write_file(folder_ / "state/db/sysman/rotation_state", "3\n");
    platform::rotation_state_start();
    EXPECT_EQ(panel_.angle(), 180);
    EXPECT_EQ(stored_state(), "3\n");
}

TEST_F(RotationStateTest, ASetWithoutAStoredStateStandsInLandscapeAndStoresIt)
{
    platform::rotation_state_start();
    EXPECT_EQ(panel_.angle(), 0);
    int state = -1;
    EXPECT_EQ(vconf_get_int("db/sysman/rotation_state", &state), 0);
    EXPECT_EQ(state, 1);
}

TEST_F(RotationStateTest, EachTurnIsStored)
{
    platform::rotation_state_start();
    EXPECT_TRUE(panel_.turn_to(270));
    EXPECT_EQ(stored_state(), "1\n") << "not before the turn is over";
    finish_turn();
    EXPECT_EQ(stored_state(), "0\n");
    EXPECT_TRUE(panel_.turn_to(90));
    finish_turn();
    EXPECT_EQ(stored_state(), "2\n");
}

class ConfiguredStateTest : public PanelTest {
  protected:
    ConfiguredStateTest() : PanelTest("[panel]\nfirst_rotation_state = 2\n") {}
};

TEST_F(ConfiguredStateTest, CountsWhereNothingIsStored)
{
    platform::rotation_state_start();
    EXPECT_EQ(panel_.angle(), 90);
    EXPECT_EQ(stored_state(), "2\n");
}

TEST_F(ConfiguredStateTest, GivesWayToAStoredOne)
{
    store_test::write_file(folder_ / "state/db/sysman/rotation_state", "1\n");
    platform::rotation_state_start();
    EXPECT_EQ(panel_.angle(), 0);
}

} // namespace
