// Turns key presses into events, so that each is acted on in its turn.

#include "player/control/OstrelDemoPlayer.h"

#include <Ecore_Input.h>

#include "player/util/EventManager.h"
#include "player/util/Log.h"

Eina_Bool COstrelDemoPlayer::m_OnECoreKeyDownCB(void * /*data*/, int iType, void *event)
{
    const auto *pKey = static_cast<const Ecore_Event_Key *>(event);
    const char *pKeyName = pKey != nullptr ? pKey->keyname : nullptr;
    LOGI("KeyName=%s KeyEventType=%d", pKeyName != nullptr ? pKeyName : "(null)", iType);
    CEventManager::GetInstance()->SendEvent(ENDEMO_EVENT_KEY,
                                            COstrelDemoUtil::GetKeyType(pKeyName));
    return ECORE_CALLBACK_PASS_ON;
}

void COstrelDemoPlayer::m_OnGenlistKeyDownCB(void * /*data*/, Evas * /*pEvas*/,
                                             Evas_Object * /*pObject*/, void *event_info)
{
    LOGD("");
    const auto *pKey = static_cast<const Evas_Event_Key_Down *>(event_info);
    if (pKey == nullptr)
        return;
    LOGD("%s", pKey->keyname != nullptr ? pKey->keyname : "(null)");
    // The other keys are the list's own, or arrive through the main key handler.
    if (COstrelDemoUtil::GetKeyType(pKey->keyname) == KEY_TYPE_ENTER)
        CEventManager::GetInstance()->SendEvent(ENDEMO_EVENT_ITEM_SELECTED, 0);
}
