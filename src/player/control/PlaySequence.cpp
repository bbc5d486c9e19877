// Which entry of the list is played, and the change between videos and photos.

#include "player/control/OstrelDemoPlayer.h"

#include "player/util/Log.h"

int COstrelDemoPlayer::GetPlayingType(int iIndex)
{
    if (iIndex < 0 || static_cast<size_t>(iIndex) >= m_vdcPlayList.size()) {
        LOGW("%d %zu", iIndex, m_vdcPlayList.size());
        return -1;
    }
    return m_vdcPlayList[static_cast<size_t>(iIndex)].iType;
}

/** Kind of the current entry, which need not be on screen yet. */
int COstrelDemoPlayer::m_GetCurrentType()
{
    return GetPlayingType(static_cast<int>(m_uiCurPlayIndex));
}

void COstrelDemoPlayer::SetRepeatOption(bool bRepeat)
{
    LOGI("%d", bRepeat);
    m_bRepeat = bRepeat;
}

bool COstrelDemoPlayer::m_PlayContents()
{
    LOGD("%d", m_iPlayIndex);
    m_SetFolderPaths();
    m_uiCurPlayIndex = 0;
    if (m_iPlayIndex == -1) {
        COstrelDemoUtil::ExitApplication();
        return false;
    }
    if (m_IsPlayListEmpty())
        return false;

    if (m_iPlayIndex > 0) {
        m_uiCurPlayIndex = static_cast<unsigned int>(m_iPlayIndex) - 1;
        if (m_uiCurPlayIndex >= m_vdcPlayList.size()) {
            // A selection made on a longer list: fall back to playing everything.
            m_uiCurPlayIndex = 0;
            m_SetFileMode(ENDEMO_FILE_MODE_CURRENT, 0);
        }
    }
    return m_PlayCurrentEntry();
}

bool COstrelDemoPlayer::m_PlayNextFile()
{
    if (m_IsPlayListEmpty())
        return false;
    m_uiCurPlayIndex =
        static_cast<unsigned int>((size_t{m_uiCurPlayIndex} + 1) % m_vdcPlayList.size());
    m_SetFolderPaths();
    return m_PlayCurrentEntry();
}

bool COstrelDemoPlayer::m_PlayPreviousFile()
{
    if (m_IsPlayListEmpty())
        return false;
    const auto uiSize = static_cast<unsigned int>(m_vdcPlayList.size());
    m_uiCurPlayIndex = (m_uiCurPlayIndex - 1 + uiSize) % uiSize;
    m_SetFolderPaths();
    return m_PlayCurrentEntry();
}

bool COstrelDemoPlayer::m_IsPlayListEmpty()
{
    if (!m_vdcPlayList.empty())
        return false;
    LOGW("play list is empty");
    return true;
}

void COstrelDemoPlayer::m_SetFolderPaths()
{
    m_strPlayPath = m_GetFolderPath();
    m_strSubtitlePath = m_GetFolderPath();
}

/** Completes both paths with the current entry's names; an empty list has none to add. */
void COstrelDemoPlayer::m_AppendEntryNames()
{
    const stPlayListItem stItem =
        m_vdcPlayList.empty() ? stPlayListItem() : m_vdcPlayList[m_uiCurPlayIndex];
    m_strPlayPath += stItem.strFileName;
    if (stItem.strSubtitleName.empty())
        m_strSubtitlePath.clear();
    else
        m_strSubtitlePath += stItem.strSubtitleName;
}

bool COstrelDemoPlayer::m_PlayCurrentEntry()
{
    m_AppendEntryNames();
    LOGD("%s", m_strPlayPath.c_str());
    const int iType = m_GetCurrentType();
    LOGD("%d %d", iType, m_iPlayingType);
    m_SwitchPlayingType(iType);
    return m_PlayPaths();
}

/** Lets go of what is on screen when an entry of another kind follows. */
void COstrelDemoPlayer::m_SwitchPlayingType(int iType)
{
    if (iType == m_iPlayingType)
        return;
    if (m_iPlayingType == PLAYING_TYPE_VIDEO) {
        StopVideo();
        m_iPlayingType = PLAYING_TYPE_PHOTO;
    } else {
        m_DestroyPhoto();
        m_iPlayingType = PLAYING_TYPE_VIDEO;
    }
}

bool COstrelDemoPlayer::m_PlayPaths()
{
    if (m_iPlayingType == PLAYING_TYPE_PHOTO)
        return OnPlayPhoto(m_strPlayPath);
    return OnPlayVideo(m_strPlayPath, m_strSubtitlePath);
}
