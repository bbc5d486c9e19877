#include "subtitles/subtitle_file.h"

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {

namespace {

class FileDescriptor {
  public:
    explicit FileDescriptor(int fd) : fd_(fd) {}
    ~FileDescriptor()
    {
        if (fd_ >= 0)
            close(fd_);
    }
    FileDescriptor(const FileDescriptor &) = delete;
    FileDescriptor &operator=(const FileDescriptor &) = delete;
    int get() const { return fd_; }

  private:
    int fd_;
};

std::string system_error(const char *what, int number)
{
    return std::string(what) + ": " + std::strerror(number) + ".";
}

} // namespace

std::optional<std::string> read_subtitle_file(const std::string &path, std::string &error,
                                              const StopRequest &stop)
{
    // Without O_NONBLOCK the opening of a FIFO would wait for somebody to write into it.
    const FileDescriptor file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    struct stat facts = {};
    if (file.get() < 0 || fstat(file.get(), &facts) != 0) {
        error = system_error("The file cannot be opened", errno);
        return std::nullopt;
    }
    if (!S_ISREG(facts.st_mode)) {
        error = "This is not a regular file.";
        return std::nullopt;
    }

    std::string content;
    char block[64 * 1024];
    for (;;) {
        if (is_stopped(stop)) {
            error = LOAD_STOPPED;
            return std::nullopt;
        }
        const ssize_t count = read(file.get(), block, sizeof block);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0) {
            error = system_error("The file cannot be read", errno);
            return std::nullopt;
        }
        if (count == 0)
            break;
        if (content.size() + static_cast<size_t>(count) > MAX_SUBTITLE_FILE_SIZE) {
            error = "The file is larger than any subtitle (over 16 MiB).";
            return std::nullopt;
        }
        content.append(block, static_cast<size_t>(count));
    }
    if (content.empty()) {
        error = "The file is empty.";
        return std::nullopt;
    }
    return content;
}

std::string lower_extension(const std::string &path)
{
    const size_t slash = path.rfind('/');
    const size_t dot = path.rfind('.');
    if (dot == std::string::npos || (slash != std::string::npos && dot < slash))
        return {};
    std::string extension = path.substr(dot + 1);
    for (char &letter : extension) {
        if (letter >= 'A' && letter <= 'Z')
            letter = static_cast<char>(letter - 'A' + 'a');
    }
    return extension;
}

} // namespace platform
