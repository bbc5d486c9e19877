#include "settings/settings.h"

#include "log/platform_log.h"
#include "settings/places.h"
#include "settings/tv_conf.h"

namespace platform {

const Settings &Settings::get()
{
    // Never destroyed: threads that are still ending may ask.
    static const Settings &settings = *new Settings(read(find_tv_conf()));
    return settings;
}

Settings Settings::read(const std::string &path)
{
    Settings settings;
    if (!path.empty())
        read_tv_conf(path, settings);
    settings.state_dir = find_state_dir();
    settings.runtime_dir = find_runtime_dir();
    settings.resource_dir = find_resource_dir();
    return settings;
}

} // namespace platform
