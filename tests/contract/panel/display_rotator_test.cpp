// The rotator's own interface.

#include "display_rotator.h"
#include "panel_test.h"

namespace {

using panel_test::PanelTest;
using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> reports;

int report(display_rotator_status_t *status, void *data)
{
    reports.push_back(std::string(static_cast<const char *>(data)) + " " +
                      std::to_string(status->status) + " at " + std::to_string(status->angle));
    return 1;
}

int report_and_leave(display_rotator_status_t *status, void *data)
{
    EXPECT_EQ(display_rotator_remove_cb(report_and_leave), 0);
    return report(status, data);
}

char FIRST[] = "first";
char SECOND[] = "second";

class DisplayRotatorTest : public PanelTest {
  protected:
    DisplayRotatorTest() { reports.clear(); }
};

TEST_F(DisplayRotatorTest, ToldItsStatusWhileItTurnsAndAfter)
{
    display_rotator_status_t status = {9, 9};
    EXPECT_EQ(display_rotator_get_status(&status), 0);
    EXPECT_EQ(status.status, DISPLAY_ROTATOR_IDLE);
    EXPECT_EQ(status.angle, 0);
    panel_.turn_to(90);
    EXPECT_EQ(display_rotator_get_status(&status), 0);
    EXPECT_EQ(status.status, DISPLAY_ROTATOR_TURNING_TO_PORTRAIT);
    finish_turn();
    EXPECT_EQ(display_rotator_get_status(&status), 0);
    EXPECT_EQ(status.status, DISPLAY_ROTATOR_IDLE);
    EXPECT_EQ(status.angle, 90);
}

TEST_F(DisplayRotatorTest, ReportsEachChangeUntilItIsToldNotTo)
{
    EXPECT_EQ(display_rotator_add_cb(report, FIRST), 0);
    panel_.turn_to(90);
    finish_turn();
    EXPECT_EQ(display_rotator_remove_cb(report), 0);
    panel_.turn_to(0);
    finish_turn();
    EXPECT_THAT(reports, ElementsAre("first 2 at 0", "first 0 at 90"));
    EXPECT_LT(display_rotator_remove_cb(report), 0) << "it is not registered any more";
}

TEST_F(DisplayRotatorTest, TheSameCallbackTwiceIsOneWithTheLaterData)
{
    EXPECT_EQ(display_rotator_add_cb(report, FIRST), 0);
    EXPECT_EQ(display_rotator_add_cb(report, SECOND), 0);
    panel_.turn_to(90);
    EXPECT_THAT(reports, ElementsAre("second 2 at 0"));
    EXPECT_EQ(display_rotator_remove_cb(report), 0);
}

TEST_F(DisplayRotatorTest, ACallbackMayRemoveItself)
{
    EXPECT_EQ(display_rotator_add_cb(report_and_leave, FIRST), 0);
    EXPECT_EQ(display_rotator_add_cb(report, SECOND), 0);
    panel_.turn_to(90);
    finish_turn();
    EXPECT_THAT(reports, ElementsAre("first 2 at 0", "second 2 at 0", "second 0 at 90"));
    EXPECT_EQ(display_rotator_remove_cb(report), 0);
}

TEST_F(DisplayRotatorTest, NullIsRefused)
{
    EXPECT_LT(display_rotator_get_status(nullptr), 0);
    EXPECT_LT(display_rotator_add_cb(nullptr, FIRST), 0);
    EXPECT_LT(display_rotator_remove_cb(nullptr), 0);
}

class NoRotatorTest : public PanelTest {
  protected:
    NoRotatorTest() : PanelTest("[panel]\nrotator = false\n") { reports.clear(); }
};

TEST_F(NoRotatorTest, EveryCallSaysSo)
{
    display_rotator_status_t status = {9, 9};
    EXPECT_EQ(display_rotator_get_status(&status), DISPLAY_ROTATOR_ERROR_NOT_SUPPORTED);
    EXPECT_EQ(status.status, 9) << "untouched on failure";
    EXPECT_EQ(display_rotator_add_cb(report, FIRST), DISPLAY_ROTATOR_ERROR_NOT_SUPPORTED);
    EXPECT_EQ(display_rotator_remove_cb(report), DISPLAY_ROTATOR_ERROR_NOT_SUPPORTED);
    panel_.toggle();
    EXPECT_THAT(reports, IsEmpty());
}

} // namespace
