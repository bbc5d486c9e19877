// A command line as a launch request. The input's arguments are divided by null bytes.

#include "app_framework/command_line.h"
#include "base/utf8.h"
#include "fuzz.h"

using platform::CommandLine;

namespace {

CommandLine read(const std::vector<std::string> &arguments)
{
    std::vector<const char *> argv = {"player"};
    for (const std::string &argument : arguments)
        argv.push_back(argument.c_str());
    return platform::read_command_line(static_cast<int>(argv.size()), argv.data());
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const CommandLine line = read(fuzz::pieces(fuzz::text_of(data, size), '\0'));
    if (line.action != CommandLine::Action::Run) {
        fuzz::require(!line.text.empty() && line.text.back() == '\n',
                      "what is not run is told of in whole lines");
        return 0;
    }
    std::vector<std::string> again;
    for (const auto &[name, value] : line.extras) {
        fuzz::require(!name.empty() && platform::is_utf8(name), "an extra's name is text");
        again.push_back("--extra=" + name + "=" + value);
    }
    fuzz::require(read(again).extras == line.extras, "any extra can be given as --extra");
    return 0;
}
