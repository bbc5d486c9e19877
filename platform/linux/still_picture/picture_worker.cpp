#include "still_picture/picture_worker.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <system_error>

#include <pthread.h>

namespace platform {

namespace {

constexpr std::chrono::milliseconds kPatience{200};

} // namespace

/** What the thread needs; outlives the worker when the thread has to end on its own. */
struct PictureWorker::Core {
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<std::function<void()>> tasks;
    std::atomic<bool> stopping{false};
    bool ended = false;
    std::atomic<std::thread::id> thread;
};

PictureWorker::PictureWorker() : core_(std::make_shared<Core>()) {}

PictureWorker::~PictureWorker()
{
    stop();
}

bool PictureWorker::post(std::function<void()> task)
{
    if (core_->stopping)
        return false;
    if (!thread_.joinable()) {
        try {
            thread_ = std::thread([core = core_] { run(core); });
        } catch (const std::system_error &) {
            return false;
        }
        pthread_setname_np(thread_.native_handle(), "still-picture");
    }
    const std::lock_guard<std::mutex> lock(core_->mutex);
    core_->tasks.push_back(std::move(task));
    core_->changed.notify_all();
    return true;
}

void PictureWorker::run(const std::shared_ptr<Core> &core)
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

bool PictureWorker::wait_until(Clock::time_point time) const
{
    std::unique_lock<std::mutex> lock(core_->mutex);
    return !core_->changed.wait_until(lock, time, [this] { return core_->stopping.load(); });
}

const std::atomic<bool> &PictureWorker::stopping() const
{
    return core_->stopping;
}

bool PictureWorker::is_calling() const
{
    return core_->thread.load() == std::this_thread::get_id();
}

void PictureWorker::stop()
{
    std::deque<std::function<void()>> dropped; // goes after the lock
    std::unique_lock<std::mutex> lock(core_->mutex);
    core_->stopping = true;
    dropped.swap(core_->tasks);
    core_->changed.notify_all();
    if (!thread_.joinable())
        return;
    const bool ended =
        !is_calling() && core_->changed.wait_for(lock, kPatience, [this] { return core_->ended; });
    lock.unlock();
    if (ended)
        thread_.join();
    else
        thread_.detach();
}

} // namespace platform
