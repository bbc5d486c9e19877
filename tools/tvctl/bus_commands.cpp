#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include <Eina.h>
#include <unistd.h>

#include "command.h"
#include "player_connection.h"

namespace tvctl {

namespace {

const std::vector<std::string> OPTIONS = {"folder_path", "path_location", "demo_player_mode",
                                          "repeat_mode", "mode"};

bool is_utf8(const std::string &text)
{
    int index = 0;
    while (text.c_str()[index] != '\0') {
        // Bytes that are no UTF-8 come back as characters of a range of their own.
        const Eina_Unicode character = eina_unicode_utf8_next_get(text.c_str(), &index);
        if (character == 0 || (character >= 0xDC80 && character <= 0xDCFF))
            return false;
    }
    return true;
}

// A command with one argument that must be one of a few words, or any valid text when there are
// none.
int one_word(const char *command, const char *operation, const Arguments &arguments,
             const std::vector<std::string> &words)
{
    if (arguments.size() != 1)
        return usage_error(command, "needs one argument");
    const std::string &word = arguments.front();
    if (!words.empty() && std::find(words.begin(), words.end(), word) == words.end())
        return usage_error(command, "does not know \"" + word + "\"");
    // The bus closes the connection of whoever sends other text.
    if (!is_utf8(word))
        return refuse("the argument is no valid text");
    return call_control(operation, word);
}

/** An argument as a shell takes it. */
std::string quoted(const std::string &argument)
{
    const std::string plain = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789/_-.=";
    if (!argument.empty() && argument.find_first_not_of(plain) == std::string::npos)
        return argument;
    std::string text = "'";
    for (const char c : argument)
        text += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return text + "'";
}

/** What starts a player with the same launch request. */
std::string start_command(const std::map<std::string, std::string> &extras)
{
    std::string command = "ostrel-demo-player-tv";
    for (const auto &[name, value] : extras) {
        const bool option = std::find(OPTIONS.begin(), OPTIONS.end(), name) != OPTIONS.end();
        if (option) {
            command.append(" --").append(name).append(" ").append(quoted(value));
            continue;
        }
        std::string extra = name;
        extra.append("=").append(value);
        command.append(" --extra ").append(quoted(extra));
    }
    return command;
}

std::string absolute(const std::string &path)
{
    if (path.empty() || path.front() == '/')
        return path;
    const std::unique_ptr<char, void (*)(void *)> resolved(realpath(path.c_str(), nullptr),
                                                           std::free);
    if (resolved)
        return resolved.get();
    char folder[PATH_MAX];
    return getcwd(folder, sizeof folder) != nullptr ? std::string(folder) + "/" + path : path;
}

} // namespace

int launch(const Arguments &arguments)
{
    std::map<std::string, std::string> extras;
    for (size_t i = 0; i < arguments.size(); ++i) {
        const std::string &argument = arguments[i];
        const size_t equals = argument.find('=');
        const bool dashes = argument.compare(0, 2, "--") == 0;
        std::string name = dashes ? argument.substr(2, equals - 2) : std::string();
        if (name != "extra" && std::find(OPTIONS.begin(), OPTIONS.end(), name) == OPTIONS.end())
            return usage_error("launch", "does not know \"" + argument + "\"");
        if (equals == std::string::npos && i + 1 == arguments.size())
            return usage_error("launch", argument + " needs a value");
        std::string value =
            equals != std::string::npos ? argument.substr(equals + 1) : arguments[++i];
        if (name == "extra") {
            const size_t middle = value.find('=');
            if (middle == std::string::npos || middle == 0 || !is_utf8(value.substr(0, middle)))
                return usage_error("launch", "--extra needs NAME=VALUE");
            name = value.substr(0, middle);
            value.erase(0, middle + 1);
        }
        extras[name] = value;
    }
    const int result = call_launch(extras);
    if (result == EXIT_NO_PLAYER)
        std::fprintf(stderr, "tvctl: to start one, run: %s\n", start_command(extras).c_str());
    return result;
}

int key(const Arguments &arguments)
{
    return one_word("key", "Key", arguments, {});
}

int panel(const Arguments &arguments)
{
    return one_word("panel", "Panel", arguments,
                    {"landscape", "portrait", "landscape-reverse", "portrait-reverse"});
}

int power(const Arguments &arguments)
{
    return one_word("power", "Power", arguments, {"off", "standby", "wakeup"});
}

int language(const Arguments &arguments)
{
    return one_word("language", "Language", arguments, {});
}

int usb(const Arguments &arguments)
{
    if (arguments.size() != 2 || (arguments[0] != "add" && arguments[0] != "remove"))
        return usage_error("usb", "needs add or remove, and a path");
    if (arguments[1].empty())
        return usage_error("usb", "needs a path");
    return call_control(arguments[0] == "add" ? "UsbAdd" : "UsbRemove",
                        Bytes{absolute(arguments[1])});
}

int status(const Arguments &arguments)
{
    const bool json = arguments.size() == 1 && arguments.front() == "--json";
    if (!json && !arguments.empty())
        return usage_error("status", "does not know \"" + arguments.front() + "\"");
    std::string text;
    const int result = ask_control("Status", json ? "json" : "text", text);
    if (result == EXIT_DONE && std::fputs(text.c_str(), stdout) < 0)
        return refuse("the status could not be written");
    return result;
}

} // namespace tvctl
