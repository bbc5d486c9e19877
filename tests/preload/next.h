/**
 * For a library that stands in front of the player's own: what it passes its calls on to. Each
 * library has functions of its own, because the linker would give all of them those of the first,
 * and what is behind that one is not what is behind the others.
 */
#pragma once

#include <cstdarg>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/types.h>

/** The function of the name in the libraries behind. */
template <typename Function> static Function *next(const char *name)
{
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

/** The third word of open(), which is there only where a file may be made. */
[[maybe_unused]] static mode_t mode_in(va_list words, int flags)
{
    return (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(words, mode_t) : 0;
}
