#include "control/content_list.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <string_view>

#include <dirent.h>
#include <sys/stat.h>

#include "base/ascii_case.h"

namespace platform {

namespace {

// An extension counts when it is found anywhere in the text, whatever the case.
constexpr char VIDEOS[] = ".ts/.avi/.mp4/.asf/.wmv/.ogg/.flv/.mpeg/.mkv/.tp";
constexpr char VIDEOS_OF_DIRECT_BACKLIGHT[] =
    ".smp4/.ts/.avi/.mp4/.asf/.wmv/.ogg/.flv/.mpeg/.mkv/.tp";
constexpr char PHOTOS[] = ".jpg/.jpeg";
constexpr std::string_view PORTRAIT_PREFIX = "portrait_";

// The file system's clock ticks more coarsely than the one that launch requests are timed with.
constexpr double COARSE_TICK_S = 0.02;

struct DirectoryCloser {
    void operator()(DIR *directory) const { closedir(directory); }
};

double seconds(const timespec &time)
{
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

bool is_portrait(std::string_view name)
{
    return find_nocase(name.substr(0, PORTRAIT_PREFIX.size()), PORTRAIT_PREFIX) == 0;
}

bool is_among(std::string_view extensions, std::string_view extension)
{
    return find_nocase(extensions, extension) != std::string_view::npos;
}

bool is_dots(const char *name)
{
    return std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0;
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
    list.portrait = is_portrait(name);
    std::vector<std::string> photos;
    while (const dirent *entry = readdir(directory.get())) {
        const char *extension = std::strrchr(entry->d_name, '.');
        if (!extension || is_dots(entry->d_name) || is_portrait(entry->d_name) != list.portrait)
            continue;
        if (is_among(direct_backlight ? VIDEOS_OF_DIRECT_BACKLIGHT : VIDEOS, extension))
            list.names.emplace_back(entry->d_name);
        else if (is_among(PHOTOS, extension))
            photos.emplace_back(entry->d_name);
    }
    list.videos = list.names.size();
    list.names.insert(list.names.end(), photos.begin(), photos.end());

    const auto found = std::find(list.names.begin(), list.names.end(), name);
    if (found == list.names.end())
        return std::nullopt;
    list.position = static_cast<size_t>(found - list.names.begin());
    return list;
}

} // namespace platform
