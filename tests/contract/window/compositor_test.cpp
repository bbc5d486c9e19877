// Compositors that are not like the common one: without any input device, and with a screen of more
// pixels than windows have units.

#include <gmock/gmock.h>
#include <sys/stat.h>

#include "desktop_support/desktop.h"

namespace desktop_test {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::Not;

/** A compositor without a screen and without a seat. */
class BareCompositorTest : public DesktopTest {
  protected:
    void start_compositor(const std::vector<std::string> &options)
    {
        const std::string socket = folder_ / "bare";
        std::vector<std::string> command = {WESTON,          "--backend=headless-backend.so",
                                            "--use-pixman",  "--shell=kiosk-shell.so",
                                            "--idle-time=0", "--no-config",
                                            "--socket=bare"};
        command.insert(command.end(), options.begin(), options.end());
        compositor_ = std::make_unique<Program>(
            command, Program::Variables{{"XDG_RUNTIME_DIR", folder_.path()}, {"DISPLAY", ""}});
        ASSERT_TRUE(wait_until([&] {
            struct stat status = {};
            return compositor_->errors().find("kiosk-shell.so") != std::string::npos &&
                   stat(socket.c_str(), &status) == 0;
        })) << compositor_->errors();
        variables_["XDG_RUNTIME_DIR"] = folder_.path();
        variables_["WAYLAND_DISPLAY"] = "bare";
    }

    std::unique_ptr<Program> compositor_;
};

TEST_F(BareCompositorTest, WithoutASeatTheApplicationStartsTakesItsKeysAndLogsNoError)
{
    start_compositor({"--width=640", "--height=400"});
    auto app = start_and_show();
    app->say("press XF86PanelEnter");
    EXPECT_TRUE(app->hears("key XF86PanelEnter XF86PanelEnter"));
    EXPECT_EQ(quit(*app), 0) << app->errors();
    EXPECT_THAT(app->lines(), Contains("grab 1"));
    EXPECT_THAT(app->errors(), Not(HasSubstr("ERR<")));
    EXPECT_THAT(app->errors(), Not(HasSubstr("E/")));
}

TEST_F(BareCompositorTest, ScreenThatEnlargesWindowsIsKnownWithAllItsPixels)
{
    start_compositor({"--width=640", "--height=400", "--scale=2"});
    auto app = start_and_show();
    EXPECT_EQ(quit(*app), 0) << app->errors();
    EXPECT_THAT(app->errors(), HasSubstr("the panel is 1280x800, windows on it 640x400\n"));
}

TEST_F(BareCompositorTest, ScreenThatShowsWindowsAsTheyAreHasOneSizeOnly)
{
    start_compositor({"--width=640", "--height=400"});
    auto app = start_and_show();
    EXPECT_EQ(quit(*app), 0) << app->errors();
    EXPECT_THAT(app->errors(), HasSubstr("the panel is 640x400\n"));
    EXPECT_THAT(app->errors(), Not(HasSubstr("windows on it")));
}

} // namespace
} // namespace desktop_test
