#include "usb_storage/stick_content.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string_view>

#include "base/ascii_case.h"
#include "settings/settings.h"

namespace platform {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view FOLDER = "demo";

/** The first entries of a folder that suit, in its order; none where it cannot be read. */
std::vector<std::string> names_in(const std::string &folder, size_t most,
                                  const std::function<bool(const fs::directory_entry &)> &suits)
{
    std::vector<std::string> names;
    std::error_code failure;
    for (fs::directory_iterator entry(folder, failure), end;
         !failure && entry != end && names.size() < most; entry.increment(failure)) {
        if (suits(*entry))
            names.push_back(entry->path().filename().string());
    }
    return names;
}

bool is_demo(const fs::directory_entry &entry)
{
    const std::string name = entry.path().filename().string();
    return name.size() == FOLDER.size() && find_nocase(name, FOLDER) == 0;
}

} // namespace

std::vector<std::string> stick_contents(const std::vector<std::string> &mounts, Orientations shown)
{
    const bool direct_backlight = Settings::get().direct_backlight();
    const auto playable = [&](const fs::directory_entry &file) {
        return is_playable(file, direct_backlight, shown);
    };
    std::vector<std::string> found;
    for (const std::string &mount : mounts) {
        std::vector<std::string> names = names_in(mount, SIZE_MAX, is_demo);
        // In ASCII small letters come last.
        std::sort(names.begin(), names.end(), std::greater<>());
        for (const std::string &name : names) {
            std::string folder = mount;
            folder.append("/").append(name).append("/");
            if (!names_in(folder, 1, playable).empty())
                found.push_back(folder);
        }
    }
    return found;
}

} // namespace platform
