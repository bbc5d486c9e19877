#include "lookahead/lookahead.h"

#include <cstdio>
#include <fstream>
#include <utility>

#include "log/platform_log.h"
#include "settings/settings.h"

namespace platform {

namespace {

// A video that is open ahead takes some tens of megabytes at 1080p and up to three hundred at 4K.
// With less than this left the system would have to take them from what plays.
constexpr long LEAST_FREE_MEMORY_KB = 400L * 1024;

std::optional<PlayedItem> next_in_folder(const std::string &path)
{
    const bool direct_backlight = Settings::get().store_content_type == DIRECT_BACKLIGHT;
    const std::optional<ContentList> list = content_list(path, direct_backlight);
    if (!list)
        return std::nullopt;
    const std::string &name = list->names[(list->position + 1) % list->names.size()];
    return PlayedItem{path.substr(0, path.rfind('/') + 1) + name, {}};
}

// Where the system does not tell, there is enough.
bool memory_is_short()
{
    std::ifstream facts("/proc/meminfo");
    for (std::string line; std::getline(facts, line);) {
        long available = 0;
        if (std::sscanf(line.c_str(), "MemAvailable: %ld kB", &available) == 1)
            return available < LEAST_FREE_MEMORY_KB;
    }
    return false;
}

} // namespace

Lookahead &Lookahead::get()
{
    // Never destroyed: a process that ends without stop() leaves its thread to the system.
    static auto &lookahead = *new Lookahead({next_in_folder, memory_is_short});
    return lookahead;
}

void Lookahead::set_opener(ContentKind kind, Opener opener)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    (kind == ContentKind::Video ? video_ : photo_) = std::move(opener);
}

void Lookahead::on_begun(const PlayedItem &item)
{
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        history_.on_begun(item);
    }
    thread_.post([this, path = item.path] { drop_unless(path); });
}

void Lookahead::on_nearly_over(const std::string &path)
{
    thread_.post([this, path] { open_after(path); });
}

void Lookahead::drop()
{
    thread_.post([this] { drop_unless({}); });
}

void Lookahead::wait_until_done()
{
    std::promise<void> done;
    if (thread_.post([&done] { done.set_value(); }))
        done.get_future().wait();
}

void Lookahead::open_after(const std::string &path)
{
    const std::optional<PlayedItem> next = follower_of(path);
    if (!next || next->path == path || next->path == open_path_ || environment_.memory_is_short())
        return;
    drop_unless({});
    const Opener opener = opener_of(next->path);
    if (!opener.open)
        return;
    PLATFORM_LOGD("lookahead", "opening %s ahead", next->path.c_str());
    open_path_ = next->path;
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
        if (std::optional<PlayedItem> next = history_.after(path))
            return next;
    }
    return environment_.next_in_folder(path);
}

// What has been begun is its service's own; asked to drop it, it finds nothing.
void Lookahead::drop_unless(const std::string &path)
{
    const std::string former = std::exchange(open_path_, {});
    if (former.empty() || former == path)
        return;
    if (const Opener opener = opener_of(former); opener.drop)
        opener.drop();
}

Lookahead::Opener Lookahead::opener_of(const std::string &path)
{
    const ContentKind kind = content_kind(path.substr(path.rfind('/') + 1), true);
    const std::lock_guard<std::mutex> lock(mutex_);
    return kind == ContentKind::Photo ? photo_ : video_;
}

} // namespace platform
