#include "usb_storage/stick_content.h"

#include <algorithm>
#include <filesystem>
#include <functional>
#include <string_view>

#include "base/ascii_case.h"
#include "player_rules/content_rules.h"
#include "settings/settings.h"

namespace platform {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view FOLDER = "demo";

/** Names in a folder that suit; none where it cannot be read. */
std::vector<std::string> names_in(const std::string &folder,
                                  const std::function<bool(const std::string &name)> &suits)
{
    std::vector<std::string> names;
    std::error_code failure;
    for (fs::directory_iterator entry(folder, failure), end; !failure && entry != end;
         entry.increment(failure)) {
        std::string name = entry->path().filename().string();
        if (suits(name))
            names.push_back(std::move(name));
    }
    return names;
}

bool is_demo(const std::string &name)
{
    return name.size() == FOLDER.size() && find_nocase(name, FOLDER) == 0;
}

bool is_played(const std::string &name)
{
    const bool direct_backlight = Settings::get().store_content_type == DIRECT_BACKLIGHT;
    return content_kind(name, direct_backlight) != ContentKind::Other;
}

} // namespace

std::vector<std::string> stick_contents(const std::vector<std::string> &mounts)
{
    std::vector<std::string> found;
    for (const std::string &mount : mounts) {
        std::vector<std::string> names = names_in(mount, is_demo);
        // In ASCII small letters come last.
        std::sort(names.begin(), names.end(), std::greater<>());
        for (const std::string &name : names) {
            std::string folder = mount;
            folder.append("/").append(name).append("/");
            if (!names_in(folder, is_played).empty())
                found.push_back(folder);
        }
    }
    return found;
}

} // namespace platform
