/**
 * Has the next item opened while the present one still plays, so that nothing has to be waited for
 * between the two. Which item that is the application does not say: it is what followed the last
 * time, and before that the next one of the folder. A wrong guess costs some work and nothing else.
 * A photo that follows itself is left alone: it stands.
 *
 * One item is open ahead at a time, for the few seconds around the end of the present one, and none
 * while memory is short. Any thread; nothing blocks. Its own thread waits for a disk that does not
 * answer for a moment only.
 */
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "base/worker_thread.h"
#include "lookahead/item_history.h"
#include "lookahead/memory_growth.h"
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

    /** What is looked at, and when; tests have their own. */
    struct Environment {
        /** On a thread of its own, one at a time; may hang. */
        std::function<std::optional<PlayedItem>(const std::string &path)> next_in_folder;
        std::function<int64_t()> available_memory_kb;
        /** What this process has for itself. Asked for when there is a listener to its growth. */
        std::function<int64_t()> private_memory_kb = platform::private_memory_kb;
        /** How many threads of this process hang. Asked for likewise. */
        std::function<int()> hanging_threads = [] { return platform::hanging_threads(); };
        /** How long before an end that is expected the next item is opened. */
        std::chrono::milliseconds lead{4000};
        /** How long the folder may take to say what comes next. */
        std::chrono::milliseconds folder_patience{2000};
        /** From one look at the memory to the next while an item is open. */
        std::chrono::milliseconds memory_interval{1000};
    };

    /** The one of this process. */
    static Lookahead &get();

    /** Says who opens a kind of item; replaces whoever did before. */
    void set_opener(ContentKind kind, Opener opener);

    /** The application asks for an item. Drops another that was opened in its place. */
    void on_begun(const PlayedItem &item);

    /** An item that plays over and over has come to the end of a round. */
    void on_round(const std::string &path);

    /** An item will end soon. Opens the next, unless another has been begun since. */
    void on_nearly_over(const std::string &path);

    /**
     * An item will end in so long, unless it is held. Opens the next shortly before, and lets go of
     * it when the item is still there as long after. What was said of the item before stands.
     */
    void on_end_expected(const std::string &path, std::chrono::milliseconds left);

    /**
     * Drops what is open, and opens nothing until an end is told of again: the end of the present
     * item is not near any more, or what the next one lies on goes away.
     */
    void drop();

    /**
     * Has somebody told, once, that private memory has grown too much since the first lap, or that
     * too many threads hang. Called between two items, on the look-ahead's own thread.
     */
    void set_growth_listener(std::function<void()> listener);

    /**
     * Has somebody told, once, that one item has ended, or a round of one that plays over and over,
     * and the next is asked for. On the look-ahead's own thread.
     */
    void call_at_change(std::function<void()> listener);

    /** Opens nothing any more, and ends the thread; at the end of the process. */
    void stop() { thread_.stop(); }

    explicit Lookahead(Environment environment) : environment_(std::move(environment)) {}

    /** Waits until all that was said has been dealt with; for tests. */
    void wait_until_done();

  private:
    using Time = WorkerThread::Clock::time_point;

    bool post(WorkerThread::Task task);
    std::optional<Time> next_deadline() const;
    void act_on_deadline();
    void expect_end(const std::string &path, Time end);
    void look_at_memory(Time now);
    std::optional<PlayedItem> follower_of(const std::string &path);
    std::optional<PlayedItem> look_into_folder(const std::string &path);
    void open_after(const std::string &path);
    bool is_latest(const std::string &path);
    void drop_unless(const std::string &path);
    void tell_change();
    void look_at_growth(const std::string &from, const std::string &to);
    void forget_approach();
    void forget_end();
    Opener opener_of(const std::string &path);

    const Environment environment_;
    std::mutex mutex_; ///< guards what follows
    ItemHistory history_;
    bool nearly_over_ = false; ///< the latest item; what follows now follows its end
    std::function<void()> growth_listener_;
    std::function<void()> change_listener_;
    Opener video_;
    Opener photo_;

    // The thread's own.
    std::string open_path_;           ///< what is open ahead
    std::optional<Time> memory_look_; ///< while something is
    std::string expected_;            ///< the item whose end is known; empty: none is
    std::optional<Time> opening_;     ///< when its end is near
    std::optional<Time> giving_up_;   ///< when it has stayed too long
    bool shortage_logged_ = false;
    std::weak_ptr<void> folder_look_; ///< for as long as that takes
    MemoryGrowth growth_;
    WorkerThread thread_{"lookahead"};
};

} // namespace platform
