// Loaded in front of the player by the end-to-end tests, to make storage fail without a disk that
// does. The player knows nothing of it. A file system of our own would want privileges that not
// everybody who runs the tests has, and could not refuse a write.
//
// STORAGE_FAULTS   the file that says what is wrong at the moment, a fault a line: its name and
//                  what the paths begin with that it holds for. Without the file all is well. It is
//                  looked at with each call and so has to be replaced as a whole.
//
// hangs       a read waits until the fault is gone
// dead        so does whatever opens a file, looks at one, lists a folder or moves in an open file
// eio         a read fails, as on a disk that was pulled out
// unlisted    a folder can be opened, and its list ends in an error
// eio_often   one read of three fails
// unsynced    nothing gets to the medium: a sync waits until the fault is gone
// corrupt     a read gives other bytes than were written
// full        nothing can be written, and no folder made
// read_only   nothing can be opened for writing, made, renamed or removed
// plain       renaming takes no flags, as on file systems that cannot exchange

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include "next.h"

namespace {

constexpr timespec LOOK_AGAIN{0, 10'000'000};
constexpr unsigned int READS_TO_A_FAILURE = 3;

enum class Fault {
    None,
    Hangs,
    Dead,
    Eio,
    EioOften,
    Corrupt,
    Unsynced,
    Full,
    ReadOnly,
    Plain,
    Unlisted
};

constexpr struct {
    std::string_view name;
    Fault fault;
} NAMES[] = {{"hangs", Fault::Hangs},     {"dead", Fault::Dead},
             {"eio", Fault::Eio},         {"eio_often", Fault::EioOften},
             {"corrupt", Fault::Corrupt}, {"unsynced", Fault::Unsynced},
             {"full", Fault::Full},       {"read_only", Fault::ReadOnly},
             {"plain", Fault::Plain},     {"unlisted", Fault::Unlisted}};

Fault named(std::string_view name)
{
    for (const auto &known : NAMES)
        if (known.name == name)
            return known.fault;
    abort();
}

/** What stands first for the path. By system calls, because the functions are those below. */
Fault fault_in(const char *path)
{
    static const char *const list = getenv("STORAGE_FAULTS");
    char text[4096];
    const long file = syscall(SYS_openat, AT_FDCWD, list, O_RDONLY | O_CLOEXEC);
    const long length = file < 0 ? 0 : syscall(SYS_read, file, text, sizeof text);
    if (file >= 0)
        syscall(SYS_close, file);
    std::string_view rest(text, length > 0 ? static_cast<size_t>(length) : 0);
    while (!rest.empty()) {
        const std::string_view line = rest.substr(0, rest.find('\n'));
        rest.remove_prefix(line.size() + 1);
        const size_t space = line.find(' ');
        const std::string_view beginning = line.substr(space + 1);
        if (strncmp(path, beginning.data(), beginning.size()) == 0)
            return named(line.substr(0, space));
    }
    return Fault::None;
}

Fault fault_of(const char *path)
{
    const int before = errno;
    const Fault fault = path ? fault_in(path) : Fault::None;
    errno = before;
    return fault;
}

constexpr size_t LONGEST_PATH = 4096;

/** What the descriptor stands for; empty where that is no path. */
void find_path(int descriptor, char (&path)[LONGEST_PATH])
{
    const int before = errno;
    char link[32];
    snprintf(link, sizeof link, "/proc/self/fd/%d", descriptor);
    const ssize_t length = readlink(link, path, sizeof path - 1);
    path[length > 0 ? length : 0] = 0;
    errno = before;
}

Fault fault_of(int descriptor)
{
    char path[LONGEST_PATH];
    find_path(descriptor, path);
    return fault_of(path);
}

/** A path as the calls take it that count from a folder, with the folder in front. */
class PathIn {
  public:
    PathIn(int folder, const char *path) : path_(path)
    {
        if (folder == AT_FDCWD || !path || *path == '/')
            return;
        find_path(folder, whole_);
        const size_t length = strlen(whole_);
        if (*path)
            snprintf(whole_ + length, sizeof whole_ - length, "/%s", path);
        path_ = whole_;
    }
    const char *get() const { return path_; }

  private:
    const char *path_;
    char whole_[LONGEST_PATH];
};

bool refuse(int reason)
{
    errno = reason;
    return false;
}

void look_again()
{
    const int before = errno;
    nanosleep(&LOOK_AGAIN, nullptr);
    errno = before;
}

/** Whether a read goes through; it may have waited. */
bool may_read(int descriptor)
{
    static std::atomic<unsigned int> reads{0};
    for (;;) {
        switch (fault_of(descriptor)) {
        case Fault::Hangs:
        case Fault::Dead:
            look_again();
            break;
        case Fault::EioOften:
            return ++reads % READS_TO_A_FAILURE != 0 || refuse(EIO);
        case Fault::Eio:
            return refuse(EIO);
        default:
            return true;
        }
    }
}

bool may_write(int descriptor)
{
    const Fault fault = fault_of(descriptor);
    return (fault != Fault::Full || refuse(ENOSPC)) && (fault != Fault::ReadOnly || refuse(EROFS));
}

void wait_until_synced(int descriptor)
{
    while (fault_of(descriptor) == Fault::Unsynced)
        look_again();
}

/** Waits as long as nobody answers. @return the fault that there is then */
Fault answered(const char *path)
{
    Fault fault = fault_of(path);
    for (; fault == Fault::Dead; fault = fault_of(path))
        look_again();
    return fault;
}

void answered(int descriptor)
{
    while (fault_of(descriptor) == Fault::Dead)
        look_again();
}

bool may_open(const char *path, int flags)
{
    const bool writes = (flags & O_ACCMODE) != O_RDONLY || (flags & O_CREAT) != 0;
    return answered(path) != Fault::ReadOnly || !writes || refuse(EROFS);
}

bool may_change(const char *path)
{
    return answered(path) != Fault::ReadOnly || refuse(EROFS);
}

} // namespace

ssize_t read(int descriptor, void *buffer, size_t size)
{
    static auto *const original = next<decltype(read)>("read");
    const ssize_t length = may_read(descriptor) ? original(descriptor, buffer, size) : -1;
    if (length > 0 && fault_of(descriptor) == Fault::Corrupt)
        static_cast<char *>(buffer)[length / 2] ^= 1;
    return length;
}

ssize_t pread(int descriptor, void *buffer, size_t size, off_t at)
{
    static auto *const original = next<decltype(pread)>("pread");
    return may_read(descriptor) ? original(descriptor, buffer, size, at) : -1;
}

ssize_t write(int descriptor, const void *buffer, size_t size)
{
    static auto *const original = next<decltype(write)>("write");
    return may_write(descriptor) ? original(descriptor, buffer, size) : -1;
}

int fsync(int descriptor)
{
    static auto *const original = next<decltype(fsync)>("fsync");
    wait_until_synced(descriptor);
    return original(descriptor);
}

int fdatasync(int descriptor)
{
    static auto *const original = next<decltype(fdatasync)>("fdatasync");
    wait_until_synced(descriptor);
    return original(descriptor);
}

int open(const char *path, int flags, ...)
{
    static auto *const original = next<decltype(open)>("open");
    va_list words;
    va_start(words, flags);
    const mode_t mode = mode_in(words, flags);
    va_end(words);
    return may_open(path, flags) ? original(path, flags, mode) : -1;
}

int openat(int folder, const char *path, int flags, ...)
{
    static auto *const original = next<decltype(openat)>("openat");
    va_list words;
    va_start(words, flags);
    const mode_t mode = mode_in(words, flags);
    va_end(words);
    return may_open(PathIn(folder, path).get(), flags) ? original(folder, path, flags, mode) : -1;
}

FILE *fopen(const char *path, const char *mode)
{
    static auto *const original = next<decltype(fopen)>("fopen");
    return may_open(path, *mode == 'r' && !strchr(mode, '+') ? O_RDONLY : O_RDWR)
               ? original(path, mode)
               : nullptr;
}

off_t lseek(int descriptor, off_t offset, int whence) noexcept
{
    static auto *const original = next<decltype(lseek)>("lseek");
    answered(descriptor);
    return original(descriptor, offset, whence);
}

DIR *opendir(const char *path)
{
    static auto *const original = next<decltype(opendir)>("opendir");
    answered(path);
    return original(path);
}

dirent *readdir(DIR *directory)
{
    static auto *const original = next<decltype(readdir)>("readdir");
    answered(dirfd(directory));
    dirent *const entry = original(directory);
    if (entry || fault_of(dirfd(directory)) != Fault::Unlisted)
        return entry;
    errno = EIO;
    return nullptr;
}

int access(const char *path, int mode) noexcept
{
    static auto *const original = next<decltype(access)>("access");
    answered(path);
    return original(path, mode);
}

int stat(const char *path, struct stat *status) noexcept
{
    static auto *const original = next<decltype(stat)>("stat");
    answered(path);
    return original(path, status);
}

int lstat(const char *path, struct stat *status) noexcept
{
    static auto *const original = next<decltype(lstat)>("lstat");
    answered(path);
    return original(path, status);
}

int fstat(int descriptor, struct stat *status) noexcept
{
    static auto *const original = next<decltype(fstat)>("fstat");
    answered(descriptor);
    return original(descriptor, status);
}

int fstatat(int folder, const char *path, struct stat *status, int flags) noexcept
{
    static auto *const original = next<decltype(fstatat)>("fstatat");
    answered(PathIn(folder, path).get());
    return original(folder, path, status, flags);
}

int statx(int folder, const char *path, int flags, unsigned int mask, struct statx *status) noexcept
{
    static auto *const original = next<decltype(statx)>("statx");
    answered(PathIn(folder, path).get());
    return original(folder, path, flags, mask, status);
}

int mkdir(const char *path, mode_t mode) noexcept
{
    static auto *const original = next<decltype(mkdir)>("mkdir");
    if (fault_of(path) == Fault::Full) {
        errno = ENOSPC;
        return -1;
    }
    return may_change(path) ? original(path, mode) : -1;
}

int rename(const char *from, const char *to) noexcept
{
    static auto *const original = next<decltype(rename)>("rename");
    return may_change(from) ? original(from, to) : -1;
}

int renameat2(int from_folder, const char *from, int to_folder, const char *to,
              unsigned int flags) noexcept
{
    static auto *const original = next<decltype(renameat2)>("renameat2");
    if (flags != 0 && fault_of(from) == Fault::Plain) {
        errno = EINVAL;
        return -1;
    }
    return original(from_folder, from, to_folder, to, flags);
}

int unlink(const char *path) noexcept
{
    static auto *const original = next<decltype(unlink)>("unlink");
    return may_change(path) ? original(path) : -1;
}

// What the compiler's checks make of these calls where the mode is left out. Where file sizes have
// 64 bits anyhow, others are other names of the same functions.
static_assert(sizeof(off_t) == sizeof(off64_t) && sizeof(struct stat) == sizeof(struct stat64) &&
              sizeof(dirent) == sizeof(dirent64));
extern "C" {
int __open_2(const char *path, int flags)
{
    return open(path, flags);
}
int __openat_2(int folder, const char *path, int flags)
{
    return openat(folder, path, flags);
}
int __open64_2(const char *path, int flags) __attribute__((alias("__open_2")));
int __openat64_2(int folder, const char *path, int flags) __attribute__((alias("__openat_2")));
int open64(const char *path, int flags, ...) __attribute__((alias("open")));
int openat64(int folder, const char *path, int flags, ...) __attribute__((alias("openat")));
FILE *fopen64(const char *path, const char *mode) __attribute__((alias("fopen")));
off64_t lseek64(int descriptor, off64_t offset, int whence) noexcept
    __attribute__((alias("lseek")));
dirent64 *readdir64(DIR *directory) __attribute__((alias("readdir")));
int stat64(const char *path, struct stat64 *status) noexcept __attribute__((alias("stat")));
int lstat64(const char *path, struct stat64 *status) noexcept __attribute__((alias("lstat")));
int fstat64(int descriptor, struct stat64 *status) noexcept __attribute__((alias("fstat")));
int fstatat64(int folder, const char *path, struct stat64 *status, int flags) noexcept
    __attribute__((alias("fstatat")));
ssize_t pread64(int descriptor, void *buffer, size_t size, off64_t at)
    __attribute__((alias("pread")));
}
