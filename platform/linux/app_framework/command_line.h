/**
 * The command line as a launch request. Any thread.
 */
#pragma once

#include <string>

#include "launch/launch_request.h"

namespace platform {

struct CommandLine {
    enum class Action {
        Run,    ///< launch with `extras`
        Print,  ///< write `text` to the standard output and end
        Refuse, ///< write `text` to the standard error and end
    };

    Action action = Action::Run;
    Extras extras;
    std::string text;
};

/** Reads a command line. Values may hold any bytes; names of extras are UTF-8. */
CommandLine read_command_line(int argc, const char *const *argv);

} // namespace platform
