#include "config_store/factory_defaults.h"

#include "config_store.h"

#include "config_store/key_names.h"

namespace platform {

namespace {

struct Default {
    const char *key;
    int value;
};

constexpr Default DEFAULTS[] = {
    {DEMO_MODE_KEY, 0}, // play all
    {FILE_MODE_KEY, 1}, // landscape
    {ROTATION_AUTO_MODE_KEY, 0}, {PORTRAIT_TIMER_KEY, 0}, {LANDSCAPE_TIMER_KEY, 0},
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
