// The life of an application on the framework, seen from outside.

#include <csignal>
#include <cstring>

#include <unistd.h>

#include <gmock/gmock.h>

#include "desktop_support/desktop.h"

namespace desktop_test {
namespace {

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

/** The framework's own calls out of a transcript. */
std::vector<std::string> calls(const std::vector<std::string> &lines)
{
    std::vector<std::string> found;
    for (const std::string &line : lines) {
        for (const char *call : {"create", "control", "pause", "resume", "terminate"}) {
            if (line == call)
                found.push_back(line);
        }
    }
    return found;
}

using LifecycleTest = DesktopTest;

TEST_F(LifecycleTest, CallsCreateThenTheLaunchRequestThenTerminateOnce)
{
    auto app = start_and_show();
    EXPECT_EQ(quit(*app), 0) << app->errors();
    EXPECT_THAT(calls(app->lines()), ElementsAre("create", "control", "terminate"));
}

TEST_F(LifecycleTest, NothingThatTheApplicationLeftBehindIsCalledAfterTerminate)
{
    auto app = start_and_show();
    EXPECT_EQ(quit(*app), 0) << app->errors();
    EXPECT_THAT(app->lines(), Not(Contains(HasSubstr("after the end"))));
}

TEST_F(LifecycleTest, AnOrdinaryLifeLogsNoErrorLine)
{
    auto app = start_and_show();
    EXPECT_EQ(quit(*app), 0);
    EXPECT_THAT(app->errors(),
                AllOf(Not(HasSubstr("E/")), Not(HasSubstr("ERR<")), Not(HasSubstr("CRI<"))));
}

TEST_F(LifecycleTest, ExtrasOfTheCommandLineArriveByteForByte)
{
    auto app = start({"--folder_path", "/a\xff\xfe b\n%n<b>/", "--path_location", "usb",
                      "--repeat_mode=no", "--demo_player_mode", "folder_contents_player", "--extra",
                      "__K_RELOCATE_BELOW=x=y", "--mode", ""});
    EXPECT_TRUE(app->hears("extra folder_path=2f61fffe20620a256e3c623e2f"));
    EXPECT_TRUE(app->hears("extra path_location=757362"));
    EXPECT_TRUE(app->hears("extra mode="));
    EXPECT_TRUE(app->hears("extra demo_player_mode=666f6c6465725f636f6e74656e74735f706c61796572"));
    EXPECT_TRUE(app->hears("extra repeat_mode=6e6f"));
    EXPECT_TRUE(app->hears("extra __K_RELOCATE_BELOW=783d79"));
    EXPECT_EQ(quit(*app), 0);
}

TEST_F(LifecycleTest, AMissingExtraIsMissing)
{
    auto app = start();
    EXPECT_TRUE(app->hears("extra folder_path missing"));
    EXPECT_EQ(quit(*app), 0);
}

TEST_F(LifecycleTest, TheControlToolReachesIt)
{
    auto app = start_and_show();
    Program tool({TVCTL, "status", "--json"}, variables_);
    EXPECT_EQ(tool.finish(), 0) << tool.errors();
    EXPECT_THAT(tool.lines(), ElementsAre(HasSubstr("\"panel\": {\"angle\": 0, ")));
    EXPECT_EQ(quit(*app), 0);
}

TEST_F(LifecycleTest, ALaterStartHandsItsRequestOverAndEnds)
{
    auto first = start_and_show();
    auto second = start({"--folder_path", "/b\xc3\x28/", "--extra", "more=1"});
    EXPECT_EQ(second->finish(), 0) << second->errors();
    EXPECT_THAT(second->lines(), ElementsAre());
    EXPECT_TRUE(first->hears("control"));
    EXPECT_TRUE(first->hears("extra folder_path=2f62c3282f"));
    EXPECT_TRUE(first->hears("ready"));
    EXPECT_EQ(quit(*first), 0);
    EXPECT_THAT(calls(first->lines()), ElementsAre("create", "control", "control", "terminate"));
}

TEST_F(LifecycleTest, ALaterStartNeedsNoCompositorToHandOver)
{
    auto first = start_and_show();
    auto second = start({}, {{"WAYLAND_DISPLAY", "nobody"}});
    EXPECT_EQ(second->finish(), 0) << second->errors();
    EXPECT_EQ(quit(*first), 0);
}

TEST_F(LifecycleTest, ALaterStartTakesThePlaceOfAnInstanceThatEnds)
{
    auto first = start({}, {{"TEST_QUIT_IN_CONTROL", "1"}, {"TEST_SLOW_TERMINATE", "1"}});
    ASSERT_TRUE(first->hears("terminate"));
    auto second = start();
    first->say("go on");
    EXPECT_EQ(first->finish(), 0);
    EXPECT_TRUE(second->hears("visibility 1")) << second->errors();
    EXPECT_EQ(quit(*second), 0);
}

TEST_F(LifecycleTest, ALaterStartGivesUpOnAnInstanceThatHangs)
{
    auto first = start_and_show();
    first->signal(SIGSTOP);
    auto second = start();
    EXPECT_EQ(second->finish(), 1);
    EXPECT_THAT(second->errors(), HasSubstr("does not take the launch request"));
    first->signal(SIGCONT);
    EXPECT_EQ(quit(*first), 0);
}

TEST_F(LifecycleTest, WithoutABusItStartsAloneAndSaysSoOnce)
{
    const Program::Variables no_bus = {{"DBUS_SESSION_BUS_ADDRESS", ""}};
    auto one = start_and_show(no_bus);
    auto other = start_and_show(no_bus);
    one->say("quit");
    other->say("quit");
    EXPECT_EQ(one->finish(), 0);
    EXPECT_EQ(other->finish(), 0);
    const std::string &log = one->errors();
    const size_t said = log.find("no session bus");
    ASSERT_NE(said, std::string::npos) << log;
    EXPECT_EQ(log.find("no session bus", said + 1), std::string::npos) << log;
    EXPECT_THAT(log, AllOf(Not(HasSubstr("E/")), Not(HasSubstr("ERR<"))));
}

TEST_F(LifecycleTest, ABusThatGoesAwayTakesNothingAlong)
{
    auto app = start_and_show();
    session_bus_.signal(SIGKILL);
    EXPECT_TRUE(
        wait_until([&] { return app->errors().find("bus went away") != std::string::npos; }));
    app->say("sync");
    EXPECT_TRUE(app->hears("done sync"));
    EXPECT_EQ(quit(*app), 0);
}

class SignalTest : public DesktopTest, public testing::WithParamInterface<int> {};

TEST_P(SignalTest, EndsInGoodOrder)
{
    auto app = start_and_show();
    app->signal(GetParam());
    EXPECT_EQ(app->finish(), 0) << app->errors();
    EXPECT_THAT(calls(app->lines()), ElementsAre("create", "control", "terminate"));
}

TEST_P(SignalTest, BeforeTheMainLoopEndsInGoodOrderToo)
{
    auto app = start({}, {{"TEST_SLOW_CREATE", "1"}});
    ASSERT_TRUE(app->hears("create"));
    app->signal(GetParam());
    app->say("go on");
    EXPECT_EQ(app->finish(), 0) << app->errors();
    EXPECT_THAT(calls(app->lines()), ElementsAre("create", "control", "terminate"));
}

TEST_P(SignalTest, DuringTerminateChangesNothing)
{
    auto app = start({}, {{"TEST_SLOW_TERMINATE", "1"}, {"TEST_QUIT_IN_CONTROL", "1"}});
    ASSERT_TRUE(app->hears("terminate"));
    app->signal(GetParam());
    app->say("go on");
    EXPECT_EQ(app->finish(), 0) << app->errors();
    EXPECT_THAT(calls(app->lines()), ElementsAre("create", "control", "terminate"));
}

INSTANTIATE_TEST_SUITE_P(EndingSignals, SignalTest, testing::Values(SIGTERM, SIGINT, SIGHUP),
                         [](const auto &given) { return std::string(sigabbrev_np(given.param)); });

TEST_F(LifecycleTest, EndingInCreateBringsTerminateWithoutARequest)
{
    auto app = start({}, {{"TEST_QUIT_IN_CREATE", "1"}});
    EXPECT_EQ(app->finish(), 0);
    EXPECT_THAT(calls(app->lines()), ElementsAre("create", "terminate"));
}

TEST_F(LifecycleTest, EndingInTheRequestBringsTerminate)
{
    auto app = start({}, {{"TEST_QUIT_IN_CONTROL", "1"}});
    EXPECT_EQ(app->finish(), 0);
    EXPECT_THAT(calls(app->lines()), ElementsAre("create", "control", "terminate"));
}

TEST_F(LifecycleTest, AThreadEndsTheApplicationInGoodOrderWhileItsLoopSleeps)
{
    auto app = start_and_show();
    app->say("quit-from-a-thread");
    ASSERT_TRUE(app->hears("done quit-from-a-thread"));
    EXPECT_EQ(app->finish(), 0) << app->errors();
    EXPECT_THAT(app->further_lines(), ElementsAre("terminate"));
    EXPECT_THAT(app->errors(), AllOf(HasSubstr("ending"), Not(HasSubstr("E/")),
                                     Not(HasSubstr("ERR<")), Not(HasSubstr("CRI<"))));
}

TEST_F(LifecycleTest, ARefusedCreateEndsWithStatusOne)
{
    auto app = start({}, {{"TEST_CREATE_FAILS", "1"}});
    EXPECT_EQ(app->finish(), 1);
    EXPECT_THAT(calls(app->lines()), ElementsAre("create"));
}

TEST_F(LifecycleTest, NoCompositorEndsWithStatusOneAndSaysWhy)
{
    auto app = start({}, {{"WAYLAND_DISPLAY", "nobody"}});
    EXPECT_EQ(app->finish(), 1);
    EXPECT_THAT(app->lines(), ElementsAre());
    EXPECT_THAT(app->errors(),
                HasSubstr("no Wayland compositor answers (WAYLAND_DISPLAY is nobody)"));
}

TEST_F(LifecycleTest, ACompositorThatGoesAwayEndsItWithStatusOne)
{
    store_test::write_file(folder_ / "weston.ini", "[core]\nshell=kiosk-shell.so\nidle-time=0\n");
    Program compositor({WESTON, "--backend=headless-backend.so", "--socket=gone",
                        "--config=" + (folder_ / "weston.ini")},
                       {{"XDG_RUNTIME_DIR", Screen::get().runtime_dir()}});
    ASSERT_TRUE(wait_until([] {
        return access((Screen::get().runtime_dir() + "/gone").c_str(), F_OK) == 0;
    })) << compositor.errors();
    auto app = start_and_show({{"WAYLAND_DISPLAY", "gone"}});
    compositor.signal(SIGKILL);
    EXPECT_EQ(app->finish(), 1) << app->errors();
    EXPECT_THAT(app->errors(), HasSubstr("the compositor went away"));
    EXPECT_THAT(calls(app->lines()), ElementsAre("create", "control", "terminate"));
}

TEST_F(LifecycleTest, ALanguageChangeReachesItsHandlers)
{
    auto app = start_and_show();
    app->say("language");
    EXPECT_TRUE(app->hears("language changed"));
    EXPECT_EQ(quit(*app), 0);
}

TEST_F(LifecycleTest, ABadCommandLineEndsWithStatusTwoAndTheUsage)
{
    auto app = start({"--bogus"});
    EXPECT_EQ(app->finish(), 2);
    EXPECT_THAT(app->lines(), ElementsAre());
    EXPECT_THAT(app->errors(), HasSubstr("Usage:"));
}

TEST_F(LifecycleTest, HelpAndVersionGoToTheStandardOutput)
{
    auto help = start({"--help"});
    EXPECT_EQ(help->finish(), 0);
    EXPECT_THAT(help->lines(), Contains(HasSubstr("--folder_path")));
    auto version = start({"--version"});
    EXPECT_EQ(version->finish(), 0);
    EXPECT_THAT(version->lines(),
                ElementsAre(testing::MatchesRegex(".* [0-9]+\\.[0-9]+\\.[0-9]+")));
}

} // namespace
} // namespace desktop_test
