/** Variables of the environment. Any thread, as long as none changes them. */
#pragma once

#include <cstdlib>
#include <string>

namespace platform {

/** The value of a variable; empty also where it is not set. */
inline std::string environment_variable(const char *name)
{
    const char *value = std::getenv(name);
    return value ? value : "";
}

} // namespace platform
