#include "subtitles/libav.h"

#include <dlfcn.h>

namespace platform {

namespace {

// The version whose headers we were built with.
#define LIBAV_TEXT_OF(number) #number
#define LIBAV_FILE(name, version) "lib" name ".so." LIBAV_TEXT_OF(version)

/** Loads libraries for as long as the process lives, and keeps the first reason for a failure. */
class Loader {
  public:
    void open(const char *file)
    {
        library_ = dlopen(file, RTLD_LAZY | RTLD_LOCAL);
        note_failure(library_);
    }

    template <typename Function> void find(const char *name, Function &function)
    {
        void *found = library_ ? dlsym(library_, name) : nullptr;
        note_failure(found);
        function = reinterpret_cast<Function>(found);
    }

    std::string error;

  private:
    void note_failure(const void *result)
    {
        if (result || !error.empty())
            return;
        const char *reason = dlerror();
        error = reason && *reason ? reason : "the loader gives no reason";
    }

    void *library_ = nullptr;
};

Libav load()
{
    Libav av = {};
    Loader loader;
#define LIBAV_FIND(name) loader.find(#name, av.name);
    loader.open(LIBAV_FILE("avutil", LIBAVUTIL_VERSION_MAJOR));
    LIBAV_UTIL_FUNCTIONS(LIBAV_FIND)
    loader.open(LIBAV_FILE("avcodec", LIBAVCODEC_VERSION_MAJOR));
    LIBAV_CODEC_FUNCTIONS(LIBAV_FIND)
    loader.open(LIBAV_FILE("avformat", LIBAVFORMAT_VERSION_MAJOR));
    LIBAV_FORMAT_FUNCTIONS(LIBAV_FIND)
#undef LIBAV_FIND
    av.error = loader.error;
    return av;
}

} // namespace

const Libav &libav()
{
    static const Libav loaded = load();
    return loaded;
}

} // namespace platform
