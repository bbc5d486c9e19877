/**
 * The configuration store on the medium: one small file per key, a decimal integer and a newline.
 * Any program that writes a file of the key's name, best by renaming a finished one, takes part in
 * the store. One thread at a time per object; any number of processes.
 */
#pragma once

#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

class ConfigFiles {
  public:
    /** Where the kernel tells which start of the machine this is. */
    static constexpr char KERNEL_BOOT_ID[] = "/proc/sys/kernel/random/boot_id";

    /**
     * The first object after a start of the machine removes the keys in "memory", so that none is
     * left of an earlier one wherever the folder lies.
     *
     * @param state_dir    parent of the folder "db"; its keys are synced to the medium
     * @param runtime_dir  parent of the folder "memory"
     * @param boot_id_file holds another text after each start of the machine; when it cannot be
     *                     read, the keys stay, with a warning in the log
     */
    ConfigFiles(std::string state_dir, std::string runtime_dir,
                const std::string &boot_id_file = KERNEL_BOOT_ID);

    /**
     * Whether a text can name a key: "db/" or "memory/" and at most 200 characters in all, no empty
     * component, none that begins with a full stop, no control character.
     */
    static bool is_valid_key(std::string_view key);

    /** Whether a valid key outlasts the machine's next start, and is synced to the medium. */
    static bool survives(std::string_view key);

    /** Reads a text as a file would be read: an integer, then nothing but white space. */
    static bool parse(std::string_view text, int &value);

    /** @return false, value untouched, when there is no such key or its file holds no integer. */
    bool read(const std::string &key, int &value) const;

    /**
     * Whether a key that cannot be read can be written without the loss of a value: it is not
     * there, or its file is rubbish. What stands in the way is in the log.
     */
    bool holds_nothing(const std::string &key) const;

    /**
     * Writes a key, creating it and its folders. Readers see the old value or the new one whole. A
     * value that stands already is not written again, but is reported to watchers as a write.
     *
     * @return false when it could not be written, with an error in the log
     */
    bool write(const std::string &key, int value);

    /** Every key that can be read, with its value. */
    std::map<std::string, int> list() const;

    /**
     * What stands in one folder under names that a key can have: the files, and with a slash at the
     * end the folders. Links to folders are files.
     *
     * @param prefix what the names of the folder's keys begin with, the last slash included
     */
    std::vector<std::string> children(const std::string &prefix) const;

    /** File and folder of a valid key. */
    std::string path(const std::string &key) const;
    std::string folder(const std::string &key) const;

    /** Brings to the medium what stands in a folder. @return false with errno set */
    using Sync = std::function<bool(const std::string &folder)>;
    static bool sync_folder(const std::string &folder);

    /**
     * Makes a key's folder.
     *
     * @param sync called for each folder in which one was made that is to outlast a power cut
     * @return false with errno set
     */
    bool make_folder(const std::string &key, const Sync &sync = sync_folder);

  private:
    enum class Outcome { Done, Again, Failed };

    bool make_folders(const std::string &key, const Sync &sync) const;
    void note_boot();
    Outcome write_once(const std::string &key, int value);
    bool rewrite_unchanged(const std::string &key, int value) const;
    void remove_leftovers(const std::string &folder);
    std::string temporary_path(const std::string &key);
    void list_below(const std::string &prefix, std::map<std::string, int> &found) const;

    const std::string state_dir_;
    const std::string runtime_dir_;
    const std::string boot_id_;    ///< empty when nobody tells
    bool memory_is_stale_ = false; ///< its keys may be an earlier boot's
    std::set<std::string> folders_cleaned_;
    uint64_t temporaries_ = 0;
};

} // namespace platform
