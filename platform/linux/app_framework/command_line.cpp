#include "app_framework/command_line.h"

#include <array>
#include <optional>

#include <Eina.h>

namespace platform {

namespace {

struct Option {
    const char *name; ///< the extra's name, and the option's without its dashes
    const char *value;
    const char *help;
};

constexpr std::array<Option, 5> OPTIONS = {{
    {"folder_path", "DIR/", "play this folder; the path ends in a slash"},
    {"path_location", "usb", "the folder lies on a USB stick"},
    {"demo_player_mode", "folder_contents_player", "play a chosen folder's contents"},
    {"repeat_mode", "no", "end after the first file"},
    {"mode", "factory_start|factory_stop", "what the factory asks for"},
}};

std::string base_name(const char *path)
{
    const std::string whole = path ? path : "ostrel-demo-player-tv";
    return whole.substr(whole.find_last_of('/') + 1);
}

std::string usage(const std::string &program)
{
    std::string text = "Usage: " + program +
                       " [OPTION]...\n"
                       "Plays a folder of demo videos and photos, over and over. Where a player\n"
                       "runs in this login already, hands it the launch request and ends.\n\n";
    for (const Option &option : OPTIONS) {
        std::string line = "  --" + std::string(option.name) + " " + option.value;
        line.resize(line.size() < 44 ? 44 : line.size() + 1, ' ');
        text += line + option.help + "\n";
    }
    text += "  --extra NAME=VALUE                        any other extra of a launch request\n"
            "  --help                                    show this text\n"
            "  --version                                 show the version\n";
    return text;
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

bool is_extra_option(const std::string &name)
{
    if (name == "extra")
        return true;
    for (const Option &option : OPTIONS) {
        if (name == option.name)
            return true;
    }
    return false;
}

bool is_utf8(const std::string &text)
{
    for (int index = 0; text.c_str()[index] != '\0';) {
        const Eina_Unicode character = eina_unicode_utf8_next_get(text.c_str(), &index);
        // Bytes that are no UTF-8 come back in a range of their own.
        if (character == 0 || (character >= 0xDC80 && character <= 0xDCFF))
            return false;
    }
    return true;
}

/** Takes one option's value into the extras. @return what is wrong with it, if anything. */
std::optional<std::string> take(const std::string &name, const std::string &value, Extras &extras)
{
    if (name != "extra") {
        extras[name] = value;
        return std::nullopt;
    }
    const size_t equals = value.find('=');
    if (equals == std::string::npos)
        return "--extra needs NAME=VALUE, not '" + value + "'";
    const std::string extra = value.substr(0, equals);
    if (extra.empty() || !is_utf8(extra))
        return "--extra needs a name of valid text in front of '='";
    extras[extra] = value.substr(equals + 1);
    return std::nullopt;
}

} // namespace

CommandLine read_command_line(int argc, const char *const *argv)
{
    const std::string program = base_name(argc > 0 ? argv[0] : nullptr);
    CommandLine line;
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        if (argument == "--help")
            return print(usage(program));
        if (argument == "--version")
            return print(program + " " PLAYER_VERSION "\n");
        if (argument.compare(0, 2, "--") != 0)
            return refuse(program, "unexpected argument '" + argument + "'");

        const size_t equals = argument.find('=');
        const std::string name = argument.substr(2, equals - 2);
        if (!is_extra_option(name))
            return refuse(program, "unknown option '" + argument + "'");
        std::string value;
        if (equals != std::string::npos)
            value = argument.substr(equals + 1);
        else if (i + 1 < argc)
            value = argv[++i];
        else
            return refuse(program, "--" + name + " needs a value");
        if (const auto problem = take(name, value, line.extras))
            return refuse(program, *problem);
    }
    return line;
}

} // namespace platform
