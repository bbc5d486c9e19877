#include "media_player/audio_sink.h"

#include <cstdlib>
#include <mutex>
#include <string>

#include "log/platform_log.h"
#include "media_player/audio_choice.h"

namespace platform {
namespace {

const char *const SILENT_SINK = "fakesink";

std::string wanted_sink()
{
    const char *wanted = std::getenv("OSTREL_DEMO_AUDIO_SINK");
    if (!wanted || !*wanted)
        return {};
    if (make_element(wanted))
        return wanted;
    static std::once_flag told;
    std::call_once(told, [wanted] {
        PLATFORM_LOGW("player", "OSTREL_DEMO_AUDIO_SINK: there is no element \"%s\"", wanted);
    });
    return {};
}

/** A sink of its own, which has its device as long as it is there. */
class OpenSink {
  public:
    // The sinks open their device or reach their server on the way to READY.
    explicit OpenSink(const std::string &factory)
        : sink_(make_element(factory.c_str())),
          opened_(sink_ &&
                  gst_element_set_state(sink_.get(), GST_STATE_READY) != GST_STATE_CHANGE_FAILURE)
    {
    }
    ~OpenSink()
    {
        if (sink_)
            gst_element_set_state(sink_.get(), GST_STATE_NULL);
    }
    OpenSink(const OpenSink &) = delete;
    OpenSink &operator=(const OpenSink &) = delete;

    bool opened() const { return opened_; }

  private:
    const ElementPtr sink_;
    const bool opened_;
};

bool opens(const std::string &factory)
{
    return OpenSink(factory).opened();
}

bool opens_twice(const std::string &factory)
{
    const OpenSink first(factory);
    return first.opened() && opens(factory);
}

AudioChoice &audio_choice()
{
    // Never destroyed: a search may hang in a sound server past the end of the process.
    static auto &choice =
        *new AudioChoice({wanted_sink, opens, opens_twice, std::chrono::steady_clock::now});
    return choice;
}

} // namespace

bool choose_audio_sink()
{
    return !audio_choice().sink().empty();
}

ElementPtr make_audio_sink()
{
    const std::string chosen = audio_choice().sink();
    const std::string element = chosen.empty() ? SILENT_SINK : chosen;
    ElementPtr sink = make_element(element.c_str());
    if (sink && element == SILENT_SINK)
        g_object_set(sink.get(), "sync", TRUE, nullptr);
    return sink;
}

bool audio_sink_is_shared()
{
    return audio_choice().is_shared();
}

void forget_audio_sink()
{
    audio_choice().forget();
}

void avoid_audio_sink()
{
    audio_choice().on_hang();
}

} // namespace platform
