/**
 * What the platform itself asks of the configuration store, beside what the application does.
 * Main-loop thread only.
 */
#pragma once

#include <functional>
#include <map>
#include <string>

namespace platform {

/**
 * Writes each key that a set has when it leaves the factory and that does not exist yet or holds no
 * integer, so that staff can step the intervals and other programs find something to read. One that
 * the medium does not give is left as it is, for it may give it another time.
 */
void write_factory_defaults();

/**
 * Calls a function after each key that the application itself has written, even with the value it
 * had; what others write is not told. One function at a time; an empty one ends it.
 */
void on_own_write(std::function<void(const std::string &key, int value)> listener);

/** Every key that can be read, with the value that vconf_get_int() gives. */
std::map<std::string, int> stored_keys();

/**
 * Waits, a second and a half at most, until all that the application has written is on the medium.
 *
 * @return false when something is not, which is in the log; it may get there yet
 */
bool finish_writes();

} // namespace platform
