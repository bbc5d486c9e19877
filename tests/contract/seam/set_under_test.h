/**
 * The set that the cases of this folder talk to: once the recording fake of the unit tests, once
 * the real services. The cases know only the platform's own headers and these few functions, so a
 * fake that answers otherwise than the real thing fails here.
 */
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace set_under_test {

/** Begins a test with a set of its own. */
void begin();

/** Ends it; nothing of the set runs any more. */
void end();

/**
 * Lets the set go on until the condition holds, or until it has nothing left to do or a deadline
 * has passed.
 *
 * @return whether the condition holds
 */
bool goes_on_until(const std::function<bool()> &condition);

/** A short video that plays, and files that do not. */
std::string good_video();
std::string broken_video();
std::string missing_video();

/** A photo that can be shown, and one whose header is rubbish. */
std::string good_photo();
std::string broken_photo();

/** Another process of the set writes a key. */
void another_process_writes(const char *key, int value);

/** Plugs these sticks in, and no others. @return their mount paths, in the order to be told. */
std::vector<std::string> plug_in(int sticks);

} // namespace set_under_test
