#include "launch/launch_request.h"

#include <array>
#include <cstring>

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

void append_bytes(Eldbus_Message_Iter *to, const std::string &bytes)
{
    Eldbus_Message_Iter *array = eldbus_message_iter_container_new(to, 'a', "y");
    eldbus_message_iter_fixed_array_append(array, 'y', bytes.data(),
                                           static_cast<unsigned int>(bytes.size()));
    eldbus_message_iter_container_close(to, array);
}

void append_extras(Eldbus_Message *call, const Extras &extras)
{
    Eldbus_Message_Iter *arguments = eldbus_message_iter_get(call);
    Eldbus_Message_Iter *array = eldbus_message_iter_container_new(arguments, 'a', "{say}");
    for (const auto &[name, value] : extras) {
        Eldbus_Message_Iter *entry = eldbus_message_iter_container_new(array, 'e', nullptr);
        eldbus_message_iter_basic_append(entry, 's', name.c_str());
        append_bytes(entry, value);
        eldbus_message_iter_container_close(array, entry);
    }
    eldbus_message_iter_container_close(arguments, array);
}

std::optional<Extras> extras_of(const Eldbus_Message *call)
{
    Eldbus_Message_Iter *array = nullptr;
    if (!eldbus_message_arguments_get(call, "a{say}", &array))
        return std::nullopt;
    Extras extras;
    Eldbus_Message_Iter *entry = nullptr;
    while (eldbus_message_iter_get_and_next(array, 'e', &entry)) {
        const char *name = nullptr;
        Eldbus_Message_Iter *bytes = nullptr;
        if (!eldbus_message_iter_arguments_get(entry, "say", &name, &bytes))
            return std::nullopt;
        const char *value = nullptr;
        int size = 0;
        if (!eldbus_message_iter_fixed_array_get(bytes, 'y', &value, &size))
            size = 0;
        // The application gets values as C strings; one that would be cut short is no value.
        if (size > 0 && std::memchr(value, '\0', static_cast<size_t>(size)))
            return std::nullopt;
        extras[name] = size > 0 ? std::string(value, static_cast<size_t>(size)) : std::string();
    }
    return extras;
}

} // namespace platform
