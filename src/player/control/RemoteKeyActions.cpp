// What the dispatcher does for each key type.

#include "player/control/OstrelDemoPlayer.h"

#include "player/util/Log.h"

void COstrelDemoPlayer::m_HandleKey(int iKeyType)
{
    switch (iKeyType) {
    case KEY_TYPE_BACK:
        m_HandleBackKey();
        break;
    case KEY_TYPE_ENTER:
        m_HandleEnterKey();
        break;
    case KEY_TYPE_PLAY:
        m_HandlePlayKey();
        break;
    case KEY_TYPE_PAUSE:
        m_HandlePauseKey();
        break;
    case KEY_TYPE_STOP:
        m_HandleStopKey();
        break;
    case KEY_TYPE_PLAY_PAUSE:
        if (m_GetCurrentType() == PLAYING_TYPE_VIDEO)
            OnResumeOrPause();
        break;
    case KEY_TYPE_SOUND_OUTPUT:
        m_SelectSoundSpeaker();
        break;
    case KEY_TYPE_REWIND:
        if (m_bFolderContentsPlayer)
            m_Rewind();
        break;
    case KEY_TYPE_FORWARD:
        if (m_bFolderContentsPlayer)
            m_Forward();
        break;
    case KEY_TYPE_PREVIOUS:
        m_HandleStepKey(false);
        break;
    case KEY_TYPE_NEXT:
        m_HandleStepKey(true);
        break;
    case KEY_TYPE_ROTATION_AUTO:
        m_HandleRotationOnOffKey();
        break;
    case KEY_TYPE_ROTATE:
        m_ChangeRotationType();
        break;
    case KEY_TYPE_PORTRAIT_TIMER:
        m_HandleTimerKey(ROTATION_STATUS_PORTRAIT_TIMER);
        break;
    case KEY_TYPE_LANDSCAPE_TIMER:
        m_HandleTimerKey(ROTATION_STATUS_LANDSCAPE_TIMER);
        break;
    case KEY_TYPE_TIMER_RESET:
        m_HandleTimerResetKey();
        break;
    default:
        break;
    }
}

void COstrelDemoPlayer::m_HandleBackKey()
{
    if (DestroyPopup())
        return;
    LOGI("exit ostrel demo player");
    ReleaseResource();
    m_DeactiveWindow();
    COstrelDemoUtil::SetConfigInt(ConfigKey::PLAYBACK_STATUS, PLAYBACK_STATUS_STOPPED);
    COstrelDemoUtil::ExitApplication();
}

void COstrelDemoPlayer::m_HandleEnterKey()
{
    if (DestroyPopup())
        return;
    if (m_GetCurrentType() == PLAYING_TYPE_PHOTO)
        StopSlideShow();
    if (m_pPopup != nullptr || m_bRotating)
        return;
    m_CreatePopUp();
}

void COstrelDemoPlayer::m_HandlePlayKey()
{
    const int iType = m_GetCurrentType();
    if (iType == PLAYING_TYPE_PHOTO) {
        m_SetFileMode(ENDEMO_FILE_MODE_CURRENT, 0);
        m_iPlayIndex = 0;
        StartSlideShow();
    } else if (iType == PLAYING_TYPE_VIDEO) {
        OnResume();
    }
}

void COstrelDemoPlayer::m_HandlePauseKey()
{
    const int iType = m_GetCurrentType();
    if (iType == PLAYING_TYPE_PHOTO)
        StopSlideShow();
    else if (iType == PLAYING_TYPE_VIDEO)
        OnPause();
}

void COstrelDemoPlayer::m_HandleStopKey()
{
    if (m_GetCurrentType() != PLAYING_TYPE_VIDEO)
        return;
    StopVideo();
    m_DeactiveWindow();
    COstrelDemoUtil::ExitApplication();
}

void COstrelDemoPlayer::m_HandleStepKey(bool bNext)
{
    if (m_vdcPlayList.size() < 2)
        return;
    if (m_GetCurrentType() == PLAYING_TYPE_PHOTO)
        StopSlideShow();
    if (bNext)
        m_PlayNextFile();
    else
        m_PlayPreviousFile();
}
