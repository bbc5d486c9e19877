// make-sample-content as a program: its options, its errors, and what it leaves behind.

#include <csignal>
#include <fstream>

#include <gmock/gmock.h>

#include "tool_runner.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {

TEST(SampleTool, KeepsWhatExists)
{
    const TemporaryFolder folder;
    std::ofstream(folder.path() + "/sunrise.mp4") << "mine";
    const ToolResult result = run_tool({"--quick", "--only", "sunrise.mp4", folder.path()});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.output, HasSubstr("exists already"));
    EXPECT_EQ(content_of(folder.path() + "/sunrise.mp4"), "mine");
}

TEST(SampleTool, MakesOnlyTheNamedItemsInAFolderOfItsOwnMaking)
{
    const TemporaryFolder parent;
    const std::string folder = parent.path() + "/new/deep";
    const ToolResult result =
        run_tool({"--quick", "--only", "ridge.jpg", "--only", "sunrise_Kor.srt", folder});
    EXPECT_EQ(result.status, 0) << result.output;
    EXPECT_THAT(names_in(folder), ElementsAre("ridge.jpg", "sunrise_Kor.srt"));
}

TEST(SampleTool, LengthOfVideosAndSubtitlesCanBeChosen)
{
    const TemporaryFolder folder;
    const ToolResult result =
        run_tool({"--seconds", "30", "--only", "sunrise_EngUS.srt", folder.path()});
    EXPECT_EQ(result.status, 0) << result.output;
    EXPECT_THAT(content_of(folder.path() + "/sunrise_EngUS.srt"), HasSubstr("00:00:29,000"));
}

TEST(SampleTool, TellsItsProgress)
{
    const TemporaryFolder folder;
    const ToolResult result = run_tool({"--quick", "--only", "meadow.mkv", folder.path()});
    EXPECT_THAT(result.output, HasSubstr("meadow.mkv"));
    EXPECT_THAT(result.output, HasSubstr(" 50 %"));
    EXPECT_THAT(result.output, HasSubstr("made in"));
}

TEST(SampleTool, ListsItsItems)
{
    const ToolResult result = run_tool({"--list"});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.output, HasSubstr("portrait_garden.jpg"));
    EXPECT_THAT(result.output, HasSubstr("1080 x 1920"));
}

TEST(SampleTool, BadUsageIsToldAndGivesStatusTwo)
{
    const std::string folder = "Exactly one folder is to be named.";
    const std::string seconds = "--seconds takes a number from 1 to 600.";
    const std::vector<std::pair<std::vector<std::string>, std::string>> wrong = {
        {{}, folder},
        {{""}, folder},
        {{"a", "b"}, folder},
        {{"--nonsense", "a"}, "Unknown option --nonsense."},
        {{"--quick=3", "a"}, "Unknown option --quick=3."},
        {{"a", "-xq"}, "Unknown option -x."},
        {{"--only", "nothing.mp4", "a"}, "There is no item \"nothing.mp4\"; see --list."},
        {{"--only"}, "--only needs a value."},
        {{"--seconds", "0", "a"}, seconds},
        {{"--seconds", "abc", "a"}, seconds},
        {{"--seconds", "601", "a"}, seconds},
        {{"--seconds", "nan", "a"}, seconds},
    };
    for (const auto &[arguments, complaint] : wrong) {
        const ToolResult result = run_tool(arguments);
        EXPECT_EQ(result.status, 2) << testing::PrintToString(arguments);
        EXPECT_THAT(result.output, HasSubstr("make-sample-content: " + complaint + "\nUsage:"));
    }
}

TEST(SampleTool, HelpGivesStatusZero)
{
    const ToolResult result = run_tool({"--help"});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.output, HasSubstr("--quick"));
}

TEST(SampleTool, FolderThatCannotBeMadeIsToldAndGivesStatusOne)
{
    const TemporaryFolder folder;
    std::ofstream(folder.path() + "/file") << "x";
    for (const std::string &target :
         {folder.path() + "/file", folder.path() + "/file/below", std::string("/proc/none")}) {
        const ToolResult result = run_tool({"--quick", target});
        EXPECT_EQ(result.status, 1) << target;
        EXPECT_THAT(result.output, HasSubstr(target));
    }
}

TEST(SampleTool, WriteThatFailsIsToldAndLeavesNothing)
{
    // A limit of the file size fails the write as a full disk does.
    Surroundings cramped;
    cramped.file_size_limit = 4096;
    // Where lines are counted, the counts do not fit either: they may not spoil those of others.
    const TemporaryFolder counts;
    cramped.environment = {"GCOV_PREFIX=" + counts.path()};
    for (const char *name : {"sunrise.mp4", "meadow.mkv", "harbour.jpg"}) {
        const TemporaryFolder folder;
        const ToolResult result = run_tool({"--quick", "--only", name, folder.path()}, cramped);
        EXPECT_EQ(result.status, 1) << name;
        EXPECT_THAT(result.output, HasSubstr("make-sample-content: ")) << name;
        EXPECT_THAT(result.output, Not(HasSubstr("made in"))) << name;
        EXPECT_THAT(names_in(folder.path()), IsEmpty()) << name;
    }
}

TEST(SampleTool, MissingEncoderIsToldWithItsPackage)
{
    const TemporaryFolder folder;
    const TemporaryFolder no_plugins;
    Surroundings bare;
    bare.environment = {"GST_PLUGIN_SYSTEM_PATH_1_0=" + no_plugins.path(),
                        "GST_PLUGIN_PATH_1_0=" + no_plugins.path(),
                        "GST_REGISTRY_1_0=" + no_plugins.path() + "/registry"};
    const ToolResult result = run_tool({"--quick", "--only", "meadow.mkv", folder.path()}, bare);
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.output, HasSubstr("is missing; Debian's package gstreamer1.0-plugins"));
    EXPECT_THAT(names_in(folder.path()), IsEmpty());
}

TEST(SampleTool, InterruptRemovesTheUnfinishedFile)
{
    for (const int number : {SIGINT, SIGTERM}) {
        const TemporaryFolder folder;
        const CreationWatch watch(folder.path());
        ToolProcess tool({"--seconds", "600", "--only", "sunrise.mp4", folder.path()});
        ASSERT_TRUE(watch.wait_for("sunrise.mp4.part"));
        tool.send(number);
        EXPECT_EQ(tool.wait(), 128 + number) << tool.output();
        EXPECT_THAT(names_in(folder.path()), IsEmpty());
    }
}

} // namespace
