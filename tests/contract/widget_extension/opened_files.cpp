#include "opened_files.h"

#include <cstdarg>
#include <cstdio>
#include <mutex>

#include <dlfcn.h>
#include <fcntl.h>

namespace {

const std::string FONTS = "/usr/share/fonts/";
const std::string RESOURCES = BUILT_RESOURCE_DIR "/";

std::mutex lock;
bool noting = false;
std::vector<std::string> noted;

bool lies_in(const std::string &path, const std::string &folder)
{
    return path.compare(0, folder.size(), folder) == 0;
}

void note(const char *path)
{
    const std::lock_guard<std::mutex> guard(lock);
    if (noting && path && (lies_in(path, FONTS) || lies_in(path, RESOURCES)))
        noted.emplace_back(path);
}

bool takes_mode(int flags)
{
    return (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE;
}

} // namespace

// These stand before the C library's own: other programs open the same files at the same time, and
// must not be mistaken for this one, as they would be by a watch on the folders.
#define STANDS_BEFORE_OPEN(name)                                                                   \
    extern "C" int name(const char *path, int flags, ...)                                          \
    {                                                                                              \
        static const auto own = reinterpret_cast<decltype(&name)>(dlsym(RTLD_NEXT, #name));        \
        va_list arguments;                                                                         \
        va_start(arguments, flags);                                                                \
        const mode_t mode = takes_mode(flags) ? va_arg(arguments, mode_t) : 0;                     \
        va_end(arguments);                                                                         \
        note(path);                                                                                \
        return own(path, flags, mode);                                                             \
    }

STANDS_BEFORE_OPEN(open)
STANDS_BEFORE_OPEN(open64)

#define STANDS_BEFORE_FOPEN(name)                                                                  \
    extern "C" FILE *name(const char *path, const char *mode)                                      \
    {                                                                                              \
        static const auto own = reinterpret_cast<decltype(&name)>(dlsym(RTLD_NEXT, #name));        \
        note(path);                                                                                \
        return own(path, mode);                                                                    \
    }

STANDS_BEFORE_FOPEN(fopen)
STANDS_BEFORE_FOPEN(fopen64)

OpenedFiles::OpenedFiles()
{
    const std::lock_guard<std::mutex> guard(lock);
    noted.clear();
    noting = true;
}

OpenedFiles::~OpenedFiles()
{
    const std::lock_guard<std::mutex> guard(lock);
    noting = false;
}

std::vector<std::string> OpenedFiles::paths() const
{
    const std::lock_guard<std::mutex> guard(lock);
    return noted;
}
