#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <Ecore.h>

#include "base/toolkit_handles.h"
#include "command.h"
#include "config_store.h"
#include "config_store/config_files.h"
#include "player_rules/config_keys.h"
#include "settings/settings.h"
#include "store_watch.h"

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

void print_key(const std::string &key)
{
    int value = 0;
    if (vconf_get_int(key.c_str(), &value) == 0)
        std::printf("%s %d\n", key.c_str(), value);
    else
        std::printf("%s -\n", key.c_str());
    // Whoever reads this waits for the line, not for a full buffer.
    std::fflush(stdout);
}

void print_change(keynode_t *node, void *)
{
    print_key(vconf_keynode_get_name(node));
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

int watch_everything()
{
    const WatchLoop loop;
    const platform::Settings &settings = platform::Settings::get();
    StoreWatch store(settings.state_dir, settings.runtime_dir, print_key);
    if (!store.start())
        return refuse(std::string("the store cannot be watched: ") + std::strerror(errno));
    return loop.run();
}

int watch(const Arguments &arguments)
{
    if (arguments.empty())
        return watch_everything();
    std::vector<std::string> names;
    for (const std::string &argument : arguments) {
        names.push_back(full_name(argument));
        if (!platform::ConfigFiles::is_valid_key(names.back()))
            return refuse_name(names.back());
    }
    const WatchLoop loop;
    int result = EXIT_DONE;
    for (const std::string &name : names) {
        if (vconf_notify_key_changed(name.c_str(), print_change, nullptr) != 0)
            result = refuse(name + " cannot be watched");
    }
    if (result == EXIT_DONE)
        result = loop.run();
    for (const std::string &name : names)
        vconf_ignore_key_changed(name.c_str(), print_change);
    return result;
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
