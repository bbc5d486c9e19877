#include "player_rules/config_keys.h"

#include <climits>

#include "player_rules/rotation_timer.h"

namespace platform {

const std::vector<KnownKey> &known_keys()
{
    constexpr int LAST_INTERVAL = static_cast<int>(ROTATION_INTERVALS_S.size()) - 1;
    static const std::vector<KnownKey> keys = {
        {"db/menu/support/use_mode", INT_MIN, INT_MAX, {}, "use mode of the set; 0 ends the demo"},
        {DEMO_MODE_KEY, DEMO_SWITCHED_OFF, 0xFFFF, 0,
         "menu selection: 0 play all, -1 leave, else one file (portrait in the high byte)"},
        {"db/ostrel-demo-player-tv/file_mode", INT_MIN, INT_MAX, 1,
         "orientation in force: 1 landscape, 2 portrait"},
        {LANDSCAPE_TIMER_KEY, 0, LAST_INTERVAL, 0, "landscape timer index"},
        {PORTRAIT_TIMER_KEY, 0, LAST_INTERVAL, 0, "portrait timer index"},
        {ROTATION_AUTO_MODE_KEY, 0, 1, 0, "turn the panel by timer: 0 or 1"},
        {ROTATION_STATE_KEY,
         0,
         3,
         {},
         "panel: 1 landscape, 2 portrait, 3 landscape reversed, 0 portrait reversed"},
        {PLAYBACK_STATUS_KEY,
         INT_MIN,
         INT_MAX,
         {},
         "0 stopped, 1 playing, 2 nothing to play, 3 error or file skipped"},
        {"memory/usb-launcher-service/start_relaunch_timer",
         INT_MIN,
         INT_MAX,
         {},
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

int selection_of(int word, bool portrait)
{
    if (word == 0 || word == DEMO_SWITCHED_OFF)
        return word;
    const auto bits = static_cast<unsigned int>(word);
    return static_cast<int>((portrait ? bits >> 8 : bits) & 0xFF);
}

} // namespace platform
