#include "media_player/audio_sink.h"

#include <cstdlib>
#include <mutex>
#include <string>

#include "log/platform_log.h"

namespace platform {
namespace {

const char *const silent_sink = "fakesink";

struct AudioChoice {
    std::mutex mutex;
    std::string element; ///< empty: not chosen yet
};

AudioChoice &audio_choice()
{
    static AudioChoice choice;
    return choice;
}

// The sinks open their device or reach their server on the way to READY.
bool opens(const char *factory)
{
    const ElementPtr sink = make_element(factory);
    if (!sink)
        return false;
    const bool opened =
        gst_element_set_state(sink.get(), GST_STATE_READY) != GST_STATE_CHANGE_FAILURE;
    gst_element_set_state(sink.get(), GST_STATE_NULL);
    return opened;
}

std::string find_sink()
{
    const char *wanted = std::getenv("OSTREL_DEMO_AUDIO_SINK");
    if (wanted && *wanted) {
        if (make_element(wanted)) {
            PLATFORM_LOGI("player", "sound goes to %s, as the environment says", wanted);
            return wanted;
        }
        PLATFORM_LOGW("player", "OSTREL_DEMO_AUDIO_SINK: there is no element \"%s\"", wanted);
    }
    for (const char *factory : {"pulsesink", "alsasink"}) {
        if (opens(factory)) {
            PLATFORM_LOGI("player", "sound goes to %s", factory);
            return factory;
        }
    }
    PLATFORM_LOGI("player", "there is no sound device; videos play in silence");
    return silent_sink;
}

} // namespace

void choose_audio_sink()
{
    AudioChoice &choice = audio_choice();
    const std::lock_guard<std::mutex> lock(choice.mutex);
    if (choice.element.empty())
        choice.element = find_sink();
}

ElementPtr make_audio_sink()
{
    choose_audio_sink();
    std::string element;
    {
        AudioChoice &choice = audio_choice();
        const std::lock_guard<std::mutex> lock(choice.mutex);
        element = choice.element.empty() ? silent_sink : choice.element;
    }
    ElementPtr sink = make_element(element.c_str());
    if (sink && element == silent_sink)
        g_object_set(sink.get(), "sync", TRUE, nullptr);
    return sink;
}

bool audio_sink_is_shared()
{
    AudioChoice &choice = audio_choice();
    const std::lock_guard<std::mutex> lock(choice.mutex);
    return choice.element == "pulsesink" || choice.element == silent_sink;
}

void forget_audio_sink()
{
    AudioChoice &choice = audio_choice();
    const std::lock_guard<std::mutex> lock(choice.mutex);
    choice.element.clear();
}

} // namespace platform
