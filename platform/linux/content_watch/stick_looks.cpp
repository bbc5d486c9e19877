#include "content_watch/stick_looks.h"

#include <algorithm>
#include <condition_variable>
#include <map>
#include <mutex>
#include <utility>

#include "base/paths.h"
#include "base/worker_thread.h"
#include "log/platform_log.h"

namespace platform {

namespace {

using Clock = std::chrono::steady_clock;
using Mounts = std::vector<std::string>;

constexpr char SERVICE[] = "content_watch";

} // namespace

struct StickLooks::Core {
    struct Look {
        bool under_way = false;
        bool again = false; ///< asked for while one was under way
        bool done = false;
        std::vector<std::string> contents;
    };

    explicit Core(Environment given) : environment(std::move(given)) {}

    static void look(const std::shared_ptr<Core> &core, const std::string &mount);
    void take_locked(const std::string &mount, bool slow);
    void set_mounts_locked(const Mounts &present);
    bool decided_locked();

    const Environment environment;
    std::mutex mutex;
    std::condition_variable changed;
    std::map<std::string, Look> looks;
    Mounts mounts;
    Mounts slow_mounts;
    std::string playing; ///< the folder
    std::string playing_mount;
    bool begun = false;
    bool closed = false;
};

/** Looks on a thread of its own, and once more where that was asked for meanwhile. */
void StickLooks::Core::look(const std::shared_ptr<Core> &core, const std::string &mount)
{
    {
        const std::lock_guard<std::mutex> lock(core->mutex);
        Look &next = core->looks[mount];
        next.again = next.under_way;
        if (std::exchange(next.under_way, true))
            return;
    }
    const auto task = [core, mount, asked = Clock::now()] {
        Clock::time_point began = asked;
        for (bool again = true; again; began = Clock::now()) {
            std::vector<std::string> contents = core->environment.contents(mount);
            const std::lock_guard<std::mutex> lock(core->mutex);
            Look &done = core->looks[mount];
            done.contents = std::move(contents);
            done.done = true;
            again = std::exchange(done.again, false) && !core->closed;
            done.under_way = again;
            core->take_locked(mount, Clock::now() - began >= core->environment.patience);
            core->changed.notify_all();
        }
    };
    WorkerThread::run_apart("stick", task, std::chrono::milliseconds(0));
}

void StickLooks::Core::take_locked(const std::string &mount, bool slow)
{
    if (!begun || closed || !contains(mounts, mount))
        return;
    const std::vector<std::string> &contents = looks[mount].contents;
    if (!playing.empty()) {
        if (mount != playing_mount || contains(contents, playing))
            return;
        PLATFORM_LOGI(SERVICE, "%s is gone", playing.c_str());
    } else {
        if (contents.empty() || contains(slow_mounts, mount))
            return;
        if (slow) {
            slow_mounts.push_back(mount);
            if (!write_paths(environment.slow_file, slow_mounts)) {
                PLATFORM_LOGW(SERVICE, "%s cannot be written; the slow stick %s is not played",
                              environment.slow_file.c_str(), mount.c_str());
                return;
            }
        }
        PLATFORM_LOGI(SERVICE, "%s has come", contents.front().c_str());
    }
    environment.restart();
}

/** A stick that was pulled is forgotten. */
void StickLooks::Core::set_mounts_locked(const Mounts &present)
{
    mounts = present;
    const auto gone =
        std::remove_if(slow_mounts.begin(), slow_mounts.end(),
                       [&](const std::string &mount) { return !contains(mounts, mount); });
    if (gone == slow_mounts.end())
        return;
    slow_mounts.erase(gone, slow_mounts.end());
    // What stays in the file costs a stick its new start, and no more.
    write_paths(environment.slow_file, slow_mounts);
}

/** Whether no stick that has not answered could still be the one that plays. */
bool StickLooks::Core::decided_locked()
{
    for (const std::string &mount : mounts) {
        if (!looks[mount].done)
            return false;
        if (!looks[mount].contents.empty())
            return true;
    }
    return true;
}

StickLooks::StickLooks(Environment environment)
    : core_(std::make_shared<Core>(std::move(environment)))
{
}

void StickLooks::close()
{
    const std::lock_guard<std::mutex> lock(core_->mutex);
    core_->closed = true;
}

std::string StickLooks::begin(const std::vector<std::string> &mounts)
{
    std::unique_lock<std::mutex> lock(core_->mutex);
    core_->slow_mounts = read_paths(core_->environment.slow_file);
    core_->set_mounts_locked(mounts);
    lock.unlock();
    on_change(mounts);
    lock.lock();
    core_->changed.wait_for(lock, core_->environment.patience,
                            [this] { return core_->decided_locked(); });
    core_->begun = true;
    for (const std::string &mount : mounts) {
        const Core::Look &look = core_->looks[mount];
        if (!look.done)
            PLATFORM_LOGW(SERVICE, "the stick %s does not answer in time", mount.c_str());
        if (look.contents.empty())
            continue;
        core_->playing = look.contents.front();
        core_->playing_mount = mount;
        break;
    }
    return core_->playing;
}

void StickLooks::on_change(const std::vector<std::string> &mounts)
{
    std::vector<std::string> to_look_at = mounts;
    {
        const std::lock_guard<std::mutex> lock(core_->mutex);
        if (core_->closed)
            return;
        core_->set_mounts_locked(mounts);
        if (!core_->playing.empty())
            to_look_at = {core_->playing_mount};
        if (!core_->playing.empty() && !contains(mounts, core_->playing_mount)) {
            PLATFORM_LOGI(SERVICE, "%s is gone", core_->playing.c_str());
            core_->environment.restart();
            return;
        }
    }
    for (const std::string &mount : to_look_at)
        Core::look(core_, mount);
}

} // namespace platform
