/**
 * The keys that the player and its neighbours on the set use. Any thread.
 */
#pragma once

#include <string>
#include <vector>

namespace platform {

struct KnownKey {
    const char *name;
    int lowest;  ///< smallest value with a meaning
    int highest; ///< largest value with a meaning
    const char *meaning;
};

const std::vector<KnownKey> &known_keys();

/** The key of that full name, or whose last component it is; null when there is none. */
const KnownKey *find_known_key(const std::string &name);

} // namespace platform
