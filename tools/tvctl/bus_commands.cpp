#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include <unistd.h>

#include "base/orientation.h"
#include "base/utf8.h"
#include "command.h"
#include "launch/launch_request.h"
#include "player_connection.h"

namespace tvctl {

namespace {

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
    // The bus library ends a program that sends such a text.
    if (!platform::is_utf8(word))
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
std::string start_command(const platform::Extras &extras)
{
    std::string command = "ostrel-demo-player-tv";
    for (const auto &[name, value] : extras) {
        if (platform::is_launch_option(name)) {
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
    platform::Extras extras;
    for (size_t next = 0; next < arguments.size();) {
        if (const auto problem = platform::read_launch_option(arguments, next, extras))
            return usage_error("launch", "does not take this: " + *problem);
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
                    {platform::PANEL_ORIENTATIONS.begin(), platform::PANEL_ORIENTATIONS.end()});
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
