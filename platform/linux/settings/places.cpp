#include "settings/places.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <initializer_list>
#include <vector>

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/environment.h"
#include "base/paths.h"
#include "log/platform_log.h"

namespace platform {

namespace fs = std::filesystem;

namespace {

const char *const NAME = "ostrel-demo-player-tv";

// A directory named by one of our own variables; relative ones count from where we were started.
std::string own_override(const char *name)
{
    const std::string value = environment_variable(name);
    if (value.empty() || value.front() == '/')
        return without_last_slashes(value);
    std::error_code failure;
    const fs::path absolute = fs::absolute(value, failure);
    return failure ? std::string() : without_last_slashes(absolute.string());
}

// XDG says that a relative path in one of its variables is to be ignored.
std::string xdg_override(const char *name)
{
    const std::string value = environment_variable(name);
    return !value.empty() && value.front() == '/' ? without_last_slashes(value) : std::string();
}

std::string home_dir()
{
    if (std::string home = xdg_override("HOME"); !home.empty())
        return home;
    std::vector<char> buffer(16384);
    passwd entry = {};
    passwd *found = nullptr;
    if (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) == 0 &&
        found != nullptr && found->pw_dir[0] == '/')
        return without_last_slashes(found->pw_dir);
    return {};
}

bool exists(const std::string &path)
{
    struct stat status = {};
    return stat(path.c_str(), &status) == 0;
}

// Whether the path is a directory of ours that nobody else can change.
bool is_private_dir(const std::string &path)
{
    struct stat status = {};
    return lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode) &&
           status.st_uid == geteuid() && (status.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

std::string program_dir()
{
    std::error_code failure;
    const fs::path program = fs::read_symlink("/proc/self/exe", failure);
    return failure ? std::string() : program.parent_path().string();
}

} // namespace

std::string find_tv_conf()
{
    if (std::string named = own_override("OSTREL_DEMO_TV_CONF"); !named.empty()) {
        if (!exists(named))
            PLATFORM_LOGW("settings", "OSTREL_DEMO_TV_CONF names %s, which is not there",
                          named.c_str());
        return named;
    }
    std::string config_home = xdg_override("XDG_CONFIG_HOME");
    if (config_home.empty() && !home_dir().empty())
        config_home = home_dir() + "/.config";
    for (const std::string &base : {config_home, std::string("/etc")}) {
        std::string path = base + "/" + NAME + "/tv.conf";
        if (!base.empty() && exists(path))
            return path;
    }
    return {};
}

std::string find_state_dir()
{
    if (std::string named = own_override("OSTREL_DEMO_STATE_DIR"); !named.empty())
        return named;
    std::string base = xdg_override("XDG_STATE_HOME");
    if (base.empty())
        base = home_dir().empty() ? "/var/lib" : home_dir() + "/.local/state";
    return base + "/" + NAME;
}

std::string find_runtime_dir()
{
    if (std::string named = own_override("OSTREL_DEMO_RUNTIME_DIR"); !named.empty())
        return named;
    if (const std::string base = xdg_override("XDG_RUNTIME_DIR"); !base.empty())
        return base + "/" + NAME;

    std::string path = std::string("/tmp/") + NAME + "-" + std::to_string(getuid());
    if (mkdir(path.c_str(), 0700) != 0 && errno != EEXIST) {
        PLATFORM_LOGW("settings", "%s cannot be made: %s", path.c_str(), std::strerror(errno));
    } else if (is_private_dir(path)) {
        return path;
    } else {
        PLATFORM_LOGW("settings", "%s is not this user's own and is not used", path.c_str());
    }
    return find_state_dir() + "/run";
}

std::string find_resource_dir()
{
    if (std::string named = own_override("OSTREL_DEMO_RESOURCE_DIR"); !named.empty())
        return named;
    const std::string program = program_dir();
    if (!program.empty()) {
        for (const char *place : {"/../share/ostrel-demo-player-tv", "/res", "/../res"}) {
            if (exists(program + place))
                return fs::path(program + place).lexically_normal().string();
        }
    }
    return INSTALLED_RESOURCE_DIR;
}

} // namespace platform
