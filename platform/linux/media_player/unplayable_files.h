/**
 * The videos that could not be opened, and why, where such are passed over. One that has failed
 * twice is not tried again until it changes. Any thread; never asks the disk.
 */
#pragma once

#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "base/regular_file.h"

namespace platform {

struct UnplayableFile {
    std::string path;
    std::string why; ///< in words
};

class UnplayableFiles {
  public:
    /** The list of this process. */
    static UnplayableFiles &get();

    /**
     * A file could not be opened. Of one that has not changed the first reason stays.
     *
     * @param stamp nothing: the file is tried each time
     * @return false when it is no news, or the list is full
     */
    bool note(const std::string &path, const std::optional<FileStamp> &stamp,
              const std::string &why);

    /** A file could be opened. */
    void forget(const std::string &path);

    /** Why a file is not worth trying; nothing: it is, or it has changed since. */
    std::optional<std::string> why(const std::string &path, const FileStamp &stamp) const;

    /** All of them, by path. */
    std::vector<UnplayableFile> all() const;

  private:
    struct Entry {
        std::optional<FileStamp> stamp;
        std::string why;
        bool failed_twice = false; ///< with this stamp
    };

    mutable std::mutex mutex_; ///< guards what follows
    std::map<std::string, Entry> files_;
    bool fullness_logged_ = false;
};

} // namespace platform
