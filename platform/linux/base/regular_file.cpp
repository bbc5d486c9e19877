#include "base/regular_file.h"

#include <cerrno>

#include <sys/stat.h>
#include <unistd.h>

namespace platform {

std::optional<FileStamp> file_stamp(const std::string &path)
{
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0)
        return std::nullopt;
    return FileStamp{static_cast<int64_t>(status.st_dev),
                     static_cast<int64_t>(status.st_ino),
                     status.st_size,
                     status.st_mtim.tv_sec,
                     status.st_mtim.tv_nsec,
                     status.st_ctim.tv_sec,
                     status.st_ctim.tv_nsec};
}

namespace {

constexpr int NEVER_WAIT = O_CLOEXEC | O_NONBLOCK | O_NOCTTY;

Descriptor only_regular(Descriptor file)
{
    struct stat status = {};
    if (!file || fstat(file.number(), &status) != 0)
        return Descriptor();
    if (S_ISREG(status.st_mode))
        return file;
    file = Descriptor();
    errno = S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
    return file;
}

} // namespace

Descriptor open_regular_file(const std::string &path, int flags)
{
    return only_regular(Descriptor(open(path.c_str(), flags | NEVER_WAIT)));
}

Descriptor open_regular_file_at(int folder, const std::string &name, int flags)
{
    return only_regular(Descriptor(openat(folder, name.c_str(), flags | NEVER_WAIT)));
}

ssize_t read_piece(int descriptor, void *buffer, size_t size)
{
    ssize_t length;
    do {
        length = ::read(descriptor, buffer, size);
    } while (length < 0 && errno == EINTR);
    return length;
}

bool write_whole(int descriptor, std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t length = ::write(descriptor, bytes.data(), bytes.size());
        if (length < 0 && errno != EINTR)
            return false;
        bytes.remove_prefix(length > 0 ? static_cast<size_t>(length) : 0);
    }
    return true;
}

int read_regular_file(const std::string &path, size_t limit, std::string &content,
                      const std::function<bool()> &stop)
{
    content.clear();
    const Descriptor file = open_regular_file(path);
    if (!file)
        return errno;
    char piece[64 * 1024];
    while (!stop || !stop()) {
        const ssize_t length = read_piece(file.number(), piece, sizeof piece);
        if (length < 0)
            return errno;
        if (length == 0)
            return 0;
        if (static_cast<size_t>(length) > limit - content.size())
            return EFBIG;
        content.append(piece, static_cast<size_t>(length));
    }
    return ECANCELED;
}

} // namespace platform
