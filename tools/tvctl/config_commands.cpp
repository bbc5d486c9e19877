#include <cstdio>
#include <cstdlib>

#include <Ecore.h>

#include "base/toolkit_handles.h"
#include "command.h"
#include "config_store/config_files.h"
#include "config_store/config_watcher.h"
#include "player_rules/config_keys.h"
#include "settings/settings.h"

namespace tvctl {

namespace {

platform::ConfigFiles store()
{
    const platform::Settings &settings = platform::Settings::get();
    return platform::ConfigFiles(settings.state_dir, settings.runtime_dir);
}

// The full name of a key: as it was given, or of the known key with that last component.
std::string full_name(const std::string &name)
{
    const platform::KnownKey *known = platform::find_known_key(name);
    return known != nullptr ? known->name : name;
}

int refuse_name(const std::string &name)
{
    return refuse("\"" + name +
                  "\" is no key: names begin with db/ or memory/; \"tvctl config list\" shows the "
                  "known ones");
}

int get(const Arguments &arguments)
{
    if (arguments.size() != 1)
        return usage_error("config get", "needs a key");
    const std::string name = full_name(arguments[0]);
    if (!platform::ConfigFiles::is_valid_key(name))
        return refuse_name(name);
    int value = 0;
    if (!store().read(name, value))
        return refuse(name + " is not set");
    std::printf("%d\n", value);
    return EXIT_DONE;
}

int set(const Arguments &arguments)
{
    if (arguments.size() != 2)
        return usage_error("config set", "needs a key and a value");
    const std::string name = full_name(arguments[0]);
    int value = 0;
    if (!platform::ConfigFiles::is_valid_key(name))
        return refuse_name(name);
    if (!platform::ConfigFiles::parse(arguments[1], value))
        return refuse("\"" + arguments[1] + "\" is no integer");
    const platform::KnownKey *known = platform::find_known_key(name);
    if (known != nullptr && (value < known->lowest || value > known->highest))
        return refuse(name + " takes " + std::to_string(known->lowest) + " to " +
                      std::to_string(known->highest) + ", not " + std::to_string(value));
    return store().write(name, value) ? EXIT_DONE : refuse(name + " could not be written");
}

int list(const Arguments &arguments)
{
    if (!arguments.empty())
        return usage_error("config list", "takes no argument");
    std::map<std::string, std::string> lines;
    for (const platform::KnownKey &key : platform::known_keys())
        lines[key.name] = "-";
    for (const auto &[key, value] : store().list())
        lines[key] = std::to_string(value);
    for (const auto &[key, value] : lines)
        std::printf("%s %s\n", key.c_str(), value.c_str());
    return EXIT_DONE;
}

void print_key(const platform::ConfigFiles &files, const std::string &key)
{
    int value = 0;
    if (files.read(key, value))
        std::printf("%s %d\n", key.c_str(), value);
    else
        std::printf("%s -\n", key.c_str());
    // Whoever reads this waits for the line, not for a full buffer.
    std::fflush(stdout);
}

Eina_Bool quit(void *, int, void *)
{
    ecore_main_loop_quit();
    return ECORE_CALLBACK_PASS_ON;
}

/** Runs the main loop until a signal ends the program. */
class WatchLoop {
  public:
    WatchLoop()
    {
        setenv("ECORE_NO_SYSTEM_MODULES", "1", 0);
        ecore_init();
        handler_.reset(ecore_event_handler_add(ECORE_EVENT_SIGNAL_EXIT, quit, nullptr));
    }
    ~WatchLoop()
    {
        handler_.reset();
        ecore_shutdown();
    }
    WatchLoop(const WatchLoop &) = delete;
    WatchLoop &operator=(const WatchLoop &) = delete;

    int run() const
    {
        ecore_main_loop_begin();
        return EXIT_DONE;
    }

  private:
    platform::EventHandlerPtr handler_;
};

int watch(const Arguments &arguments)
{
    std::vector<std::string> names;
    for (const std::string &argument : arguments) {
        names.push_back(full_name(argument));
        if (!platform::ConfigFiles::is_valid_key(names.back()))
            return refuse_name(names.back());
    }
    if (names.empty())
        names = {"db/", "memory/"};
    const WatchLoop loop;
    platform::ConfigFiles files = store();
    platform::ConfigWatcher watcher(files);
    for (const std::string &name : names) {
        if (!watcher.add(name, nullptr,
                         [&files](const std::string &key) { print_key(files, key); }))
            return refuse(name + " cannot be watched");
    }
    return loop.run();
}

} // namespace

int config(const Arguments &arguments)
{
    const std::string action = arguments.empty() ? std::string() : arguments.front();
    const Arguments rest(arguments.empty() ? arguments.begin() : arguments.begin() + 1,
                         arguments.end());
    if (action == "get")
        return get(rest);
    if (action == "set")
        return set(rest);
    if (action == "list")
        return list(rest);
    if (action == "watch")
        return watch(rest);
    return usage_error("config", "needs get, set, watch or list");
}

} // namespace tvctl
