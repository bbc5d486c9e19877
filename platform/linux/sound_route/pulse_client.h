/**
 * A short conversation with the sound server, PulseAudio or PipeWire: connect, ask, change, leave.
 * Every call waits for its answer, all calls of one object together no longer than the time it was
 * made with, so that a server that hangs cannot hold up the main loop. One thread per object.
 */
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <pulse/context.h>
#include <pulse/mainloop.h>
#include <pulse/operation.h>

namespace platform {

class PulseClient {
  public:
    /**
     * Connects; never starts a server.
     *
     * @param limit_ms the longest that this object may wait altogether
     * @return null when no server answers
     */
    static std::unique_ptr<PulseClient> connect(int limit_ms);
    ~PulseClient();
    PulseClient(const PulseClient &) = delete;
    PulseClient &operator=(const PulseClient &) = delete;

    /** Name of the default sink; nothing when there is none or no answer came. */
    std::optional<std::string> default_sink();

    /** Whether there is a sink of that name. */
    bool has_sink(const std::string &name);

    /** Makes a sink the default one. @return false when the server did not do it. */
    bool set_default_sink(const std::string &name);

    /** Moves every stream that is playing to a sink. @return false when no answer came. */
    bool move_streams(const std::string &sink);

  private:
    struct MainloopDeleter {
        void operator()(pa_mainloop *loop) const { pa_mainloop_free(loop); }
    };

    PulseClient(pa_mainloop *loop, int limit_ms);
    bool wait_until(const std::function<bool()> &done);
    bool finish(pa_operation *operation);

    std::unique_ptr<pa_mainloop, MainloopDeleter> loop_;
    pa_context *context_ = nullptr;
    int64_t deadline_us_;
};

} // namespace platform
