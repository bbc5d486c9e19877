// The one window. It is empty on purpose: a transparent rectangle cuts a hole through which the
// video plane shows, and everything else is drawn over it.

#include "player/control/OstrelDemoPlayer.h"

#include <sys/types.h>

#include "app_context.h"
#include "app_framework.h"
#include "player/util/Efl.h"
#include "player/util/Log.h"
#include "widget_extension.h"

namespace {

constexpr char WINDOW_NAME[] = "ostrel-demo-player-tv";

void AddHole(Evas_Object *pWindow)
{
    Evas_Object *pRectangle = evas_object_rectangle_add(evas_object_evas_get(pWindow));
    if (pRectangle == nullptr)
        return;
    evas_object_size_hint_weight_set(pRectangle, EVAS_HINT_EXPAND, EVAS_HINT_EXPAND);
    evas_object_color_set(pRectangle, 0, 0, 0, 0);
    evas_object_render_op_set(pRectangle, EVAS_RENDER_COPY);
    evas_object_show(pRectangle);
    elm_win_resize_object_add(pWindow, pRectangle);
}

} // namespace

bool COstrelDemoPlayer::bStarted = false;

bool COstrelDemoPlayer::m_CreateWindow()
{
    LOGD("");
    m_pWindow = app_get_preinitialized_window(WINDOW_NAME);
    if (m_pWindow == nullptr)
        m_pWindow = elm_win_add(nullptr, WINDOW_NAME, ELM_WIN_DIALOG_BASIC);
    if (m_pWindow == nullptr) {
        LOGW("pWindow is null");
        return false;
    }
    AddHole(m_pWindow);
    elm_win_title_set(m_pWindow, WINDOW_NAME);
    elm_policy_set(ELM_POLICY_QUIT, ELM_POLICY_QUIT_LAST_WINDOW_CLOSED);
    elm_win_autodel_set(m_pWindow, EINA_TRUE);
    // Leaves the window out of the window manager's screen control.
    elm_win_aux_hint_add(m_pWindow, "wm.screencontroller.exception", "3");
    m_pWlWindow =
        ecore_evas_wayland2_window_get(ecore_evas_ecore_evas_get(evas_object_evas_get(m_pWindow)));
    m_pWlSurface = ecore_wl2_window_surface_get(m_pWlWindow);
    return true;
}

void COstrelDemoPlayer::m_ActivateWindow()
{
    LOGI("");
    evas_object_show(m_pWindow);
    ecore_wl2_sync();
    elm_velt_manager_init(m_pWindow);
    ui_config_manager_init();
    evas_object_event_callback_add(m_pWindow, EVAS_CALLBACK_RESIZE, m_OnWindowReSizeCB, this);
    evas_object_event_callback_add(m_pWindow, EVAS_CALLBACK_MOUSE_DOWN, m_OnWindowMouseDownCB,
                                   this);
    evas_object_smart_callback_add(m_pWindow, "wm,rotation,changed", m_OnWindowRotationCB, this);
    evas_object_smart_callback_add(m_pWindow, "visibility,changed", m_OnWindowVisibilityChangeCB,
                                   this);
    COstrelDemoUtil::RegisterKeys(m_pWlSurface);
}

void COstrelDemoPlayer::m_DeactiveWindow()
{
    LOGI("");
    if (m_pWindow == nullptr)
        return;
    evas_object_hide(m_pWindow);
    ecore_wl2_sync();
}

void COstrelDemoPlayer::m_OnWindowReSizeCB(void *data, Evas * /*pEvas*/, Evas_Object *pObject,
                                           void * /*event_info*/)
{
    LOGI("");
    auto *pThis = static_cast<COstrelDemoPlayer *>(data);
    if (pThis == nullptr || pThis->m_hPlayer == nullptr)
        return;
    int iX = 0;
    int iY = 0;
    int iWidth = 0;
    int iHeight = 0;
    elm_win_screen_size_get(pObject, &iX, &iY, &iWidth, &iHeight);
    LOGI("window location:iX=%d,iY=%d,iWidth=%d,iHeight=%d", iX, iY, iWidth, iHeight);
    // The text names another call than the one made; tools that read the logs know it so.
    if (player_resize_video_render_rect(pThis->m_hPlayer, iX, iY, iWidth, iHeight) != 0)
        LOGE("player_set_display error");
}

void COstrelDemoPlayer::m_OnWindowMouseDownCB(void *data, Evas * /*pEvas*/,
                                              Evas_Object * /*pObject*/, void *event_info)
{
    LOGI("");
    const auto *pEvent = static_cast<const Evas_Event_Mouse_Down *>(event_info);
    auto *pThis = static_cast<COstrelDemoPlayer *>(data);
    if (pEvent == nullptr || pEvent->button != PRIMARY_BUTTON || pThis == nullptr)
        return;
    // A popup that is just being torn down counts as well.
    if (pThis->m_pPopup != nullptr || pThis->m_bRotating)
        return;
    pThis->m_CreatePopUp();
}

void COstrelDemoPlayer::m_OnWindowVisibilityChangeCB(void *data, Evas_Object * /*pObject*/,
                                                     void *event_info)
{
    LOGI("visibility changed %zd", reinterpret_cast<ssize_t>(event_info));
    auto *pThis = static_cast<COstrelDemoPlayer *>(data);
    if (pThis == nullptr || bStarted)
        return;
    bStarted = true;
    pThis->StartDemoPlayer();
}
