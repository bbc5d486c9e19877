// Follows the panel when it turns, and turns it.

#include "player/control/OstrelDemoPlayer.h"

#include "player/util/Efl.h"
#include "player/util/EventManager.h"
#include "player/util/Log.h"

namespace {

ENDEMO_ROTATION_TYPE RotationTypeOfAngle(int iAngle)
{
    switch (iAngle) {
    case 90:
        return ROTATION_TYPE_PORTRAIT;
    case 180:
        return ROTATION_TYPE_LANDSCAPE_REVERSE;
    case 270:
        return ROTATION_TYPE_PORTRAIT_REVERSE;
    default:
        return ROTATION_TYPE_LANDSCAPE;
    }
}

} // namespace

void COstrelDemoPlayer::m_OnWindowRotationCB(void *data, Evas_Object *pWindow,
                                             void * /*event_info*/)
{
    LOGI("");
    if (data == nullptr || pWindow == nullptr) {
        LOGW("pOstrelDemoPlayer is null");
        return;
    }
    const ENDEMO_ROTATION_TYPE enOld = COstrelDemoUtil::GetWindowRotationType();
    COstrelDemoUtil::SetWindowRotationType(RotationTypeOfAngle(elm_win_rotation_get(pWindow)));
    if (COstrelDemoUtil::GetWindowRotationType() != enOld)
        CEventManager::GetInstance()->SendEvent(ENDEMO_EVENT_WINDOW_ROTATED, 0);
}

int COstrelDemoPlayer::m_OnDisplayRotatorCB(display_rotator_status_t *pStatus, void *data)
{
    auto *pThis = static_cast<COstrelDemoPlayer *>(data);
    if (pThis == nullptr || pStatus == nullptr)
        return 1;

    // Written once, with what holds from now on: a turn that goes on is never seen as finished.
    pThis->m_bRotating = pStatus->status == DISPLAY_ROTATOR_TURNING_TO_LANDSCAPE ||
                         pStatus->status == DISPLAY_ROTATOR_TURNING_TO_PORTRAIT;

    // The texts are at error level on purpose, so that turns stand out in a set's log.
    switch (pStatus->status) {
    case DISPLAY_ROTATOR_IDLE:
        LOGE("Rotation Done");
        break;
    case DISPLAY_ROTATOR_TURNING_TO_LANDSCAPE:
    case DISPLAY_ROTATOR_TURNING_TO_PORTRAIT:
        LOGE("TV Is Rotating");
        break;
    case DISPLAY_ROTATOR_ERROR_NOT_SUPPORTED:
    case DISPLAY_ROTATOR_ERROR_NO_DEVICE:
    case DISPLAY_ROTATOR_ERROR:
        LOGE("TV Does Not Support Rotation");
        break;
    default:
        break;
    }
    return 1;
}

Eina_Bool COstrelDemoPlayer::m_OnRotationDelayTimerCB(void *data)
{
    LOGI("");
    auto *pThis = static_cast<COstrelDemoPlayer *>(data);
    // Comes again until the panel has stopped turning.
    if (pThis == nullptr || pThis->m_bRotating)
        return ECORE_CALLBACK_RENEW;
    COstrelDemoUtil::ChangePanelRotation();
    pThis->DestroyPopup();
    pThis->m_hRotationDelayTimer = nullptr;
    return ECORE_CALLBACK_CANCEL;
}

bool COstrelDemoPlayer::m_ChangeRotationType()
{
    LOGI("");
    if (!COstrelDemoUtil::IsSupportRotator())
        return false;
    const bool bPortrait = COstrelDemoUtil::IsPortraitMode();

    // Before the test for content, so that a refused turn ends the timed rotation as well.
    DeleteTimer(m_pZavoTimer);
    if (!m_HasContent(!bPortrait))
        return false;

    COstrelDemoUtil::SetConfigInt(ConfigKey::FILE_MODE, bPortrait ? ENDEMO_FILE_MODE_LANDSCAPE
                                                                  : ENDEMO_FILE_MODE_PORTRAIT);
    COstrelDemoUtil::ChangePanelRotation();
    return true;
}

void COstrelDemoPlayer::m_ResetVideoRotation()
{
    LOGI("");
    // Only the first portrait position turns the picture; the other positions leave it as it is,
    // on purpose.
    const player_display_rotation_e enNextRotation =
        COstrelDemoUtil::GetWindowRotationType() == ROTATION_TYPE_PORTRAIT
            ? PLAYER_DISPLAY_ROTATION_180
            : PLAYER_DISPLAY_ROTATION_NONE;
    if (player_set_display_rotation(m_hPlayer, enNextRotation) == 0)
        LOGI("enNextRotation =%d", enNextRotation);
    else
        LOGE("set_display_rotation failed");
}
