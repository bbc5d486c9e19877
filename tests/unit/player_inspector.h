/**
 * Sees into the controller: its fields and its private operations under their own names.
 */
#pragma once

#include <atomic>
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
    std::atomic<int> &m_iVideoPlayerState;
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

    // The callbacks, as the platform is given them. Of the event pipe and of timers.
    static constexpr auto m_OnHandleEcorePipeCB = &COstrelDemoPlayer::m_OnHandleEcorePipeCB;
    static constexpr auto m_OnDisclaimerTimeOutCB = &COstrelDemoPlayer::m_OnDisclaimerTimeOutCB;
    static constexpr auto m_OnZavoTimeOutCB = &COstrelDemoPlayer::m_OnZavoTimeOutCB;
    // Of the media player.
    static constexpr auto m_PlayerPreparedCB = &COstrelDemoPlayer::m_PlayerPreparedCB;
    // Of the photos.
    static constexpr auto m_OnStartSlideShowCB = &COstrelDemoPlayer::m_OnStartSlideShowCB;
    static constexpr auto m_OnPhotoPlayEndCB = &COstrelDemoPlayer::m_OnPhotoPlayEndCB;
    // Of the panel.
    static constexpr auto m_OnWindowRotationCB = &COstrelDemoPlayer::m_OnWindowRotationCB;
    static constexpr auto m_OnDisplayRotatorCB = &COstrelDemoPlayer::m_OnDisplayRotatorCB;
    static constexpr auto m_OnRotationDelayTimerCB = &COstrelDemoPlayer::m_OnRotationDelayTimerCB;
    // Of the keys.
    static constexpr auto m_OnECoreKeyDownCB = &COstrelDemoPlayer::m_OnECoreKeyDownCB;
    static constexpr auto m_OnGenlistKeyDownCB = &COstrelDemoPlayer::m_OnGenlistKeyDownCB;
    // Of the window.
    static constexpr auto m_OnWindowReSizeCB = &COstrelDemoPlayer::m_OnWindowReSizeCB;
    static constexpr auto m_OnWindowMouseDownCB = &COstrelDemoPlayer::m_OnWindowMouseDownCB;
    static constexpr auto m_OnWindowVisibilityChangeCB =
        &COstrelDemoPlayer::m_OnWindowVisibilityChangeCB;
    // Of the options.
    static constexpr auto m_OnDestroyPopTimerCB = &COstrelDemoPlayer::m_OnDestroyPopTimerCB;
    static constexpr auto m_OnButtonResponseCB = &COstrelDemoPlayer::m_OnButtonResponseCB;
    static constexpr auto m_OnCommonButtonMouseDownCB =
        &COstrelDemoPlayer::m_OnCommonButtonMouseDownCB;
    static constexpr auto m_GetTextCB = &COstrelDemoPlayer::m_GetTextCB;
    static constexpr auto m_OnItemDeletedCB = &COstrelDemoPlayer::m_OnItemDeletedCB;
    static constexpr auto m_OnItemSelectedCB = &COstrelDemoPlayer::m_OnItemSelectedCB;
    static constexpr auto m_OnGenListMouseInCB = &COstrelDemoPlayer::m_OnGenListMouseInCB;
    static constexpr auto m_OnGenListMouseDownCB = &COstrelDemoPlayer::m_OnGenListMouseDownCB;
    static constexpr auto m_OnSetFocusIdlerCB = &COstrelDemoPlayer::m_OnSetFocusIdlerCB;
};
