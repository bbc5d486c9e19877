/**
 * Tells on the main loop that something has happened in a folder, other than that it was read.
 * Main-loop thread only, but for watch().
 */
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <string>

#include "base/descriptor.h"
#include "base/toolkit_handles.h"
#include "content_watch/folder_rest.h"

namespace platform {

class FolderEvents {
  public:
    /** The kernel's side of it, which a thread that hangs in watch() may keep for longer. */
    class Queue {
      public:
        Queue();

        int number() const { return inotify_.number(); }

        /**
         * Has events told of the folder that is at the path, and of no other one any more. One
         * thread at a time; takes as long as the file system does.
         *
         * @return New where that is another folder than before, or it could not be seen before;
         *         Nobody where none is told of, because it is not there, or for a reason that is
         *         logged once
         */
        FolderRest::Watch watch(const std::string &path);

      private:
        const Descriptor inotify_;
        int watch_ = -1;
        bool reported_ = false;
    };

    explicit FolderEvents(std::function<void()> happened);
    FolderEvents(const FolderEvents &) = delete;
    FolderEvents &operator=(const FolderEvents &) = delete;

    const std::shared_ptr<Queue> &queue() const { return queue_; }

  private:
    void read();

    const std::function<void()> happened_;
    const std::shared_ptr<Queue> queue_;
    const FdHandlerPtr handler_;
};

} // namespace platform
