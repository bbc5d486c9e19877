#include "app_framework/command_line.h"

#include <vector>

#include "base/paths.h"

namespace platform {

namespace {

std::string usage(const std::string &program)
{
    return "Usage: " + program +
           " [OPTION]...\n"
           "Plays a folder of demo videos and photos, over and over. Where a player\n"
           "runs in this login already, hands it the launch request and ends.\n\n" +
           launch_options_help() +
           "  --help                                    show this text\n"
           "  --version                                 show the version\n";
}

CommandLine refuse(const std::string &program, const std::string &reason)
{
    CommandLine line;
    line.action = CommandLine::Action::Refuse;
    line.text = program + ": " + reason + "\n" + usage(program);
    return line;
}

CommandLine print(const std::string &text)
{
    CommandLine line;
    line.action = CommandLine::Action::Print;
    line.text = text;
    return line;
}

} // namespace

CommandLine read_command_line(int argc, const char *const *argv)
{
    const std::string program = argc > 0 ? last_part(argv[0]) : "ostrel-demo-player-tv";
    const std::vector<std::string> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
    CommandLine line;
    for (size_t next = 0; next < arguments.size();) {
        if (arguments[next] == "--help")
            return print(usage(program));
        if (arguments[next] == "--version")
            return print(program + " " PLAYER_VERSION "\n");
        if (const auto problem = read_launch_option(arguments, next, line.extras))
            return refuse(program, *problem);
    }
    return line;
}

} // namespace platform
