/**
 * The files that could not be shown, and why: photos, and videos where such are passed over. A
 * video that has failed twice is not tried again until it changes; one that was too slow, or that
 * stood still in its middle, for which a disk that hung may be to blame, is tried again from time
 * to time as well. Any thread; never asks the disk.
 */
#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "base/regular_file.h"

namespace platform {

struct UnplayableFile {
    /** What to do about it: all that staff can read of it in their own language. */
    enum class Kind {
        Damaged,    ///< nothing in it, or nothing that is played: another file has to be brought
        NoDecoder,  ///< a package has to be installed
        Unreadable, ///< missing, or not to be read
        TooSlow,    ///< reading it, or its picture, did not come in time
        Refused,    ///< the machine has no memory, thread or device for it at this moment
    };

    std::string path;
    std::string why; ///< in words, as the log has it
    Kind kind = Kind::Damaged;
};

class UnplayableFiles {
  public:
    using Clock = std::chrono::steady_clock;

    /** The list of this process. */
    static UnplayableFiles &get();

    /**
     * A file could not be shown, or was not tried. Of one that has not changed the first reason
     * stays.
     *
     * @param stamp nothing: the file is tried each time
     * @return false when it is no news, or the list is full
     */
    bool note(const std::string &path, const std::optional<FileStamp> &stamp,
              const std::string &why, UnplayableFile::Kind kind = UnplayableFile::Kind::Damaged,
              Clock::time_point now = Clock::now());

    /**
     * A video was opened, and stood still twice in one play. It is not tried again for a while, and
     * for a longer one each time.
     */
    void note_stalls(const std::string &path, const FileStamp &stamp, const std::string &why,
                     Clock::time_point now = Clock::now());

    /** A file could be opened. One that stood still may do so again, and is not forgotten. */
    void forget(const std::string &path);

    /** A file has been shown to its end. */
    void forget_stalls(const std::string &path);

    /** Why a file is not worth trying; nothing: it is, or it has changed since. */
    std::optional<std::string> why(const std::string &path, const FileStamp &stamp,
                                   Clock::time_point now = Clock::now()) const;

    /** All of them, by path. */
    std::vector<UnplayableFile> all() const;

    /**
     * Has somebody told of each news. The call comes from the thread that brings it; it must not
     * call this object. One listener at a time; an empty one ends it.
     */
    void set_listener(std::function<void()> listener);

  private:
    struct Entry {
        std::optional<FileStamp> stamp;
        std::string why;
        UnplayableFile::Kind kind = UnplayableFile::Kind::Damaged;
        bool failed_twice = false;     ///< with this stamp
        bool stood_still = false;      ///< it could be opened
        std::chrono::minutes pause{0}; ///< before the next try, where there is to be one
        Clock::time_point next_try = Clock::time_point::max();

        bool hopeless(const std::optional<FileStamp> &now_stamped, Clock::time_point now) const
        {
            return failed_twice && stamp && stamp == now_stamped && now < next_try;
        }
    };

    Entry *find_or_add(const std::string &path);
    static void put_off(const std::string &path, Entry &entry, const char *why,
                        Clock::time_point now);
    void forget_those(const std::string &path, bool stood_still);

    mutable std::mutex mutex_; ///< guards what follows
    std::map<std::string, Entry> files_;
    bool fullness_logged_ = false;
    std::function<void()> listener_;
};

} // namespace platform
