#include "config_store/known_keys.h"

#include <climits>

#include "config_store/key_names.h"

namespace platform {

const std::vector<KnownKey> &known_keys()
{
    static const std::vector<KnownKey> keys = {
        {USE_MODE_KEY, INT_MIN, INT_MAX, "use mode of the set; 0 ends the demo"},
        {DEMO_MODE_KEY, -1, 0xFFFF,
         "menu selection: 0 play all, -1 leave, else one file (portrait in the high byte)"},
        {FILE_MODE_KEY, INT_MIN, INT_MAX, "orientation in force: 1 landscape, 2 portrait"},
        {LANDSCAPE_TIMER_KEY, 0, 9, "landscape timer index"},
        {PORTRAIT_TIMER_KEY, 0, 9, "portrait timer index"},
        {ROTATION_AUTO_MODE_KEY, 0, 1, "turn the panel by timer: 0 or 1"},
        {ROTATION_STATE_KEY, 0, 3,
         "panel: 1 landscape, 2 portrait, 3 landscape reversed, 0 portrait reversed"},
        {PLAYBACK_STATUS_KEY, INT_MIN, INT_MAX,
         "0 stopped, 1 playing, 2 nothing to play, 3 error or file skipped"},
        {RELAUNCH_TIMER_KEY, INT_MIN, INT_MAX,
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
