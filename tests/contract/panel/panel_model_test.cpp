// The panel as this machine imitates it.

#include "panel_test.h"

namespace {

using panel_test::PanelTest;
using platform::PanelModel;
using testing::ElementsAre;
using testing::IsEmpty;

using PanelModelTest = PanelTest;

TEST_F(PanelModelTest, ATurnReportsItsDirectionTakesItsTimeAndReportsItsEnd)
{
    EXPECT_TRUE(panel_.turn_to(90));
    EXPECT_THAT(seen_, ElementsAre("status 2"));
    EXPECT_TRUE(panel_.turning());
    EXPECT_EQ(panel_.target(), 90);
    EXPECT_EQ(panel_.angle(), 0);
    finish_turn();
    EXPECT_THAT(seen_, ElementsAre("status 2", "angle 90", "status 0"));
    EXPECT_EQ(panel_.angle(), 90);
}

TEST_F(PanelModelTest, TurningToALandscapeIsStatusOne)
{
    panel_.set_first_angle(90);
    EXPECT_TRUE(panel_.turn_to(180));
    finish_turn();
    EXPECT_THAT(seen_, ElementsAre("status 1", "angle 180", "status 0"));
}

TEST_F(PanelModelTest, ToggleGoesToTheOtherOrientation)
{
    EXPECT_TRUE(panel_.toggle());
    finish_turn();
    EXPECT_EQ(panel_.angle(), 90);
    EXPECT_TRUE(panel_.toggle());
    finish_turn();
    EXPECT_EQ(panel_.angle(), 0);
    panel_.set_first_angle(270);
    EXPECT_TRUE(panel_.toggle());
    finish_turn();
    EXPECT_EQ(panel_.angle(), 0);
}

TEST_F(PanelModelTest, ATurnDuringATurnIsIgnored)
{
    EXPECT_TRUE(panel_.turn_to(90));
    EXPECT_TRUE(panel_.turn_to(180));
    EXPECT_TRUE(panel_.toggle());
    finish_turn();
    EXPECT_EQ(panel_.angle(), 90);
    EXPECT_THAT(seen_, ElementsAre("status 2", "angle 90", "status 0"));
}

TEST_F(PanelModelTest, ATurnToThePresentAngleIsIgnored)
{
    EXPECT_TRUE(panel_.turn_to(0));
    EXPECT_TRUE(panel_.turn_to(360));
    EXPECT_FALSE(panel_.turning());
    EXPECT_THAT(seen_, IsEmpty());
}

TEST_F(PanelModelTest, OddAnglesBecomeQuarterTurns)
{
    panel_.set_first_angle(-90);
    EXPECT_EQ(panel_.angle(), 270);
    panel_.set_first_angle(450);
    EXPECT_EQ(panel_.angle(), 90);
    panel_.set_first_angle(200);
    EXPECT_EQ(panel_.angle(), 180);
}

TEST_F(PanelModelTest, FollowsAPanelThatAnotherProgramTurns)
{
    panel_.follow(90);
    panel_.follow(90);
    EXPECT_EQ(panel_.angle(), 90);
    panel_.follow(0);
    EXPECT_THAT(seen_, ElementsAre("angle 90", "angle 0"));
}

TEST_F(PanelModelTest, AListenerThatAsksForATurnInsideATurnsEndIsToldNothingTwice)
{
    const auto turning = panel_.on_angle([this](int) { EXPECT_TRUE(panel_.turn_to(0)); });
    EXPECT_TRUE(panel_.turn_to(90));
    finish_turn();
    EXPECT_EQ(panel_.angle(), 90) << "the turn was still under way";
    EXPECT_THAT(seen_, ElementsAre("status 2", "angle 90", "status 0"));
}

TEST_F(PanelModelTest, AListenerMayStartTheNextTurnOnceTheLastIsOver)
{
    const auto turning_back = panel_.on_status([this](int status) {
        if (status == 0 && panel_.angle() == 90) {
            EXPECT_TRUE(panel_.turn_to(0));
        }
    });
    EXPECT_TRUE(panel_.turn_to(90));
    EXPECT_TRUE(
        store_test::run_loop_until([this] { return panel_.angle() == 0 && !panel_.turning(); }));
    EXPECT_THAT(seen_,
                ElementsAre("status 2", "angle 90", "status 0", "status 1", "angle 0", "status 0"));
}

TEST_F(PanelModelTest, AListenerMayLetGoOfItselfAndOthersWhileItIsCalled)
{
    PanelModel::Subscription later;
    PanelModel::Subscription first = panel_.on_angle([&](int angle) {
        first.reset();
        later.reset();
        log("once " + std::to_string(angle));
    });
    later = panel_.on_angle([this](int) { log("let go of"); });
    panel_.follow(90);
    panel_.follow(0);
    EXPECT_THAT(seen_, ElementsAre("angle 90", "once 90", "angle 0"));
}

TEST_F(PanelModelTest, AStoppedTurnNeverEnds)
{
    EXPECT_TRUE(panel_.turn_to(90));
    panel_.stop();
    EXPECT_FALSE(panel_.turning());
    EXPECT_FALSE(store_test::run_loop_until([this] { return panel_.angle() == 90; }, 0.2));
    EXPECT_THAT(seen_, ElementsAre("status 2"));
}

TEST_F(PanelModelTest, KnowsTheSizeItWasTold)
{
    EXPECT_EQ(panel_.width(), 0);
    panel_.set_size(1920, 1080);
    EXPECT_EQ(panel_.width(), 1920);
    EXPECT_EQ(panel_.height(), 1080);
}

TEST_F(PanelModelTest, TellsASizeOnlyWhenItHasChanged)
{
    const auto size = panel_.on_size([this] {
        log(std::to_string(panel_.width()) + "x" + std::to_string(panel_.height()) + " of " +
            std::to_string(panel_.pixel_width()) + "x" + std::to_string(panel_.pixel_height()));
    });
    panel_.set_size(1280, 720);
    panel_.set_size(1280, 720);
    panel_.set_size(1280, 720, 1.5);
    panel_.set_size(1280, 720, 1.5);
    panel_.set_size(1024, 600, 1.5);
    panel_.set_size(1024, 600);
    EXPECT_THAT(seen_, ElementsAre("1280x720 of 1280x720", "1280x720 of 1920x1080",
                                   "1024x600 of 1536x900", "1024x600 of 1024x600"));
}

class FixedPanelTest : public PanelTest {
  protected:
    FixedPanelTest() : PanelTest("[panel]\nrotator = false\n") {}
};

TEST_F(FixedPanelTest, DoesNotTurn)
{
    EXPECT_FALSE(panel_.can_turn());
    EXPECT_FALSE(panel_.turn_to(90));
    EXPECT_FALSE(panel_.toggle());
    EXPECT_FALSE(panel_.turning());
    EXPECT_THAT(seen_, IsEmpty());
}

} // namespace
