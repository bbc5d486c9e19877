/**
 * One thing that happens to the player: a key, the end of a file, a timer, a launch request, a fact
 * of the set that changes. A sequence of them is text, one step a line, so that a failing one can
 * be printed, edited and played again.
 */
#pragma once

#include <string>
#include <vector>

namespace model {

/**
 * `what` with its arguments, and the platform functions that fail for as long as the step takes.
 * As text: `launch repeat_mode=no !vconf_get_int`.
 */
struct Step {
    std::string what;
    std::vector<std::string> arguments;
    std::vector<std::string> failing;

    /** The n-th argument as a number; 0 when there is none. */
    int number(size_t n = 0) const;
    /** The n-th argument; empty when there is none. */
    std::string text(size_t n = 0) const;
    bool fails(const std::string &function) const;
};

using Steps = std::vector<Step>;

std::string to_text(const Step &step);
std::string to_text(const Steps &steps);

/** Reads what to_text() wrote; empty lines and lines that begin with # are left out. */
Steps parse_steps(const std::string &text);

/** Platform functions that a step may let fail. */
const std::vector<std::string> &functions_that_fail();

/** Key names of the remote control, those without a meaning included. */
const std::vector<std::string> &key_names();

} // namespace model
