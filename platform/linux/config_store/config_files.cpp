#include "config_store/config_files.h"

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/descriptor.h"
#include "base/regular_file.h"
#include "log/platform_log.h"

namespace platform {

namespace {

constexpr size_t LONGEST_KEY = 200;
constexpr size_t LONGEST_TEXT = 64;
constexpr std::string_view DB = "db/";
constexpr std::string_view MEMORY = "memory/";

// Temporary files are hidden, so no key can have the name of one, and marked, so that those a crash
// left behind can be told from anything else.
constexpr std::string_view TEMPORARY_MARK = ".new-";

bool starts_with(std::string_view text, std::string_view prefix)
{
    return text.substr(0, prefix.size()) == prefix;
}

std::string text_of(int value)
{
    return std::to_string(value) + "\n";
}

/** The whole text of a small file; empty when it cannot be read. */
std::string small_text(const std::string &path)
{
    std::string text;
    return read_regular_file(path, LONGEST_TEXT, text) == 0 ? text : std::string();
}

// Takes a temporary file away when the writing itself does not get to its end.
class TemporaryFile {
  public:
    explicit TemporaryFile(std::string path) : path_(std::move(path)) {}
    ~TemporaryFile()
    {
        if (!path_.empty())
            unlink(path_.c_str());
    }
    TemporaryFile(const TemporaryFile &) = delete;
    TemporaryFile &operator=(const TemporaryFile &) = delete;

    const std::string &path() const { return path_; }

    bool rename_to(const std::string &path)
    {
        if (rename(path_.c_str(), path.c_str()) != 0)
            return false;
        path_.clear();
        return true;
    }

  private:
    std::string path_;
};

} // namespace

ConfigFiles::ConfigFiles(std::string state_dir, std::string runtime_dir,
                         const std::string &boot_id_file)
    : state_dir_(std::move(state_dir)), runtime_dir_(std::move(runtime_dir)),
      boot_id_(small_text(boot_id_file))
{
    if (boot_id_.empty())
        PLATFORM_LOGW("config_store", "%s cannot be read; memory keys may outlive a restart",
                      boot_id_file.c_str());
    // Where there is no key nothing needs to go, and reading makes no folder.
    memory_is_stale_ = DirectoryPtr(opendir(path(std::string(MEMORY)).c_str())) != nullptr;
    if (memory_is_stale_)
        note_boot();
}

// The id of the boot lies beside the keys, from the moment on in which they can be there. Keys go
// only as long as those that were there at first may be an earlier boot's. The lock lets one
// process alone remove them: those that wait for it find its work done, and keys that were written
// since stay. The new id is written before anything is removed, so that a full medium does not cost
// the keys at each start anew, and takes its place afterwards, so that a crash in between leaves
// none of them.
void ConfigFiles::note_boot()
{
    const std::string stamp = runtime_dir_ + "/boot_id";
    const auto is_this_boot = [&] { return boot_id_.empty() || small_text(stamp) == boot_id_; };
    const bool maybe_stale = std::exchange(memory_is_stale_, false);
    if (is_this_boot())
        return;
    const Descriptor lock(open(runtime_dir_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    while (flock(lock.number(), LOCK_EX) != 0 && errno == EINTR) {
    }
    if (is_this_boot())
        return;
    TemporaryFile next(stamp + std::string(TEMPORARY_MARK) + "0");
    const Descriptor file(
        open(next.path().c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, 0644));
    if (!file || !write_whole(file.number(), boot_id_)) {
        PLATFORM_LOGE("config_store", "%s could not be written: %s; memory keys %s",
                      next.path().c_str(), std::strerror(errno),
                      maybe_stale ? "are not used" : "may outlive a restart");
        memory_is_stale_ = maybe_stale;
        return;
    }
    std::map<std::string, int> former;
    if (maybe_stale)
        list_below(std::string(MEMORY), former);
    for (const auto &[key, value] : former) {
        if (unlink(path(key).c_str()) != 0)
            PLATFORM_LOGE("config_store", "%s of an earlier boot could not be removed: %s",
                          key.c_str(), std::strerror(errno));
    }
    if (!next.rename_to(stamp))
        PLATFORM_LOGE("config_store", "%s could not be written: %s", stamp.c_str(),
                      std::strerror(errno));
    if (!former.empty())
        PLATFORM_LOGI("config_store", "memory keys of an earlier boot removed: %zu", former.size());
}

bool ConfigFiles::is_valid_key(std::string_view key)
{
    if (key.size() > LONGEST_KEY || !(starts_with(key, DB) || starts_with(key, MEMORY)))
        return false;
    char before = '/';
    for (const char c : key) {
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F)
            return false;
        if (before == '/' && (c == '/' || c == '.'))
            return false;
        before = c;
    }
    return before != '/';
}

bool ConfigFiles::survives(std::string_view key)
{
    return starts_with(key, DB);
}

bool ConfigFiles::parse(std::string_view text, int &value)
{
    int parsed = 0;
    const char *const last = text.data() + text.size();
    const auto [end, error] = std::from_chars(text.data(), last, parsed);
    if (error != std::errc())
        return false;
    const std::string_view rest(end, static_cast<size_t>(last - end));
    if (rest.find_first_not_of(" \t\r\n") != std::string_view::npos)
        return false;
    value = parsed;
    return true;
}

std::string ConfigFiles::path(const std::string &key) const
{
    return (survives(key) ? state_dir_ : runtime_dir_) + "/" + key;
}

std::string ConfigFiles::folder(const std::string &key) const
{
    const std::string file = path(key);
    return file.substr(0, file.rfind('/'));
}

bool ConfigFiles::read(const std::string &key, int &value) const
{
    if (!is_valid_key(key) || (memory_is_stale_ && !survives(key)))
        return false;
    return parse(small_text(path(key)), value);
}

bool ConfigFiles::holds_nothing(const std::string &key) const
{
    std::string text;
    const int reason = read_regular_file(path(key), LONGEST_TEXT, text);
    if (reason == ENOENT)
        return true;
    const bool rubbish = reason == 0 || reason == EFBIG || reason == EINVAL;
    PLATFORM_LOGW("config_store", "%s %s: %s", path(key).c_str(),
                  rubbish ? "is begun anew" : "cannot be read and is left alone",
                  rubbish ? "it holds no number" : std::strerror(reason));
    return rubbish;
}

bool ConfigFiles::sync_folder(const std::string &folder)
{
    const Descriptor directory(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    // Some file systems cannot sync a directory and say so; they have nothing to sync then.
    return directory && (fsync(directory.number()) == 0 || errno == EINVAL || errno == EROFS);
}

bool ConfigFiles::make_folder(const std::string &key, const Sync &sync)
{
    if (!make_folders(key, sync))
        return false;
    if (!survives(key))
        note_boot();
    return true;
}

bool ConfigFiles::make_folders(const std::string &key, const Sync &sync) const
{
    const std::string wanted = folder(key);
    struct stat status = {};
    if (stat(wanted.c_str(), &status) == 0) {
        errno = ENOTDIR;
        return S_ISDIR(status.st_mode);
    }
    for (size_t slash = wanted.find('/', 1);; slash = wanted.find('/', slash + 1)) {
        const std::string part = wanted.substr(0, slash);
        if (mkdir(part.c_str(), 0755) == 0) {
            if (survives(key) && !sync(part.substr(0, part.rfind('/') + 1)))
                return false;
        } else if (const int reason = errno; stat(part.c_str(), &status) != 0) {
            errno = reason;
            return false;
        }
        if (slash == std::string::npos)
            break;
    }
    errno = ENOTDIR;
    return stat(wanted.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool ConfigFiles::write(const std::string &key, int value)
{
    if (!is_valid_key(key)) {
        PLATFORM_LOGE("config_store", "\"%s\" is no name for a key", key.c_str());
        return false;
    }
    // Another process may remove the folder, or sweep our temporary file in the instant before it
    // is locked; neither happens three times in a row by chance.
    for (int attempt = 0; attempt < 3; ++attempt) {
        const Outcome outcome = write_once(key, value);
        if (outcome == Outcome::Done)
            return true;
        if (outcome == Outcome::Failed)
            break;
    }
    const int reason = errno;
    PLATFORM_LOGE("config_store", "%s could not be written: %s", path(key).c_str(),
                  std::strerror(reason));
    return false;
}

ConfigFiles::Outcome ConfigFiles::write_once(const std::string &key, int value)
{
    if (!make_folder(key))
        return Outcome::Failed;
    if (memory_is_stale_ && !survives(key)) {
        errno = EIO;
        return Outcome::Failed;
    }
    if (rewrite_unchanged(key, value))
        return Outcome::Done;
    remove_leftovers(folder(key));

    const std::string temporary = temporary_path(key);
    Descriptor file(
        open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0644));
    if (!file)
        return errno == ENOENT || errno == EEXIST ? Outcome::Again : Outcome::Failed;
    TemporaryFile guard(temporary);
    // The lock tells other processes that this file's writer is alive.
    flock(file.number(), LOCK_EX | LOCK_NB);
    if (!write_whole(file.number(), text_of(value)))
        return Outcome::Failed;
    if (survives(key) && fsync(file.number()) != 0)
        return Outcome::Failed;
    // Closed first: a file that is closed under its final name counts as written once more.
    file = Descriptor();
    if (!guard.rename_to(path(key)))
        return errno == ENOENT ? Outcome::Again : Outcome::Failed;
    return !survives(key) || sync_folder(folder(key)) ? Outcome::Done : Outcome::Failed;
}

// The player writes most of its keys again and again with the same value, and a sync of a slow
// medium would cost frames each time. Opening the file for writing and closing it is what a watcher
// has to see of it; the syncs find nothing to do unless the last writer left them out.
bool ConfigFiles::rewrite_unchanged(const std::string &key, int value) const
{
    int present = 0;
    if (!read(key, present) || present != value)
        return false;
    const Descriptor file = open_regular_file(path(key), O_RDWR | O_NOFOLLOW);
    if (!file)
        return false;
    return !survives(key) || (fdatasync(file.number()) == 0 && sync_folder(folder(key)));
}

std::string ConfigFiles::temporary_path(const std::string &key)
{
    const std::string file = path(key);
    const size_t slash = file.rfind('/');
    return file.substr(0, slash + 1) + "." + file.substr(slash + 1) + std::string(TEMPORARY_MARK) +
           std::to_string(getpid()) + "-" + std::to_string(++temporaries_);
}

// Removes what a crash in the middle of a write left behind: temporary files that nobody has
// locked. Once per folder is enough.
void ConfigFiles::remove_leftovers(const std::string &folder)
{
    if (!folders_cleaned_.insert(folder).second)
        return;
    const DirectoryPtr directory(opendir(folder.c_str()));
    while (const dirent *entry = directory ? readdir(directory.get()) : nullptr) {
        const std::string_view name = entry->d_name;
        if (name.front() != '.' || name.find(TEMPORARY_MARK) == std::string_view::npos)
            continue;
        const std::string path = folder + "/" + entry->d_name;
        const Descriptor file = open_regular_file(path, O_RDONLY | O_NOFOLLOW);
        if (file && flock(file.number(), LOCK_EX | LOCK_NB) == 0 && unlink(path.c_str()) == 0)
            PLATFORM_LOGI("config_store", "removed %s, left behind by a crash", path.c_str());
    }
}

std::map<std::string, int> ConfigFiles::list() const
{
    std::map<std::string, int> found;
    list_below(std::string(DB), found);
    if (!memory_is_stale_)
        list_below(std::string(MEMORY), found);
    return found;
}

std::vector<std::string> ConfigFiles::children(const std::string &prefix) const
{
    std::vector<std::string> names;
    const DirectoryPtr directory(opendir(path(prefix).c_str()));
    while (const dirent *entry = directory ? readdir(directory.get()) : nullptr) {
        const std::string name = prefix + entry->d_name;
        if (!is_valid_key(name))
            continue;
        struct stat status = {};
        const bool is_folder = lstat(path(name).c_str(), &status) == 0 && S_ISDIR(status.st_mode);
        names.push_back(is_folder ? name + "/" : name);
    }
    return names;
}

void ConfigFiles::list_below(const std::string &prefix, std::map<std::string, int> &found) const
{
    for (const std::string &name : children(prefix)) {
        int value = 0;
        if (name.back() == '/')
            list_below(name, found);
        else if (read(name, value))
            found[name] = value;
    }
}

} // namespace platform
