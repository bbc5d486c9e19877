/**
 * The videos that could not be opened, and why, where such are passed over: they are not tried
 * again until they change. Also how long a list of nothing but such is waited with. Any thread;
 * never asks the disk.
 */
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "base/regular_file.h"

namespace platform {

struct BrokenFile {
    std::string path;
    std::string why; ///< in words
};

class BrokenFiles {
  public:
    /** The list of this process. */
    static BrokenFiles &get();

    /**
     * A file could not be opened.
     *
     * @param stamp   nothing: the file is tried each time
     * @param certain a slow disk, say, is not to blame; otherwise the file is tried once more
     * @return false when the same was said of it before
     */
    bool note(const std::string &path, const std::optional<FileStamp> &stamp,
              const std::string &why, bool certain);

    /** A file could be opened. */
    void forget(const std::string &path);

    /** Why a file is not worth trying; nothing: it is, or it has changed since. */
    std::optional<std::string> why(const std::string &path, const FileStamp &stamp) const;

    /** All of them, by path. */
    std::vector<BrokenFile> all() const;

    /**
     * A noted file is passed over. A list of nothing but such files must not keep the set busy: a
     * round through it in which nothing was shown ends with a wait, and each further one with one
     * of twice the length, up to a minute.
     *
     * @param shown pictures of anything that the screen has had so far
     * @return how long to wait before the file counts as played
     */
    std::chrono::milliseconds pause_for(const std::string &path, uint64_t shown);

  private:
    struct Entry {
        std::optional<FileStamp> stamp;
        std::string why;
        bool certain = false;
        int round = 0; ///< in which it was passed over last
    };

    mutable std::mutex mutex_; ///< guards what follows
    std::map<std::string, Entry> files_;
    uint64_t shown_ = 0;
    int round_ = 1;                      ///< begins anew with everything that is shown
    std::chrono::milliseconds pause_{0}; ///< after the last round
};

} // namespace platform
