// Scans the demo folder into four lists, and chooses those that suit the panel.

#include "player/control/OstrelDemoPlayer.h"

#include <dirent.h>

#include <cstring>
#include <set>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "player/util/Log.h"
#include "player/util/NameCompare.h"

namespace {

// Extensions are looked for anywhere inside these texts, so ".m" and a bare dot are videos as well;
// kept so on purpose.
constexpr char VIDEO_EXTENSIONS[] = ".ts/.avi/.mp4/.asf/.wmv/.ogg/.flv/.mpeg/.mkv/.tp";
constexpr char VIDEO_EXTENSIONS_DIRECT_BACKLIGHT[] =
    ".smp4/.ts/.avi/.mp4/.asf/.wmv/.ogg/.flv/.mpeg/.mkv/.tp";
constexpr char PHOTO_EXTENSIONS[] = ".jpg/.jpeg";
constexpr char SUBTITLE_EXTENSIONS[] = ".smi/.srt/.sub/.ttxt/.txt/.ssa/.ass/.psb/.sami/.mpl";

constexpr std::string_view PORTRAIT_PREFIX = "portrait_";

constexpr double ROTATION_DELAY_S = 0.8;

/**
 * Gives each video the first subtitle that carries its name and the language suffix, else the last
 * that carries its name, else none. The names are looked up in the subtitles and not the subtitles
 * in the names: a folder may hold a hundred thousand of both.
 */
void PairSubtitles(std::vector<stPlayListItem> &vdcVideos,
                   const std::vector<std::string> &vdcSubtitles, const std::string &strSuffix)
{
    std::unordered_multimap<std::string_view, stPlayListItem *> mapVideos;
    std::set<size_t> setLengths;
    for (stPlayListItem &stItem : vdcVideos) {
        const size_t uiDot = stItem.strFileName.rfind('.');
        if (uiDot == std::string::npos)
            continue;
        mapVideos.emplace(std::string_view(stItem.strFileName).substr(0, uiDot), &stItem);
        setLengths.insert(uiDot);
    }
    if (setLengths.empty())
        return;
    // What all names are long enough for tells at most places that none is there.
    const size_t uiLeast = *setLengths.begin();
    std::unordered_set<std::string_view> setBeginnings;
    for (const auto &[strName, pVideo] : mapVideos)
        setBeginnings.insert(strName.substr(0, uiLeast));

    for (const std::string_view strSubtitle : vdcSubtitles) {
        // No suffix means no language to prefer.
        const bool bPreferred =
            !strSuffix.empty() && strSubtitle.find(strSuffix) != std::string_view::npos;
        for (size_t uiStart = 0; uiStart + uiLeast <= strSubtitle.size(); ++uiStart) {
            if (setBeginnings.count(strSubtitle.substr(uiStart, uiLeast)) == 0)
                continue;
            for (const size_t uiLength : setLengths) {
                if (uiStart + uiLength > strSubtitle.size())
                    break;
                const auto [itFirst, itEnd] =
                    mapVideos.equal_range(strSubtitle.substr(uiStart, uiLength));
                for (auto itVideo = itFirst; itVideo != itEnd; ++itVideo)
                    itVideo->second->strSubtitleName = strSubtitle;
                if (bPreferred)
                    mapVideos.erase(itFirst, itEnd);
            }
        }
    }
}

} // namespace

void COstrelDemoPlayer::m_CreatePlayList()
{
    LOGI("");
    const std::string strSuffix = COstrelDemoUtil::GetSystemLanguage();
    const char *pVideoExtensions = COstrelDemoUtil::isDirectBacklightModel()
                                       ? VIDEO_EXTENSIONS_DIRECT_BACKLIGHT
                                       : VIDEO_EXTENSIONS;

    // Whether a folder was given counts here, not whether its contents are to be played.
    m_strPlayPath =
        !m_strFolderPath.empty() ? m_GetPlaybackFolderPath() : COstrelDemoUtil::GetDefaultPath();
    DIR *pDirectory = opendir(m_strPlayPath.c_str());
    if (pDirectory == nullptr) {
        LOGE("open dir [%s] failed", m_strPlayPath.c_str());
        return;
    }

    m_vdcLandscapeVideos.clear();
    m_vdcPortraitVideos.clear();
    m_vdcLandscapePhotos.clear();
    m_vdcPortraitPhotos.clear();
    std::vector<std::string> vdcSubtitles;
    while (const dirent64 *pEntry = readdir64(pDirectory)) {
        if (std::strcmp(pEntry->d_name, ".") != 0 && std::strcmp(pEntry->d_name, "..") != 0)
            m_SortFile(pEntry->d_name, pVideoExtensions, vdcSubtitles);
    }
    closedir(pDirectory);

    PairSubtitles(m_vdcLandscapeVideos, vdcSubtitles, strSuffix);
    PairSubtitles(m_vdcPortraitVideos, vdcSubtitles, strSuffix);
}

void COstrelDemoPlayer::m_SortFile(const char *pName, const char *pVideoExtensions,
                                   std::vector<std::string> &vdcSubtitles)
{
    LOGI("FileName:%s", pName);
    const char *pExtension = std::strrchr(pName, '.');
    if (pExtension == nullptr)
        return;

    stPlayListItem stItem;
    stItem.strFileName = pName;
    const bool bPortrait =
        IsSameName(stItem.strFileName.substr(0, PORTRAIT_PREFIX.size()), PORTRAIT_PREFIX);
    if (ContainsName(pVideoExtensions, pExtension)) {
        stItem.iType = PLAYING_TYPE_VIDEO;
        (bPortrait ? m_vdcPortraitVideos : m_vdcLandscapeVideos).push_back(stItem);
    } else if (ContainsName(PHOTO_EXTENSIONS, pExtension)) {
        stItem.iType = PLAYING_TYPE_PHOTO;
        (bPortrait ? m_vdcPortraitPhotos : m_vdcLandscapePhotos).push_back(stItem);
    } else if (ContainsName(SUBTITLE_EXTENSIONS, pExtension)) {
        vdcSubtitles.push_back(pName);
    }
}

int COstrelDemoPlayer::m_InitPlayList()
{
    LOGI("");
    const int iMode = m_GetFileMode(ENDEMO_FILE_MODE_CURRENT);
    const bool bPortrait = COstrelDemoUtil::IsPortraitMode();

    if (!m_HasContent(bPortrait))
        return m_RequestRotation(!bPortrait, iMode);

    if (bPortrait)
        LOGI("add portrait contents in play list");
    else
        LOGI("add landscape files in play list");
    const auto &vdcVideos = bPortrait ? m_vdcPortraitVideos : m_vdcLandscapeVideos;
    const auto &vdcPhotos = bPortrait ? m_vdcPortraitPhotos : m_vdcLandscapePhotos;
    m_vdcPlayList = vdcVideos;
    m_vdcPlayList.insert(m_vdcPlayList.end(), vdcPhotos.begin(), vdcPhotos.end());
    return 1;
}

/** Whether anything in the folder suits a panel that stands so. */
bool COstrelDemoPlayer::m_HasContent(bool bPortrait)
{
    return bPortrait ? !m_vdcPortraitVideos.empty() || !m_vdcPortraitPhotos.empty()
                     : !m_vdcLandscapeVideos.empty() || !m_vdcLandscapePhotos.empty();
}

/** Nothing suits the panel as it stands: turns it, if the other orientation has content. */
int COstrelDemoPlayer::m_RequestRotation(bool bToPortrait, int iMode)
{
    if (!COstrelDemoUtil::IsSupportRotator() || !m_HasContent(bToPortrait)) {
        COstrelDemoUtil::SetConfigInt(ConfigKey::PLAYBACK_STATUS, PLAYBACK_STATUS_NO_CONTENT);
        return -1;
    }
    if (iMode == -1)
        return 1;

    COstrelDemoUtil::SetConfigInt(ConfigKey::FILE_MODE, bToPortrait ? ENDEMO_FILE_MODE_PORTRAIT
                                                                    : ENDEMO_FILE_MODE_LANDSCAPE);
    m_hRotationDelayTimer = ecore_timer_add(ROTATION_DELAY_S, m_OnRotationDelayTimerCB, this);
    return 0;
}
