// The panel's orientation and the key that turns it.

#include "player/util/OstrelDemoUtil.h"

#include "display_rotator.h"
#include "key_router.h"
#include "player/util/Log.h"

ENDEMO_ROTATION_TYPE COstrelDemoUtil::m_enCurRotationType = ROTATION_TYPE_LANDSCAPE;

bool COstrelDemoUtil::IsSupportRotator()
{
    display_rotator_status_t stStatus = {};
    if (display_rotator_get_status(&stStatus) != 0) {
        LOGE("TV does not support rotation");
        return false;
    }
    LOGI("current rotator status is %d", stStatus.status);
    if (stStatus.status < 0)
        return false;
    LOGI("TV support rotation");
    return true;
}

bool COstrelDemoUtil::IsPortraitMode()
{
    constexpr int REVERSE_BIT = 2;
    if ((m_enCurRotationType & ~REVERSE_BIT) == ROTATION_TYPE_PORTRAIT) {
        LOGI("In Portrait Mode");
        return true;
    }
    // At error level on purpose.
    LOGE("In Landscape Mode");
    return false;
}

ENDEMO_ROTATION_TYPE COstrelDemoUtil::GetWindowRotationType()
{
    LOGI("current window rotation type = %d", m_enCurRotationType);
    return m_enCurRotationType;
}

void COstrelDemoUtil::SetWindowRotationType(ENDEMO_ROTATION_TYPE enType)
{
    LOGI("current window rotation type = %d", enType);
    m_enCurRotationType = enType;
}

bool COstrelDemoUtil::InitWindowRotationType()
{
    int iState = -1;
    if (!GetConfigInt(ConfigKey::ROTATION_STATE, iState))
        return false;
    LOGI("Roation Value = %d ", iState);

    // The set counts its states from one; zero is the last one.
    switch (iState) {
    case 2:
        m_enCurRotationType = ROTATION_TYPE_PORTRAIT;
        break;
    case 3:
        m_enCurRotationType = ROTATION_TYPE_LANDSCAPE_REVERSE;
        break;
    case 0:
        m_enCurRotationType = ROTATION_TYPE_PORTRAIT_REVERSE;
        break;
    default:
        m_enCurRotationType = ROTATION_TYPE_LANDSCAPE;
        break;
    }
    return true;
}

void COstrelDemoUtil::ChangePanelRotation()
{
    LOGI("");
    VirtualKey_Send_KeyCode(VIRTUAL_KEY_CODE_ROTATE_PANEL, VIRTUAL_KEY_ACTION_CLICK);
}
