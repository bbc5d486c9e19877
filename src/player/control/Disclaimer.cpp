// The small disclaimer picture over a starting video, on sets that ask for it.

#include "player/control/OstrelDemoPlayer.h"

#include "player/util/Efl.h"
#include "player/util/Log.h"
#include "widget_extension.h"

namespace {

constexpr double DISCLAIMER_TIME_S = 5.0;
constexpr int KEEP_PROPORTIONS = 1;

/** One version of the picture; the size counts as layout units and as pixels. */
struct stDisclaimerPicture {
    const char *pName;
    int iWidth;
    int iHeight;
};

stDisclaimerPicture PictureOfPanel()
{
    if (COstrelDemoUtil::IsPortraitMode())
        return {"ostrel_demo/player_img_china_disclaimer_portrait.png", 135, 240};
    return {"ostrel_demo/player_img_china_disclaimer.png", 240, 135};
}

} // namespace

void COstrelDemoPlayer::m_CreateDisclaimer()
{
    if (!COstrelDemoUtil::bShowDisclaimer())
        return;
    m_DestroyDisclaimer();

    m_pDisclaimerRootLayout = elm_velt_layout_add(m_pWindow);
    if (m_pDisclaimerRootLayout == nullptr) {
        LOGE("NULL == m_pDisclaimerRootLayout");
        return;
    }
    elm_velt_layout_type_set(m_pDisclaimerRootLayout, ELM_VELT_LAYOUT_FREE);
    evas_object_size_hint_weight_set(m_pDisclaimerRootLayout, EVAS_HINT_EXPAND, EVAS_HINT_EXPAND);
    elm_win_resize_object_add(m_pWindow, m_pDisclaimerRootLayout);
    elm_velt_layout_align_set(m_pDisclaimerRootLayout, ELM_VELT_ALIGN_BOTTOM);

    m_pDisclaimerImageBox = elm_velt_imagebox_add(m_pDisclaimerRootLayout);
    if (m_pDisclaimerImageBox == nullptr) {
        LOGE("NULL == m_pDisclaimerImageBox");
        return;
    }
    const stDisclaimerPicture stPicture = PictureOfPanel();
    const std::string strPath = m_GetResourcePath(stPicture.pName);
    LOGI("add[%s]", strPath.c_str());
    elm_velt_imagebox_file_set(m_pDisclaimerImageBox, strPath.c_str());
    elm_velt_imagebox_responsive_rule_set(m_pDisclaimerImageBox, KEEP_PROPORTIONS);
    elm_object_focus_allow_set(elm_velt_imagebox_native_get(m_pDisclaimerImageBox), EINA_FALSE);
    elm_velt_layout_align_set(m_pDisclaimerImageBox, ELM_VELT_ALIGN_BOTTOM);
    elm_velt_object_resize_policy_set(m_pDisclaimerImageBox, ELM_VELT_RESIZE_FIXED,
                                      ELM_VELT_RESIZE_FIXED);

    const int iWidth = elm_velt_unit_to_pixel(stPicture.iWidth);
    const int iHeight = elm_velt_unit_to_pixel(stPicture.iHeight);
    elm_velt_object_size_max_set(m_pDisclaimerImageBox, iWidth, iHeight);
    // Swapped on purpose: the box may shrink to its other orientation.
    elm_velt_object_size_min_set(m_pDisclaimerImageBox, iHeight, iWidth);
    elm_velt_layout_item_append(m_pDisclaimerRootLayout, m_pDisclaimerImageBox, iWidth, iHeight);

    evas_object_hide(m_pDisclaimerRootLayout);
    evas_object_hide(m_pDisclaimerImageBox);
}

void COstrelDemoPlayer::m_ShowDisclaimer()
{
    if (!COstrelDemoUtil::bShowDisclaimer())
        return;
    if (m_pDisclaimerRootLayout == nullptr || m_pDisclaimerImageBox == nullptr) {
        LOGE("layout or imagebox is NULL");
        return;
    }
    const stDisclaimerPicture stPicture = PictureOfPanel();
    elm_velt_imagebox_file_set(m_pDisclaimerImageBox, m_GetResourcePath(stPicture.pName).c_str());
    evas_object_resize(m_pDisclaimerImageBox, stPicture.iWidth, stPicture.iHeight);
    elm_velt_root_layout_render(m_pDisclaimerRootLayout);
    evas_object_show(m_pDisclaimerRootLayout);
    evas_object_show(m_pDisclaimerImageBox);
    // A timer of an earlier show is left running, on purpose: the picture goes with the first one.
    m_pDisclaimerTimer = ecore_timer_add(DISCLAIMER_TIME_S, m_OnDisclaimerTimeOutCB, this);
}

Eina_Bool COstrelDemoPlayer::m_OnDisclaimerTimeOutCB(void *data)
{
    auto *pThis = static_cast<COstrelDemoPlayer *>(data);
    if (pThis == nullptr)
        return ECORE_CALLBACK_CANCEL;
    evas_object_hide(pThis->m_pDisclaimerImageBox);
    evas_object_hide(pThis->m_pDisclaimerRootLayout);
    DeleteTimer(pThis->m_pDisclaimerTimer);
    LOGI("time out, evas hide, delete timer");
    return ECORE_CALLBACK_CANCEL;
}

void COstrelDemoPlayer::m_HideDisclaimer()
{
    if (!COstrelDemoUtil::bShowDisclaimer())
        return;
    evas_object_hide(m_pDisclaimerRootLayout);
    evas_object_hide(m_pDisclaimerImageBox);
    DeleteTimer(m_pDisclaimerTimer);
}

void COstrelDemoPlayer::m_DestroyDisclaimer()
{
    if (!COstrelDemoUtil::bShowDisclaimer())
        return;
    DeleteObject(m_pDisclaimerRootLayout);
    DeleteObject(m_pDisclaimerImageBox);
}
