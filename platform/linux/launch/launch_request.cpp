#include "launch/launch_request.h"

#include <array>

#include "base/utf8.h"
#include "player_rules/launch_rules.h"

namespace platform {

namespace {

struct Option {
    const char *name; ///< the extra's name, and the option's without its dashes
    const char *value;
    const char *help;
};

constexpr std::array<Option, 5> OPTIONS = {{
    {FOLDER_PATH_EXTRA, "DIR/", "play this folder; the path ends in a slash"},
    {PATH_LOCATION_EXTRA, "usb", "the folder lies on a USB stick"},
    {PLAYER_MODE_EXTRA, "folder_contents_player", "play a chosen folder's contents"},
    {REPEAT_MODE_EXTRA, "no",
     "end once a video has played to its end; photos\n"
     "never end it, nor does a list of one video,\n"
     "which the player loops"},
    {MODE_EXTRA, "factory_start|factory_stop", "what the factory asks for"},
}};

constexpr size_t HELP_BEGINS = 44;

std::string help_lines(const std::string &option, const std::string &help)
{
    std::string text = "  --" + option;
    text.resize(text.size() < HELP_BEGINS ? HELP_BEGINS : text.size() + 1, ' ');
    for (const char character : help) {
        text += character;
        if (character == '\n')
            text.append(HELP_BEGINS, ' ');
    }
    return text + "\n";
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

bool is_launch_option(const std::string &name)
{
    for (const Option &option : OPTIONS) {
        if (name == option.name)
            return true;
    }
    return false;
}

std::string launch_options_help()
{
    std::string text;
    for (const Option &option : OPTIONS)
        text += help_lines(std::string(option.name) + " " + option.value, option.help);
    return text + help_lines("extra NAME=VALUE", "any other extra of a launch request");
}

std::optional<std::string> read_launch_option(const std::vector<std::string> &arguments,
                                              size_t &next, Extras &extras)
{
    const std::string &argument = arguments[next++];
    if (argument.compare(0, 2, "--") != 0)
        return "unexpected argument '" + argument + "'";
    const size_t equals = argument.find('=');
    const std::string name = argument.substr(2, equals - 2);
    if (name != "extra" && !is_launch_option(name))
        return "unknown option '" + argument + "'";
    if (equals != std::string::npos)
        return take(name, argument.substr(equals + 1), extras);
    if (next == arguments.size())
        return "--" + name + " needs a value";
    return take(name, arguments[next++], extras);
}

void append_bytes(sd_bus_message *to, const std::string &bytes)
{
    sd_bus_message_append_array(to, 'y', bytes.data(), bytes.size());
}

void append_extras(sd_bus_message *call, const Extras &extras)
{
    sd_bus_message_open_container(call, 'a', "{say}");
    for (const auto &[name, value] : extras) {
        sd_bus_message_open_container(call, 'e', "say");
        sd_bus_message_append_basic(call, 's', name.c_str());
        append_bytes(call, value);
        sd_bus_message_close_container(call);
    }
    sd_bus_message_close_container(call);
}

std::optional<Extras> read_extras(sd_bus_message *call)
{
    if (sd_bus_message_enter_container(call, 'a', "{say}") < 0)
        return std::nullopt;
    Extras extras;
    int result = 0;
    while ((result = sd_bus_message_enter_container(call, 'e', "say")) > 0) {
        const char *name = nullptr;
        const void *bytes = nullptr;
        size_t size = 0;
        if (sd_bus_message_read_basic(call, 's', &name) < 0 ||
            sd_bus_message_read_array(call, 'y', &bytes, &size) < 0)
            return std::nullopt;
        const std::string value(static_cast<const char *>(bytes), size);
        // The application gets values as C strings; one that would be cut short is no value.
        if (value.find('\0') != std::string::npos)
            return std::nullopt;
        extras[name] = value;
        sd_bus_message_exit_container(call);
    }
    if (result < 0)
        return std::nullopt;
    return extras;
}

} // namespace platform
