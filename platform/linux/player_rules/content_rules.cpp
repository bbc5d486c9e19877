#include "player_rules/content_rules.h"

#include <algorithm>

#include <dirent.h>

#include "base/ascii_case.h"
#include "base/descriptor.h"

namespace platform {

namespace {

// An extension counts when it is found anywhere in the text, whatever the case.
constexpr std::string_view VIDEOS = ".ts/.avi/.mp4/.asf/.wmv/.ogg/.flv/.mpeg/.mkv/.tp";
constexpr std::string_view VIDEOS_OF_DIRECT_BACKLIGHT =
    ".smp4/.ts/.avi/.mp4/.asf/.wmv/.ogg/.flv/.mpeg/.mkv/.tp";
constexpr std::string_view PHOTOS = ".jpg/.jpeg";
constexpr std::string_view SUBTITLES = ".smi/.srt/.sub/.ttxt/.txt/.ssa/.ass/.psb/.sami/.mpl";

/** Whether the extension of a name is found in a text. */
bool ends_as(std::string_view name, std::string_view extensions)
{
    const size_t dot = name.rfind('.');
    return dot != std::string_view::npos && name != "." && name != ".." &&
           find_nocase(extensions, name.substr(dot)) != std::string_view::npos;
}

} // namespace

ContentKind content_kind(std::string_view name, bool direct_backlight)
{
    if (ends_as(name, direct_backlight ? VIDEOS_OF_DIRECT_BACKLIGHT : VIDEOS))
        return ContentKind::Video;
    return ends_as(name, PHOTOS) ? ContentKind::Photo : ContentKind::Other;
}

bool is_subtitle(std::string_view name, bool direct_backlight)
{
    return content_kind(name, direct_backlight) == ContentKind::Other && ends_as(name, SUBTITLES);
}

bool is_portrait_content(std::string_view name)
{
    return find_nocase(name.substr(0, PORTRAIT_PREFIX.size()), PORTRAIT_PREFIX) == 0;
}

bool is_playable(std::string_view name, bool direct_backlight)
{
    return name.front() != '.' && content_kind(name, direct_backlight) != ContentKind::Other;
}

bool is_playable(const std::filesystem::directory_entry &file, bool direct_backlight,
                 Orientations shown)
{
    const std::string name = file.path().filename().string();
    const Orientations meant_for =
        is_portrait_content(name) ? Orientations::Portrait : Orientations::Landscape;
    std::error_code failure; // makes it no regular file
    return (shown == Orientations::Both || shown == meant_for) &&
           is_playable(name, direct_backlight) && file.is_regular_file(failure);
}

std::optional<ContentList> content_list(const std::string &path, bool direct_backlight)
{
    const size_t slash = path.rfind('/');
    if (slash == std::string::npos)
        return std::nullopt;
    const std::string name = path.substr(slash + 1);
    const DirectoryPtr directory(opendir(path.substr(0, slash + 1).c_str()));
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

} // namespace platform
