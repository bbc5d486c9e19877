/**
 * Plays sequences in a process of their own, so that one that crashes, hangs or leaks is found
 * like one that goes wrong, and makes a failing one as short as it can be.
 */
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "steps.h"

namespace model {

/** What became of many sequences. */
struct Report {
    long events = 0; /**< of the sequences that passed, and of the one that did not */
    std::map<std::string, long> happened;
    bool failed = false;
    uint64_t seed = 0; /**< of the sequence that failed */
    std::string failure;
};

/** Plays sequence after sequence, from this seed on, until so many events have happened. */
Report play_many(uint64_t first_seed, long events, int length);

/** Plays one sequence in a process of its own. @return what went wrong, or an empty text. */
std::string try_steps(const Steps &steps);

/** The shortest part of a failing sequence that this finds and that still fails. */
Steps shrink(Steps steps);

} // namespace model
