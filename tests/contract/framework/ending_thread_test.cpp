// Asking for the end from another thread than the main loop's, as callbacks of libraries do.

#include <gmock/gmock.h>

#include "desktop.h"

namespace framework_test {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

using EndingThreadTest = DesktopTest;

TEST_F(EndingThreadTest, AThreadEndsTheApplicationInGoodOrderWhileItsLoopSleeps)
{
    auto app = start_and_show();
    app->say("quit-from-a-thread");
    ASSERT_TRUE(app->hears("done quit-from-a-thread"));
    EXPECT_EQ(app->finish(), 0) << app->errors();
    EXPECT_THAT(app->further_lines(), ElementsAre("terminate"));
    EXPECT_THAT(app->errors(), AllOf(HasSubstr("ending"), Not(HasSubstr("E/")),
                                     Not(HasSubstr("ERR<")), Not(HasSubstr("CRI<"))));
}

} // namespace
} // namespace framework_test
