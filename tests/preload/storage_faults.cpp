// Loaded in front of the player by the end-to-end tests, to make storage fail without a disk that
// does. The player knows nothing of it. A file system of our own would want privileges that not
// everybody who runs the tests has, and could not refuse a write.
//
// STORAGE_FAULTS   the file that says what is wrong at the moment, a fault a line: its name and
//                  what the paths begin with that it holds for. Without the file all is well. It is
//                  looked at with each call and so has to be replaced as a whole.
//
// hangs       a read waits until the fault is gone
// dead        so does whatever opens a file, looks at one or lists a folder
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

Fault fault_of(int descriptor)
{
    const int before = errno;
    char link[32];
    snprintf(link, sizeof link, "/proc/self/fd/%d", descriptor);
    char path[4096];
    const ssize_t length = readlink(link, path, sizeof path - 1);
    path[length > 0 ? length : 0] = 0;
    errno = before;
    return fault_of(path);
}

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

DIR *opendir(const char *path)
{
    static auto *const original = next<decltype(opendir)>("opendir");
    answered(path);
    return original(path);
}

dirent *readdir(DIR *directory)
{
    static auto *const original = next<decltype(readdir)>("readdir");
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

int stat64(const char *path, struct stat64 *status) noexcept
{
    static auto *const original = next<decltype(stat64)>("stat64");
    answered(path);
    return original(path, status);
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

// Where file sizes have 64 bits anyhow, these are other names of the same functions.
static_assert(sizeof(off_t) == sizeof(off64_t));
extern "C" {
int open64(const char *path, int flags, ...) __attribute__((alias("open")));
ssize_t pread64(int descriptor, void *buffer, size_t size, off64_t at)
    __attribute__((alias("pread")));
}
