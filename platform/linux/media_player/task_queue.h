/**
 * Work for one thread, in the order it was handed in.
 */
#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>

namespace platform {

class TaskQueue {
  public:
    using Clock = std::chrono::steady_clock;
    using Task = std::function<void()>;

    /** Hands in a task; any thread. It is thrown away when the queue is closed. */
    void post(Task task)
    {
        {
            const std::lock_guard<std::mutex> lock(mutex_);
            if (closed_)
                return;
            tasks_.push_back(std::move(task));
        }
        changed_.notify_one();
    }

    /** Takes no more tasks, throws those away that wait, and ends take(); any thread. */
    void close()
    {
        std::deque<Task> discarded;
        {
            const std::lock_guard<std::mutex> lock(mutex_);
            closed_ = true;
            discarded.swap(tasks_);
        }
        changed_.notify_all();
    }

    /**
     * Waits for the next task.
     *
     * @param deadline when to stop waiting, if ever
     * @return the task; empty when the deadline has passed or the queue is closed
     */
    Task take(const std::optional<Clock::time_point> &deadline)
    {
        std::unique_lock<std::mutex> lock(mutex_);
        const auto something = [this] { return closed_ || !tasks_.empty(); };
        if (!deadline)
            changed_.wait(lock, something);
        else
            changed_.wait_until(lock, *deadline, something);
        if (tasks_.empty())
            return {};
        Task task = std::move(tasks_.front());
        tasks_.pop_front();
        return task;
    }

    bool closed() const
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        return closed_;
    }

  private:
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Task> tasks_;
    bool closed_ = false;
};

} // namespace platform
