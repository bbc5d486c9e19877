#include "subtitles/subtitle_file.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "base/ascii_case.h"
#include "base/regular_file.h"

namespace platform {

std::optional<std::string> read_subtitle_file(const std::string &path, std::string &error,
                                              const StopRequest &stop)
{
    std::string content;
    switch (const int reason = read_regular_file(path, MAX_SUBTITLE_FILE_SIZE, content, stop)) {
    case 0:
        if (!content.empty())
            return content;
        error = "The file is empty.";
        break;
    case EISDIR:
    case EINVAL:
        error = "This is not a regular file.";
        break;
    case EFBIG:
        error = "The file is larger than any subtitle (over 16 MiB).";
        break;
    case ECANCELED:
        error = LOAD_STOPPED;
        break;
    default:
        error = std::string("The file cannot be read: ") + std::strerror(reason) + ".";
    }
    return std::nullopt;
}

std::string lower_extension(const std::string &path)
{
    const size_t slash = path.rfind('/');
    const size_t dot = path.rfind('.');
    if (dot == std::string::npos || (slash != std::string::npos && dot < slash))
        return {};
    std::string extension = path.substr(dot + 1);
    std::transform(extension.begin(), extension.end(), extension.begin(), lower_case);
    return extension;
}

} // namespace platform
