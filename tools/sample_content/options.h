/** The command line of make-sample-content. */
#pragma once

#include <string>
#include <vector>

namespace sample {

struct Options {
    enum class Action { make, list, colours, help, bad_usage };

    Action action = Action::make;
    std::string folder;
    std::vector<std::string> only; ///< names; empty for all
    bool quick = false;
    double seconds = 0;    ///< 0: the default for the size
    std::string complaint; ///< for bad_usage, one sentence
};

Options parse_options(int argc, char **argv);

/** The text of --help. */
const char *usage();

} // namespace sample
