// Shows photos: parse, decode, render, and the slide show's timers.

#include "player/control/OstrelDemoPlayer.h"

#include "player/util/Efl.h"
#include "player/util/EventManager.h"
#include "player/util/Log.h"

namespace {

constexpr double PHOTO_TIME_S = 5.0;
constexpr double PHOTO_TIME_ROTATOR_S = 180.0;

void DestroyPicture(_pictrel_s *&pPicture)
{
    if (pPicture == nullptr)
        return;
    pictrel_destroy(&pPicture);
    pPicture = nullptr;
}

} // namespace

bool COstrelDemoPlayer::OnPlayPhoto(std::string strPath)
{
    LOGI("%s", strPath.c_str());
    if (!m_InitPictureDisplay())
        return false;
    DestroyPicture(m_pPicture);
    if (pictrel_create_from_url(strPath.c_str(), &m_pPicture) != 0) {
        LOGE("PICTURE_ERROR_CREATE");
        return false;
    }
    if (pictrel_set_window(m_pPicture, m_pPictureDisplay) != 0) {
        LOGE("PICTURE_ERROR_INIT");
        return false;
    }
    if (pictrel_set_geometry_size(m_pPicture, PICTREL_GEOMETRY_FIT) != 0) {
        LOGE("Set Picture size Error");
        return false;
    }
    m_pPicture->render_state = 0;
    m_pPicture->user_data = this;
    pictrel_add_event_callback(m_pPicture, PICTREL_EVENT_RESOURCE_CONFLICT,
                               m_OnPhotoResourceConflictEventCB, m_pPicture);
    pictrel_add_event_callback(m_pPicture, PICTREL_EVENT_PARSE, m_OnParseEventCB, nullptr);
    if (pictrel_parse(m_pPicture) != 0) {
        LOGE("PICTURE_ERROR_PARSE");
        return false;
    }
    return true;
}

bool COstrelDemoPlayer::m_InitPictureDisplay()
{
    if (m_pPictureDisplay != 0) {
        LOGI("Already init display,not init again");
        return true;
    }
    // Set before the call and kept when it fails, so that it is not tried again for each photo.
    m_pPictureDisplay = 1;
    if (pictrel_init_display(m_pWindow) != 0) {
        LOGE("InitDisplayHandle false");
        return false;
    }
    return true;
}

void COstrelDemoPlayer::DecodePicture(_pictrel_s *pPicture)
{
    LOGI("");
    if (pPicture == nullptr)
        return;
    pictrel_add_event_callback(pPicture, PICTREL_EVENT_DECODE, m_OnDecodeEventCB, nullptr);
    if (pictrel_decode(pPicture, 0) != 0)
        LOGE("");
}

void COstrelDemoPlayer::RenderPicture(_pictrel_s *pPicture)
{
    if (pPicture == nullptr)
        return;
    LOGI("Start Render Picture");
    pPicture->render_state = 1;
    const int iRotation = COstrelDemoUtil::GetWindowRotationType();
    if (iRotation < ROTATION_TYPE_PORTRAIT || iRotation > ROTATION_TYPE_PORTRAIT_REVERSE) {
        pictrel_render(pPicture);
        return;
    }
    pictrel_set_mixer_render(pPicture, 1);
    pictrel_render(pPicture);
    pictrel_set_mixer_render(pPicture, 0);
    pictrel_rotate(pPicture, 360 - 90 * iRotation);
}

void COstrelDemoPlayer::m_DestroyPhoto()
{
    LOGI("");
    DeleteTimer(m_pSlideShowTimer);
    DestroyPicture(m_pPicture);
    if (m_pPictureDisplay != 0) {
        pictrel_destroy_display(&m_pPictureDisplay);
        m_pPictureDisplay = 0;
    }
    LOGI("Destroy end");
}

void COstrelDemoPlayer::StartSlideShow()
{
    LOGI("");
    if (m_bSlideShowStarted) {
        LOGI("slideshow timer already started");
        return;
    }
    m_bSlideShowStarted = true;
    if (!COstrelDemoUtil::IsSupportRotator()) {
        m_pSlideShowTimer = ecore_timer_add(PHOTO_TIME_S, m_OnStartSlideShowCB, this);
    } else if (size_t{m_uiCurPlayIndex} + 1 == m_vdcPlayList.size()) {
        m_pPhotoPlayEndTimer = ecore_timer_add(PHOTO_TIME_ROTATOR_S, m_OnPhotoPlayEndCB, this);
    } else {
        m_pSlideShowTimer = ecore_timer_add(PHOTO_TIME_ROTATOR_S, m_OnStartSlideShowCB, this);
    }
}

void COstrelDemoPlayer::StopSlideShow()
{
    LOGI("");
    if (!m_bSlideShowStarted) {
        LOGI("slideshow not started");
        return;
    }
    m_bSlideShowStarted = false;
    // The end timer runs on; only the slide show's own timer is stopped.
    DeleteTimer(m_pSlideShowTimer);
}

Eina_Bool COstrelDemoPlayer::m_OnStartSlideShowCB(void *data)
{
    LOGI("");
    auto *pThis = static_cast<COstrelDemoPlayer *>(data);
    if (pThis == nullptr) {
        LOGW("pThis is null");
        return ECORE_CALLBACK_CANCEL;
    }
    pThis->m_PlayNextFile();
    pThis->m_pSlideShowTimer = nullptr;
    return ECORE_CALLBACK_CANCEL;
}

Eina_Bool COstrelDemoPlayer::m_OnPhotoPlayEndCB(void *data)
{
    LOGI("");
    auto *pThis = static_cast<COstrelDemoPlayer *>(data);
    // With timed rotation on, the panel's next turn takes the show on.
    if (pThis == nullptr || pThis->m_bRotationAutoMode)
        return ECORE_CALLBACK_CANCEL;
    pThis->m_PlayNextFile();
    pThis->m_pPhotoPlayEndTimer = nullptr;
    return ECORE_CALLBACK_CANCEL;
}

void COstrelDemoPlayer::m_OnParseEventCB(void * /*data*/, pictrel_event_type_e /*enType*/,
                                         pictrel_event_result_e enResult)
{
    LOGI("");
    CEventManager::GetInstance()->SendEvent(ENDEMO_EVENT_PHOTO_PARSED, enResult);
}

void COstrelDemoPlayer::m_OnDecodeEventCB(void * /*data*/, pictrel_event_type_e /*enType*/,
                                          pictrel_event_result_e enResult)
{
    LOGI("result_code:%d", enResult);
    CEventManager::GetInstance()->SendEvent(ENDEMO_EVENT_PHOTO_DECODED, enResult);
}

void COstrelDemoPlayer::m_OnPhotoResourceConflictEventCB(void * /*data*/,
                                                         pictrel_event_type_e /*enType*/,
                                                         pictrel_event_result_e enResult)
{
    LOGW("OstrelDemo player is terminated by Resource Conflict result_code:%d", enResult);
    // Ends at once, without an event.
    if (enResult == PICTREL_RESULT_RESOURCE_LOST)
        COstrelDemoUtil::ExitApplication();
}
