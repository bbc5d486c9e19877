/**
 * The system language in force: what was set at run time, else what tv.conf says, else that of the
 * locale. Main-loop thread only.
 */
#pragma once

#include <string>

namespace platform {

/** Language, underscore, country, perhaps an encoding: "ko_KR", "de_DE.UTF-8". Never empty. */
std::string language();

/**
 * Makes another language the system's until the program ends. Whoever calls this also has the
 * framework announce the change.
 *
 * @param name language and country, e.g. "ko_KR"
 * @return false, nothing changed, for anything else
 */
bool set_language(const std::string &name);

/** Whether a language is written from right to left. */
bool is_right_to_left(const std::string &name);

} // namespace platform
