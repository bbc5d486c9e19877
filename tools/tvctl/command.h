/** What the commands of tvctl have in common. */
#pragma once

#include <string>
#include <vector>

namespace tvctl {

enum ExitStatus {
    EXIT_DONE = 0,
    EXIT_REFUSED = 1,
    EXIT_USAGE = 2,
    EXIT_NO_PLAYER = 3,
};

using Arguments = std::vector<std::string>;

/** Writes "tvctl: " and the reason to the standard error. @return EXIT_REFUSED */
int refuse(const std::string &reason);

/** As refuse(), with a hint at --help. @return EXIT_USAGE */
int usage_error(const std::string &command, const std::string &reason);

// Commands to the running player.
int launch(const Arguments &arguments);
int key(const Arguments &arguments);
int panel(const Arguments &arguments);
int power(const Arguments &arguments);
int language(const Arguments &arguments);
int usb(const Arguments &arguments);
int status(const Arguments &arguments);

// Works on the configuration store, with or without a player.
int config(const Arguments &arguments);

} // namespace tvctl
