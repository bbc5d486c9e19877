// The options popup: building it, and taking it down half a second after it was closed.

#include "player/control/OstrelDemoPlayer.h"

#include <memory>

#include "player/util/Efl.h"
#include "player/util/Log.h"
#include "widget_extension.h"

namespace {

// In layout units.
constexpr double LIST_WIDTH = 120.0;
constexpr double LIST_HEIGHT = 55.0;

constexpr double POPUP_TIME_S = 30.0;
constexpr double TEAR_DOWN_DELAY_S = 0.5;

constexpr int POPUP_STYLE_OPTIONS = 0;
constexpr int CONTENT_FIRST = 5;
constexpr int FIRST_SLOT = 0;

} // namespace

bool COstrelDemoPlayer::m_CreatePopUp()
{
    LOGI("");
    m_pPopup = elm_velt_popup_add(m_pWindow);
    elm_velt_popup_style_set(m_pPopup, POPUP_STYLE_OPTIONS);
    elm_popup_orient_set(m_pPopup, ELM_POPUP_ORIENT_CENTER);
    elm_velt_popup_title_set(m_pPopup, Translated("COM_SID_DEMO"));
    m_CreatePopupList();

    Elm_Genlist_Item_Class *pItemClass = elm_genlist_item_class_new();
    if (pItemClass == nullptr) {
        // What was made so far goes with the next DestroyPopup().
        LOGW("pItemClass is null");
        return false;
    }
    m_AppendPopupRows(pItemClass);
    m_CreatePopupButton();

    elm_popup_timeout_set(m_pPopup, POPUP_TIME_S);
    evas_object_smart_callback_add(m_pPopup, "timeout", m_OnButtonResponseCB, this);
    evas_object_event_callback_add(m_pGenlist, EVAS_CALLBACK_KEY_DOWN, m_OnGenlistKeyDownCB, this);
    evas_object_event_callback_add(m_pGenlist, EVAS_CALLBACK_SHOW, m_OnGenglistShow, this);
    evas_object_event_callback_add(m_pGenlist, EVAS_CALLBACK_MOUSE_IN, m_OnGenListMouseInCB, this);
    evas_object_event_callback_add(m_pGenlist, EVAS_CALLBACK_MOUSE_DOWN, m_OnGenListMouseDownCB,
                                   this);
    elm_genlist_item_class_free(pItemClass);
    COstrelDemoUtil::SetBlockEPOP(true);
    evas_object_show(m_pPopup);
    return true;
}

void COstrelDemoPlayer::m_CreatePopupList()
{
    m_pPopupLayout = elm_velt_layout_add(m_pPopup);
    elm_velt_layout_type_set(m_pPopupLayout, ELM_VELT_LAYOUT_FREE);
    const int iWidth = elm_velt_unit_to_pixel(LIST_WIDTH);
    const int iHeight = elm_velt_unit_to_pixel(LIST_HEIGHT);
    elm_velt_object_size_min_set(m_pPopupLayout, iWidth, iHeight);
    elm_velt_object_resize_policy_set(m_pPopupLayout, ELM_VELT_RESIZE_FIXED, ELM_VELT_RESIZE_FILL);
    elm_velt_layout_align_set(m_pPopupLayout, ELM_VELT_ALIGN_CENTER);

    m_pGenlist = elm_velt_genlist_add(m_pPopupLayout);
    elm_velt_genlist_listoption_enable(m_pGenlist, true);
    elm_velt_object_resize_policy_set(m_pGenlist, ELM_VELT_RESIZE_FIXED, ELM_VELT_RESIZE_FILL);
    elm_genlist_select_mode_set(m_pGenlist, ELM_OBJECT_SELECT_MODE_DEFAULT);

    elm_velt_layout_item_append(m_pPopupLayout, m_pGenlist, iWidth, iHeight);
    elm_velt_popup_content_set(m_pPopup, m_pPopupLayout, iWidth, iHeight);
}

void COstrelDemoPlayer::m_AppendPopupRows(Elm_Genlist_Item_Class *pItemClass)
{
    pItemClass->item_style = "C_TextTile_SingleLine_02";
    pItemClass->func.text_get = m_GetTextCB;
    pItemClass->func.content_get = nullptr;
    pItemClass->func.state_get = nullptr;
    pItemClass->func.del = m_OnItemDeletedCB;
    for (const stItemData &stItem : m_vdcItemList) {
        // The row owns its copy, and m_OnItemDeletedCB() destroys it; without a row nobody would.
        auto pCopy = std::make_unique<stItemData>(stItem);
        if (elm_velt_genlist_item_append(m_pGenlist, pItemClass, pCopy.get(), nullptr,
                                         ELM_GENLIST_ITEM_NONE, nullptr, this) != nullptr)
            static_cast<void>(pCopy.release());
    }
}

void COstrelDemoPlayer::m_CreatePopupButton()
{
    Evas_Object *pButton = elm_velt_button_add(m_pPopup);
    if (pButton == nullptr)
        return;
    elm_velt_button_style_set(pButton, 0, 0);
    elm_velt_button_text_set(pButton, Translated("SID_OK"));
    elm_velt_popup_button_focus_set(m_pPopup, CONTENT_FIRST);
    elm_velt_popup_button_set(m_pPopup, pButton, FIRST_SLOT);
    evas_object_smart_callback_add(pButton, "clicked", m_OnButtonResponseCB, this);
    evas_object_event_callback_add(pButton, EVAS_CALLBACK_MOUSE_IN, m_OnCommonButtonMouseInCB,
                                   this);
    evas_object_event_callback_add(pButton, EVAS_CALLBACK_MOUSE_DOWN, m_OnCommonButtonMouseDownCB,
                                   this);
}

bool COstrelDemoPlayer::DestroyPopup()
{
    LOGI("");
    if (m_pPopup == nullptr)
        return false;
    evas_object_hide(m_pPopup);
    COstrelDemoUtil::SetBlockEPOP(false);
    DeleteTimer(m_pDestroyPopupTimer);
    // Not deleted here: the call may come from a callback of the popup's own button or list.
    m_pDestroyPopupTimer = ecore_timer_add(TEAR_DOWN_DELAY_S, m_OnDestroyPopTimerCB, this);
    return true;
}

Eina_Bool COstrelDemoPlayer::m_OnDestroyPopTimerCB(void *data)
{
    LOGI("");
    auto *pThis = static_cast<COstrelDemoPlayer *>(data);
    if (pThis == nullptr)
        return ECORE_CALLBACK_CANCEL;
    DeleteObject(pThis->m_pGenlist);
    DeleteObject(pThis->m_pPopupLayout);
    DeleteObject(pThis->m_pPopup);
    pThis->m_pDestroyPopupTimer = nullptr;
    return ECORE_CALLBACK_CANCEL;
}

void COstrelDemoPlayer::m_OnButtonResponseCB(void *data, Evas_Object * /*pObject*/,
                                             void * /*event_info*/)
{
    LOGD("");
    auto *pThis = static_cast<COstrelDemoPlayer *>(data);
    if (pThis != nullptr)
        pThis->DestroyPopup();
}

void COstrelDemoPlayer::m_OnCommonButtonMouseInCB(void * /*data*/, Evas * /*pEvas*/,
                                                  Evas_Object *pObject, void * /*event_info*/)
{
    elm_object_focus_set(pObject, EINA_TRUE);
}

void COstrelDemoPlayer::m_OnCommonButtonMouseDownCB(void *data, Evas * /*pEvas*/,
                                                    Evas_Object * /*pObject*/, void *event_info)
{
    LOGI("");
    const auto *pEvent = static_cast<const Evas_Event_Mouse_Down *>(event_info);
    auto *pThis = static_cast<COstrelDemoPlayer *>(data);
    if (pEvent != nullptr && pEvent->button == PRIMARY_BUTTON && pThis != nullptr)
        pThis->DestroyPopup();
}
