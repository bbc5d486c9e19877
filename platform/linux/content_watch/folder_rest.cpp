#include "content_watch/folder_rest.h"

#include <utility>

namespace platform {

bool FolderRest::on_look(Time now, Watch watch, const std::optional<FolderState> &state)
{
    const bool first = !std::exchange(looked_, true);
    if (first)
        first_ = state;
    const bool same_as_last = std::exchange(last_, state) == state;
    if (watch == Watch::Nobody)
        next_look_ = now + (state ? patience_.unwatched : patience_.quiet);
    else if (!state || (watch == Watch::New && !first))
        next_look_ = now + patience_.quiet;
    else
        next_look_.reset();
    const bool at_rest = watch == Watch::Same || (watch == Watch::Nobody && same_as_last);
    return !first && at_rest && state && state != first_;
}

} // namespace platform
