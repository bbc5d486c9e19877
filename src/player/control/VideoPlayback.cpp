// Drives the media player. Its callbacks may come from another thread: they only log, at most set
// one field, and post an event.

#include "player/control/OstrelDemoPlayer.h"

#include "player/util/EventManager.h"
#include "player/util/Log.h"

namespace {

constexpr double NORMAL_SPEED = 1.0;
constexpr double FORWARD_SPEED = 2.0;
constexpr double REWIND_SPEED = -2.0;

void SendPlayerErrorEvent()
{
    CEventManager::GetInstance()->SendEvent(ENDEMO_EVENT_PLAYER_ERROR, 0);
}

} // namespace

bool COstrelDemoPlayer::m_CreateVideoPlayer()
{
    LOGI("");
    if (player_create(&m_hPlayer) != 0) {
        LOGE("player create error");
        return false;
    }
    if (player_set_completed_cb(m_hPlayer, m_OnPlayerCompletedCB, this) != 0) {
        LOGE("player_set_completed_cb error");
        return false;
    }
    if (player_set_interrupted_cb(m_hPlayer, m_OnInterruptedCB, this) != 0) {
        LOGE("player_set_interrupted_cb error");
        return false;
    }
    if (player_set_error_cb(m_hPlayer, m_OnPlayerPrepareErrorCB, this) != 0) {
        LOGE("player_set_error_cb error");
        return false;
    }
    if (player_set_subtitle_updated_cb_ex(m_hPlayer, m_OnSubTitleUpdateCB, this) != 0)
        LOGE("player_set_subtitle_updated_cb failed");
    return true;
}

bool COstrelDemoPlayer::OnPlayVideo(std::string strUri, std::string strSubtitlePath)
{
    LOGI("%s %s", strUri.c_str(), strSubtitlePath.c_str());
    StopVideo();
    if (!strSubtitlePath.empty() &&
        player_set_subtitle_path(m_hPlayer, strSubtitlePath.c_str()) != 0)
        LOGE("player_set_subtitle_path failed");
    if (player_set_uri(m_hPlayer, strUri.c_str()) != 0) {
        LOGE("player_set_uri error");
        return false;
    }
    if (player_set_display(m_hPlayer, PLAYER_DISPLAY_TYPE_OVERLAY, m_pWindow) != 0)
        LOGE("player_set_display error");
    if (player_prepare_async(m_hPlayer, m_PlayerPreparedCB, this) != 0) {
        LOGE("player_prepare_async failed");
        return false;
    }
    m_SetLooping();
    m_iVideoPlayerState = VIDEO_STATE_PREPARING;
    return true;
}

/** A list of one entry loops inside the player and never completes. */
void COstrelDemoPlayer::m_SetLooping()
{
    if (m_vdcPlayList.size() == 1) {
        if (player_set_looping(m_hPlayer, true) != 0)
            LOGE("player_set_looping true failed");
        LOGI("player_set_looping true finish");
    } else {
        if (player_set_looping(m_hPlayer, false) != 0)
            LOGE("player_set_looping false failed");
        LOGI("player_set_looping false finish");
    }
}

void COstrelDemoPlayer::StopVideo()
{
    LOGI("");
    m_iVideoPlayerState = VIDEO_STATE_STOPPED;
    if (m_hPlayer == nullptr)
        return;
    player_state_e enState = PLAYER_STATE_NONE;
    if (player_get_state(m_hPlayer, &enState) == 0 && enState != PLAYER_STATE_IDLE) {
        if (player_stop(m_hPlayer) != 0)
            LOGE("player_stop error");
    }
    if (player_unprepare(m_hPlayer) != 0)
        LOGE("player_unprepare error");
    // Once more: a preparation may have been reported on the way here. No report comes from now on.
    m_iVideoPlayerState = VIDEO_STATE_STOPPED;
}

void COstrelDemoPlayer::m_DestroyVideo()
{
    LOGD("");
    if (m_hPlayer == nullptr)
        return;
    if (player_destroy(m_hPlayer) != 0)
        LOGE("player_destroy error");
    m_hPlayer = nullptr;
}

int COstrelDemoPlayer::m_GetPlayerState()
{
    LOGD("");
    if (m_hPlayer == nullptr) {
        LOGW("hPlayer is null");
        return PLAYER_STATE_NONE;
    }
    player_state_e enState = PLAYER_STATE_NONE;
    if (player_get_state(m_hPlayer, &enState) != 0) {
        LOGE("player_get_state error");
        return PLAYER_STATE_NONE;
    }
    return enState;
}

/** Unlike m_GetPlayerState() it leaves a missing player to the platform's answer. */
int COstrelDemoPlayer::m_GetPlayBackStatus()
{
    LOGD("");
    player_state_e enState = PLAYER_STATE_NONE;
    if (player_get_state(m_hPlayer, &enState) != 0) {
        LOGE("player_get_state error");
        return PLAYER_STATE_IDLE;
    }
    LOGI("%d ", enState);
    return enState;
}

bool COstrelDemoPlayer::m_SetTrickSpeed(double dSpeed)
{
    LOGI("%f", dSpeed);
    if (player_set_playback_rate(m_hPlayer, static_cast<float>(dSpeed)) != 0) {
        LOGE("player_set_playback_rate error");
        return false;
    }
    return true;
}

bool COstrelDemoPlayer::m_StartAtNormalSpeed()
{
    m_SetTrickSpeed(NORMAL_SPEED);
    if (player_start(m_hPlayer) != 0) {
        LOGE("player_start error");
        return false;
    }
    return true;
}

bool COstrelDemoPlayer::m_PauseAtNormalSpeed()
{
    m_SetTrickSpeed(NORMAL_SPEED);
    if (player_pause(m_hPlayer) != 0) {
        LOGE("player_pause error");
        return false;
    }
    return true;
}

bool COstrelDemoPlayer::OnPause()
{
    LOGD("");
    if (m_GetPlayerState() != PLAYER_STATE_PLAYING) {
        LOGI("playerState is not PLAYING");
        return false;
    }
    return m_PauseAtNormalSpeed();
}

bool COstrelDemoPlayer::OnResume()
{
    LOGD("");
    const int iState = m_GetPlayerState();
    LOGD("playerState:%d", iState);
    if (iState == PLAYER_STATE_PAUSED)
        return m_StartAtNormalSpeed();

    float fSpeed = 0.0F;
    if (player_get_playback_rate(m_hPlayer, &fSpeed) != 0) {
        LOGE("player_get_playback_rate error");
        return false;
    }
    const double dSpeed = fSpeed;
    LOGD("dSpeed:%f", dSpeed);
    if (iState == PLAYER_STATE_PLAYING && dSpeed != NORMAL_SPEED)
        return m_StartAtNormalSpeed();
    LOGI("playerState is not PAUSED");
    return false;
}

bool COstrelDemoPlayer::OnResumeOrPause()
{
    LOGD("");
    switch (m_GetPlayerState()) {
    case PLAYER_STATE_PAUSED:
        return m_StartAtNormalSpeed();
    case PLAYER_STATE_PLAYING:
        return m_PauseAtNormalSpeed();
    default:
        return true;
    }
}

bool COstrelDemoPlayer::m_Forward()
{
    if (m_GetPlayBackStatus() == PLAYER_STATE_PAUSED)
        OnResume();
    m_SetTrickSpeed(FORWARD_SPEED);
    return true;
}

bool COstrelDemoPlayer::m_Rewind()
{
    if (m_GetPlayBackStatus() == PLAYER_STATE_PAUSED)
        OnResume();
    m_SetTrickSpeed(REWIND_SPEED);
    return true;
}

void COstrelDemoPlayer::m_PlayerPreparedCB(void *data)
{
    LOGI("");
    auto *pThis = static_cast<COstrelDemoPlayer *>(data);
    if (pThis != nullptr)
        pThis->m_iVideoPlayerState = VIDEO_STATE_PREPARED;
    CEventManager::GetInstance()->SendEvent(ENDEMO_EVENT_PLAYER_PREPARED, 0);
}

void COstrelDemoPlayer::m_OnPlayerCompletedCB(void * /*data*/)
{
    LOGI("");
    CEventManager::GetInstance()->SendEvent(ENDEMO_EVENT_PLAYER_COMPLETED, 0);
}

void COstrelDemoPlayer::m_OnInterruptedCB(player_interrupted_code_e enCode, void * /*data*/)
{
    LOGW("");
    if (enCode == PLAYER_INTERRUPTED_BY_RESOURCE_CONFLICT)
        SendPlayerErrorEvent();
}

void COstrelDemoPlayer::m_OnPlayerPrepareErrorCB(int iErrorCode, void * /*data*/)
{
    LOGI("%d", iErrorCode);
    // A video whose sound has no decoder plays on in silence.
    if (iErrorCode != PLAYER_ERROR_NOT_SUPPORTED_AUDIO_CODEC)
        SendPlayerErrorEvent();
}

void COstrelDemoPlayer::m_OnSubTitleUpdateCB(unsigned long /*ulDuration*/, void * /*pSubtitle*/,
                                             unsigned int /*uiType*/,
                                             unsigned int /*uiAttributeCount*/,
                                             MMSubAttribute ** /*ppAttributes*/, void * /*data*/)
{
    LOGD("");
}
