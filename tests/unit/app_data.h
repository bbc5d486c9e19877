/**
 * What main() hands to its lifecycle callbacks, as it is laid out in main.cpp.
 */
#pragma once

#include "platform.h"

class COstrelDemoPlayer;

struct AppData {
    const char *id;
    COstrelDemoPlayer *controller; /**< null until the first launch request */
};

/** The running application's; null outside the main loop. */
inline const AppData *app_data()
{
    return static_cast<const AppData *>(fake::platform().app.data());
}

/** The one controller, or null. */
inline COstrelDemoPlayer *app_controller()
{
    const AppData *data = app_data();
    return data == nullptr ? nullptr : data->controller;
}
