/**
 * The application shell: starts EFL, hands the application framework its lifecycle callbacks, reads
 * launch requests, makes the one controller and ends the program when the set asks for it.
 */

#include <cstdlib>
#include <string>
#include <string_view>

#include <Ecore.h>
#include <Elementary.h>

#include "app_context.h"
#include "app_framework.h"
#include "config_store.h"
#include "device_power.h"
#include "player/control/OstrelDemoPlayer.h"
#include "player/util/Log.h"
#include "player/util/NameCompare.h"
#include "player/util/OstrelDemoUtil.h"
#include "system_facts.h"

namespace {

struct AppData {
    const char *pAppId;
    COstrelDemoPlayer *pPlayer; /**< null until the first launch request */
};

bool GetExtraData(app_control_h hAppControl, const char *pKey, std::string &strValue)
{
    char *pValue = nullptr;
    if (app_control_get_extra_data(hAppControl, pKey, &pValue) != 0 || pValue == nullptr) {
        LOGI("Get ExtraKey:%s,fail", pKey);
        return false;
    }
    strValue = pValue;
    LOGI("ExtraKey:%s,pStrExtraValue:%s", pKey, pValue);
    free(pValue);
    return true;
}

void OnPoweroffCB(void * /*data*/)
{
    LOGE("");
    COstrelDemoUtil::ExitApplication();
}

void OnPowerStateChangedCB(device_power_state_e /*enState*/, void * /*data*/)
{
    LOGE("");
    COstrelDemoUtil::ExitApplication();
}

void OnVconfValueChangeCB(keynode_t *pNode, void * /*data*/)
{
    // The first length is more than the name's, so the whole name has to match; the second is the
    // name's own, so longer names match as well.
    constexpr size_t DEMO_MODE_LENGTH = 36;
    constexpr size_t USE_MODE_LENGTH = 24;

    LOGI("");
    const char *pKeyName = pNode != nullptr ? vconf_keynode_get_name(pNode) : nullptr;
    if (pKeyName == nullptr)
        return;

    int iKeyValue = 0;
    const std::string_view strKeyName = pKeyName;
    if (IsSameName(strKeyName.substr(0, DEMO_MODE_LENGTH), ConfigKey::DEMO_MODE)) {
        if (COstrelDemoUtil::GetConfigInt(ConfigKey::DEMO_MODE, iKeyValue) && iKeyValue == -1)
            COstrelDemoUtil::ExitApplication();
    } else if (IsSameName(strKeyName.substr(0, USE_MODE_LENGTH), ConfigKey::USE_MODE)) {
        if (COstrelDemoUtil::GetConfigInt(ConfigKey::USE_MODE, iKeyValue) && iKeyValue == 0)
            COstrelDemoUtil::ExitApplication();
    }
    LOGI("pKeyName:%s iKeyValue:%d", pKeyName, iKeyValue);
}

bool Create(void * /*data*/)
{
    LOGI("");
    COstrelDemoUtil::InitVirtualKey();
    COstrelDemoUtil::InitWindowRotationType();
    ea_init();
    elm_app_base_scale_set(2.0);
    device_power_subscribe_poweroff(OnPoweroffCB, nullptr);
    device_power_subscribe_standby(OnPoweroffCB, nullptr);
    device_power_subscribe_wakeup(OnPoweroffCB, nullptr);
    device_power_subscribe_state_changed_event(OnPowerStateChangedCB, nullptr);
    app_context_manager_init();
    COstrelDemoUtil::DisableMenuItem(true);
    elm_config_mirrored_set(COstrelDemoUtil::IsRTLOrientation());
    return true;
}

/** Reads where the content lies. */
stFolderInfo ReadFolderInfo(app_control_h hAppControl)
{
    stFolderInfo stInfo;
    if (!GetExtraData(hAppControl, "folder_path", stInfo.strFolderPath))
        stInfo.strFolderPath = COstrelDemoUtil::GetDefaultPath();
    std::string strLocation;
    stInfo.bUsbLocation =
        GetExtraData(hAppControl, "path_location", strLocation) && strLocation == "usb";
    return stInfo;
}

void StartOrRestart(AppData *pAppData, stFolderInfo &stInfo, bool bFolderContents, bool bRepeat)
{
    if (pAppData->pPlayer != nullptr) {
        // A relaunch plays the old list anew; what the new request says is not used.
        pAppData->pPlayer->StartDemoPlayer();
        return;
    }
    pAppData->pPlayer = new COstrelDemoPlayer();
    if (!pAppData->pPlayer->Create(stInfo, bFolderContents, bRepeat)) {
        LOGE("Create ostrel demo player failed");
        COstrelDemoUtil::ExitApplication();
    }
}

void Service(app_control_h hAppControl, void *data)
{
    LOGI("");
    auto *pAppData = static_cast<AppData *>(data);
    if (pAppData == nullptr) {
        LOGW("pAppData is null");
        return;
    }

    std::string strValue;
    if (GetExtraData(hAppControl, "__K_RELOCATE_BELOW", strValue) &&
        strValue == "com.norvane.tv.aod")
        return;
    if (GetExtraData(hAppControl, "mode", strValue)) {
        if (strValue == "factory_stop")
            COstrelDemoUtil::ExitApplication();
        return;
    }

    const bool bFolderContents = GetExtraData(hAppControl, "demo_player_mode", strValue) &&
                                 strValue == "folder_contents_player";
    if (bFolderContents)
        COstrelDemoUtil::SetConfigInt(ConfigKey::DEMO_MODE, 0);
    const bool bRepeat = !(GetExtraData(hAppControl, "repeat_mode", strValue) && strValue == "no");
    stFolderInfo stInfo = ReadFolderInfo(hAppControl);

    vconf_notify_key_changed(ConfigKey::DEMO_MODE, OnVconfValueChangeCB, nullptr);
    if (!bFolderContents)
        vconf_notify_key_changed(ConfigKey::USE_MODE, OnVconfValueChangeCB, nullptr);

    StartOrRestart(pAppData, stInfo, bFolderContents, bRepeat);
}

void Pause(void * /*data*/)
{
    LOGI("");
    COstrelDemoUtil::ExitApplication();
}

void Resume(void * /*data*/)
{
    LOGI("");
}

void LangChanged(app_event_info_h /*hEventInfo*/, void * /*data*/)
{
    LOGD("");
    elm_config_mirrored_set(COstrelDemoUtil::IsRTLOrientation());
    char *pLanguage = nullptr;
    if (runtime_info_get_value_string(RUNTIME_INFO_KEY_LANGUAGE, &pLanguage) != 0 ||
        pLanguage == nullptr) {
        LOGE("Get System Language Failed");
        return;
    }
    elm_language_set(pLanguage);
    LOGD("%s", pLanguage);
    free(pLanguage);
}

void Terminate(void *data)
{
    LOGI("");
    COstrelDemoUtil::DisableMenuItem(false);
    app_context_manager_fini();
    COstrelDemoUtil::SetConfigInt(ConfigKey::START_RELAUNCH_TIMER, 1);
    // The wake-up and state subscriptions are left to the framework's own end.
    device_power_unsubscribe_standby(OnPoweroffCB);
    device_power_unsubscribe_poweroff(OnPoweroffCB);
    vconf_ignore_key_changed(ConfigKey::USE_MODE, OnVconfValueChangeCB);
    vconf_ignore_key_changed(ConfigKey::DEMO_MODE, OnVconfValueChangeCB);

    auto *pAppData = static_cast<AppData *>(data);
    if (pAppData == nullptr)
        return;
    delete pAppData->pPlayer;
    pAppData->pPlayer = nullptr;
}

} // namespace

int elm_main(int argc, char **argv)
{
    LOGD("");
    AppData stAppData = {APP_ID, nullptr};

    ui_app_lifecycle_callback_s stCallbacks = {};
    stCallbacks.create = Create;
    stCallbacks.terminate = Terminate;
    stCallbacks.pause = Pause;
    stCallbacks.resume = Resume;
    stCallbacks.app_control = Service;

    app_event_handler_h hHandler = nullptr;
    ui_app_add_event_handler(&hHandler, APP_EVENT_LANGUAGE_CHANGED, LangChanged, nullptr);
    return ui_app_main(argc, argv, &stCallbacks, &stAppData);
}

int main(int argc, char **argv)
{
    _elm_startup_time = ecore_time_unix_get();
    elm_init(argc, argv);
    const int iResult = elm_main(argc, argv);
    elm_shutdown();
    return iResult;
}
