/**
 * The controller: owns the window, the media player, the picture, the play lists, the popup and the
 * timers, and acts on every event. The application shell makes the one instance at the first launch
 * request and destroys it when the program ends. Everything runs on the main loop, but for the
 * media player's and the picture library's callbacks: they log, at most set one field, and post an
 * event or ask for the program's end.
 *
 * The operations are spread over the files named below by topic.
 */
#pragma once

#include <atomic>
#include <string>
#include <vector>

#include <Ecore.h>
#include <Elementary.h>

#include "display_rotator.h"
#include "efl_on_tv.h"
#include "media_player.h"
#include "player/util/OstrelDemoUtil.h"
#include "still_picture.h"
#include "usb_storage.h"

/** What a launch request says about the content. */
struct stFolderInfo {
    bool bUsbLocation = false; /**< the folder is on a USB stick */
    std::string strFolderPath;
};

/** One entry of a play list. */
struct stPlayListItem {
    int iType = 0;               /**< 0 video, 1 photo */
    std::string strFileName;     /**< without the folder */
    std::string strSubtitleName; /**< without the folder; empty when there is none */
};

/** One row of the options popup. */
struct stItemData {
    int iIndex = 0; /**< menu selection: -1 leave, 0 play all, k only entry k counted from 1 */
    std::string strText;
};

/** Which half of the stored menu selection is meant. */
enum ENDEMO_FILE_MODE : int {
    ENDEMO_FILE_MODE_CURRENT = 0,   /**< the panel's present orientation */
    ENDEMO_FILE_MODE_LANDSCAPE = 1, /**< bits 0-7 */
    ENDEMO_FILE_MODE_PORTRAIT = 2,  /**< bits 8-15 */
};

/** Events of the pipe. 6 and 9 are reserved. */
enum ENDEMO_EVENT {
    ENDEMO_EVENT_PLAYER_ERROR = 1,
    ENDEMO_EVENT_PLAYER_COMPLETED = 2,
    ENDEMO_EVENT_PLAYER_PREPARED = 3,
    ENDEMO_EVENT_PHOTO_PARSED = 4,  /**< parameter: parse result */
    ENDEMO_EVENT_PHOTO_DECODED = 5, /**< parameter: decode result */
    ENDEMO_EVENT_ITEM_SELECTED = 7,
    ENDEMO_EVENT_KEY = 8, /**< parameter: an ENDEMO_KEY_TYPE */
    ENDEMO_EVENT_WINDOW_ROTATED = 10,
};

/** Values of the play-back status key. */
enum ENDEMO_PLAYBACK_STATUS {
    PLAYBACK_STATUS_STOPPED = 0,
    PLAYBACK_STATUS_PLAYING = 1,
    PLAYBACK_STATUS_NO_CONTENT = 2,
    PLAYBACK_STATUS_ERROR = 3,
};

/** Kinds of play-list entries. */
enum ENDEMO_PLAYING_TYPE {
    PLAYING_TYPE_VIDEO = 0,
    PLAYING_TYPE_PHOTO = 1,
};

/** How far the media player is with a video. */
enum ENDEMO_VIDEO_STATE {
    VIDEO_STATE_STOPPED = 0,
    VIDEO_STATE_PREPARING = 1,
    VIDEO_STATE_PREPARED = 2,
};

class COstrelDemoPlayer {
  public:
    COstrelDemoPlayer();
    ~COstrelDemoPlayer();
    COstrelDemoPlayer(const COstrelDemoPlayer &) = delete;
    COstrelDemoPlayer &operator=(const COstrelDemoPlayer &) = delete;

    // OstrelDemoPlayer.cpp: life

    /**
     * Sets everything up; playback starts when the window first becomes visible.
     *
     * @return false when there is no video player or nothing to play; the program is to be ended
     */
    bool Create(stFolderInfo &stInfo, bool bFolderContentsPlayer, bool bRepeat);

    /**
     * Starts, or starts anew, from the stored menu selection, or turns the panel first, so that its
     * events start later.
     *
     * @return 1 when an entry was accepted by its player or the selection is to leave, so that the
     *         program was asked to end; 0 when nothing was started
     */
    int StartDemoPlayer();

    /** Closes the popup and lets go of the video and the photo. */
    void ReleaseResource();

    // PlaySequence.cpp

    /** Kind of an entry, or -1 when the index is outside the list. */
    int GetPlayingType(int iIndex);
    void SetRepeatOption(bool bRepeat);

    // VideoPlayback.cpp

    /** @return false when the file was refused at once. */
    bool OnPlayVideo(std::string strUri, std::string strSubtitlePath);
    void StopVideo();
    bool OnPause();
    bool OnResume();
    bool OnResumeOrPause();

    // PhotoPlayback.cpp

    /** @return false when the file was refused at once. */
    bool OnPlayPhoto(std::string strPath);
    void DecodePicture(_pictrel_s *pPicture);
    void RenderPicture(_pictrel_s *pPicture);
    void StartSlideShow();
    void StopSlideShow();

    // OptionsPopup.cpp

    /** Closes an open popup; its objects go half a second later. @return whether one was open. */
    bool DestroyPopup();

    // EventDispatcher.cpp

    /** The one handler of the event pipe. @param data the controller. */
    static void m_OnHandleEcorePipeCB(void *data, void *buffer, unsigned int nbyte);

  private:
    /** The unit tests look at the fields and call single operations through this class. */
    friend class CPlayerInspector;

    // EventDispatcher.cpp
    void m_HandleEvent(int iEventID, int iParam1);
    void m_HandlePlayerError();
    void m_HandlePlayerCompleted();
    void m_HandlePlayerPrepared();
    void m_HandlePhotoParsed(int iResult);
    void m_HandlePhotoDecoded(int iResult);
    void m_HandleItemSelected();
    void m_HandleWindowRotated();
    void m_StorePanelOrientation();

    // RemoteKeyActions.cpp: the dispatcher's side of a key press
    void m_HandleKey(int iKeyType);
    void m_HandleBackKey();
    void m_HandleEnterKey();
    void m_HandlePlayKey();
    void m_HandlePauseKey();
    void m_HandleStopKey();
    void m_HandleStepKey(bool bNext);

    // ContentLocation.cpp
    std::string m_GetFolderPath();
    std::string m_GetPlaybackFolderPath();
    std::string m_GetResourcePath(std::string strName);
    void m_SetFileMode(ENDEMO_FILE_MODE eMode, int iMenuType);
    int m_GetFileMode(ENDEMO_FILE_MODE eMode);

    // PlayList.cpp
    void m_CreatePlayList();
    int m_InitPlayList();
    void m_SortFile(const char *pName, const char *pVideoExtensions,
                    std::vector<std::string> &vdcSubtitles);
    bool m_HasContent(bool bPortrait);
    int m_RequestRotation(bool bToPortrait, int iMode);

    // PlaySequence.cpp
    bool m_PlayContents();
    bool m_PlayNextFile();
    bool m_PlayPreviousFile();
    bool m_IsPlayListEmpty();
    void m_SetFolderPaths();
    void m_AppendEntryNames();
    bool m_PlayCurrentEntry();
    void m_SwitchPlayingType(int iType);
    bool m_PlayPaths();
    int m_GetCurrentType();

    // VideoPlayback.cpp
    bool m_CreateVideoPlayer();
    void m_DestroyVideo();
    void m_SetLooping();
    int m_GetPlayerState();
    int m_GetPlayBackStatus();
    bool m_SetTrickSpeed(double dSpeed);
    bool m_StartAtNormalSpeed();
    bool m_PauseAtNormalSpeed();
    bool m_Forward();
    bool m_Rewind();
    static void m_PlayerPreparedCB(void *data);
    static void m_OnPlayerCompletedCB(void *data);
    static void m_OnInterruptedCB(player_interrupted_code_e enCode, void *data);
    static void m_OnPlayerPrepareErrorCB(int iErrorCode, void *data);
    static void m_OnSubTitleUpdateCB(unsigned long ulDuration, void *pSubtitle, unsigned int uiType,
                                     unsigned int uiAttributeCount, MMSubAttribute **ppAttributes,
                                     void *data);

    // PhotoPlayback.cpp
    void m_DestroyPhoto();
    bool m_InitPictureDisplay();
    static Eina_Bool m_OnStartSlideShowCB(void *data);
    static Eina_Bool m_OnPhotoPlayEndCB(void *data);
    static void m_OnParseEventCB(void *data, pictrel_event_type_e enType,
                                 pictrel_event_result_e enResult);
    static void m_OnDecodeEventCB(void *data, pictrel_event_type_e enType,
                                  pictrel_event_result_e enResult);
    static void m_OnPhotoResourceConflictEventCB(void *data, pictrel_event_type_e enType,
                                                 pictrel_event_result_e enResult);

    // PanelRotation.cpp
    bool m_ChangeRotationType();
    void m_ResetVideoRotation();
    static void m_OnWindowRotationCB(void *data, Evas_Object *pWindow, void *event_info);
    static int m_OnDisplayRotatorCB(display_rotator_status_t *pStatus, void *data);
    static Eina_Bool m_OnRotationDelayTimerCB(void *data);

    // RemoteKeyCallbacks.cpp
    static Eina_Bool m_OnECoreKeyDownCB(void *data, int iType, void *event);
    static void m_OnGenlistKeyDownCB(void *data, Evas *pEvas, Evas_Object *pObject,
                                     void *event_info);

    // MainWindow.cpp
    bool m_CreateWindow();
    void m_ActivateWindow();
    void m_DeactiveWindow();
    static void m_OnWindowReSizeCB(void *data, Evas *pEvas, Evas_Object *pObject, void *event_info);
    static void m_OnWindowMouseDownCB(void *data, Evas *pEvas, Evas_Object *pObject,
                                      void *event_info);
    static void m_OnWindowVisibilityChangeCB(void *data, Evas_Object *pObject, void *event_info);

    // Disclaimer.cpp
    void m_CreateDisclaimer();
    void m_ShowDisclaimer();
    void m_HideDisclaimer();
    void m_DestroyDisclaimer();
    static Eina_Bool m_OnDisclaimerTimeOutCB(void *data);

    // OptionsPopup.cpp: building and tearing down
    bool m_InitItemList();
    bool m_CreatePopUp();
    void m_CreatePopupList();
    void m_AppendPopupRows(Elm_Genlist_Item_Class *pItemClass);
    void m_CreatePopupButton();
    static Eina_Bool m_OnDestroyPopTimerCB(void *data);
    static void m_OnButtonResponseCB(void *data, Evas_Object *pObject, void *event_info);
    static void m_OnCommonButtonMouseInCB(void *data, Evas *pEvas, Evas_Object *pObject,
                                          void *event_info);
    static void m_OnCommonButtonMouseDownCB(void *data, Evas *pEvas, Evas_Object *pObject,
                                            void *event_info);

    // OptionsList.cpp: the popup's rows, focus and choice; the sound output
    Elm_Object_Item *m_GetRecentlySelectedItem(Evas_Object *pGenlist);
    void m_ChooseEntry(int iIndex);
    void m_SelectSoundSpeaker();
    static char *m_GetTextCB(void *data, Evas_Object *pObject, const char *part);
    static void m_OnItemDeletedCB(void *data, Evas_Object *pObject);
    static void m_OnItemSelectedCB(void *data, Evas_Object *pObject, void *event_info);
    static void m_OnGenglistShow(void *data, Evas *pEvas, Evas_Object *pObject, void *event_info);
    static void m_OnGenListMouseInCB(void *data, Evas *pEvas, Evas_Object *pObject,
                                     void *event_info);
    static void m_OnGenListMouseDownCB(void *data, Evas *pEvas, Evas_Object *pObject,
                                       void *event_info);
    static Eina_Bool m_OnSetFocusIdlerCB(void *data);

    // RotationTimer.cpp
    void m_HandleRotationOnOffKey();
    void m_HandleTimerKey(ENDEMO_ROTATION_STATUS enStatus);
    void m_HandleTimerResetKey();
    bool m_UpdateNotificationLabel(std::string strContent);
    void m_ShowPopup(ENDEMO_ROTATION_STATUS enZavoMode, int iTimerIndex);
    void m_CreateRotationOnOffLabel();
    void m_UpdateZavoTimer();
    static Eina_Bool m_OnZavoTimeOutCB(void *data);

    /** Playback was started by the window once in this process; a second controller does not. */
    static bool bStarted;

    bool m_bRepeat = true;                /**< off: ends once a video has played to its end */
    bool m_bFolderContentsPlayer = false; /**< plays a chosen folder; rewind and forward keys on */
    bool m_bSlideShowStarted = false;
    bool m_bUsbLocation = false;
    bool m_bRotationAutoMode = false; /**< timed rotation on */
    bool m_bRotating = false;         /**< the panel is turning */
    int m_pPictureDisplay = 0;        /**< 1 once the picture display was initialised */
    int m_iPlayIndex = -1;            /**< menu selection: -1 none yet, 0 all, n only entry n */
    unsigned int m_uiCurPlayIndex = 0;
    int m_iPlayingType = PLAYING_TYPE_VIDEO; /**< kind of what is on screen */
    /** An ENDEMO_VIDEO_STATE. The media player's thread writes it as well. */
    std::atomic<int> m_iVideoPlayerState{VIDEO_STATE_STOPPED};
    std::string m_strFolderPath;
    std::string m_strPlayPath;     /**< full path of the current file */
    std::string m_strSubtitlePath; /**< full path of its subtitle, or empty */
    Evas_Object *m_pWindow = nullptr;
    Evas_Object *m_pPopup = nullptr;
    Evas_Object *m_pPopupLayout = nullptr;
    Evas_Object *m_pGenlist = nullptr;
    Evas_Object *m_pNotificationLabel = nullptr;
    Evas_Object *m_pDisclaimerRootLayout = nullptr;
    Evas_Object *m_pDisclaimerImageBox = nullptr;
    Ecore_Timer *m_pSlideShowTimer = nullptr;
    Ecore_Timer *m_pPhotoPlayEndTimer = nullptr;
    Ecore_Timer *m_pDestroyPopupTimer = nullptr;
    Ecore_Timer *m_pZavoTimer = nullptr; /**< timed rotation */
    Ecore_Timer *m_pDisclaimerTimer = nullptr;
    Ecore_Timer *m_hRotationDelayTimer = nullptr;
    Ecore_Event_Handler *m_pKeyDownHandler = nullptr;
    wl_surface *m_pWlSurface = nullptr; /**< the window's, owned by Ecore */
    Ecore_Wl2_Window *m_pWlWindow = nullptr;
    player_h m_hPlayer = nullptr;
    _pictrel_s *m_pPicture = nullptr;
    usb_device_list_h m_hUsbDeviceList = nullptr; /**< kept by the platform */
    std::vector<stItemData> m_vdcItemList;
    std::vector<stPlayListItem> m_vdcPlayList;
    std::vector<stPlayListItem> m_vdcLandscapeVideos;
    std::vector<stPlayListItem> m_vdcPortraitVideos;
    std::vector<stPlayListItem> m_vdcLandscapePhotos;
    std::vector<stPlayListItem> m_vdcPortraitPhotos;
};
