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

TEST(CommandLineTest, OptionsBecomeExtrasWithTheirValuesAsTheyStand)
{
    const CommandLine line =
        read({"--folder_path", "--odd/", "--mode=factory_stop", "--extra", "a=b=c", "--extra=d="});
    EXPECT_EQ(line.action, CommandLine::Action::Run);
    EXPECT_THAT(line.extras,
                UnorderedElementsAre(Pair("folder_path", "--odd/"), Pair("mode", "factory_stop"),
                                     Pair("a", "b=c"), Pair("d", "")));
}

TEST(CommandLineTest, TheLastOfTwoCounts)
{
    EXPECT_THAT(read({"--mode", "a", "--mode", "b"}).extras,
                UnorderedElementsAre(Pair("mode", "b")));
}

TEST(CommandLineTest, WhatCannotBeReadIsNamedAndTheUsageShown)
{
    const std::pair<std::vector<const char *>, const char *> cases[] = {
        {{"--speed", "9"}, "unknown option '--speed'"},
        {{"--"}, "unknown option '--'"},
        {{"--=x"}, "unknown option '--=x'"},
        {{"folder"}, "unexpected argument 'folder'"},
        {{"-h"}, "unexpected argument '-h'"},
        {{"--folder_path"}, "--folder_path needs a value"},
        {{"--extra"}, "--extra needs a value"},
        {{"--extra", "name"}, "--extra needs NAME=VALUE, not 'name'"},
        {{"--extra", "=x"}, "--extra needs a name"},
        {{"--extra", "\xff=x"}, "--extra needs a name"},
        {{"--extra", "\xed\xa0\x80=x"}, "--extra needs a name"},
    };
    for (const auto &[arguments, reason] : cases) {
        const CommandLine line = read(arguments);
        EXPECT_EQ(line.action, CommandLine::Action::Refuse) << reason;
        EXPECT_THAT(line.text, HasSubstr(reason));
        EXPECT_THAT(line.text, HasSubstr("player: "));
        EXPECT_THAT(line.text, HasSubstr("Usage: player"));
    }
}

TEST(CommandLineTest, NoArgumentVectorAtAllIsNoReasonToStumble)
{
    EXPECT_EQ(read_command_line(0, nullptr).action, CommandLine::Action::Run);
}

} // namespace
} // namespace platform
