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
    Entry *const entry = find_or_add(path);
    if (!entry || entry->hopeless(stamp, now))
        return false;
    // The same damage is told in other words now and then.
    if (entry->stamp != stamp || entry->stood_still || (!stamp && entry->why != why)) {
        *entry = {stamp, why, kind};
        if (listener_)
            listener_();
        return true;
    }
    entry->failed_twice = true;
    entry->next_try = Clock::time_point::max();
    if (kind == UnplayableFile::Kind::TooSlow && stamp)
        put_off(path, *entry, "is slow again", now);
    return false;
}

void UnplayableFiles::note_stalls(const std::string &path, const FileStamp &stamp,
                                  const std::string &why, Clock::time_point now)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    Entry *const entry = find_or_add(path);
    if (!entry)
        return;
    if (!entry->stood_still || entry->stamp != stamp) {
        *entry = {stamp, why, UnplayableFile::Kind::TooSlow};
        entry->failed_twice = entry->stood_still = true;
        if (listener_)
            listener_();
    }
    put_off(path, *entry, "stood still twice", now);
}

/** @return null when the list is full */
UnplayableFiles::Entry *UnplayableFiles::find_or_add(const std::string &path)
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

void UnplayableFiles::put_off(const std::string &path, Entry &entry, const char *why,
                              Clock::time_point now)
{
    entry.pause = std::clamp(2 * entry.pause, FIRST_PAUSE, LONGEST_PAUSE);
    entry.next_try = now + entry.pause;
    PLATFORM_LOGW("player", "%s %s; it is tried anew in %d min", path.c_str(), why,
                  static_cast<int>(entry.pause.count()));
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
