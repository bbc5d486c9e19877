/**
 * The service manager that has started this process, if one has and wants to hear of it: told by
 * datagrams, as sd_notify(3) describes them. Any thread.
 */
#pragma once

#include <atomic>
#include <chrono>
#include <string>

#include "base/descriptor.h"
#include "base/toolkit_handles.h"

namespace platform {

class ServiceManager {
  public:
    /** What a manager asks of the process that it starts. */
    struct Request {
        std::string address;                   ///< of its socket; empty: there is no manager
        std::chrono::microseconds watchdog{0}; ///< the longest silence; 0: it may last for ever
    };

    /**
     * Takes the request out of the environment, before there is another thread: the toolkit would
     * tell the manager by itself that all is ready, before anything is on the screen, and what
     * this process starts is not to speak for it.
     */
    static Request take_request();

    /** The one of this process; its request is taken at the first call. */
    static ServiceManager &get();

    explicit ServiceManager(const Request &request);

    /** Whether there is one, which starts this process again when it has ended. */
    bool present() const { return static_cast<bool>(socket_); }

    /** Tells that the main loop goes round. Before tell_ready() it begs for more time to start. */
    void tell_alive();

    /**
     * Has the main loop tell that by itself, three times in the longest silence. Main-loop thread.
     *
     * @return until when; nothing where nobody watches
     */
    TimerPtr watch_main_loop();

    /** Tells that a picture is on the screen. */
    void tell_ready();

    /** Tells in a line what the process is doing. */
    void tell_status(const std::string &status);

  private:
    bool send(const std::string &state) const;

    const std::string address_;
    const std::chrono::microseconds watchdog_;
    Descriptor socket_;
    std::atomic<bool> ready_{false};
    std::atomic<bool> heard_ready_{false};
};

} // namespace platform
