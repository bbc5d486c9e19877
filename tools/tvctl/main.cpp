// tvctl: does to a running demo player what the set around it would do, and reads and writes the
// set's configuration.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "command.h"
#include "launch/launch_request.h"

namespace tvctl {

namespace {

struct Command {
    const char *name;
    int (*run)(const Arguments &arguments);
    const char *synopsis;
    std::string help;
};

const std::vector<Command> &commands()
{
    static const std::vector<Command> all = {
        {"launch", launch, "launch [--EXTRA VALUE]...",
         "Hands the running player a launch request: it plays its old list anew, and does not\n"
         "use the folder and the modes that the request names; --mode factory_stop ends it. Where\n"
         "none is running, says how to start one with the same request.\n\n" +
             platform::launch_options_help()},
        {"key", key, "key NAME",
         "Presses a key of the set's remote control by the set's own name for it, such as\n"
         "Return, XF86Back, XF86AudioPlay or XF86RaiseChannel.\n"},
        {"panel", panel, "panel ORIENTATION",
         "Turns the panel: landscape, portrait, landscape-reverse or portrait-reverse.\n"
         "Returns when the turn has begun.\n"},
        {"power", power, "power EVENT",
         "Raises a power event of the set: off, standby or wakeup.\n"},
        {"language", language, "language LANGUAGE_COUNTRY",
         "Changes the system language of the running player, for instance to ko_KR.\n"},
        {"usb", usb, "usb add|remove PATH",
         "Plugs a folder in as a USB stick, or pulls the stick that is mounted there.\n"},
        {"config", config, "config get KEY | set KEY VALUE | watch [KEY]... | list",
         "Reads and writes the configuration store, with or without a running player. A key\n"
         "is named in full (db/ostrel-demo-player-tv/demo_mode) or, where it is one of those\n"
         "that \"list\" shows, by its last part (demo_mode).\n\n"
         "  get KEY          prints the value\n"
         "  set KEY VALUE    writes it\n"
         "  watch [KEY]...   prints each change until interrupted; of every key by default\n"
         "  list             prints every key; \"-\" stands for one that is not set\n"},
        {"status", status, "status [--json]",
         "Tells what the running player is doing: the file and its place in the list, the\n"
         "selection, the panel and its next turn by timer, what is blocked, frames shown and\n"
         "dropped. With --json as one JSON object, the whole configuration included.\n"},
    };
    return all;
}

const Command *find(const std::string &name)
{
    const auto found = std::find_if(commands().begin(), commands().end(),
                                    [&](const Command &command) { return command.name == name; });
    return found != commands().end() ? &*found : nullptr;
}

int print_usage(FILE *to)
{
    std::fputs("Usage: tvctl COMMAND [ARGUMENT]...\n"
               "Controls a running demo player and the configuration of its set.\n\n",
               to);
    for (const Command &command : commands())
        std::fprintf(to, "  tvctl %s\n", command.synopsis);
    std::fputs("\n\"tvctl COMMAND --help\" explains a command.\n"
               "Exit status: 0 done, 1 refused, 2 wrong usage, 3 no player is running.\n",
               to);
    return EXIT_DONE;
}

int run(Arguments arguments)
{
    if (arguments.empty()) {
        print_usage(stderr);
        return EXIT_USAGE;
    }
    const std::string name = arguments.front();
    if (name == "--help")
        return print_usage(stdout);
    const Command *command = find(name);
    if (command == nullptr)
        return usage_error("", "there is no command \"" + name + "\"");
    arguments.erase(arguments.begin());
    if (std::find(arguments.begin(), arguments.end(), "--help") != arguments.end()) {
        std::printf("Usage: tvctl %s\n\n%s", command->synopsis, command->help.c_str());
        return EXIT_DONE;
    }
    return command->run(arguments);
}

} // namespace

int refuse(const std::string &reason)
{
    std::fprintf(stderr, "tvctl: %s\n", reason.c_str());
    return EXIT_REFUSED;
}

int usage_error(const std::string &command, const std::string &reason)
{
    // "config get" is explained by "tvctl config --help".
    const std::string first = command.substr(0, command.find(' '));
    std::fprintf(stderr, "tvctl: %s%s%s; see \"tvctl %s%s--help\"\n", command.c_str(),
                 command.empty() ? "" : " ", reason.c_str(), first.c_str(),
                 first.empty() ? "" : " ");
    return EXIT_USAGE;
}

} // namespace tvctl

int main(int argc, char **argv)
{
    return tvctl::run(tvctl::Arguments(argv + 1, argv + std::max(argc, 1)));
}
