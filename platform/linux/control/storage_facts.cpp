#include "control/storage_facts.h"

#include <algorithm>
#include <cerrno>

#include <sys/stat.h>

namespace platform {

namespace {

// The file system's clock ticks more coarsely than the one that launch requests are timed with.
constexpr double COARSE_TICK_S = 0.02;

double seconds(const timespec &time)
{
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

bool unchanged_since(const std::string &folder, const timespec &made)
{
    struct stat status = {};
    return stat(folder.c_str(), &status) == 0 &&
           seconds(status.st_ctim) < seconds(made) - COARSE_TICK_S;
}

bool is_gone(const UnplayableFile &file)
{
    struct stat status = {};
    return lstat(file.path.c_str(), &status) != 0 && (errno == ENOENT || errno == ENOTDIR);
}

} // namespace

std::optional<ContentList> content_list_of(const std::string &path, bool direct_backlight,
                                           const timespec &made)
{
    const size_t slash = path.rfind('/');
    if (slash == std::string::npos || !unchanged_since(path.substr(0, slash + 1), made))
        return std::nullopt;
    return content_list(path, direct_backlight);
}

StorageFacts read_storage(const StorageQuestion &question)
{
    StorageFacts facts;
    if (!question.file.empty())
        facts.list = content_list_of(question.file, question.direct_backlight, question.list_made);
    facts.usb = usb_mount_paths(question.usb);
    std::vector<UnplayableFile> &left = facts.passed_over.emplace(question.passed_over);
    left.erase(std::remove_if(left.begin(), left.end(), is_gone), left.end());
    return facts;
}

} // namespace platform
