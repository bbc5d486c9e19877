#include "control/storage_facts.h"

#include <algorithm>
#include <memory>

#include <dirent.h>
#include <sys/stat.h>

#include "player_rules/content_rules.h"

namespace platform {

namespace {

// The file system's clock ticks more coarsely than the one that launch requests are timed with.
constexpr double COARSE_TICK_S = 0.02;

struct DirectoryCloser {
    void operator()(DIR *directory) const { closedir(directory); }
};

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

} // namespace

std::optional<ContentList> content_list_of(const std::string &path, bool direct_backlight,
                                           const timespec &made)
{
    const size_t slash = path.rfind('/');
    if (slash == std::string::npos || !unchanged_since(path.substr(0, slash + 1), made))
        return std::nullopt;
    const std::string name = path.substr(slash + 1);
    const std::unique_ptr<DIR, DirectoryCloser> directory(
        opendir(path.substr(0, slash + 1).c_str()));
    if (!directory)
        return std::nullopt;

    ContentList list;
    list.portrait = is_portrait_content(name);
    std::vector<std::string> photos;
    while (const dirent *entry = readdir(directory.get())) {
        if (is_portrait_content(entry->d_name) != list.portrait)
            continue;
        switch (content_kind(entry->d_name, direct_backlight)) {
        case ContentKind::Video:
            list.names.emplace_back(entry->d_name);
            break;
        case ContentKind::Photo:
            photos.emplace_back(entry->d_name);
            break;
        case ContentKind::Other:
            break;
        }
    }
    list.videos = list.names.size();
    list.names.insert(list.names.end(), photos.begin(), photos.end());

    const auto found = std::find(list.names.begin(), list.names.end(), name);
    if (found == list.names.end())
        return std::nullopt;
    list.position = static_cast<size_t>(found - list.names.begin());
    return list;
}

StorageFacts read_storage(const StorageQuestion &question)
{
    StorageFacts facts;
    if (!question.file.empty())
        facts.list = content_list_of(question.file, question.direct_backlight, question.list_made);
    facts.usb = usb_mount_paths(question.usb);
    return facts;
}

} // namespace platform
