#include "unplayable_files/unplayable_files.h"

#include <algorithm>
#include <utility>

#include "log/platform_log.h"

namespace platform {
namespace {

/** More of them are tried each time, and told of as a whole. */
constexpr size_t MOST_FILES = 4096;

/**
 * When a file whose picture did not come in time, or that stood still, is tried again. Each try
 * holds up the show for as long as a picture may take.
 */
constexpr auto FIRST_PAUSE = std::chrono::minutes(5);
constexpr auto LONGEST_PAUSE = std::chrono::minutes(60);

} // namespace

UnplayableFiles &UnplayableFiles::get()
{
    // Never destroyed: threads of files that close slowly may outlive the program's other parts.
    static auto &files = *new UnplayableFiles;
    return files;
}

bool UnplayableFiles::note(const std::string &path, const std::optional<FileStamp> &stamp,
                           const std::string &why, UnplayableFile::Kind kind, Clock::time_point now)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    Entry *const found = entry_of(path);
    if (!found || found->hopeless(stamp, now))
        return false;
    Entry &entry = *found;
    // The same damage is told in other words now and then.
    if (entry.stamp != stamp || entry.stood_still || (!stamp && entry.why != why)) {
        entry = {stamp, why, kind};
        if (listener_)
            listener_();
        return true;
    }
    entry.failed_twice = true;
    entry.next_try = Clock::time_point::max();
    if (kind == UnplayableFile::Kind::TooSlow && stamp)
        PLATFORM_LOGW("player", "%s is slow again; it is tried anew in %d min", path.c_str(),
                      static_cast<int>(put_off(entry, now).count()));
    return false;
}

void UnplayableFiles::note_stalls(const std::string &path, const FileStamp &stamp,
                                  const std::string &why, Clock::time_point now)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    Entry *const found = entry_of(path);
    if (!found)
        return;
    Entry &entry = *found;
    if (!entry.stood_still || entry.stamp != stamp) {
        entry = {stamp, why, UnplayableFile::Kind::TooSlow};
        entry.failed_twice = entry.stood_still = true;
        if (listener_)
            listener_();
    }
    PLATFORM_LOGW("player", "%s stood still twice; it is tried anew in %d min", path.c_str(),
                  static_cast<int>(put_off(entry, now).count()));
}

/** @return null when the list is full */
UnplayableFiles::Entry *UnplayableFiles::entry_of(const std::string &path)
{
    if (files_.size() < MOST_FILES || files_.count(path) > 0)
        return &files_[path];
    if (!std::exchange(fullness_logged_, true))
        PLATFORM_LOGW("player",
                      "more than %zu files cannot be shown; the others are passed "
                      "over without a word",
                      MOST_FILES);
    return nullptr;
}

/** @return for how long */
std::chrono::minutes UnplayableFiles::put_off(Entry &entry, Clock::time_point now)
{
    entry.pause = std::clamp(2 * entry.pause, FIRST_PAUSE, LONGEST_PAUSE);
    entry.next_try = now + entry.pause;
    return entry.pause;
}

void UnplayableFiles::set_listener(std::function<void()> listener)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    listener_ = std::move(listener);
}

void UnplayableFiles::forget(const std::string &path)
{
    forget_those(path, false);
}

void UnplayableFiles::forget_stalls(const std::string &path)
{
    forget_those(path, true);
}

void UnplayableFiles::forget_those(const std::string &path, bool stood_still)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    const auto found = files_.find(path);
    if (found != files_.end() && found->second.stood_still == stood_still)
        files_.erase(found);
}

std::optional<std::string> UnplayableFiles::why(const std::string &path, const FileStamp &stamp,
                                                Clock::time_point now) const
{
    const std::lock_guard<std::mutex> lock(mutex_);
    const auto found = files_.find(path);
    if (found == files_.end() || !found->second.hopeless(stamp, now))
        return std::nullopt;
    return found->second.why;
}

std::vector<UnplayableFile> UnplayableFiles::all() const
{
    const std::lock_guard<std::mutex> lock(mutex_);
    std::vector<UnplayableFile> all;
    for (const auto &[path, entry] : files_)
        all.push_back({path, entry.why, entry.kind});
    return all;
}

} // namespace platform
