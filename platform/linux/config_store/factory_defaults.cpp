#include "config_store/factory_defaults.h"

#include "config_store.h"

namespace platform {

namespace {

struct Default {
    const char *key;
    int value;
};

constexpr Default DEFAULTS[] = {
    {"db/ostrel-demo-player-tv/demo_mode", 0}, // play all
    {"db/ostrel-demo-player-tv/file_mode", 1}, // landscape
    {"db/ostrel-demo-player-tv/rotation_auto_mode", 0},
    {"db/ostrel-demo-player-tv/portrait_timer", 0},
    {"db/ostrel-demo-player-tv/landscape_timer", 0},
};

} // namespace

void write_factory_defaults()
{
    for (const Default &entry : DEFAULTS) {
        int present = 0;
        if (vconf_get_int(entry.key, &present) != 0)
            vconf_set_int(entry.key, entry.value);
    }
}

} // namespace platform
