#include "content_copy.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <limits>
#include <memory>
#include <string_view>
#include <utility>

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include "base/descriptor.h"
#include "base/paths.h"
#include "base/regular_file.h"
#include "player_rules/content_rules.h"

namespace demo_copy {

namespace {

namespace fs = std::filesystem;
using platform::Descriptor;
using platform::DirectoryPtr;

constexpr size_t BLOCK = size_t{1024} * 1024;
// For folders, and what else the file system keeps for itself.
constexpr uint64_t ROOM_TO_SPARE = uint64_t{16} * 1024 * 1024;
constexpr mode_t FOLDER_MODE = 0775;
constexpr mode_t FILE_MODE = 0664;

std::string with_reason(const std::string &what, int reason)
{
    const bool is_forbidden = reason == EACCES || reason == EPERM;
    return what + ": " + std::strerror(reason) + (is_forbidden ? " (with sudo it may work)" : "");
}

[[noreturn]] void fail(const std::string &what, int reason)
{
    throw CopyFailure(with_reason(what, reason));
}

/** A number for a file's bytes, which arrive in blocks of one size. */
class Digest {
  public:
    void add(std::string_view block)
    {
        value_ = value_ * PRIME + std::hash<std::string_view>()(block);
    }
    bool operator!=(const Digest &other) const { return value_ != other.value_; }

  private:
    static constexpr uint64_t PRIME = 1099511628211U;
    uint64_t value_ = 0;
};

/** @return nothing on failure, with errno set; a link is one */
DirectoryPtr open_directory(const std::string &path)
{
    const int opened = open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    return DirectoryPtr(opened < 0 ? nullptr : fdopendir(opened));
}

/** Whether the path is the folder or lies somewhere below it, both canonical. */
bool is_within(const fs::path &path, const fs::path &folder)
{
    return std::mismatch(folder.begin(), folder.end(), path.begin(), path.end()).first ==
           folder.end();
}

/** Where the new files are until they are complete. */
fs::path place_beside(const fs::path &old)
{
    return old.parent_path() / ("." + old.filename().string() + ".new");
}

/** Content lies in one folder. What has others in it is something else, named by mistake. */
void check_flat(const fs::path &folder)
{
    std::error_code failure;
    for (fs::directory_iterator entry(folder, failure), end; !failure && entry != end;
         entry.increment(failure)) {
        if (entry->symlink_status(failure).type() == fs::file_type::directory)
            throw CopyFailure(folder.string() + " is more than content, for it holds the folder " +
                              entry->path().filename().string());
    }
    if (failure)
        fail(folder.string() + " cannot be read", failure.value());
}

/** Not by device numbers: a folder that is bound to another place of the same disk has the same. */
bool is_mount_point(const fs::path &folder)
{
    struct statx facts = {};
    return statx(AT_FDCWD, folder.c_str(), AT_SYMLINK_NOFOLLOW, 0, &facts) == 0 &&
           (facts.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0;
}

/**
 * The folder that is to be replaced, when that can be done and takes nothing else along.
 *
 * @throws CopyFailure
 */
fs::path checked_place(const std::string &to, const std::string &from)
{
    std::error_code failure;
    // A link stays, and what it leads to is replaced.
    fs::path old =
        fs::weakly_canonical(fs::absolute(platform::without_last_slashes(to), failure), failure);
    if (failure || !old.has_filename())
        throw CopyFailure(to + " is no place for content");
    if (fs::is_symlink(old))
        throw CopyFailure(old.string() + " is a link that leads nowhere");
    if (fs::exists(old, failure) && !fs::is_directory(old, failure))
        throw CopyFailure(old.string() + " is no folder");
    if (fs::equivalent(old, from, failure))
        throw CopyFailure(old.string() + " is what is to be copied");
    const fs::path source = fs::canonical(from, failure);
    if (failure)
        fail(from + " cannot be read", failure.value());
    if (is_within(source, old) || is_within(old, source))
        throw CopyFailure(old.string() + " and " + source.string() +
                          " lie one within the other, so one cannot replace the other");
    if (is_within(source, place_beside(old)))
        throw CopyFailure(source.string() + " is where the new files go: rename it first");
    if (!fs::exists(old, failure))
        return old;
    if (is_mount_point(old))
        throw CopyFailure("something is mounted at " + old.string() +
                          ", which cannot be exchanged: name a folder below it");
    check_flat(old);
    return old;
}

/** The new folder, which goes with the object unless it has taken the old one's place. */
class NewFolder {
  public:
    explicit NewFolder(fs::path place) : place_(std::move(place))
    {
        // Of a copy that was cut off.
        if (const std::string left = remove(); !left.empty())
            throw CopyFailure(left);
        if (mkdir(place_.c_str(), S_IRWXU) != 0)
            fail(place_.string() + " cannot be made", errno);
        made_ = true;
    }
    ~NewFolder()
    {
        if (made_)
            remove();
    }
    NewFolder(const NewFolder &) = delete;
    NewFolder &operator=(const NewFolder &) = delete;

    std::string operator/(const std::string &name) const { return place_ / name; }

    /** Gives it the owner, the group and the rights of the old folder, if there is one. */
    void become_like(const fs::path &old) const
    {
        struct stat status = {};
        const bool known = stat(old.c_str(), &status) == 0;
        // Only root may give it away; anybody else keeps it.
        if (known && chown(place_.c_str(), status.st_uid, status.st_gid) != 0 && geteuid() == 0)
            fail(place_.string() + " cannot be given away", errno);
        if (chmod(place_.c_str(), known ? status.st_mode & 07777 : FOLDER_MODE) != 0)
            fail(place_.string() + " cannot be opened to others", errno);
    }

    /** Finds out before all the work, by two files, whether the file system can exchange. */
    void check_exchange() const
    {
        const std::string files[] = {*this / "1", *this / "2"};
        for (const std::string &file : files) {
            if (!Descriptor(open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR)))
                fail(file + " cannot be made", errno);
        }
        if (renameat2(AT_FDCWD, files[0].c_str(), AT_FDCWD, files[1].c_str(), RENAME_EXCHANGE) != 0)
            fail("the file system of " + place_.parent_path().string() +
                     " cannot exchange two folders in one step",
                 errno);
        for (const std::string &file : files)
            unlink(file.c_str());
    }

    /** Takes the old folder's place. @return what could not be done afterwards, if anything */
    std::string exchange_with(const fs::path &old, const Descriptor &parent)
    {
        sync(place_);
        const bool replaces = fs::exists(old);
        if (renameat2(AT_FDCWD, place_.c_str(), AT_FDCWD, old.c_str(),
                      replaces ? RENAME_EXCHANGE : 0) != 0)
            fail(old.string() + " cannot be exchanged", errno);
        made_ = false;
        if (fsync(parent.number()) != 0)
            return std::string("a power cut may undo it: ") + std::strerror(errno);
        return remove();
    }

  private:
    static void sync(const fs::path &folder)
    {
        const Descriptor opened(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        if (!opened || fsync(opened.number()) != 0)
            fail(folder.string() + " cannot be written", errno);
    }

    /** Takes away the files at its top, and itself. What lies deeper was never content. */
    std::string remove() const
    {
        const DirectoryPtr directory = open_directory(place_);
        if (!directory && errno == ENOENT)
            return "";
        int reason = 0;
        while (const dirent *entry = directory ? readdir(directory.get()) : nullptr) {
            const std::string name = entry->d_name;
            if (name != "." && name != ".." &&
                unlinkat(dirfd(directory.get()), entry->d_name, 0) != 0)
                reason = errno;
        }
        if (rmdir(place_.c_str()) == 0)
            return "";
        return with_reason(place_.string() + " cannot be removed", reason != 0 ? reason : errno);
    }

    const fs::path place_;
    bool made_ = false;
};

/** One file on its way, its bytes told as they go by. */
class FileCopy {
  public:
    using Passed = std::function<void(size_t bytes)>;

    FileCopy(std::string from, std::string to, Passed passed)
        : from_(std::move(from)), to_(std::move(to)), passed_(std::move(passed)), buffer_(BLOCK)
    {
    }

    /** @param folder the one that the file was seen in */
    void copy(const ContentFile &file, int folder)
    {
        const Descriptor source =
            platform::open_regular_file_at(folder, file.name, O_RDONLY | O_NOFOLLOW);
        if (!source)
            fail(from_ + " cannot be read", errno);
        const Descriptor target(
            open(to_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, FILE_MODE));
        if (!target)
            fail(to_ + " cannot be made", errno);
        Digest digest;
        uint64_t size = 0;
        while (const size_t length = read_block(source, from_)) {
            digest.add({buffer_.data(), length});
            if (!platform::write_whole(target.number(), {buffer_.data(), length}))
                fail(to_ + " cannot be written", errno);
            size += length;
            passed_(length);
        }
        if (size != static_cast<uint64_t>(file.status.st_size))
            throw CopyFailure(from_ + " has changed while it was copied");
        const timespec times[2] = {{0, UTIME_OMIT}, file.status.st_mtim};
        if (fchmod(target.number(), FILE_MODE) != 0 || futimens(target.number(), times) != 0 ||
            fsync(target.number()) != 0)
            fail(to_ + " cannot be written", errno);
        check(digest);
    }

  private:
    /** Reads the copy as the disk has it, and not what memory still holds of it. */
    void check(const Digest &expected)
    {
        const Descriptor copy = platform::open_regular_file(to_);
        if (!copy)
            fail(to_ + " cannot be read", errno);
        posix_fadvise(copy.number(), 0, 0, POSIX_FADV_DONTNEED);
        Digest digest;
        while (const size_t length = read_block(copy, to_)) {
            digest.add({buffer_.data(), length});
            passed_(length);
        }
        if (digest != expected)
            throw CopyFailure(to_ +
                              " is not what was written: the disk of this machine is damaged");
    }

    /** Whole blocks but for the last one, so that digests may be compared. */
    size_t read_block(const Descriptor &file, const std::string &path)
    {
        size_t length = 0;
        while (length < BLOCK) {
            const ssize_t piece =
                platform::read_piece(file.number(), buffer_.data() + length, BLOCK - length);
            if (piece < 0)
                fail(path + " cannot be read", errno);
            if (piece == 0)
                break;
            length += static_cast<size_t>(piece);
        }
        return length;
    }

    const std::string from_;
    const std::string to_;
    const Passed passed_;
    std::vector<char> buffer_;
};

void check_room(const fs::path &folder, uint64_t bytes)
{
    struct statvfs facts = {};
    if (statvfs(folder.c_str(), &facts) != 0)
        fail(folder.string() + " cannot be looked at", errno);
    const uint64_t free = uint64_t{facts.f_bavail} * facts.f_frsize;
    if (free < ROOM_TO_SPARE || free - ROOM_TO_SPARE < bytes)
        throw CopyFailure("there is no room for it in " + folder.string() + ": it takes " +
                          in_words(bytes) + " beside the content that is there, and " +
                          in_words(free) + " are free");
}

} // namespace

std::string in_words(uint64_t bytes)
{
    constexpr const char *UNITS[] = {"kB", "MB", "GB", "TB"};
    double amount = static_cast<double>(bytes) / 1000;
    size_t unit = 0;
    while (amount >= 999.95 && unit + 1 < std::size(UNITS)) {
        amount /= 1000;
        ++unit;
    }
    char text[32];
    std::snprintf(text, sizeof text, "%.1f %s", amount, UNITS[unit]);
    return text;
}

// Links are not followed: a stick could have any file of the machine copied, since root reads it.
ContentCopy::ContentCopy(std::string from, bool direct_backlight)
    : from_(platform::without_last_slashes(std::move(from))), direct_backlight_(direct_backlight),
      folder_(open_directory(from_))
{
    if (!folder_)
        fail(from_ + " cannot be read", errno);
    for (errno = 0; const dirent *entry = readdir(folder_.get()); errno = 0) {
        ContentFile file = {entry->d_name, {}};
        // What other systems leave behind under hidden names looks like films that are broken.
        if (file.name[0] == '.')
            continue;
        if (fstatat(dirfd(folder_.get()), entry->d_name, &file.status, AT_SYMLINK_NOFOLLOW) != 0)
            fail(from_ + "/" + file.name + " cannot be read", errno);
        if (!S_ISREG(file.status.st_mode) ||
            !(is_played(file.name) || platform::is_subtitle(file.name, direct_backlight_))) {
            left_out_.push_back(file.name);
            continue;
        }
        // Files with holes can have any size on a stick, and together more than is counted.
        const auto size = static_cast<uint64_t>(file.status.st_size);
        bytes_ += std::min(size, std::numeric_limits<uint64_t>::max() - bytes_);
        files_.push_back(std::move(file));
    }
    if (errno != 0)
        fail(from_ + " cannot be read", errno);
    if (std::none_of(files_.begin(), files_.end(),
                     [this](const ContentFile &file) { return is_played(file.name); }))
        throw CopyFailure(from_ + " holds nothing that the demo plays");
}

bool ContentCopy::is_played(const std::string &name) const
{
    return platform::is_playable(name, direct_backlight_);
}

std::string ContentCopy::replace(const std::string &to, const std::atomic<bool> &stop,
                                 const std::function<void(const Progress &)> &progress) const
{
    const fs::path old = checked_place(to, from_);
    const fs::path folder = old.parent_path();
    const Descriptor parent(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!parent)
        fail(folder.string() + " cannot be opened", errno);
    if (flock(parent.number(), LOCK_EX | LOCK_NB) != 0)
        throw CopyFailure("somebody else is copying to " + folder.string());

    NewFolder fresh(place_beside(old));
    fresh.become_like(old);
    if (fs::exists(old))
        fresh.check_exchange();
    check_room(folder, bytes_);
    Progress now;
    const auto passed = [&](size_t bytes) {
        if (stop)
            throw CopyFailure("stopped");
        now.bytes += bytes;
        progress(now);
    };
    for (const ContentFile &file : files_) {
        progress(now);
        FileCopy(from_ + "/" + file.name, fresh / file.name, passed)
            .copy(file, dirfd(folder_.get()));
        ++now.file;
    }
    return fresh.exchange_with(old, parent);
}

} // namespace demo_copy
