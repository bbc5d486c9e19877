#include "lookahead/lookahead.h"

#include <cstdio>
#include <fstream>
#include <limits>
#include <utility>

#include "base/paths.h"
#include "log/platform_log.h"
#include "settings/settings.h"

namespace platform {

namespace {

// With less than this left the system would begin to take it from what plays.
constexpr int64_t LEAST_FREE_MEMORY_KB = int64_t{100} * 1024;

// A video that is open ahead takes some tens of megabytes at 1080p and up to this much at 4K.
constexpr int64_t LARGEST_ITEM_KB = int64_t{300} * 1024;

std::optional<PlayedItem> next_in_folder(const std::string &path)
{
    const bool direct_backlight = Settings::get().direct_backlight();
    const std::optional<ContentList> list = content_list(path, direct_backlight);
    if (!list)
        return std::nullopt;
    const std::string &name = list->names[(list->position + 1) % list->names.size()];
    return PlayedItem{path.substr(0, path.rfind('/') + 1) + name, {}};
}

ContentKind kind_of(const std::string &path)
{
    return content_kind(last_part(path), true);
}

// Where the system does not tell, there is enough.
int64_t available_memory_kb()
{
    std::ifstream facts("/proc/meminfo");
    for (std::string line; std::getline(facts, line);) {
        long available = 0;
        if (std::sscanf(line.c_str(), "MemAvailable: %ld kB", &available) == 1)
            return available;
    }
    return std::numeric_limits<int64_t>::max();
}

} // namespace

Lookahead &Lookahead::get()
{
    // Never destroyed: a process that ends without stop() leaves its thread to the system.
    static auto &lookahead = *new Lookahead({next_in_folder, available_memory_kb});
    return lookahead;
}

void Lookahead::set_opener(ContentKind kind, Opener opener)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    (kind == ContentKind::Video ? video_ : photo_) = std::move(opener);
}

void Lookahead::on_begun(const PlayedItem &item)
{
    std::string former;
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        former = history_.latest().path;
        history_.on_begun(item, !std::exchange(nearly_over_, false));
    }
    post([this, path = item.path, former] {
        forget_end();
        drop_unless(path);
        tell_change();
        look_at_growth(former, path);
    });
}

void Lookahead::on_round(const std::string &path)
{
    post([this, path] {
        tell_change();
        look_at_growth(path, path);
    });
}

void Lookahead::set_growth_listener(std::function<void()> listener)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    growth_listener_ = std::move(listener);
}

void Lookahead::call_at_change(std::function<void()> listener)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    change_listener_ = std::move(listener);
}

void Lookahead::on_nearly_over(const std::string &path)
{
    post([this, path] { open_after(path); });
}

void Lookahead::on_end_expected(const std::string &path, std::chrono::milliseconds left)
{
    post([this, path, end = WorkerThread::Clock::now() + left] { expect_end(path, end); });
}

void Lookahead::drop()
{
    forget_approach();
    post([this] {
        forget_end();
        drop_unless({});
    });
}

bool Lookahead::post(WorkerThread::Task task)
{
    WorkerThread::Hooks hooks;
    hooks.next_deadline = [this] { return next_deadline(); };
    hooks.on_deadline = [this] { act_on_deadline(); };
    return thread_.post(std::move(task), std::move(hooks));
}

std::optional<Lookahead::Time> Lookahead::next_deadline() const
{
    std::optional<Time> next;
    for (const std::optional<Time> &time : {opening_, giving_up_, memory_look_})
        if (time && (!next || *time < *next))
            next = time;
    return next;
}

void Lookahead::act_on_deadline()
{
    const Time now = WorkerThread::Clock::now();
    if (opening_ && now >= *opening_) {
        opening_.reset();
        open_after(expected_);
    }
    if (giving_up_ && now >= *giving_up_) {
        forget_approach();
        forget_end();
        drop_unless({});
    }
    if (memory_look_ && now >= *memory_look_)
        look_at_memory(now);
}

void Lookahead::expect_end(const std::string &path, Time end)
{
    if (expected_ == path || !is_latest(path))
        return;
    expected_ = path;
    opening_ = end - environment_.lead;
    giving_up_ = end + environment_.lead;
    act_on_deadline(); // the end may be near already
}

/** What is begun next does not follow the present item's end. */
void Lookahead::forget_approach()
{
    const std::lock_guard<std::mutex> lock(mutex_);
    nearly_over_ = false;
}

void Lookahead::forget_end()
{
    expected_.clear();
    opening_.reset();
    giving_up_.reset();
}

void Lookahead::look_at_memory(Time now)
{
    memory_look_ = now + environment_.memory_interval;
    if (environment_.available_memory_kb() < LEAST_FREE_MEMORY_KB)
        drop_unless({});
}

void Lookahead::tell_change()
{
    std::function<void()> tell;
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        tell = std::exchange(change_listener_, {});
    }
    if (tell)
        tell();
}

void Lookahead::look_at_growth(const std::string &from, const std::string &to)
{
    std::function<void()> tell;
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        tell = growth_listener_;
    }
    if (!tell)
        return;
    const int64_t private_kb = environment_.private_memory_kb();
    const int hanging = environment_.hanging_threads();
    if (!growth_.on_change(from, to, private_kb, hanging))
        return;
    PLATFORM_LOGW("lookahead",
                  "private memory has grown from %lld to %lld MB since the first lap, and %d "
                  "threads hang",
                  static_cast<long long>(growth_.level_kb() / 1024),
                  static_cast<long long>(private_kb / 1024), hanging);
    set_growth_listener({});
    tell();
}

void Lookahead::wait_until_done()
{
    std::promise<void> done;
    if (post([&done] { done.set_value(); }))
        done.get_future().wait();
}

void Lookahead::open_after(const std::string &path)
{
    const std::optional<PlayedItem> next = follower_of(path);
    if (!next || next->path == open_path_ ||
        (next->path == path && kind_of(path) == ContentKind::Photo))
        return;
    if (environment_.available_memory_kb() < LEAST_FREE_MEMORY_KB + LARGEST_ITEM_KB) {
        if (!std::exchange(shortage_logged_, true))
            PLATFORM_LOGI("lookahead", "memory is short; nothing is opened ahead while it is");
        return;
    }
    drop_unless({});
    const Opener opener = opener_of(next->path);
    if (!opener.open)
        return;
    PLATFORM_LOGD("lookahead", "opening %s ahead", next->path.c_str());
    open_path_ = next->path;
    memory_look_ = WorkerThread::Clock::now() + environment_.memory_interval;
    opener.open(*next);
    // Whatever was begun meanwhile has not found it open.
    if (!is_latest(path))
        drop_unless({});
}

bool Lookahead::is_latest(const std::string &path)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return history_.latest().path == path;
}

std::optional<PlayedItem> Lookahead::follower_of(const std::string &path)
{
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (history_.latest().path != path)
            return std::nullopt;
        nearly_over_ = true;
        if (std::optional<PlayedItem> next = history_.after(path))
            return next;
    }
    return look_into_folder(path);
}

// The disk may not answer, and other tasks of the thread must not wait for it.
std::optional<PlayedItem> Lookahead::look_into_folder(const std::string &path)
{
    if (!folder_look_.expired())
        return std::nullopt;
    const auto found = std::make_shared<std::optional<PlayedItem>>();
    folder_look_ = found;
    const auto look = [found, path, next_in_folder = environment_.next_in_folder] {
        *found = next_in_folder(path);
    };
    if (WorkerThread::run_apart("folder-look", look, environment_.folder_patience))
        return *found;
    PLATFORM_LOGW("lookahead", "the disk does not answer; nothing is opened ahead of it");
    return std::nullopt;
}

// What has been begun is its service's own; asked to drop it, it finds nothing.
void Lookahead::drop_unless(const std::string &path)
{
    const std::string former = std::exchange(open_path_, {});
    memory_look_.reset();
    if (former.empty() || former == path)
        return;
    if (const Opener opener = opener_of(former); opener.drop)
        opener.drop();
}

Lookahead::Opener Lookahead::opener_of(const std::string &path)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return kind_of(path) == ContentKind::Photo ? photo_ : video_;
}

} // namespace platform
