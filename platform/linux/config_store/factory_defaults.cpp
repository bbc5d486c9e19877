#include "config_store/factory_defaults.h"

#include "config_store.h"

#include "player_rules/config_keys.h"

namespace platform {

void write_factory_defaults()
{
    for (const KnownKey &key : known_keys()) {
        int present = 0;
        if (key.factory && vconf_get_int(key.name, &present) != 0)
            vconf_set_int(key.name, *key.factory);
    }
}

} // namespace platform
