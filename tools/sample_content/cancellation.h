/** The wish to stop, set by Ctrl-C and looked at by whatever takes long. */
#pragma once

#include <csignal>
#include <exception>

namespace sample {

/** Written by the signal handler; 0 until then. */
extern volatile std::sig_atomic_t stop_signal;

/** Thrown on the way out, so that every half-made file is removed. */
struct Cancelled : std::exception {
    const char *what() const noexcept override { return "Stopped."; }
};

inline void throw_if_cancelled()
{
    if (stop_signal != 0)
        throw Cancelled();
}

} // namespace sample
