#include "media_player/media_system.h"

#include <future>
#include <system_error>
#include <thread>

#include "log/platform_log.h"
#include "media_player/audio_sink.h"
#include "media_player/gst_ptr.h"

namespace platform {
namespace {

// What nearly every video needs. Loading the decoders takes longer than all the rest together.
const char *const COMMON_ELEMENTS[] = {
    "playbin",   "uridecodebin", "decodebin", "filesrc", "multiqueue",   "typefind",    "qtdemux",
    "h264parse", "avdec_h264",   "avdec_aac", "volume",  "audioconvert", "deinterlace", "fakesink"};

void load(const char *element)
{
    GstElementFactory *factory = gst_element_factory_find(element);
    if (!factory)
        return;
    if (GstPluginFeature *loaded = gst_plugin_feature_load(GST_PLUGIN_FEATURE(factory)))
        gst_object_unref(loaded);
    gst_object_unref(factory);
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
    for (const char *element : COMMON_ELEMENTS)
        load(element);
    choose_audio_sink();
    return true;
}

// Without a thread of its own the first file's thread does it, when it comes to wait for it.
std::future<bool> begin_set_up()
{
    try {
        return std::async(std::launch::async, set_up);
    } catch (const std::system_error &error) {
        PLATFORM_LOGW("player", "no thread can be started for GStreamer: %s", error.what());
        return std::async(std::launch::deferred, set_up);
    }
}

const std::shared_future<bool> &media_system()
{
    static const std::shared_future<bool> ready = begin_set_up().share();
    return ready;
}

} // namespace

void start_media_system()
{
    media_system();
}

bool wait_for_media_system()
{
    return media_system().get();
}

} // namespace platform
