#include "still_picture/jpeg_file.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {

JpegFile::~JpegFile()
{
    if (fd_ >= 0)
        close(fd_);
}

int JpegFile::open(const std::string &path)
{
    fd_ = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    struct stat status = {};
    if (fd_ < 0 || fstat(fd_, &status) < 0)
        return errno;
    if (S_ISDIR(status.st_mode))
        return EISDIR;
    if (!S_ISREG(status.st_mode))
        return EINVAL;
    posix_fadvise(fd_, 0, 0, POSIX_FADV_SEQUENTIAL);
    return 0;
}

int JpegFile::read()
{
    ssize_t length;
    do {
        length = ::read(fd_, piece_.data(), piece_.size());
    } while (length < 0 && errno == EINTR);
    return length < 0 ? -errno : static_cast<int>(length);
}

} // namespace platform
