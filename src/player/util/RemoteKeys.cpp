// The keys of the remote control: grabbing them for the window, and key names to key types.

#include "player/util/OstrelDemoUtil.h"

#include <cstring>
#include <map>

#include <Ecore.h>

#include "efl_on_tv.h"
#include "key_router.h"
#include "player/util/Log.h"

namespace {

// The set keeps these, whatever is on screen.
constexpr const char *PASS_ON_KEYS[] = {
    "XF86PowerOff",
    "XF86AudioRaiseVolume",
    "XF86AudioLowerVolume",
    "XF86AudioMute",
    "XF86Home",
    "XF86Display",
    "XF86SysMenu",
    "XF86Exit",
    "XF86Ambient",
    "XF86PanelUp",
    "XF86PanelDown",
    "XF86PanelPlus",
    "XF86PanelMinus",
    "XF86Netflix",
    "XF86Amazon",
    "XF86WWW",
    "XF86LaunchApp1",
    "XF86LaunchApp2",
    "XF86KeyTVPlus",
    "XF86KeyRotatePanel",
    "XF86KeyAod",
    "XF86MultiView",
    "XF86KeyGlobo",
    "XF86KeyGraphicZoom",
    "XF86Disney",
    "XF86Tving",
    "XF86VirtualOption",
    "XF86AndroidMenu",
};
static_assert(sizeof(PASS_ON_KEYS) / sizeof(PASS_ON_KEYS[0]) == 28, "a pass-on key is missing");

constexpr char PANEL_KEY[] = "XF86PanelEnter";

} // namespace

void COstrelDemoUtil::InitVirtualKey()
{
    LOGI("");
    VirtualKey_Initialize(0);
    ecore_event_handler_add(ECORE_EVENT_DEVICE_ADD, m_OnDeviceAddCB, nullptr);
}

Eina_Bool COstrelDemoUtil::m_OnDeviceAddCB(void * /*data*/, int /*iType*/, void * /*event*/)
{
    LOGI("");
    return ECORE_CALLBACK_PASS_ON;
}

void COstrelDemoUtil::KeyRouterInitialize()
{
    LOGI("");
    Ecore_Wl2_Display *pEcoreDisplay = ecore_wl2_connected_display_get(nullptr);
    if (pEcoreDisplay == nullptr)
        return;

    wl_display *pDisplay = ecore_wl2_display_get(pEcoreDisplay);
    Eina_Iterator *pGlobals = ecore_wl2_display_globals_get(pEcoreDisplay);
    wl_registry *pRegistry = ecore_wl2_display_registry_get(pEcoreDisplay);
    Ecore_Wl2_Input *pInput = ecore_wl2_input_default_input_get(pEcoreDisplay);
    wl_seat *pSeat = ecore_wl2_input_seat_get(pInput);

    unsigned int uiId = 0;
    void *pData = nullptr;
    while (pGlobals != nullptr && eina_iterator_next(pGlobals, &pData)) {
        const auto *pGlobal = static_cast<const Ecore_Wl2_Global *>(pData);
        if (std::strcmp(pGlobal->interface, "tizen_keyrouter") == 0) {
            LOGI("Found Keyrouter Object");
            uiId = pGlobal->id;
            break;
        }
    }
    eina_iterator_free(pGlobals);

    // Also with id 0: the router decides what it can do without its global.
    KeyRouter_Initialize(pDisplay, pRegistry, pSeat, uiId);
}

void COstrelDemoUtil::RegisterKeys(wl_surface *pWlSurface)
{
    if (pWlSurface == nullptr) {
        LOGW("pWlSurface is null");
        return;
    }
    KeyRouterInitialize();

    KeyRouter_KeyList stList;
    KeyRouter_Reset_KeyList(&stList);
    KeyRouter_Add_All_Key(KEY_ROUTER_MODE_EXCLUSIVE, &stList);
    for (const char *pName : PASS_ON_KEYS) {
        if (!KeyRouter_Remove_Key(pName, KEY_ROUTER_MODE_EXCLUSIVE, &stList))
            LOGE("remove Key %s failed", pName);
    }
    if (!IsSupportRotator()) {
        if (!KeyRouter_Remove_Key(PANEL_KEY, KEY_ROUTER_MODE_EXCLUSIVE, &stList))
            LOGE("remove XF86PanelEnter Key failed");
    }
    if (!KeyRouter_Set_KeyList(pWlSurface, &stList))
        LOGE("Keyrouter set list not Success");
}

void COstrelDemoUtil::UnregisterKeys(wl_surface *pWlSurface)
{
    LOGI("");
    VirtualKey_Finalize();
    if (pWlSurface == nullptr)
        return;

    KeyRouter_KeyList stList;
    KeyRouter_Reset_KeyList(&stList);
    KeyRouter_Add_All_Key(KEY_ROUTER_MODE_NONE, &stList);
    KeyRouter_UnSet_KeyList(pWlSurface, &stList);
    KeyRouter_Finalize();
}

int COstrelDemoUtil::GetKeyType(const char *pKeyName)
{
    LOGI("%s", pKeyName != nullptr ? pKeyName : "(null)");
    if (pKeyName == nullptr)
        return KEY_TYPE_UNKNOWN;
    const std::map<std::string, int> &mapKeyTypes = GetKeyTypes();
    const auto it = mapKeyTypes.find(pKeyName);
    return it != mapKeyTypes.end() ? it->second : KEY_TYPE_UNKNOWN;
}
