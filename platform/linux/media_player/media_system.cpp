#include "media_player/media_system.h"

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <future>
#include <memory>
#include <system_error>
#include <thread>
#include <utility>

#include <dlfcn.h>
#include <unistd.h>

#include "log/platform_log.h"
#include "media_player/audio_sink.h"
#include "media_player/gst_ptr.h"
#include "media_player/media_formats.h"

namespace platform {
namespace {

// What nearly every video needs.
const char *const COMMON_ELEMENTS[] = {"playbin",    "uridecodebin", "decodebin", "filesrc",
                                       "multiqueue", "typefind",     "qtdemux",   "h264parse",
                                       "volume",     "audioconvert", "fakesink"};
const char *const COMMON_DECODERS[] = {"avdec_h264", "avdec_aac"};

// The end of the program is not to be felt.
constexpr auto LOOK_AFTER_STOPPING = std::chrono::milliseconds(50);

// How many threads are at work here.
std::atomic<int> under_way = 0;

void load(const char *element)
{
    GstElementFactory *factory = gst_element_factory_find(element);
    if (!factory)
        return;
    if (GstPluginFeature *loaded = gst_plugin_feature_load(GST_PLUGIN_FEATURE(factory)))
        gst_object_unref(loaded);
    gst_object_unref(factory);
}

/** Whether the process has the C library's own allocator, and not one that stands before it. */
bool has_usual_allocator()
{
    void *library = dlopen("libc.so.6", RTLD_LAZY | RTLD_NOLOAD);
    return library && dlsym(library, "malloc") == dlsym(RTLD_DEFAULT, "malloc");
}

/**
 * Loads an element's plugin such that its libraries look for their symbols among themselves first.
 * Those of the decoders are a hundred and fifty, and the loader would go through all libraries of
 * the program for nearly every symbol, which is a third of its work. A library that stands before
 * all others, as allocators do, would be passed over: where there is one, the plugin is left to
 * load(). It stays loaded, as plugins do.
 */
void load_by_itself(const char *element)
{
    const std::unique_ptr<GstElementFactory, GstObjectUnref> factory(
        gst_element_factory_find(element));
    if (!factory || !has_usual_allocator())
        return;
    const std::unique_ptr<GstPlugin, GstObjectUnref> plugin(
        gst_plugin_feature_get_plugin(GST_PLUGIN_FEATURE(factory.get())));
    if (const char *file = plugin ? gst_plugin_get_filename(plugin.get()) : nullptr)
        dlopen(file, RTLD_LAZY | RTLD_LOCAL | RTLD_DEEPBIND);
}

bool set_up()
{
    GError *error = nullptr;
    if (!gst_init_check(nullptr, nullptr, &error)) {
        const ErrorPtr owned(error);
        PLATFORM_LOGE("player", "GStreamer does not start: %s",
                      owned ? owned->message : "no reason given");
        return false;
    }
    limit_formats();
    for (const char *element : COMMON_ELEMENTS)
        load(element);
    // What looks into a file to tell its kind is no element.
    if (GstPlugin *loaded = gst_plugin_load_by_name("typefindfunctions"))
        gst_object_unref(loaded);
    return true;
}

/** Throws std::system_error when there is no thread to be had. */
template <typename Work> void begin(Work work)
{
    ++under_way;
    try {
        std::thread([work = std::move(work)]() mutable {
            work();
            --under_way;
        }).detach();
    } catch (const std::system_error &) {
        --under_way;
        throw;
    }
}

// Without a thread of its own the first file's thread does it, when it comes to wait for it.
std::shared_future<bool> begin_set_up()
{
    try {
        std::packaged_task<bool()> task(set_up);
        std::shared_future<bool> ready = task.get_future().share();
        begin(std::move(task));
        return ready;
    } catch (const std::system_error &error) {
        PLATFORM_LOGW("player", "no thread can be started for GStreamer: %s", error.what());
        return std::async(std::launch::deferred, set_up).share();
    }
}

const std::shared_future<bool> &media_system()
{
    static const std::shared_future<bool> ready = begin_set_up();
    return ready;
}

} // namespace

void start_media_system()
{
    media_system();
}

bool wait_for_media_system(const std::atomic<bool> &stopping)
{
    while (media_system().wait_for(LOOK_AFTER_STOPPING) == std::future_status::timeout)
        if (stopping)
            return false;
    if (!media_system().get())
        return false;
    choose_audio_sink();
    return true;
}

void load_decoders()
{
    try {
        begin([] {
            if (!media_system().get())
                return;
            for (const char *decoder : COMMON_DECODERS) {
                load_by_itself(decoder);
                load(decoder);
            }
        });
    } catch (const std::system_error &error) {
        PLATFORM_LOGW("player", "no thread can be started for the decoders: %s", error.what());
    }
}

void abandon_media_system()
{
    if (under_way == 0)
        return;
    // The process cannot take its libraries down while a thread loads more of them.
    on_exit(
        [](int status, void *) {
            std::fflush(nullptr);
            _exit(status);
        },
        nullptr);
}

} // namespace platform
