/**
 * Follows the content: notices that the folder that is played has changed, and that a USB stick
 * with content comes or goes. The application makes its list of files once in its life, so new
 * content takes a new life; who starts it is not this service's business. Main-loop thread only;
 * disks are looked at by a thread of its own.
 */
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "base/worker_thread.h"
#include "content_watch/folder_events.h"
#include "content_watch/folder_rest.h"
#include "content_watch/stick_looks.h"
#include "player_rules/launch_rules.h"

namespace platform {

class ContentWatch {
  public:
    /** What is followed, and who is asked. */
    struct Environment {
        bool follow_folder = false; ///< as the fields of the settings
        bool follow_sticks = false;
        /** The folders of a stick that the panel can show. Any thread; may take for ever. */
        std::function<std::vector<std::string>(const std::string &mount)> stick_contents;
        std::chrono::milliseconds patience_at_start{3000}; ///< for the sticks, and for the folder
        /** Ends the application, to be started anew. Any thread; may be called more than once. */
        std::function<void()> restart;
        /** Whether no item will end, because nothing can be played. Any thread. */
        std::function<bool()> nothing_plays;
        FolderRest::Patience patience;
    };

    explicit ContentWatch(Environment environment);
    ~ContentWatch();
    ContentWatch(const ContentWatch &) = delete;
    ContentWatch &operator=(const ContentWatch &) = delete;

    /**
     * Follows what a launch request plays, from now on. To be called once, before the application
     * has the request. Waits for the disk as long as the application would, and not for ever.
     *
     * @return the request that the application is to have: one for a stick's content in the place
     * of one without extras, which asks for nothing in particular
     */
    Extras begin(const Extras &asked);

  private:
    struct Looks;

    static bool may_play_stick();
    std::string begin_sticks();
    void begin_folder(const std::string &folder);

    const std::shared_ptr<Looks> looks_; ///< the thread's, once that runs
    std::unique_ptr<FolderEvents> events_;
    std::shared_ptr<StickLooks> sticks_;
    WorkerThread thread_{"content"};
};

} // namespace platform
