/**
 * The configuration as a set leaves the factory: the player's own keys exist, so that staff can
 * step the intervals and other programs find something to read. Main-loop thread only.
 */
#pragma once

namespace platform {

/** Writes each key that does not exist yet; what is there already stays. */
void write_factory_defaults();

} // namespace platform
