/**
 * Gives the steps to the real player on the fake set and to the model, compares both after each,
 * and looks for what must never be.
 */
#pragma once

#include <map>
#include <string>
#include <vector>

#include "model.h"
#include "steps.h"

class COstrelDemoPlayer;

namespace fake {
class Platform;
}

namespace model {

/** What became of a sequence. */
struct Outcome {
    std::string failure;                 /**< empty when all was as expected */
    size_t step = 0;                     /**< index of the step that failed */
    int events = 0;                      /**< steps that could happen and did */
    std::map<std::string, int> happened; /**< how often each kind of step did */

    bool passed() const { return failure.empty(); }
};

/** Plays a sequence from a fresh set to the end of the program. */
Outcome play(const Steps &steps);

/**
 * What is not as the model has it in the player and the fake set, a line each.
 *
 * @param controller null before the launch
 */
std::string state_difference(COstrelDemoPlayer *controller, const Model &model);

/** Calls of this step that are compared, without the numbers of the handles. */
std::vector<std::string> real_calls();

/**
 * What must hold whatever happened.
 *
 * @param popup_calls_failed a call that makes the popup or its block failed at some time, so that
 *                           one may be there without the other
 * @return what does not hold, or an empty text
 */
std::string broken_invariant(COstrelDemoPlayer *controller, bool popup_calls_failed);

/**
 * What the player still holds after its end and must not.
 *
 * @param popup_failed at some time a popup could not be made; the list meant for it has no owner
 */
std::string leftover(bool popup_failed);

} // namespace model
