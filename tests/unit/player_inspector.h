/**
 * Sees into the controller: its fields and its private operations under their own names.
 */
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "player/control/OstrelDemoPlayer.h"

class CPlayerInspector {
    COstrelDemoPlayer &player_;

  public:
    explicit CPlayerInspector(COstrelDemoPlayer &player)
        : player_(player), m_bRepeat(player.m_bRepeat),
          m_bFolderContentsPlayer(player.m_bFolderContentsPlayer),
          m_bSlideShowStarted(player.m_bSlideShowStarted), m_bUsbLocation(player.m_bUsbLocation),
          m_bRotationAutoMode(player.m_bRotationAutoMode), m_bRotating(player.m_bRotating),
          m_pPictureDisplay(player.m_pPictureDisplay), m_iPlayIndex(player.m_iPlayIndex),
          m_uiCurPlayIndex(player.m_uiCurPlayIndex), m_iPlayingType(player.m_iPlayingType),
          m_iVideoPlayerState(player.m_iVideoPlayerState), m_strFolderPath(player.m_strFolderPath),
          m_strPlayPath(player.m_strPlayPath), m_strSubtitlePath(player.m_strSubtitlePath),
          m_pWindow(player.m_pWindow), m_pPopup(player.m_pPopup),
          m_pPopupLayout(player.m_pPopupLayout), m_pGenlist(player.m_pGenlist),
          m_pNotificationLabel(player.m_pNotificationLabel),
          m_pDisclaimerRootLayout(player.m_pDisclaimerRootLayout),
          m_pDisclaimerImageBox(player.m_pDisclaimerImageBox),
          m_pSlideShowTimer(player.m_pSlideShowTimer),
          m_pPhotoPlayEndTimer(player.m_pPhotoPlayEndTimer),
          m_pDestroyPopupTimer(player.m_pDestroyPopupTimer), m_pZavoTimer(player.m_pZavoTimer),
          m_pDisclaimerTimer(player.m_pDisclaimerTimer),
          m_hRotationDelayTimer(player.m_hRotationDelayTimer),
          m_pKeyDownHandler(player.m_pKeyDownHandler), m_pWlSurface(player.m_pWlSurface),
          m_pWlWindow(player.m_pWlWindow), m_hPlayer(player.m_hPlayer),
          m_pPicture(player.m_pPicture), m_hUsbDeviceList(player.m_hUsbDeviceList),
          m_vdcItemList(player.m_vdcItemList), m_vdcPlayList(player.m_vdcPlayList),
          m_vdcLandscapeVideos(player.m_vdcLandscapeVideos),
          m_vdcPortraitVideos(player.m_vdcPortraitVideos),
          m_vdcLandscapePhotos(player.m_vdcLandscapePhotos),
          m_vdcPortraitPhotos(player.m_vdcPortraitPhotos)
    {
    }

    bool &m_bRepeat;
    bool &m_bFolderContentsPlayer;
    bool &m_bSlideShowStarted;
    bool &m_bUsbLocation;
    bool &m_bRotationAutoMode;
    bool &m_bRotating;
    int &m_pPictureDisplay;
    int &m_iPlayIndex;
    unsigned int &m_uiCurPlayIndex;
    int &m_iPlayingType;
    int &m_iVideoPlayerState;
    std::string &m_strFolderPath;
    std::string &m_strPlayPath;
    std::string &m_strSubtitlePath;
    Evas_Object *&m_pWindow;
    Evas_Object *&m_pPopup;
    Evas_Object *&m_pPopupLayout;
    Evas_Object *&m_pGenlist;
    Evas_Object *&m_pNotificationLabel;
    Evas_Object *&m_pDisclaimerRootLayout;
    Evas_Object *&m_pDisclaimerImageBox;
    Ecore_Timer *&m_pSlideShowTimer;
    Ecore_Timer *&m_pPhotoPlayEndTimer;
    Ecore_Timer *&m_pDestroyPopupTimer;
    Ecore_Timer *&m_pZavoTimer;
    Ecore_Timer *&m_pDisclaimerTimer;
    Ecore_Timer *&m_hRotationDelayTimer;
    Ecore_Event_Handler *&m_pKeyDownHandler;
    wl_surface *&m_pWlSurface;
    Ecore_Wl2_Window *&m_pWlWindow;
    player_h &m_hPlayer;
    _pictrel_s *&m_pPicture;
    usb_device_list_h &m_hUsbDeviceList;
    std::vector<stItemData> &m_vdcItemList;
    std::vector<stPlayListItem> &m_vdcPlayList;
    std::vector<stPlayListItem> &m_vdcLandscapeVideos;
    std::vector<stPlayListItem> &m_vdcPortraitVideos;
    std::vector<stPlayListItem> &m_vdcLandscapePhotos;
    std::vector<stPlayListItem> &m_vdcPortraitPhotos;

    bool Create(stFolderInfo &stInfo, bool bFolderContentsPlayer, bool bRepeat)
    {
        return player_.Create(stInfo, bFolderContentsPlayer, bRepeat);
    }
    int StartDemoPlayer() { return player_.StartDemoPlayer(); }
    void ReleaseResource() { player_.ReleaseResource(); }
    int GetPlayingType(int iIndex) { return player_.GetPlayingType(iIndex); }
    void SetRepeatOption(bool bRepeat) { player_.SetRepeatOption(bRepeat); }
    bool OnPlayVideo(std::string strUri, std::string strSubtitlePath)
    {
        return player_.OnPlayVideo(std::move(strUri), std::move(strSubtitlePath));
    }
    void StopVideo() { player_.StopVideo(); }
    bool OnPause() { return player_.OnPause(); }
    bool OnResume() { return player_.OnResume(); }
    bool OnResumeOrPause() { return player_.OnResumeOrPause(); }
    bool OnPlayPhoto(std::string strPath) { return player_.OnPlayPhoto(std::move(strPath)); }
    void DecodePicture(_pictrel_s *pPicture) { player_.DecodePicture(pPicture); }
    void RenderPicture(_pictrel_s *pPicture) { player_.RenderPicture(pPicture); }
    void StartSlideShow() { player_.StartSlideShow(); }
    void StopSlideShow() { player_.StopSlideShow(); }
    bool DestroyPopup() { return player_.DestroyPopup(); }
    std::string m_GetFolderPath() { return player_.m_GetFolderPath(); }
    std::string m_GetPlaybackFolderPath() { return player_.m_GetPlaybackFolderPath(); }
    std::string m_GetResourcePath(std::string strName)
    {
        return player_.m_GetResourcePath(std::move(strName));
    }
    void m_SetFileMode(ENDEMO_FILE_MODE eMode, int iMenuType)
    {
        player_.m_SetFileMode(eMode, iMenuType);
    }
    int m_GetFileMode(ENDEMO_FILE_MODE eMode) { return player_.m_GetFileMode(eMode); }
    void m_CreatePlayList() { player_.m_CreatePlayList(); }
    int m_InitPlayList() { return player_.m_InitPlayList(); }
    bool m_PlayContents() { return player_.m_PlayContents(); }
    bool m_PlayNextFile() { return player_.m_PlayNextFile(); }
    bool m_PlayPreviousFile() { return player_.m_PlayPreviousFile(); }
    bool m_CreateVideoPlayer() { return player_.m_CreateVideoPlayer(); }
    void m_DestroyVideo() { player_.m_DestroyVideo(); }
    int m_GetPlayerState() { return player_.m_GetPlayerState(); }
    int m_GetPlayBackStatus() { return player_.m_GetPlayBackStatus(); }
    bool m_SetTrickSpeed(double dSpeed) { return player_.m_SetTrickSpeed(dSpeed); }
    bool m_Forward() { return player_.m_Forward(); }
    bool m_Rewind() { return player_.m_Rewind(); }
    void m_DestroyPhoto() { player_.m_DestroyPhoto(); }
    bool m_ChangeRotationType() { return player_.m_ChangeRotationType(); }
    void m_ResetVideoRotation() { player_.m_ResetVideoRotation(); }
    bool m_CreateWindow() { return player_.m_CreateWindow(); }
    void m_ActivateWindow() { player_.m_ActivateWindow(); }
    void m_DeactiveWindow() { player_.m_DeactiveWindow(); }
    void m_CreateDisclaimer() { player_.m_CreateDisclaimer(); }
    void m_ShowDisclaimer() { player_.m_ShowDisclaimer(); }
    void m_HideDisclaimer() { player_.m_HideDisclaimer(); }
    void m_DestroyDisclaimer() { player_.m_DestroyDisclaimer(); }
    bool m_InitItemList() { return player_.m_InitItemList(); }
    bool m_CreatePopUp() { return player_.m_CreatePopUp(); }
    Elm_Object_Item *m_GetRecentlySelectedItem(Evas_Object *pGenlist)
    {
        return player_.m_GetRecentlySelectedItem(pGenlist);
    }
    void m_SelectSoundSpeaker() { player_.m_SelectSoundSpeaker(); }
    bool m_UpdateNotificationLabel(std::string strContent)
    {
        return player_.m_UpdateNotificationLabel(std::move(strContent));
    }
    void m_ShowPopup(ENDEMO_ROTATION_STATUS enZavoMode, int iTimerIndex)
    {
        player_.m_ShowPopup(enZavoMode, iTimerIndex);
    }
    void m_CreateRotationOnOffLabel() { player_.m_CreateRotationOnOffLabel(); }
    void m_UpdateZavoTimer() { player_.m_UpdateZavoTimer(); }

    /** Whether the process has started playback once. */
    static bool &bStarted() { return COstrelDemoPlayer::bStarted; }

    static void m_OnHandleEcorePipeCB(void *data, void *buffer, unsigned int nbyte)
    {
        COstrelDemoPlayer::m_OnHandleEcorePipeCB(data, buffer, nbyte);
    }
    static void m_PlayerPreparedCB(void *data) { COstrelDemoPlayer::m_PlayerPreparedCB(data); }
    static void m_OnPlayerCompletedCB(void *data)
    {
        COstrelDemoPlayer::m_OnPlayerCompletedCB(data);
    }
    static void m_OnInterruptedCB(player_interrupted_code_e enCode, void *data)
    {
        COstrelDemoPlayer::m_OnInterruptedCB(enCode, data);
    }
    static void m_OnPlayerPrepareErrorCB(int iErrorCode, void *data)
    {
        COstrelDemoPlayer::m_OnPlayerPrepareErrorCB(iErrorCode, data);
    }
    static void m_OnSubTitleUpdateCB(unsigned long ulDuration, void *pSubtitle, unsigned int uiType,
                                     unsigned int uiAttributeCount, MMSubAttribute **ppAttributes,
                                     void *data)
    {
        COstrelDemoPlayer::m_OnSubTitleUpdateCB(ulDuration, pSubtitle, uiType, uiAttributeCount,
                                                ppAttributes, data);
    }
    static Eina_Bool m_OnStartSlideShowCB(void *data)
    {
        return COstrelDemoPlayer::m_OnStartSlideShowCB(data);
    }
    static Eina_Bool m_OnPhotoPlayEndCB(void *data)
    {
        return COstrelDemoPlayer::m_OnPhotoPlayEndCB(data);
    }
    static void m_OnParseEventCB(void *data, pictrel_event_type_e enType,
                                 pictrel_event_result_e enResult)
    {
        COstrelDemoPlayer::m_OnParseEventCB(data, enType, enResult);
    }
    static void m_OnDecodeEventCB(void *data, pictrel_event_type_e enType,
                                  pictrel_event_result_e enResult)
    {
        COstrelDemoPlayer::m_OnDecodeEventCB(data, enType, enResult);
    }
    static void m_OnPhotoResourceConflictEventCB(void *data, pictrel_event_type_e enType,
                                                 pictrel_event_result_e enResult)
    {
        COstrelDemoPlayer::m_OnPhotoResourceConflictEventCB(data, enType, enResult);
    }
    static void m_OnWindowRotationCB(void *data, Evas_Object *pWindow, void *event_info)
    {
        COstrelDemoPlayer::m_OnWindowRotationCB(data, pWindow, event_info);
    }
    static int m_OnDisplayRotatorCB(display_rotator_status_t *pStatus, void *data)
    {
        return COstrelDemoPlayer::m_OnDisplayRotatorCB(pStatus, data);
    }
    static Eina_Bool m_OnRotationDelayTimerCB(void *data)
    {
        return COstrelDemoPlayer::m_OnRotationDelayTimerCB(data);
    }
    static Eina_Bool m_OnECoreKeyDownCB(void *data, int iType, void *event)
    {
        return COstrelDemoPlayer::m_OnECoreKeyDownCB(data, iType, event);
    }
    static void m_OnGenlistKeyDownCB(void *data, Evas *pEvas, Evas_Object *pObject,
                                     void *event_info)
    {
        COstrelDemoPlayer::m_OnGenlistKeyDownCB(data, pEvas, pObject, event_info);
    }
    static void m_OnWindowReSizeCB(void *data, Evas *pEvas, Evas_Object *pObject, void *event_info)
    {
        COstrelDemoPlayer::m_OnWindowReSizeCB(data, pEvas, pObject, event_info);
    }
    static void m_OnWindowMouseDownCB(void *data, Evas *pEvas, Evas_Object *pObject,
                                      void *event_info)
    {
        COstrelDemoPlayer::m_OnWindowMouseDownCB(data, pEvas, pObject, event_info);
    }
    static void m_OnWindowVisibilityChangeCB(void *data, Evas_Object *pObject, void *event_info)
    {
        COstrelDemoPlayer::m_OnWindowVisibilityChangeCB(data, pObject, event_info);
    }
    static Eina_Bool m_OnDisclaimerTimeOutCB(void *data)
    {
        return COstrelDemoPlayer::m_OnDisclaimerTimeOutCB(data);
    }
    static Eina_Bool m_OnDestroyPopTimerCB(void *data)
    {
        return COstrelDemoPlayer::m_OnDestroyPopTimerCB(data);
    }
    static void m_OnButtonResponseCB(void *data, Evas_Object *pObject, void *event_info)
    {
        COstrelDemoPlayer::m_OnButtonResponseCB(data, pObject, event_info);
    }
    static void m_OnCommonButtonMouseInCB(void *data, Evas *pEvas, Evas_Object *pObject,
                                          void *event_info)
    {
        COstrelDemoPlayer::m_OnCommonButtonMouseInCB(data, pEvas, pObject, event_info);
    }
    static void m_OnCommonButtonMouseDownCB(void *data, Evas *pEvas, Evas_Object *pObject,
                                            void *event_info)
    {
        COstrelDemoPlayer::m_OnCommonButtonMouseDownCB(data, pEvas, pObject, event_info);
    }
    static char *m_GetTextCB(void *data, Evas_Object *pObject, const char *part)
    {
        return COstrelDemoPlayer::m_GetTextCB(data, pObject, part);
    }
    static void m_OnItemDeletedCB(void *data, Evas_Object *pObject)
    {
        COstrelDemoPlayer::m_OnItemDeletedCB(data, pObject);
    }
    static void m_OnItemSelectedCB(void *data, Evas_Object *pObject, void *event_info)
    {
        COstrelDemoPlayer::m_OnItemSelectedCB(data, pObject, event_info);
    }
    static void m_OnGenglistShow(void *data, Evas *pEvas, Evas_Object *pObject, void *event_info)
    {
        COstrelDemoPlayer::m_OnGenglistShow(data, pEvas, pObject, event_info);
    }
    static void m_OnGenListMouseInCB(void *data, Evas *pEvas, Evas_Object *pObject,
                                     void *event_info)
    {
        COstrelDemoPlayer::m_OnGenListMouseInCB(data, pEvas, pObject, event_info);
    }
    static void m_OnGenListMouseDownCB(void *data, Evas *pEvas, Evas_Object *pObject,
                                       void *event_info)
    {
        COstrelDemoPlayer::m_OnGenListMouseDownCB(data, pEvas, pObject, event_info);
    }
    static Eina_Bool m_OnSetFocusIdlerCB(void *data)
    {
        return COstrelDemoPlayer::m_OnSetFocusIdlerCB(data);
    }
    static Eina_Bool m_OnZavoTimeOutCB(void *data)
    {
        return COstrelDemoPlayer::m_OnZavoTimeOutCB(data);
    }
};
