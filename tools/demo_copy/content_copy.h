/**
 * Puts the files of one folder that the demo plays in the place of those of another: copies them
 * into a folder beside that one, reads each back from the disk, and exchanges the two folders in
 * one step. Whatever happens before that step, a power cut too, leaves the old content as it was.
 * One thread.
 */
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include <sys/stat.h>

#include "base/descriptor.h"

namespace demo_copy {

/** Why the content was not copied, in words for staff. The old content stands. */
struct CopyFailure : std::runtime_error {
    using std::runtime_error::runtime_error;
};

struct ContentFile {
    std::string name;
    struct stat status;
};

class ContentCopy {
  public:
    /** How far it has come. Bytes count twice, when they are copied and when they are checked. */
    struct Progress {
        size_t file = 0; ///< counted from 0
        uint64_t bytes = 0;
    };

    /**
     * Looks what there is to be copied.
     *
     * @param direct_backlight whether the set is of the models that play one more kind of file
     * @throws CopyFailure where the folder cannot be read, or holds nothing that the demo plays
     */
    ContentCopy(std::string from, bool direct_backlight);

    const std::vector<ContentFile> &files() const { return files_; }
    /** Names of what stays behind: not played, or no files. Hidden ones are not told. */
    const std::vector<std::string> &left_out() const { return left_out_; }
    /** Of all files. */
    uint64_t bytes() const { return bytes_; }

    /**
     * Copies, checks and exchanges.
     *
     * @param to       the folder whose content is replaced; made where there is none
     * @param stop     gives up soon after it is set, as for a failure
     * @param progress called often
     * @return what could not be tidied up afterwards, empty as a rule
     * @throws CopyFailure
     */
    std::string replace(const std::string &to, const std::atomic<bool> &stop,
                        const std::function<void(const Progress &)> &progress) const;

  private:
    bool is_played(const std::string &name) const;

    const std::string from_;
    const bool direct_backlight_;
    /** Stays open: files are opened in the folder that was looked at, whatever its path becomes. */
    const platform::DirectoryPtr folder_;
    std::vector<ContentFile> files_;
    std::vector<std::string> left_out_;
    uint64_t bytes_ = 0;
};

/** "3.4 GB" */
std::string in_words(uint64_t bytes);

} // namespace demo_copy
