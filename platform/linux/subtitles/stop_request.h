/**
 * How a subtitle's load hears that nobody waits for it any more. A file of the largest size in a
 * format that no reader knows takes seconds; a video that was closed must not leave that behind.
 */
#pragma once

#include <functional>

namespace platform {

/** Asked again and again in the loading thread; true ends the load. Empty: never. */
using StopRequest = std::function<bool()>;

/** What a load that was ended tells as its error. */
constexpr char LOAD_STOPPED[] = "It was closed before it was read.";

inline bool is_stopped(const StopRequest &request)
{
    return request && request();
}

} // namespace platform
