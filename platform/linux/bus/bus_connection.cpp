#include "bus/bus_connection.h"

#include <cerrno>
#include <chrono>

namespace platform {

BusPtr connect_session_bus()
{
    BusPtr bus;
    sd_bus_open_user(BusOutput(bus));
    return bus;
}

BusPtr connect_system_bus()
{
    BusPtr bus;
    sd_bus_open_system(BusOutput(bus));
    return bus;
}

bool serve_until(sd_bus *bus, double timeout_s, const std::function<bool()> &done)
{
    using Clock = std::chrono::steady_clock;
    const auto deadline = Clock::now() + std::chrono::duration<double>(timeout_s);
    while (!done()) {
        const std::chrono::duration<double, std::micro> left = deadline - Clock::now();
        int result = sd_bus_process(bus, nullptr);
        if (result == 0 && left.count() > 0.0)
            result = sd_bus_wait(bus, static_cast<uint64_t>(left.count()));
        if ((result < 0 && result != -EINTR) || sd_bus_is_open(bus) <= 0 || left.count() <= 0.0)
            return done();
    }
    return true;
}

// sd_bus_call() would wait for a bus that takes no connection for as long as that may take.
BusMessagePtr call_and_wait(sd_bus *bus, sd_bus_message *call, double timeout_s)
{
    BusMessagePtr reply;
    BusSlotPtr pending;
    const auto take = [](sd_bus_message *message, void *data, sd_bus_error *) {
        static_cast<BusMessagePtr *>(data)->reset(sd_bus_message_ref(message));
        return 1;
    };
    if (sd_bus_call_async(bus, BusOutput(pending), call, take, &reply, UINT64_MAX) >= 0)
        serve_until(bus, timeout_s, [&] { return reply != nullptr; });
    return reply;
}

} // namespace platform
