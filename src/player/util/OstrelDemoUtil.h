/**
 * The player's static operations on the set: configuration, system facts, menu blocking, language,
 * remote-control keys, and the panel's orientation. Callable before the controller exists; main
 * loop only. Nothing here throws; a failure is logged and told by the result.
 */
#pragma once

#include <string>

#include <Eina.h>

#include "player/util/KeyTypes.h"

struct wl_surface;

/** What the set calls the program. */
inline constexpr char APP_ID[] = "org.tizen.ostrel-demo-player-tv";

/** How the window stands, as the window manager reports it. Portrait is {1, 3}. */
enum ENDEMO_ROTATION_TYPE : int {
    ROTATION_TYPE_LANDSCAPE = 0,         /**< 0 degrees */
    ROTATION_TYPE_PORTRAIT = 1,          /**< 90 degrees */
    ROTATION_TYPE_LANDSCAPE_REVERSE = 2, /**< 180 degrees */
    ROTATION_TYPE_PORTRAIT_REVERSE = 3,  /**< 270 degrees */
};

/** What a step of the rotation timers is announced as. */
enum ENDEMO_ROTATION_STATUS : int {
    ROTATION_STATUS_LANDSCAPE_TIMER = 0,
    ROTATION_STATUS_PORTRAIT_TIMER = 1,
    ROTATION_STATUS_TIMER_RESET = 2,
};

/** The configuration keys that the player reads, writes or watches; all integers. */
namespace ConfigKey {
/** Menu selection per orientation: bits 0-7 landscape, bits 8-15 portrait; or 0, or -1 as a whole.
 */
inline constexpr char DEMO_MODE[] = "db/ostrel-demo-player-tv/demo_mode";
/** Orientation in which the demo plays: 1 landscape, 2 portrait. */
inline constexpr char FILE_MODE[] = "db/ostrel-demo-player-tv/file_mode";
/** 0 stopped, 1 playing, 2 nothing to play, 3 error. */
inline constexpr char PLAYBACK_STATUS[] = "memory/ostrel-demo-player-tv/playback_status";
/** Timed rotation: 0 off, anything else on. */
inline constexpr char ROTATION_AUTO_MODE[] = "db/ostrel-demo-player-tv/rotation_auto_mode";
/** Index 0..9 into the table of rotation intervals. */
inline constexpr char PORTRAIT_TIMER[] = "db/ostrel-demo-player-tv/portrait_timer";
inline constexpr char LANDSCAPE_TIMER[] = "db/ostrel-demo-player-tv/landscape_timer";
/** The set's own keys. */
inline constexpr char START_RELAUNCH_TIMER[] = "memory/usb-launcher-service/start_relaunch_timer";
inline constexpr char ROTATION_STATE[] = "db/sysman/rotation_state";
inline constexpr char USE_MODE[] = "db/menu/support/use_mode";
} // namespace ConfigKey

class COstrelDemoUtil {
  public:
    COstrelDemoUtil() = delete;

    // OstrelDemoUtil.cpp: configuration and system facts

    /** Reads an integer key. @param iValue keeps its preset value on failure. @return success. */
    static bool GetConfigInt(std::string strKey, int &iValue);
    static bool SetConfigInt(std::string strKey, int iValue);
    /** Whether the disclaimer is to be shown; asked of the set at each call. */
    static bool bShowDisclaimer();
    /** Whether the set is a model with direct backlight. */
    static bool isDirectBacklightModel();
    /** Whether the set's user interface runs right to left. */
    static bool IsRTLOrientation();
    /** Holds off (true) or lets through (false) the set's own pop-ups. @return success. */
    static bool SetBlockEPOP(bool bBlock);
    /** Blocks (true) or releases (false) the items of the set's menu that would disturb the demo.
     */
    static void DisableMenuItem(bool bDisable);
    /** Fills the slots <<A>> and <<B>> of a translated template; slot texts are expanded in turn.
     */
    static std::string CombinateString(std::string strFormat, std::string strFirst,
                                       std::string strSecond);
    /** The built-in demo folder with a trailing slash, or an empty string when there is none. */
    static std::string GetDefaultPath();
    /** Whether the path is a directory. */
    static bool CheckPathExist(std::string strPath);
    /** Asks the application framework to end the program; returns at once. The only way out. */
    static void ExitApplication();

    // Language.cpp

    /** The suffix of subtitle files in the system language, e.g. "_EngUS"; empty if unknown. */
    static std::string GetSystemLanguage();

    // RemoteKeys.cpp

    /** Starts the virtual-key service and listens for input devices. */
    static void InitVirtualKey();
    /** Connects to the compositor's key router. */
    static void KeyRouterInitialize();
    /** Grabs every key for the surface but those the set keeps. @param pWlSurface may be null. */
    static void RegisterKeys(wl_surface *pWlSurface);
    /** Ends the virtual-key service and the grab. @param pWlSurface may be null. */
    static void UnregisterKeys(wl_surface *pWlSurface);
    /** An ENDEMO_KEY_TYPE for a key name. @param pKeyName may be null. */
    static int GetKeyType(const char *pKeyName);
    /** Ecore handler of ECORE_EVENT_DEVICE_ADD; the content is not scanned again. */
    static Eina_Bool m_OnDeviceAddCB(void *data, int iType, void *event);

    // Rotation.cpp

    /** Whether the set has a working rotator; asked of the set at each call. */
    static bool IsSupportRotator();
    static bool IsPortraitMode();
    static ENDEMO_ROTATION_TYPE GetWindowRotationType();
    static void SetWindowRotationType(ENDEMO_ROTATION_TYPE enType);
    /** Takes the orientation from the set's stored rotation state. @return whether it was read. */
    static bool InitWindowRotationType();
    /** Presses the key that turns the panel; the turn is reported by callbacks. */
    static void ChangePanelRotation();

  private:
    static ENDEMO_ROTATION_TYPE m_enCurRotationType;
};
