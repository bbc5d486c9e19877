#include "base/worker_thread.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <system_error>

#include <pthread.h>

namespace platform {

namespace {

// A task that looks at stopping() ends within a few milliseconds. One that does not in this time
// hangs in a read, and whoever stops the worker, the main loop as a rule, must not hang with it.
constexpr std::chrono::milliseconds PATIENCE{200};

} // namespace

/** What the thread needs; outlives the worker when the thread has to end on its own. */
struct WorkerThread::Core {
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<std::function<void()>> tasks;
    std::atomic<bool> stopping{false};
    bool ended = false;
    std::atomic<std::thread::id> thread;
};

WorkerThread::WorkerThread(const char *name) : name_(name), core_(std::make_shared<Core>()) {}

WorkerThread::~WorkerThread()
{
    stop();
}

bool WorkerThread::post(std::function<void()> task)
{
    if (core_->stopping)
        return false;
    if (!thread_.joinable()) {
        try {
            thread_ = std::thread([core = core_] { run(core); });
        } catch (const std::system_error &) {
            return false;
        }
        pthread_setname_np(thread_.native_handle(), name_);
    }
    const std::lock_guard<std::mutex> lock(core_->mutex);
    core_->tasks.push_back(std::move(task));
    core_->changed.notify_all();
    return true;
}

void WorkerThread::run(const std::shared_ptr<Core> &core)
{
    core->thread = std::this_thread::get_id();
    std::unique_lock<std::mutex> lock(core->mutex);
    for (;;) {
        core->changed.wait(lock, [&] { return core->stopping || !core->tasks.empty(); });
        if (core->stopping)
            break;
        std::function<void()> task = std::move(core->tasks.front());
        core->tasks.pop_front();
        lock.unlock();
        task();
        task = nullptr; // what it holds may end with it, and must not under the lock
        lock.lock();
    }
    core->ended = true;
    core->changed.notify_all();
}

bool WorkerThread::wait_until(Clock::time_point time) const
{
    std::unique_lock<std::mutex> lock(core_->mutex);
    return !core_->changed.wait_until(lock, time, [this] { return core_->stopping.load(); });
}

const std::atomic<bool> &WorkerThread::stopping() const
{
    return core_->stopping;
}

bool WorkerThread::is_calling() const
{
    return core_->thread.load() == std::this_thread::get_id();
}

void WorkerThread::stop()
{
    std::deque<std::function<void()>> dropped; // goes after the lock
    std::unique_lock<std::mutex> lock(core_->mutex);
    core_->stopping = true;
    dropped.swap(core_->tasks);
    core_->changed.notify_all();
    if (!thread_.joinable())
        return;
    const bool ended =
        !is_calling() && core_->changed.wait_for(lock, PATIENCE, [this] { return core_->ended; });
    lock.unlock();
    if (ended)
        thread_.join();
    else
        thread_.detach();
}

} // namespace platform
