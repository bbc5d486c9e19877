/**
 * A launch request: extras by name, as options of a command line and as arguments of the bus call
 * that hands it to a running player. The player and tvctl share this. Any thread, but the messages
 * are for the thread that owns them.
 */
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "bus/bus_connection.h"
#include "player_rules/launch_rules.h"

namespace platform {

/** Whether an extra has an option of its own name; any other is given by --extra. */
bool is_launch_option(const std::string &name);

/** What the options mean, a line or more for each. */
std::string launch_options_help();

/**
 * Reads one option, "--name value" or "--name=value", into the extras.
 *
 * @param next the option's place in the arguments; moved behind it and its value
 * @return what is wrong with it, if anything
 */
std::optional<std::string> read_launch_option(const std::vector<std::string> &arguments,
                                              size_t &next, Extras &extras);

/** Writes any bytes, "ay". */
void append_bytes(sd_bus_message *to, const std::string &bytes);

/** Writes the arguments of a launch call, "a{say}". */
void append_extras(sd_bus_message *call, const Extras &extras);

/** Reads the extras of a launch call; nothing when it holds something else. */
std::optional<Extras> read_extras(sd_bus_message *call);

} // namespace platform
