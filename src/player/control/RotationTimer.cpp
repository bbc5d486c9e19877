// Timed rotation: its interval timer, the keys that set it, and the toasts that confirm them.

#include "player/control/OstrelDemoPlayer.h"

#include <cstdio>

#include "player/util/Efl.h"
#include "player/util/Log.h"
#include "widget_extension.h"

namespace {

constexpr double TOAST_TIME_S = 3.0;
constexpr int POPUP_STYLE_TOAST = 4;

// Seconds between two turns, by timer index.
constexpr int ZavoTimerTable[] = {300, 330, 360, 390, 420, 450, 480, 540, 600, 900};
constexpr int ZAVO_TIMER_COUNT = sizeof(ZavoTimerTable) / sizeof(ZavoTimerTable[0]);
constexpr int SECONDS_PER_MINUTE = 60;

/** Writers keep the index within the table; one that did not must not make us read beside it. */
int IntervalOf(int iTimerIndex)
{
    if (iTimerIndex < 0 || iTimerIndex >= ZAVO_TIMER_COUNT)
        return ZavoTimerTable[0];
    return ZavoTimerTable[iTimerIndex];
}

/** The text that announces a new interval of one orientation. */
std::string IntervalText(const char *pWholeMinutesId, const char *pMinutesAndSecondsId,
                         int iSeconds)
{
    char szMinutes[256] = {};
    const int iMinutes = iSeconds / SECONDS_PER_MINUTE;
    std::snprintf(szMinutes, sizeof(szMinutes), "%d", iMinutes);
    if (iSeconds == SECONDS_PER_MINUTE * iMinutes)
        return COstrelDemoUtil::CombinateString(Translated(pWholeMinutesId), szMinutes, "");
    char szSeconds[256] = {};
    std::snprintf(szSeconds, sizeof(szSeconds), "%d", iSeconds - SECONDS_PER_MINUTE * iMinutes);
    return COstrelDemoUtil::CombinateString(Translated(pMinutesAndSecondsId), szMinutes, szSeconds);
}

} // namespace

bool COstrelDemoPlayer::m_UpdateNotificationLabel(std::string strContent)
{
    LOGI("strContent = %s", strContent.c_str());
    DestroyPopup();
    DeleteObject(m_pNotificationLabel);
    m_pNotificationLabel = elm_velt_popup_add(m_pWindow);
    if (m_pNotificationLabel == nullptr)
        return true;
    elm_velt_popup_style_set(m_pNotificationLabel, POPUP_STYLE_TOAST);
    elm_popup_orient_set(m_pNotificationLabel, ELM_POPUP_ORIENT_CENTER);
    elm_velt_popup_toast_text_set(m_pNotificationLabel, strContent.c_str());
    elm_popup_timeout_set(m_pNotificationLabel, TOAST_TIME_S);
    evas_object_show(m_pNotificationLabel);
    return true;
}

void COstrelDemoPlayer::m_ShowPopup(ENDEMO_ROTATION_STATUS enZavoMode, int iTimerIndex)
{
    LOGI("enZavoMode = %d iTimerIndex = %d", enZavoMode, iTimerIndex);
    const int iSeconds = IntervalOf(iTimerIndex);
    std::string strText;
    switch (enZavoMode) {
    case ROTATION_STATUS_PORTRAIT_TIMER:
        strText = IntervalText("TV_SID_ZAVO_MIX_CAAUG_PORTRAIT_TIMER_A_MINS",
                               "TV_SID_ZAVO_MIX_CAAUG_PORTRAIT_TIMER_A_MINS_B_SEC", iSeconds);
        break;
    case ROTATION_STATUS_LANDSCAPE_TIMER:
        strText = IntervalText("TV_SID_ZAVO_MIX_CAAUG_LANDSCAPE_TIMER_A_MINS",
                               "TV_SID_ZAVO_MIX_CAAUG_LANDSCAPE_TIMER_A_MINS_B_SEC", iSeconds);
        break;
    case ROTATION_STATUS_TIMER_RESET:
        // Tells whole minutes only, also of an interval with seconds.
        strText = IntervalText("TV_SID_ZAVO_MIX_CAAUG_RESET_P_L_TIMER_A_MINS",
                               "TV_SID_ZAVO_MIX_CAAUG_RESET_P_L_TIMER_A_MINS",
                               iSeconds - iSeconds % SECONDS_PER_MINUTE);
        break;
    default:
        return;
    }
    m_UpdateNotificationLabel(strText);
}

void COstrelDemoPlayer::m_CreateRotationOnOffLabel()
{
    LOGI("");
    char szText[128] = {};
    const bool bSwitchOn = !m_bRotationAutoMode;
    const char *pTitle = Translated("COM_ID_QUENDIRA_ROTATION");
    const char *pState = Translated(bSwitchOn ? "SID_ON" : "SID_OFF");
    std::snprintf(szText, sizeof(szText), "%s %s", pTitle, pState);
    m_bRotationAutoMode = bSwitchOn;
    COstrelDemoUtil::SetConfigInt(ConfigKey::ROTATION_AUTO_MODE, bSwitchOn ? 1 : 0);
    m_UpdateNotificationLabel(szText);
}

void COstrelDemoPlayer::m_UpdateZavoTimer()
{
    LOGI("");
    DeleteTimer(m_pZavoTimer);
    if (!COstrelDemoUtil::IsSupportRotator() || !m_bRotationAutoMode)
        return;
    int iIndex = 0;
    COstrelDemoUtil::GetConfigInt(COstrelDemoUtil::IsPortraitMode() ? ConfigKey::PORTRAIT_TIMER
                                                                    : ConfigKey::LANDSCAPE_TIMER,
                                  iIndex);
    const int iSeconds = IntervalOf(iIndex);
    LOGI("set timer %d sec", iSeconds);
    m_pZavoTimer = ecore_timer_add(iSeconds, m_OnZavoTimeOutCB, this);
}

Eina_Bool COstrelDemoPlayer::m_OnZavoTimeOutCB(void *data)
{
    LOGI("");
    auto *pThis = static_cast<COstrelDemoPlayer *>(data);
    if (pThis != nullptr)
        pThis->m_ChangeRotationType();
    return ECORE_CALLBACK_RENEW;
}

void COstrelDemoPlayer::m_HandleRotationOnOffKey()
{
    if (!COstrelDemoUtil::IsSupportRotator())
        return;
    m_CreateRotationOnOffLabel();
    m_UpdateZavoTimer();
}

void COstrelDemoPlayer::m_HandleTimerKey(ENDEMO_ROTATION_STATUS enStatus)
{
    if (!COstrelDemoUtil::IsSupportRotator())
        return;
    const bool bPortraitTimer = enStatus == ROTATION_STATUS_PORTRAIT_TIMER;
    const char *pKey = bPortraitTimer ? ConfigKey::PORTRAIT_TIMER : ConfigKey::LANDSCAPE_TIMER;
    int iValue = 0;
    if (!COstrelDemoUtil::GetConfigInt(pKey, iValue))
        return;
    // Leads back into the table from any stored number, and cannot overflow.
    iValue = (iValue % ZAVO_TIMER_COUNT + ZAVO_TIMER_COUNT + 1) % ZAVO_TIMER_COUNT;
    COstrelDemoUtil::SetConfigInt(pKey, iValue);
    if (COstrelDemoUtil::IsPortraitMode() == bPortraitTimer)
        m_UpdateZavoTimer();
    m_ShowPopup(enStatus, iValue);
}

void COstrelDemoPlayer::m_HandleTimerResetKey()
{
    if (!COstrelDemoUtil::IsSupportRotator())
        return;
    COstrelDemoUtil::SetConfigInt(ConfigKey::LANDSCAPE_TIMER, 0);
    COstrelDemoUtil::SetConfigInt(ConfigKey::PORTRAIT_TIMER, 0);
    m_UpdateZavoTimer();
    m_ShowPopup(ROTATION_STATUS_TIMER_RESET, 0);
}
