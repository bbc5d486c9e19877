// Acts on the events of the pipe: the program's central state machine.

#include "player/control/OstrelDemoPlayer.h"

#include "player/util/EventManager.h"
#include "player/util/Log.h"
#include "widget_extension.h"

void COstrelDemoPlayer::m_OnHandleEcorePipeCB(void *data, void *buffer, unsigned int /*nbyte*/)
{
    const auto *pEvent = static_cast<const stPipeRecord *>(buffer);
    LOGI("pEvent = %p", buffer);
    auto *pThis = static_cast<COstrelDemoPlayer *>(data);
    if (pEvent == nullptr || pThis == nullptr)
        return;
    LOGI("EventID = %d,iParam1 = %d", pEvent->iEventID, pEvent->iParam1);
    pThis->m_HandleEvent(pEvent->iEventID, pEvent->iParam1);
}

void COstrelDemoPlayer::m_HandleEvent(int iEventID, int iParam1)
{
    switch (iEventID) {
    case ENDEMO_EVENT_PLAYER_ERROR:
        m_HandlePlayerError();
        break;
    case ENDEMO_EVENT_PLAYER_COMPLETED:
        m_HandlePlayerCompleted();
        break;
    case ENDEMO_EVENT_PLAYER_PREPARED:
        m_HandlePlayerPrepared();
        break;
    case ENDEMO_EVENT_PHOTO_PARSED:
        m_HandlePhotoParsed(iParam1);
        break;
    case ENDEMO_EVENT_PHOTO_DECODED:
        m_HandlePhotoDecoded(iParam1);
        break;
    case ENDEMO_EVENT_ITEM_SELECTED:
        m_HandleItemSelected();
        break;
    case ENDEMO_EVENT_KEY:
        m_HandleKey(iParam1);
        break;
    case ENDEMO_EVENT_WINDOW_ROTATED:
        m_HandleWindowRotated();
        break;
    default:
        break;
    }
}

void COstrelDemoPlayer::m_HandlePlayerError()
{
    ReleaseResource();
    m_DeactiveWindow();
    COstrelDemoUtil::SetConfigInt(ConfigKey::PLAYBACK_STATUS, PLAYBACK_STATUS_ERROR);
    COstrelDemoUtil::ExitApplication();
}

void COstrelDemoPlayer::m_HandlePlayerCompleted()
{
    m_SetFolderPaths();
    LOGI("m_uiCurPlayIndex: %d, iPlayIndex: %d, m_vdcPlayList.size: %zu",
         static_cast<int>(m_uiCurPlayIndex), m_iPlayIndex, m_vdcPlayList.size());
    const size_t uiSize = m_vdcPlayList.size();
    size_t uiNext = m_uiCurPlayIndex;
    if (m_iPlayIndex > 0)
        uiNext = static_cast<size_t>(m_iPlayIndex) - 1;
    else if (m_iPlayIndex != -1 && uiSize > 0)
        uiNext = (uiNext + 1) % uiSize;
    if (uiNext >= uiSize)
        uiNext = 0;
    m_uiCurPlayIndex = static_cast<unsigned int>(uiNext);
    m_AppendEntryNames();

    m_SwitchPlayingType(m_GetCurrentType());

    // Only now, with the kinds switched, does repeat off end the show.
    if (!m_bRepeat) {
        LOGD("Repeat Mode is off");
        COstrelDemoUtil::ExitApplication();
        return;
    }
    LOGD("Repeat Mode is on");
    // Empty while the panel is on its way to the orientation that has content.
    if (!m_IsPlayListEmpty())
        m_PlayPaths();
}

void COstrelDemoPlayer::m_HandlePlayerPrepared()
{
    // A stop that came after the preparation makes this event stale.
    if (m_iVideoPlayerState != VIDEO_STATE_PREPARED || m_hPlayer == nullptr)
        return;
    const char *pName = m_uiCurPlayIndex < m_vdcPlayList.size()
                            ? m_vdcPlayList[m_uiCurPlayIndex].strFileName.c_str()
                            : "";
    LOGI("%d %s", static_cast<int>(m_uiCurPlayIndex), pName);
    m_ResetVideoRotation();
    if (player_start(m_hPlayer) != 0) {
        LOGE("player_start error");
        StopVideo();
        m_DeactiveWindow();
        COstrelDemoUtil::SetConfigInt(ConfigKey::PLAYBACK_STATUS, PLAYBACK_STATUS_STOPPED);
        COstrelDemoUtil::ExitApplication();
        return;
    }
    m_ShowDisclaimer();
    m_StorePanelOrientation();
    LOGI("player_start successful");
    COstrelDemoUtil::SetConfigInt(ConfigKey::PLAYBACK_STATUS, PLAYBACK_STATUS_PLAYING);
}

void COstrelDemoPlayer::m_HandlePhotoParsed(int iResult)
{
    if (iResult == PICTREL_RESULT_PARSED) {
        DecodePicture(m_pPicture);
    } else if (iResult == PICTREL_RESULT_PARSE_FAILED) {
        COstrelDemoUtil::SetConfigInt(ConfigKey::PLAYBACK_STATUS, PLAYBACK_STATUS_ERROR);
        m_PlayNextFile();
    }
}

void COstrelDemoPlayer::m_HandlePhotoDecoded(int iResult)
{
    m_bSlideShowStarted = false;
    if (iResult != PICTREL_RESULT_DECODED) {
        LOGE("decode failed");
        COstrelDemoUtil::SetConfigInt(ConfigKey::PLAYBACK_STATUS, PLAYBACK_STATUS_ERROR);
        m_PlayNextFile();
        return;
    }
    LOGI("decode success");
    COstrelDemoUtil::SetConfigInt(ConfigKey::PLAYBACK_STATUS, PLAYBACK_STATUS_PLAYING);
    const int iMode = m_GetFileMode(ENDEMO_FILE_MODE_CURRENT);
    if (m_pPicture != nullptr)
        RenderPicture(m_pPicture);
    // A single chosen photo stays on screen.
    if (iMode == 0)
        StartSlideShow();
}

void COstrelDemoPlayer::m_HandleItemSelected()
{
    if (m_pGenlist == nullptr)
        return;
    const auto *pItemData = static_cast<const stItemData *>(
        elm_velt_genlist_item_data_get(elm_object_focused_item_get(m_pGenlist)));
    if (pItemData == nullptr || pItemData->iIndex == m_iPlayIndex)
        return;
    m_HideDisclaimer();
    m_ChooseEntry(pItemData->iIndex);
}

void COstrelDemoPlayer::m_HandleWindowRotated()
{
    DestroyPopup();
    m_vdcItemList.clear();
    m_vdcPlayList.clear();
    const int iResult = m_InitPlayList();
    if (iResult > 0) {
        m_StorePanelOrientation();
        m_InitItemList();
        StartDemoPlayer();
    } else if (iResult < 0) {
        COstrelDemoUtil::ExitApplication();
    }
}

void COstrelDemoPlayer::m_StorePanelOrientation()
{
    COstrelDemoUtil::SetConfigInt(ConfigKey::FILE_MODE, COstrelDemoUtil::IsPortraitMode()
                                                            ? ENDEMO_FILE_MODE_PORTRAIT
                                                            : ENDEMO_FILE_MODE_LANDSCAPE);
}
