#include "sound_route.h"

#include <memory>
#include <optional>
#include <string>

#include "log/platform_log.h"
#include "settings/settings.h"
#include "sound_route/pulse_client.h"

namespace {

using platform::PulseClient;
using platform::Settings;

// The main loop waits for the sound server, so not for long.
constexpr int LONGEST_WAIT_MS = 500;

// Any sink that is neither of the two.
constexpr int OTHER_ROUTE = 2;

class SoundRoute {
  public:
    static SoundRoute &get()
    {
        static SoundRoute route;
        return route;
    }

    std::optional<int> selection()
    {
        const std::unique_ptr<PulseClient> server = connect();
        const auto sink = server ? server->default_sink() : std::nullopt;
        if (!sink)
            return std::nullopt;
        learn_internal_sink(*sink);
        if (*sink == external_sink())
            return SOUND_SPEAKER_EXTERNAL;
        return *sink == internal_sink_ ? SOUND_SPEAKER_INTERNAL : OTHER_ROUTE;
    }

    bool select(int speaker)
    {
        if (speaker != SOUND_SPEAKER_INTERNAL && speaker != SOUND_SPEAKER_EXTERNAL)
            return false;
        const std::unique_ptr<PulseClient> server = connect();
        const auto present = server ? server->default_sink() : std::nullopt;
        if (!present)
            return false;
        learn_internal_sink(*present);
        const std::string &sink =
            speaker == SOUND_SPEAKER_EXTERNAL ? external_sink() : internal_sink_;
        if (sink.empty() || !server->has_sink(sink)) {
            PLATFORM_LOGW("sound_route", "route %d has no sink%s%s; see [sound] in tv.conf",
                          speaker, sink.empty() ? "" : " named ", sink.c_str());
            return false;
        }
        if (!server->set_default_sink(sink) || !server->move_streams(sink)) {
            PLATFORM_LOGW("sound_route", "the sound server did not switch to %s", sink.c_str());
            return false;
        }
        PLATFORM_LOGI("sound_route", "%s -> %s", present->c_str(), sink.c_str());
        return true;
    }

  private:
    SoundRoute() : internal_sink_(Settings::get().internal_sink) {}

    static const std::string &external_sink() { return Settings::get().external_sink; }

    // The set's own speakers are the default sink that is found at the first use, unless tv.conf
    // names them or the sound goes to the external output already.
    void learn_internal_sink(const std::string &default_sink)
    {
        if (internal_sink_.empty() && default_sink != external_sink())
            internal_sink_ = default_sink;
    }

    std::unique_ptr<PulseClient> connect()
    {
        std::unique_ptr<PulseClient> server = PulseClient::connect(LONGEST_WAIT_MS);
        if (!server && answered_)
            PLATFORM_LOGW("sound_route", "no sound server answers; the routes cannot be switched");
        answered_ = server != nullptr;
        return server;
    }

    std::string internal_sink_;
    bool answered_ = true;
};

} // namespace

int sound_manager_get_speaker_selection(int *speaker)
{
    if (speaker == nullptr)
        return -1;
    const std::optional<int> selection = SoundRoute::get().selection();
    if (!selection)
        return -1;
    *speaker = *selection;
    return 0;
}

int sound_manager_set_speaker_selection(int speaker)
{
    return SoundRoute::get().select(speaker) ? 0 : -1;
}
