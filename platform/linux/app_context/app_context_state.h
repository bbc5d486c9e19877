/**
 * What the player has asked of the rest of the set, for those who report on it. There is no rest of
 * the set here to act on it. Main-loop thread only.
 */
#pragma once

#include <map>
#include <string>
#include <vector>

namespace platform {

struct AppContextState {
    bool connected = false;    ///< the application-context manager is in use
    bool epop_blocked = false; ///< the set's own pop-ups are kept from showing
    std::map<std::string, std::vector<std::string>> disabled_items; ///< by application id

    /** The present state. */
    static const AppContextState &get();
};

} // namespace platform
