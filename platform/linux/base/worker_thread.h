/**
 * A thread for work that may take long or, at a dying disk, for ever: runs tasks in order, started
 * with the first one. It outlives its WorkerThread where it has to. Everything is for any thread.
 */
#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <memory>
#include <optional>

namespace platform {

class WorkerThread {
  public:
    using Clock = std::chrono::steady_clock;
    using Task = std::function<void()>;

    /** What the thread does besides its tasks. */
    struct Hooks {
        /** When on_deadline is to be called unless a task comes before, if ever. */
        std::function<std::optional<Clock::time_point>()> next_deadline;
        Task on_deadline;
        Task at_end; ///< the last thing of all
    };

    /** @param name of the thread, as debuggers show it; a literal of at most 15 characters */
    explicit WorkerThread(const char *name);
    ~WorkerThread();
    WorkerThread(const WorkerThread &) = delete;
    WorkerThread &operator=(const WorkerThread &) = delete;

    /**
     * Starts the thread with hooks, before there is a task.
     *
     * @return false when there is no thread to be had, or it was started or closed before
     */
    bool start(Hooks hooks);

    /**
     * Queues a task. The first one starts the thread, with hooks.
     *
     * @return false when there is no thread to be had, or it was closed
     */
    bool post(Task task, Hooks hooks = {});

    /** Sleeps in a task. @return false when the worker is to stop */
    bool wait_until(Clock::time_point time) const;

    /** Set for good by close(); for tasks to look at, also when they outlive the worker. */
    const std::atomic<bool> &stopping() const;

    /** Whether a task of this worker is the caller. */
    bool is_calling() const;

    /** Drops the queued tasks and tells the running one to give up; returns at once. */
    void close();

    /**
     * Waits until the thread has ended, after a close(). A task never waits for its own.
     *
     * @param timeout how long; nothing: as long as it takes
     * @return false when it was not in time
     */
    bool wait_for_end(std::optional<std::chrono::milliseconds> timeout) const;

    /**
     * close(), and a moment's wait: a task that hangs in reading a dying disk, or that is the
     * caller, ends on its own.
     */
    void stop();

    /** Done when the thread has nothing left to do; only for a worker that was started. */
    std::shared_future<void> ended() const;

    /**
     * How many threads of this process were closed so long ago and have not ended: they hang, and
     * keep what they have until they end.
     */
    static int hanging(std::chrono::milliseconds patience);

    /**
     * Runs a task that may hang on a thread of its own, and waits for it. Where there is no thread
     * to be had the caller runs it.
     *
     * @return false when it is not done in time; it is left to itself, and may be done later
     */
    static bool run_apart(const char *name, Task task, std::chrono::milliseconds patience);

  private:
    struct Core;
    static void run(const std::shared_ptr<Core> &core);
    bool start_locked(Hooks hooks);

    const char *const name_;
    const std::shared_ptr<Core> core_;
};

} // namespace platform
