#include "base/worker_thread.h"

#include <condition_variable>
#include <deque>
#include <iterator>
#include <mutex>
#include <set>
#include <system_error>
#include <thread>
#include <utility>

#include <pthread.h>

namespace platform {

namespace {

// A task that looks at stopping() ends within a few milliseconds. One that does not in this time
// hangs in a read, and whoever stops the worker, the main loop as a rule, must not hang with it.
constexpr std::chrono::milliseconds PATIENCE{200};

/** Since when threads are ending. */
struct Endings {
    std::mutex mutex;
    std::multiset<WorkerThread::Clock::time_point> begun;
};

// Never destroyed: threads may outlive the program's other parts.
Endings &endings()
{
    static auto &all = *new Endings;
    return all;
}

} // namespace

/** What the thread needs; outlives the worker when the thread has to end on its own. */
struct WorkerThread::Core {
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<Task> tasks;
    std::atomic<bool> stopping{false};
    bool started = false;
    /** That of this thread, once it was closed. */
    std::multiset<Clock::time_point>::iterator ending;
    std::atomic<std::thread::id> thread;
    std::promise<void> end;
    const std::shared_future<void> ended = end.get_future().share();
    Hooks hooks; ///< the thread's own from its start on
};

WorkerThread::WorkerThread(const char *name) : name_(name), core_(std::make_shared<Core>()) {}

WorkerThread::~WorkerThread()
{
    stop();
}

bool WorkerThread::start(Hooks hooks)
{
    const std::lock_guard<std::mutex> lock(core_->mutex);
    return !core_->started && start_locked(std::move(hooks));
}

bool WorkerThread::start_locked(Hooks hooks)
{
    if (core_->stopping)
        return false;
    core_->hooks = std::move(hooks);
    try {
        std::thread thread([core = core_] { run(core); });
        pthread_setname_np(thread.native_handle(), name_);
        thread.detach();
    } catch (const std::system_error &) {
        core_->hooks = {};
        return false;
    }
    core_->started = true;
    return true;
}

bool WorkerThread::post(Task task, Hooks hooks)
{
    const std::lock_guard<std::mutex> lock(core_->mutex);
    if (core_->stopping || !(core_->started || start_locked(std::move(hooks))))
        return false;
    core_->tasks.push_back(std::move(task));
    core_->changed.notify_all();
    return true;
}

void WorkerThread::run(const std::shared_ptr<Core> &core)
{
    core->thread = std::this_thread::get_id();
    const Hooks &hooks = core->hooks;
    std::unique_lock<std::mutex> lock(core->mutex);
    const auto something = [&] { return core->stopping || !core->tasks.empty(); };
    while (!core->stopping) {
        std::optional<Clock::time_point> deadline;
        if (hooks.next_deadline) {
            lock.unlock();
            deadline = hooks.next_deadline();
            lock.lock();
        }
        if (deadline)
            core->changed.wait_until(lock, *deadline, something);
        else
            core->changed.wait(lock, something);
        if (core->stopping)
            break;
        Task task = hooks.on_deadline;
        if (!core->tasks.empty()) {
            task = std::move(core->tasks.front());
            core->tasks.pop_front();
        }
        lock.unlock();
        task();
        task = nullptr; // what it holds may end with it, and must not under the lock
        lock.lock();
    }
    lock.unlock();
    if (hooks.at_end)
        hooks.at_end();
    core->hooks = {};
    {
        Endings &all = endings();
        const std::lock_guard<std::mutex> ending(all.mutex);
        all.begun.erase(core->ending);
    }
    core->thread = std::thread::id(); // which another thread may be given
    core->end.set_value();
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

void WorkerThread::close()
{
    std::deque<Task> dropped; // goes after the lock
    const std::lock_guard<std::mutex> lock(core_->mutex);
    if (!core_->stopping && core_->started) {
        Endings &all = endings();
        const std::lock_guard<std::mutex> ending(all.mutex);
        core_->ending = all.begun.insert(Clock::now());
    }
    core_->stopping = true;
    dropped.swap(core_->tasks);
    core_->changed.notify_all();
}

bool WorkerThread::wait_for_end(std::optional<std::chrono::milliseconds> timeout) const
{
    {
        const std::lock_guard<std::mutex> lock(core_->mutex);
        if (!core_->started)
            return true;
    }
    if (is_calling())
        return false;
    if (timeout && core_->ended.wait_for(*timeout) != std::future_status::ready)
        return false;
    core_->ended.wait();
    // The future does order the thread's work before what follows, but it is made ready inside the
    // C++ library, where the thread sanitizer does not see it. This order it sees.
    core_->thread.load();
    return true;
}

void WorkerThread::stop()
{
    close();
    wait_for_end(PATIENCE);
}

int WorkerThread::hanging(std::chrono::milliseconds patience)
{
    Endings &all = endings();
    const std::lock_guard<std::mutex> lock(all.mutex);
    return static_cast<int>(
        std::distance(all.begun.begin(), all.begun.upper_bound(Clock::now() - patience)));
}

std::shared_future<void> WorkerThread::ended() const
{
    return core_->ended;
}

bool WorkerThread::run_apart(const char *name, Task task, std::chrono::milliseconds patience)
{
    WorkerThread worker(name);
    // Shared, so that what it holds ends where it runs.
    const auto shared = std::make_shared<Task>(std::move(task));
    Hooks hooks;
    hooks.at_end = [shared] { std::exchange(*shared, nullptr)(); };
    if (!worker.start(std::move(hooks))) {
        (*shared)();
        return true;
    }
    worker.close();
    return worker.wait_for_end(patience);
}

} // namespace platform
