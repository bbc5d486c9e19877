/**
 * Makes sequences of steps from a seed: a set, a launch, and then whatever can happen, the likely
 * more often. It looks at the model to choose what makes sense, never at the player, so a seed
 * gives the same sequence whatever the player does.
 */
#pragma once

#include <cstdint>

#include "steps.h"

namespace model {

/** @param length steps after the launch */
Steps make_sequence(uint64_t seed, int length);

} // namespace model
