#include "sound_route/pulse_client.h"

#include <algorithm>
#include <cstdint>

#include <pulse/introspect.h>
#include <pulse/rtclock.h>

#include "log/platform_log.h"

namespace platform {

namespace {

// Answers arrive as callbacks; each kind has one function that stores what it is told.
void store_default_sink(pa_context *, const pa_server_info *info, void *data)
{
    if (info != nullptr && info->default_sink_name != nullptr)
        static_cast<std::string *>(data)->assign(info->default_sink_name);
}

void store_sink_found(pa_context *, const pa_sink_info *info, int, void *data)
{
    if (info != nullptr)
        *static_cast<bool *>(data) = true;
}

void store_success(pa_context *, int success, void *data)
{
    *static_cast<bool *>(data) = success != 0;
}

void store_stream(pa_context *, const pa_sink_input_info *info, int, void *data)
{
    if (info != nullptr)
        static_cast<std::vector<uint32_t> *>(data)->push_back(info->index);
}

} // namespace

std::unique_ptr<PulseClient> PulseClient::connect(int limit_ms)
{
    pa_mainloop *loop = pa_mainloop_new();
    if (loop == nullptr)
        return nullptr;
    std::unique_ptr<PulseClient> client(new PulseClient(loop, limit_ms));
    client->context_ = pa_context_new(pa_mainloop_get_api(loop), "ostrel-demo-player-tv");
    if (client->context_ == nullptr ||
        pa_context_connect(client->context_, nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0)
        return nullptr;
    const bool ready = client->wait_until([&] {
        const pa_context_state_t state = pa_context_get_state(client->context_);
        return state == PA_CONTEXT_READY || !PA_CONTEXT_IS_GOOD(state);
    });
    if (!ready || pa_context_get_state(client->context_) != PA_CONTEXT_READY)
        return nullptr;
    return client;
}

PulseClient::PulseClient(pa_mainloop *loop, int limit_ms)
    : loop_(loop),
      deadline_us_(static_cast<int64_t>(pa_rtclock_now()) + static_cast<int64_t>(limit_ms) * 1000)
{
}

PulseClient::~PulseClient()
{
    if (context_ == nullptr)
        return;
    pa_context_disconnect(context_);
    pa_context_unref(context_);
}

std::optional<std::string> PulseClient::default_sink()
{
    std::string name;
    if (!finish(pa_context_get_server_info(context_, store_default_sink, &name)) || name.empty())
        return std::nullopt;
    return name;
}

bool PulseClient::has_sink(const std::string &name)
{
    bool found = false;
    return finish(pa_context_get_sink_info_by_name(context_, name.c_str(), store_sink_found,
                                                   &found)) &&
           found;
}

bool PulseClient::set_default_sink(const std::string &name)
{
    bool success = false;
    return finish(pa_context_set_default_sink(context_, name.c_str(), store_success, &success)) &&
           success;
}

bool PulseClient::move_streams(const std::string &sink)
{
    std::vector<uint32_t> streams;
    if (!finish(pa_context_get_sink_input_info_list(context_, store_stream, &streams)))
        return false;
    for (const uint32_t stream : streams) {
        // A stream may have ended since, or be tied to its sink; the others move all the same.
        bool success = false;
        if (!finish(pa_context_move_sink_input_by_name(context_, stream, sink.c_str(),
                                                       store_success, &success)))
            return false;
        if (!success)
            PLATFORM_LOGI("sound_route", "stream %u stays where it is", stream);
    }
    return true;
}

bool PulseClient::wait_until(const std::function<bool()> &done)
{
    while (!done()) {
        const int64_t left_us = deadline_us_ - static_cast<int64_t>(pa_rtclock_now());
        if (left_us <= 0)
            return false;
        const int wait_us = static_cast<int>(std::min<int64_t>(left_us, INT32_MAX));
        if (pa_mainloop_prepare(loop_.get(), wait_us) < 0 || pa_mainloop_poll(loop_.get()) < 0 ||
            pa_mainloop_dispatch(loop_.get()) < 0)
            return false;
    }
    return true;
}

// Waits for an operation's answer. One that does not come in time is cancelled, because its
// callback would write into variables that are gone.
bool PulseClient::finish(pa_operation *operation)
{
    if (operation == nullptr)
        return false;
    const bool answered = wait_until(
        [operation] { return pa_operation_get_state(operation) != PA_OPERATION_RUNNING; });
    if (!answered)
        pa_operation_cancel(operation);
    const bool done = pa_operation_get_state(operation) == PA_OPERATION_DONE;
    pa_operation_unref(operation);
    return done;
}

} // namespace platform
