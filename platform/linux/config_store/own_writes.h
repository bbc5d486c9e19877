/**
 * What this very process writes to the configuration store, told at once and told apart from what
 * others write. Main-loop thread only.
 */
#pragma once

#include <functional>
#include <string>

namespace platform {

/**
 * Calls a function after each key that the application itself has written, even with the value it
 * had. One function at a time; an empty one ends it.
 */
void on_own_write(std::function<void(const std::string &key, int value)> listener);

} // namespace platform
