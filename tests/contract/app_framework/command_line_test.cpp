// Reading the command line.

#include <gmock/gmock.h>

#include "app_framework/command_line.h"

namespace platform {
namespace {

using testing::HasSubstr;
using testing::Pair;
using testing::UnorderedElementsAre;

CommandLine read(std::vector<const char *> arguments)
{
    arguments.insert(arguments.begin(), "/usr/bin/player");
    return read_command_line(static_cast<int>(arguments.size()), arguments.data());
}

TEST(CommandLineTest, NothingLaunchesWithoutExtras)
{
    const CommandLine line = read({});
    EXPECT_EQ(line.action, CommandLine::Action::Run);
    EXPECT_TRUE(line.extras.empty());
}

TEST(CommandLineTest, OptionsBecomeExtras)
{
    const CommandLine line = read({"--mode", "factory_stop", "--extra", "a=b"});
    EXPECT_EQ(line.action, CommandLine::Action::Run);
    EXPECT_THAT(line.extras, UnorderedElementsAre(Pair("mode", "factory_stop"), Pair("a", "b")));
}

TEST(CommandLineTest, WhatCannotBeReadIsToldWithTheUsage)
{
    const CommandLine line = read({"--mode", "a", "--speed", "9"});
    EXPECT_EQ(line.action, CommandLine::Action::Refuse);
    EXPECT_THAT(line.text, HasSubstr("player: unknown option '--speed'"));
    EXPECT_THAT(line.text, HasSubstr("Usage: player"));
}

TEST(CommandLineTest, NoArgumentVectorAtAllIsNoReasonToStumble)
{
    EXPECT_EQ(read_command_line(0, nullptr).action, CommandLine::Action::Run);
}

} // namespace
} // namespace platform
