#include "still_picture/jpeg_file.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {

int JpegFile::open(const std::string &path)
{
    file_ = Descriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    struct stat status = {};
    if (!file_ || fstat(file_.number(), &status) < 0)
        return errno;
    if (S_ISDIR(status.st_mode))
        return EISDIR;
    if (!S_ISREG(status.st_mode))
        return EINVAL;
    posix_fadvise(file_.number(), 0, 0, POSIX_FADV_SEQUENTIAL);
    return 0;
}

int JpegFile::read()
{
    ssize_t length;
    do {
        length = ::read(file_.number(), piece_.data(), piece_.size());
    } while (length < 0 && errno == EINTR);
    return length < 0 ? -errno : static_cast<int>(length);
}

} // namespace platform
