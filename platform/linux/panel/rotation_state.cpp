#include "panel/rotation_state.h"

#include "config_store.h"
#include "log/platform_log.h"
#include "panel/panel_model.h"
#include "player_rules/config_keys.h"
#include "settings/settings.h"

namespace platform {

namespace {

constexpr char SERVICE[] = "panel";

void store(int state)
{
    if (vconf_set_int(ROTATION_STATE_KEY, state) != 0)
        PLATFORM_LOGW(SERVICE, "the rotation state %d could not be stored", state);
}

} // namespace

// The states are counted a quarter turn ahead of the angles: 1, 2, 3, 0 for 0, 90, 180, 270.

int angle_of_rotation_state(int state)
{
    return state < 0 || state > 3 ? 0 : (state + 3) % 4 * 90;
}

int rotation_state_of_angle(int degrees)
{
    return (degrees / 90 + 1) % 4;
}

void rotation_state_start()
{
    PanelModel &panel = PanelModel::get();
    int state = 0;
    if (vconf_get_int(ROTATION_STATE_KEY, &state) != 0) {
        state = Settings::get().first_rotation_state;
        store(state);
    }
    panel.set_first_angle(angle_of_rotation_state(state));

    static const auto following =
        panel.on_angle([](int degrees) { store(rotation_state_of_angle(degrees)); });
}

} // namespace platform
