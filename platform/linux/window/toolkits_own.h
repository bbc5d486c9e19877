/**
 * The toolkit's own function behind one that this program defines itself. Any thread.
 */
#pragma once

#include <dlfcn.h>

namespace platform {

/** @param name a function of a shared library that the program is linked with */
template <typename Function> Function toolkits_own(const char *name)
{
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

} // namespace platform
