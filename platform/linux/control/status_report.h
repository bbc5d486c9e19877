/**
 * Everything the platform knows about the running player. Main-loop thread only.
 */
#pragma once

#include <vector>

#include "control/status_text.h"

namespace platform {

/** The status at this moment. */
std::vector<StatusNode> status_report();

} // namespace platform
