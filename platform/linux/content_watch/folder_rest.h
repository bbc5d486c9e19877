/**
 * Whether a folder holds something else than it did, and has come to rest. Decides only: it is told
 * what happens and what is seen, and says when to look next. One thread at a time.
 */
#pragma once

#include <chrono>
#include <optional>

#include "content_watch/folder_state.h"

namespace platform {

class FolderRest {
  public:
    using Time = std::chrono::steady_clock::time_point;

    /** Who tells of events in the folder. */
    enum class Watch {
        Same,  ///< whoever did at the last look
        New,   ///< somebody since this look; what happened before nobody knows
        Nobody ///< nobody can
    };

    struct Patience {
        /** With no event for so long the folder is at rest. */
        std::chrono::milliseconds quiet{10'000};
        /** From one look to the next where nobody tells of events. */
        std::chrono::milliseconds unwatched{60'000};
    };

    explicit FolderRest(Patience patience) : patience_(patience) {}

    /** Something has happened in the folder. */
    void on_event(Time now) { next_look_ = now + patience_.quiet; }

    /** When the folder is to be looked at, if at all. */
    std::optional<Time> next_look() const { return next_look_; }

    /**
     * The folder has been looked at; the first look says what it is held against.
     *
     * @param state nothing where it could not be read; it is looked at again then
     * @return whether it holds something else than at the first look, and is at rest
     */
    bool on_look(Time now, Watch watch, const std::optional<FolderState> &state);

  private:
    const Patience patience_;
    bool looked_ = false;
    std::optional<FolderState> first_;
    std::optional<FolderState> last_;
    std::optional<Time> next_look_;
};

} // namespace platform
