#include "media_player/broken_files.h"

#include <algorithm>
#include <utility>

#include "log/platform_log.h"

namespace platform {
namespace {

/** Of a folder with more broken files than this the rest is tried each time, and not told of. */
constexpr size_t MOST_FILES = 4096;

constexpr auto FIRST_PAUSE = std::chrono::milliseconds(1000);
constexpr auto LONGEST_PAUSE = std::chrono::milliseconds(60000);

} // namespace

BrokenFiles &BrokenFiles::get()
{
    // Never destroyed: threads of files that close slowly may outlive the program's other parts.
    static auto &files = *new BrokenFiles;
    return files;
}

bool BrokenFiles::note(const std::string &path, const std::optional<FileStamp> &stamp,
                       const std::string &why, bool certain)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    if (files_.size() >= MOST_FILES && files_.count(path) == 0)
        return true;
    Entry &entry = files_[path];
    const bool news = entry.why != why || entry.stamp != stamp;
    entry.stamp = stamp;
    entry.why = why;
    entry.certain = certain || !news;
    return news;
}

void BrokenFiles::forget(const std::string &path)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    files_.erase(path);
}

std::optional<std::string> BrokenFiles::why(const std::string &path, const FileStamp &stamp) const
{
    const std::lock_guard<std::mutex> lock(mutex_);
    const auto found = files_.find(path);
    if (found == files_.end() || !found->second.certain || found->second.stamp != stamp)
        return std::nullopt;
    return found->second.why;
}

std::vector<BrokenFile> BrokenFiles::all() const
{
    const std::lock_guard<std::mutex> lock(mutex_);
    std::vector<BrokenFile> all;
    for (const auto &[path, entry] : files_)
        all.push_back({path, entry.why});
    return all;
}

std::chrono::milliseconds BrokenFiles::pause_for(const std::string &path, uint64_t shown)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    if (std::exchange(shown_, shown) != shown) {
        round_++;
        pause_ = {};
    }
    const auto found = files_.find(path);
    if (found != files_.end() && std::exchange(found->second.round, round_) != round_)
        return {};
    // It comes for the second time, and nothing was shown in between.
    round_++;
    if (found != files_.end())
        found->second.round = round_;
    const auto former = std::exchange(pause_, std::clamp(2 * pause_, FIRST_PAUSE, LONGEST_PAUSE));
    if (pause_ != former)
        PLATFORM_LOGW("player", "none of the videos can be played; the next try is in %d s",
                      static_cast<int>(pause_.count() / 1000));
    return pause_;
}

} // namespace platform
