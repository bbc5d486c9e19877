/**
 * What the command line tools do about signals.
 */
#pragma once

#include <csignal>

namespace tools {

/**
 * Has a handler called for each signal that asks the program to stop. A full disk or a size limit
 * is told by the write that fails, not by dying of it.
 */
inline void catch_stop_signals(void (*handler)(int))
{
    struct sigaction action = {};
    action.sa_handler = handler;
    for (const int number : {SIGINT, SIGTERM, SIGHUP})
        sigaction(number, &action, nullptr);
    std::signal(SIGXFSZ, SIG_IGN);
}

} // namespace tools
