#include "config_store/known_keys.h"

#include <climits>

namespace platform {

const std::vector<KnownKey> &known_keys()
{
    static const std::vector<KnownKey> keys = {
        {"db/menu/support/use_mode", INT_MIN, INT_MAX, "use mode of the set; 0 ends the demo"},
        {"db/ostrel-demo-player-tv/demo_mode", -1, 0xFFFF,
         "menu selection: 0 play all, -1 leave, else one file (portrait in the high byte)"},
        {"db/ostrel-demo-player-tv/file_mode", INT_MIN, INT_MAX,
         "orientation in force: 1 landscape, 2 portrait"},
        {"db/ostrel-demo-player-tv/landscape_timer", 0, 9, "landscape timer index"},
        {"db/ostrel-demo-player-tv/portrait_timer", 0, 9, "portrait timer index"},
        {"db/ostrel-demo-player-tv/rotation_auto_mode", 0, 1, "turn the panel by timer: 0 or 1"},
        {"db/sysman/rotation_state", 0, 3,
         "panel: 1 landscape, 2 portrait, 3 landscape reversed, 0 portrait reversed"},
        {"memory/ostrel-demo-player-tv/playback_status", INT_MIN, INT_MAX,
         "0 stopped, 1 playing, 2 nothing to play, 3 error or file skipped"},
        {"memory/usb-launcher-service/start_relaunch_timer", INT_MIN, INT_MAX,
         "signal to the launcher: 3 the demo runs, 1 it has ended"},
    };
    return keys;
}

const KnownKey *find_known_key(const std::string &name)
{
    for (const KnownKey &key : known_keys()) {
        const std::string full = key.name;
        if (full == name || full.substr(full.rfind('/') + 1) == name)
            return &key;
    }
    return nullptr;
}

} // namespace platform
