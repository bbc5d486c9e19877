/**
 * Starting a thread on a machine that may have none to give. A demo that runs for weeks must lose
 * one video to that, and not end.
 */
#pragma once

#include <system_error>
#include <thread>
#include <utility>

#include "log/platform_log.h"

namespace platform {

/**
 * Starts a thread. Any thread.
 *
 * @param purpose what it is for, for the log
 * @return one that is not joinable() when it cannot be started
 */
template <typename Function> std::thread start_thread(const char *purpose, Function &&function)
{
    try {
        return std::thread(std::forward<Function>(function));
    } catch (const std::system_error &error) {
        PLATFORM_LOGW("player", "no thread can be started for %s: %s", purpose, error.what());
        return {};
    }
}

} // namespace platform
