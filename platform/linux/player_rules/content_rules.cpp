#include "player_rules/content_rules.h"

#include "base/ascii_case.h"

namespace platform {

namespace {

// An extension counts when it is found anywhere in the text, whatever the case.
constexpr std::string_view VIDEOS = ".ts/.avi/.mp4/.asf/.wmv/.ogg/.flv/.mpeg/.mkv/.tp";
constexpr std::string_view VIDEOS_OF_DIRECT_BACKLIGHT =
    ".smp4/.ts/.avi/.mp4/.asf/.wmv/.ogg/.flv/.mpeg/.mkv/.tp";
constexpr std::string_view PHOTOS = ".jpg/.jpeg";
constexpr std::string_view PORTRAIT_PREFIX = "portrait_";

} // namespace

ContentKind content_kind(std::string_view name, bool direct_backlight)
{
    const size_t dot = name.rfind('.');
    if (dot == std::string_view::npos || name == "." || name == "..")
        return ContentKind::Other;
    const auto is_among = [extension = name.substr(dot)](std::string_view extensions) {
        return find_nocase(extensions, extension) != std::string_view::npos;
    };
    if (is_among(direct_backlight ? VIDEOS_OF_DIRECT_BACKLIGHT : VIDEOS))
        return ContentKind::Video;
    return is_among(PHOTOS) ? ContentKind::Photo : ContentKind::Other;
}

bool is_portrait_content(std::string_view name)
{
    return find_nocase(name.substr(0, PORTRAIT_PREFIX.size()), PORTRAIT_PREFIX) == 0;
}

} // namespace platform
