// The controller's life: making it, setting it up, starting it, taking it down.

#include "player/control/OstrelDemoPlayer.h"

#include "app_context.h"
#include "player/util/Efl.h"
#include "player/util/EventManager.h"
#include "player/util/Log.h"
#include "widget_extension.h"

COstrelDemoPlayer::COstrelDemoPlayer()
{
    LOGD("");
}

bool COstrelDemoPlayer::Create(stFolderInfo &stInfo, bool bFolderContentsPlayer, bool bRepeat)
{
    LOGD("");
    m_bFolderContentsPlayer = bFolderContentsPlayer;
    m_bRepeat = bRepeat;
    m_strFolderPath = stInfo.strFolderPath;
    m_bUsbLocation = stInfo.bUsbLocation;

    int iAutoMode = 0;
    COstrelDemoUtil::GetConfigInt(ConfigKey::ROTATION_AUTO_MODE, iAutoMode);
    m_bRotationAutoMode = iAutoMode != 0;

    // Without a window or a pipe the set-up goes on; only a missing player or list ends it.
    m_CreateWindow();
    CEventManager::GetInstance()->InitEventManager(m_OnHandleEcorePipeCB, this);
    m_pKeyDownHandler = ecore_event_handler_add(ECORE_EVENT_KEY_DOWN, m_OnECoreKeyDownCB, this);
    if (display_rotator_add_cb(m_OnDisplayRotatorCB, this) != 0)
        LOGW("add rotation callback failed");

    if (!m_CreateVideoPlayer()) {
        COstrelDemoUtil::SetConfigInt(ConfigKey::PLAYBACK_STATUS, PLAYBACK_STATUS_ERROR);
        return false;
    }

    m_CreatePlayList();
    if (m_InitPlayList() == -1)
        return false;

    m_ActivateWindow();
    m_InitItemList();

    COstrelDemoUtil::SetConfigInt(ConfigKey::START_RELAUNCH_TIMER, 3);
    LOGI("change TV_VCONF_START_RELAUNCH_TIMER to 3");
    return true;
}

int COstrelDemoPlayer::StartDemoPlayer()
{
    if (m_vdcPlayList.empty()) {
        LOGI("play list is empty");
        return 0;
    }

    int iFileMode = 0;
    COstrelDemoUtil::GetConfigInt(ConfigKey::FILE_MODE, iFileMode);
    const int iMode = m_GetFileMode(static_cast<ENDEMO_FILE_MODE>(iFileMode));
    if (iMode == -1) {
        LOGI("");
        COstrelDemoUtil::ExitApplication();
        return 1;
    }

    // A panel that stands the wrong way is turned first; the turn's events start the play-back.
    const bool bToPortrait = iFileMode == ENDEMO_FILE_MODE_PORTRAIT;
    if (COstrelDemoUtil::IsSupportRotator() && iMode != 0 &&
        COstrelDemoUtil::IsPortraitMode() != bToPortrait) {
        COstrelDemoUtil::SetConfigInt(ConfigKey::FILE_MODE, bToPortrait
                                                                ? ENDEMO_FILE_MODE_PORTRAIT
                                                                : ENDEMO_FILE_MODE_LANDSCAPE);
        COstrelDemoUtil::ChangePanelRotation();
        return 0;
    }

    m_CreateDisclaimer();
    m_iPlayIndex = iMode;
    m_UpdateZavoTimer();
    return m_PlayContents() ? 1 : 0;
}

void COstrelDemoPlayer::ReleaseResource()
{
    DestroyPopup();
    StopVideo();
    m_DestroyPhoto();
}

COstrelDemoPlayer::~COstrelDemoPlayer()
{
    ReleaseResource();
    m_DestroyVideo();
    CEventManager::ReleaseInstance();
    display_rotator_remove_cb(m_OnDisplayRotatorCB);
    COstrelDemoUtil::UnregisterKeys(m_pWlSurface);
    COstrelDemoUtil::SetBlockEPOP(false);

    DeleteObject(m_pPopup);
    DeleteObject(m_pGenlist);
    DeleteObject(m_pPopupLayout);
    DeleteObject(m_pNotificationLabel);
    DeleteObject(m_pDisclaimerRootLayout);
    DeleteObject(m_pDisclaimerImageBox);

    // The slide-show and popup timers are left out: the main loop has ended, and they go with it.
    DeleteTimer(m_pZavoTimer);
    DeleteTimer(m_pDisclaimerTimer);
    DeleteTimer(m_hRotationDelayTimer);
    if (m_pKeyDownHandler != nullptr) {
        ecore_event_handler_del(m_pKeyDownHandler);
        m_pKeyDownHandler = nullptr;
    }

    DeleteObject(m_pWindow);
    ui_config_manager_fini();
    elm_velt_manager_fini();
}
