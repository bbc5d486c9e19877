/**
 * Has the next item opened while the present one still plays, so that nothing has to be waited for
 * between the two. Which item that is the application does not say: it is what followed the last
 * time, and before that the next one of the folder. A wrong guess costs some work and nothing else.
 * An item that follows itself is left alone: it plays in rounds, or stands.
 *
 * One item is open ahead at a time, and none while memory is short. Any thread; nothing blocks.
 */
#pragma once

#include <functional>
#include <mutex>
#include <optional>
#include <string>

#include "base/worker_thread.h"
#include "lookahead/item_history.h"
#include "player_rules/content_rules.h"

namespace platform {

class Lookahead {
  public:
    /** How a service opens its kind of item ahead. Called on the look-ahead's own thread. */
    struct Opener {
        std::function<void(const PlayedItem &item)> open;
        /** Lets go of what it has open and was not asked for, if anything. */
        std::function<void()> drop;
    };

    /** What is looked at; tests have their own. */
    struct Environment {
        std::function<std::optional<PlayedItem>(const std::string &path)> next_in_folder;
        std::function<bool()> memory_is_short;
    };

    /** The one of this process. */
    static Lookahead &get();

    /** Says who opens a kind of item; replaces whoever did before. */
    void set_opener(ContentKind kind, Opener opener);

    /** The application asks for an item. Drops another that was opened in its place. */
    void on_begun(const PlayedItem &item);

    /** An item will end soon. Opens the next, unless another has been begun since. */
    void on_nearly_over(const std::string &path);

    /** Drops what is open: the end of the present item is not near any more. */
    void drop();

    /** Opens nothing any more, and ends the thread; at the end of the process. */
    void stop() { thread_.stop(); }

    explicit Lookahead(Environment environment) : environment_(std::move(environment)) {}

    /** Waits until all that was said has been dealt with; for tests. */
    void wait_until_done();

  private:
    std::optional<PlayedItem> follower_of(const std::string &path);
    void open_after(const std::string &path);
    bool is_latest(const std::string &path);
    void drop_unless(const std::string &path);
    Opener opener_of(const std::string &path);

    const Environment environment_;
    std::mutex mutex_; ///< guards what follows
    ItemHistory history_;
    Opener video_;
    Opener photo_;

    std::string open_path_; ///< what is open ahead; the thread's own
    WorkerThread thread_{"lookahead"};
};

} // namespace platform
