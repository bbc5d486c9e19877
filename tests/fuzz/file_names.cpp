// Names of files in the demo folder, divided by slashes; in front of them the set's language.

#include <algorithm>

#include "fuzz.h"
#include "platform.h"
#include "player/util/OstrelDemoUtil.h"
#include "player_inspector.h"
#include "player_rules/content_rules.h"

namespace {

constexpr char FOLDER[] = "/opt/data/demo_movie/";
constexpr size_t LONGEST_NAME = 255;

using Names = std::vector<std::string>;

/** Those of the pieces that a folder can hold. */
Names possible(const Names &pieces)
{
    Names names;
    for (std::string name : pieces) {
        name = name.substr(0, std::min(name.find('\0'), LONGEST_NAME));
        // The folder of the fake takes an at sign at the end for the mark of a link.
        if (!name.empty() && name.back() != '@' && name != "." && name != "..")
            names.push_back(name);
    }
    return names;
}

/** The files of a list, as the Linux platform knows the player's rules. */
Names expected(const Names &folder, platform::ContentKind kind, bool portrait)
{
    Names list;
    for (const std::string &name : folder) {
        if (platform::content_kind(name, false) == kind &&
            platform::is_portrait_content(name) == portrait)
            list.push_back(name);
    }
    return list;
}

Names names_of(const std::vector<stPlayListItem> &items)
{
    Names names;
    for (const stPlayListItem &item : items)
        names.push_back(item.strFileName);
    return names;
}

bool is_subtitle(const std::string &name)
{
    const size_t dot = name.rfind('.');
    if (dot == std::string::npos ||
        platform::content_kind(name, false) != platform::ContentKind::Other)
        return false;
    std::string ending = name.substr(dot);
    for (char &letter : ending)
        letter = letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter + 32) : letter;
    return std::string_view(".smi/.srt/.sub/.ttxt/.txt/.ssa/.ass/.psb/.sami/.mpl").find(ending) !=
           std::string_view::npos;
}

/** The first subtitle with the video's name and the suffix, else the last with the name. */
std::string subtitle_for(const std::string &video, const Names &folder, const std::string &suffix)
{
    const std::string stem = video.substr(0, video.rfind('.'));
    std::string found;
    for (const std::string &name : folder) {
        if (!is_subtitle(name) || name.find(stem) == std::string::npos)
            continue;
        found = name;
        if (!suffix.empty() && name.find(suffix) != std::string::npos)
            break;
    }
    return found;
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    Names pieces = fuzz::pieces(fuzz::text_of(data, size), '/');
    const std::string language = pieces.front().c_str();
    pieces.erase(pieces.begin());
    const Names folder = possible(pieces);
    fake::Platform &set = fake::reset();
    set.system.language = language;
    set.storage.add_folder(FOLDER, folder);
    COstrelDemoPlayer controller;
    CPlayerInspector player(controller);

    player.m_CreatePlayList();

    using platform::ContentKind;
    fuzz::require(
        names_of(player.m_vdcLandscapeVideos) == expected(folder, ContentKind::Video, false) &&
            names_of(player.m_vdcPortraitVideos) == expected(folder, ContentKind::Video, true) &&
            names_of(player.m_vdcLandscapePhotos) == expected(folder, ContentKind::Photo, false) &&
            names_of(player.m_vdcPortraitPhotos) == expected(folder, ContentKind::Photo, true),
        "player and platform sort the files alike");
    const std::string suffix = COstrelDemoUtil::GetSystemLanguage();
    for (const auto *videos : {&player.m_vdcLandscapeVideos, &player.m_vdcPortraitVideos}) {
        for (const stPlayListItem &item : *videos)
            fuzz::require(item.strSubtitleName == subtitle_for(item.strFileName, folder, suffix),
                          "each video has the subtitle that the rule gives it");
    }
    return 0;
}
