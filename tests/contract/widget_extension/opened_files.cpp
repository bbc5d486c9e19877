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

/** The C library's own function behind one of the names below. */
template <typename Function> Function *own(Function *, const char *name)
{
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

} // namespace

// These stand before the C library's own: other programs open the same files at the same time, and
// must not be mistaken for this one, as they would be by a watch on the folders.
#define STANDS_BEFORE_OPEN(name)                                                                   \
    extern "C" int name(const char *path, int flags, ...)                                          \
    {                                                                                              \
        static int (*const next)(const char *, int, ...) =                                         \
            own<int(const char *, int, ...)>(nullptr, #name);                                      \
        va_list arguments;                                                                         \
        va_start(arguments, flags);                                                                \
        const mode_t mode = flags & (O_CREAT | O_TMPFILE) ? va_arg(arguments, mode_t) : 0;         \
        va_end(arguments);                                                                         \
        note(path);                                                                                \
        return next(path, flags, mode);                                                            \
    }

STANDS_BEFORE_OPEN(open)
STANDS_BEFORE_OPEN(open64)

#define STANDS_BEFORE_FOPEN(name)                                                                  \
    extern "C" FILE *name(const char *path, const char *mode)                                      \
    {                                                                                              \
        static FILE *(*const next)(const char *, const char *) =                                   \
            own<FILE *(const char *, const char *)>(nullptr, #name);                               \
        note(path);                                                                                \
        return next(path, mode);                                                                   \
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
