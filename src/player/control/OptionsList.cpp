// The rows of the options popup: their texts, which one has the focus, and what a choice does. Also
// the sound output, which staff switch with a key of its own.

#include "player/control/OstrelDemoPlayer.h"

#include <cstring>

#include "player/util/Efl.h"
#include "player/util/Log.h"
#include "sound_route.h"
#include "widget_extension.h"

namespace {

stItemData *ItemDataOf(const Elm_Object_Item *pRow)
{
    return static_cast<stItemData *>(elm_velt_genlist_item_data_get(pRow));
}

} // namespace

bool COstrelDemoPlayer::m_InitItemList()
{
    LOGD("");
    m_vdcItemList.clear();
    m_vdcItemList.push_back({-1, Translated("SID_OFF")});
    m_vdcItemList.push_back({0, Translated("COM_HTS_SID_PLAY_ALL")});
    int iNumber = 0;
    for (const stPlayListItem &stEntry : m_vdcPlayList) {
        ++iNumber;
        // An entry without a dot gets no row, and the numbers after it stay as they are.
        const size_t uiDot = stEntry.strFileName.rfind('.');
        if (uiDot != std::string::npos)
            m_vdcItemList.push_back({iNumber, stEntry.strFileName.substr(0, uiDot)});
        LOGI("%d %s", iNumber, m_vdcItemList.back().strText.c_str());
    }
    return true;
}

void COstrelDemoPlayer::m_OnGenglistShow(void *data, Evas * /*pEvas*/, Evas_Object * /*pObject*/,
                                         void * /*event_info*/)
{
    LOGI("");
    ecore_idler_add(m_OnSetFocusIdlerCB, data);
}

Eina_Bool COstrelDemoPlayer::m_OnSetFocusIdlerCB(void *data)
{
    LOGI("callback enter");
    auto *pThis = static_cast<COstrelDemoPlayer *>(data);
    if (pThis == nullptr)
        return ECORE_CALLBACK_CANCEL;
    Elm_Object_Item *pItem = pThis->m_GetRecentlySelectedItem(pThis->m_pGenlist);
    if (pItem == nullptr) {
        LOGW("pItem is null");
        return ECORE_CALLBACK_CANCEL;
    }
    elm_object_focus_set(pThis->m_pGenlist, EINA_TRUE);
    elm_genlist_item_show(pItem, ELM_GENLIST_ITEM_SCROLLTO_IN);
    elm_genlist_item_selected_set(pItem, EINA_TRUE);
    elm_object_item_focus_set(pItem, EINA_TRUE);
    return ECORE_CALLBACK_CANCEL;
}

Elm_Object_Item *COstrelDemoPlayer::m_GetRecentlySelectedItem(Evas_Object *pGenlist)
{
    LOGI("");
    if (pGenlist == nullptr) {
        LOGW("pGenList is null");
        return nullptr;
    }
    // What is stored for this orientation, which need not be what plays.
    const int iMode = m_GetFileMode(ENDEMO_FILE_MODE_CURRENT);
    Elm_Object_Item *pRow = elm_genlist_first_item_get(pGenlist);
    if (pRow == nullptr)
        return nullptr;
    const stItemData *pItemData = ItemDataOf(pRow);
    if (pItemData == nullptr) {
        LOGI("pItemData == NULL");
        return nullptr;
    }
    LOGI("%d %d", iMode, pItemData->iIndex);

    // A later row without a record ends the walk and counts as found.
    while (pRow != nullptr && pItemData != nullptr && pItemData->iIndex != iMode) {
        pRow = elm_genlist_item_next_get(pRow);
        pItemData = pRow != nullptr ? ItemDataOf(pRow) : nullptr;
    }
    return pRow;
}

void COstrelDemoPlayer::m_OnGenListMouseInCB(void * /*data*/, Evas * /*pEvas*/,
                                             Evas_Object *pObject, void *event_info)
{
    const auto *pEvent = static_cast<const Evas_Event_Mouse_In *>(event_info);
    if (pEvent == nullptr)
        return;
    elm_object_item_focus_set(
        elm_genlist_at_xy_item_get(pObject, pEvent->canvas.x, pEvent->canvas.y, nullptr),
        EINA_TRUE);
}

void COstrelDemoPlayer::m_OnGenListMouseDownCB(void *data, Evas * /*pEvas*/, Evas_Object *pObject,
                                               void *event_info)
{
    LOGI("");
    const auto *pEvent = static_cast<const Evas_Event_Mouse_Down *>(event_info);
    auto *pThis = static_cast<COstrelDemoPlayer *>(data);
    if (pThis == nullptr || pEvent == nullptr || pEvent->button != PRIMARY_BUTTON)
        return;
    const stItemData *pItemData = ItemDataOf(
        elm_genlist_at_xy_item_get(pObject, pEvent->canvas.x, pEvent->canvas.y, nullptr));
    if (pItemData == nullptr)
        return;
    if (pItemData->iIndex != pThis->m_iPlayIndex) {
        pThis->m_HideDisclaimer();
        pThis->m_ChooseEntry(pItemData->iIndex);
    }
    pThis->DestroyPopup();
}

/** Puts another menu selection in force and acts on it. */
void COstrelDemoPlayer::m_ChooseEntry(int iIndex)
{
    m_iPlayIndex = iIndex;
    m_SetFileMode(ENDEMO_FILE_MODE_CURRENT, iIndex);
    if (m_iPlayIndex != 0) {
        m_PlayContents();
        return;
    }
    // Play all: a video just plays on into the list, a photo needs the slide show for that.
    if (m_GetCurrentType() == PLAYING_TYPE_PHOTO)
        StartSlideShow();
}

char *COstrelDemoPlayer::m_GetTextCB(void *data, Evas_Object * /*pObject*/, const char *part)
{
    const auto *pItemData = static_cast<const stItemData *>(data);
    if (part == nullptr || pItemData == nullptr) {
        LOGW("pItemData or part is null");
        return nullptr;
    }
    if (std::strcmp(part, "MainText") != 0)
        return nullptr;
    return strdup(pItemData->strText.c_str());
}

void COstrelDemoPlayer::m_OnItemDeletedCB(void *data, Evas_Object * /*pObject*/)
{
    LOGD("");
    delete static_cast<stItemData *>(data);
}

/**
 * A choice by the list's own selection. Nothing registers it, and nothing may: it destroys the
 * row's record, which the row's delete function destroys as well.
 */
void COstrelDemoPlayer::m_OnItemSelectedCB(void *data, Evas_Object * /*pObject*/, void *event_info)
{
    auto *pThis = static_cast<COstrelDemoPlayer *>(data);
    stItemData *pItemData = ItemDataOf(static_cast<const Elm_Object_Item *>(event_info));
    if (pThis == nullptr || pItemData == nullptr)
        return;
    if (pItemData->iIndex != pThis->m_iPlayIndex) {
        pThis->m_iPlayIndex = pItemData->iIndex;
        COstrelDemoUtil::SetConfigInt(ConfigKey::DEMO_MODE, pThis->m_iPlayIndex);
        if (pThis->m_iPlayIndex != 0)
            pThis->m_PlayContents();
        else if (pThis->m_GetCurrentType() == PLAYING_TYPE_PHOTO)
            pThis->StartSlideShow();
    }
    pThis->DestroyPopup();
    delete pItemData;
}

void COstrelDemoPlayer::m_SelectSoundSpeaker()
{
    int iCurrent = 0;
    if (sound_manager_get_speaker_selection(&iCurrent) != 0)
        return;
    const int iTarget =
        iCurrent == SOUND_SPEAKER_INTERNAL ? SOUND_SPEAKER_EXTERNAL : SOUND_SPEAKER_INTERNAL;
    LOGI("enCurOutputRoute = %d,enOutputRoute = %d", iCurrent, iTarget);
    if (sound_manager_set_speaker_selection(iTarget) != 0)
        LOGE("select speaker failed");
}
