/**
 * A thread for work that may take long or, at a dying disk, for ever: runs tasks in order, started
 * with the first one. Everything is for any thread but where it says otherwise.
 */
#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <thread>

namespace platform {

class WorkerThread {
  public:
    using Clock = std::chrono::steady_clock;

    /** @param name of the thread, as debuggers show it; a literal of at most 15 characters */
    explicit WorkerThread(const char *name);
    ~WorkerThread();
    WorkerThread(const WorkerThread &) = delete;
    WorkerThread &operator=(const WorkerThread &) = delete;

    /** Queues a task; owner's thread. @return false when there is no thread to be had. */
    bool post(std::function<void()> task);

    /** Sleeps in a task. @return false when the worker is to stop. */
    bool wait_until(Clock::time_point time) const;

    /** Set for good by stop(); for tasks to look at, also when they outlive the worker. */
    const std::atomic<bool> &stopping() const;

    /** Whether a task of this worker is the caller. */
    bool is_calling() const;

    /**
     * Drops the queued tasks and has the running one give up. Waits for it a moment; a task that
     * hangs in reading a dying disk, or that is the caller, ends on its own.
     */
    void stop();

  private:
    struct Core;
    static void run(const std::shared_ptr<Core> &core);

    const char *const name_;
    const std::shared_ptr<Core> core_;
    std::thread thread_;
};

} // namespace platform
