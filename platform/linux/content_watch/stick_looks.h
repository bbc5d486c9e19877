/**
 * Says which stick's content is to be played, and when that is another. Each stick is looked at by
 * a thread of its own, so that one which hangs hides no other. One that answered too late for a
 * start causes one new start, and is then remembered in a file until it is pulled: were it as slow
 * again, the starts would have no end. Any thread.
 */
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace platform {

class StickLooks {
  public:
    struct Environment {
        /** The folders of a stick with content; may take for ever. Any thread. */
        std::function<std::vector<std::string>(const std::string &mount)> contents;
        std::chrono::milliseconds patience{0}; ///< for a stick at the start
        std::string slow_file;                 ///< remembers sticks for the life of the machine
        /** Other content is to be played. Any thread; may be called more than once. */
        std::function<void()> restart;
    };

    explicit StickLooks(Environment environment);
    StickLooks(const StickLooks &) = delete;
    StickLooks &operator=(const StickLooks &) = delete;

    /**
     * Looks at the sticks for the first time, and waits until it is clear which one plays, not
     * longer than the patience. A stick that comes later counts as one that was plugged in later.
     *
     * @param mounts in order
     * @return the folder that plays; empty: no stick's
     */
    std::string begin(const std::vector<std::string> &mounts);

    /** Looks again, and does not wait. @param mounts as they are after the change */
    void on_change(const std::vector<std::string> &mounts);

    /** Nobody is called any more; a look that hangs is left to itself. */
    void close();

  private:
    struct Core;
    const std::shared_ptr<Core> core_;
};

} // namespace platform
