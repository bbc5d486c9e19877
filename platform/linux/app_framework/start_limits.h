/**
 * Whether the machine gives this process what it needs to start: the toolkit crashes in the middle
 * of its own start where it gets too few descriptors, threads or addresses. What becomes scarce
 * later is each service's own matter.
 */
#pragma once

#include <string>

namespace platform {

/** Any thread. @return what there is too little of, in words; empty: nothing */
std::string missing_at_start();

} // namespace platform
