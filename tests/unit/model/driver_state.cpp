// What the real player and the fake set look like after a step, and what must always hold.

#include <algorithm>
#include <set>
#include <sstream>

#include "driver.h"
#include "platform.h"
#include "player/control/OstrelDemoPlayer.h"
#include "player_inspector.h"

namespace model {

namespace {

std::string joined(const std::vector<stPlayListItem> &list)
{
    std::string text;
    for (const stPlayListItem &entry : list)
        text += (entry.iType == 0 ? "v:" : "p:") + entry.strFileName + "/" + entry.strSubtitleName +
                " ";
    return text;
}

std::string joined(const std::vector<stItemData> &list)
{
    std::string text;
    for (const stItemData &row : list)
        text += std::to_string(row.iIndex) + "=" + row.strText + " ";
    return text;
}

std::string joined(Evas_Object *list)
{
    std::string text;
    if (list == nullptr)
        return text;
    for (const fake::Row *row : fake::platform().widgets.find("rows", list)->rows) {
        const auto *data = static_cast<const stItemData *>(row->data);
        text += std::to_string(data->iIndex) + "=" + data->strText + " ";
    }
    return text;
}

bool is_held(const std::string &what)
{
    const auto &held = fake::platform().held;
    return std::find(held.begin(), held.end(), what) != held.end();
}

bool follows(const std::string &key)
{
    const auto keys = fake::platform().store.watched();
    return std::find(keys.begin(), keys.end(), key) != keys.end();
}

bool shown(Evas_Object *object)
{
    return object != nullptr && fake::platform().widgets.visible(object);
}

// "popup#3" reads as "popup": the model does not count.
std::string without_numbers(const std::string &line)
{
    std::string text;
    for (size_t i = 0; i < line.size(); ++i) {
        if (line[i] != '#') {
            text += line[i];
            continue;
        }
        while (i + 1 < line.size() && std::isdigit(static_cast<unsigned char>(line[i + 1])) != 0)
            ++i;
    }
    return text;
}

// How things look, and what is set up once, is for the tests of the single files.
bool is_compared(const std::string &function)
{
    static const std::set<std::string> others = {"vconf_set_int",
                                                 "vconf_notify_key_changed",
                                                 "vconf_ignore_key_changed",
                                                 "ui_app_exit",
                                                 "ecore_timer_add",
                                                 "ecore_timer_del",
                                                 "ecore_idler_add",
                                                 "ecore_pipe_write",
                                                 "ecore_pipe_del",
                                                 "ecore_wl2_sync",
                                                 "VirtualKey_Send_KeyCode",
                                                 "app_context_manager_set_epop_block",
                                                 "app_context_manager_unset_epop_block",
                                                 "sound_manager_set_speaker_selection",
                                                 "evas_object_show",
                                                 "evas_object_hide",
                                                 "evas_object_del",
                                                 "evas_object_resize",
                                                 "elm_velt_popup_add",
                                                 "elm_velt_popup_toast_text_set",
                                                 "elm_velt_layout_add",
                                                 "elm_velt_genlist_add",
                                                 "elm_velt_imagebox_add",
                                                 "elm_velt_imagebox_file_set",
                                                 "elm_popup_timeout_set",
                                                 "elm_object_focus_set",
                                                 "elm_object_item_focus_set",
                                                 "elm_genlist_item_show",
                                                 "elm_config_mirrored_set",
                                                 "elm_language_set"};
    if (function.rfind("pictrel_", 0) == 0)
        return true;
    if (function.rfind("player_", 0) == 0)
        return function.find("_cb") == std::string::npos;
    return others.count(function) != 0;
}

} // namespace

std::vector<std::string> real_calls()
{
    std::vector<std::string> lines;
    for (const std::string &line : fake::platform().calls()) {
        if (is_compared(line.substr(0, line.find('('))))
            lines.push_back(without_numbers(line));
    }
    return lines;
}

State real_state(COstrelDemoPlayer *controller)
{
    fake::Platform &set = fake::platform();
    std::ostringstream config, timers;
    for (const auto &[key, value] : set.store.values)
        config << key << "=" << value << " ";
    for (const double interval : set.loop.timers())
        timers << interval << " ";
    State state = {
        {"configuration", config.str()},
        {"exit requests", std::to_string(set.app.exit_requests)},
        {"records on their way", std::to_string(set.loop.queued_records())},
        {"timers", timers.str()},
        {"idlers", std::to_string(set.loop.idlers())},
        {"follows demo_mode", yes_no(follows(DEMO_MODE))},
        {"follows use_mode", yes_no(follows(USE_MODE))},
        {"E-POP blocked", yes_no(is_held("pop-up block"))},
        {"sound route", std::to_string(set.system.sound_route)},
        {"panel", std::to_string(COstrelDemoUtil::GetWindowRotationType())},
        {"picture display", yes_no(set.pictures.display_ready)},
        {"controller", yes_no(controller != nullptr)},
    };
    if (controller == nullptr)
        return state;

    const CPlayerInspector player(*controller);
    const bool has_player = player.m_hPlayer != nullptr;
    const _pictrel_s *picture = player.m_pPicture;
    // Until the player has set its picture up, the library's own value stands there.
    const int mark = picture == nullptr                               ? 0
                     : picture->render_state == fake::Pictures::FRESH ? -1
                                                                      : picture->render_state;
    Evas_Object *image = player.m_pDisclaimerImageBox;
    state.insert(
        state.end(),
        {{"m_hPlayer", yes_no(has_player)},
         {"video state", has_player ? std::to_string(set.media.state) : ""},
         {"video preparing", yes_no(set.media.preparing())},
         {"video uri", set.media.uri},
         {"video subtitle", set.media.subtitle_path},
         {"video looping", yes_no(set.media.looping)},
         {"video rotation", std::to_string(set.media.rotation)},
         {"video rate", std::to_string(static_cast<double>(set.media.rate))},
         {"m_pPicture", yes_no(picture != nullptr)},
         {"picture mark", picture != nullptr ? std::to_string(mark) : ""},
         {"m_bRepeat", yes_no(player.m_bRepeat)},
         {"m_bFolderContentsPlayer", yes_no(player.m_bFolderContentsPlayer)},
         {"m_bSlideShowStarted", yes_no(player.m_bSlideShowStarted)},
         {"m_bUsbLocation", yes_no(player.m_bUsbLocation)},
         {"m_bRotationAutoMode", yes_no(player.m_bRotationAutoMode)},
         {"m_bRotating", yes_no(player.m_bRotating)},
         {"m_pPictureDisplay", yes_no(player.m_pPictureDisplay != 0)},
         {"m_iPlayIndex", std::to_string(player.m_iPlayIndex)},
         {"m_uiCurPlayIndex", std::to_string(player.m_uiCurPlayIndex)},
         {"m_iPlayingType", std::to_string(player.m_iPlayingType)},
         {"m_iVideoPlayerState", std::to_string(player.m_iVideoPlayerState)},
         {"m_strFolderPath", player.m_strFolderPath},
         {"m_strPlayPath", player.m_strPlayPath},
         {"m_strSubtitlePath", player.m_strSubtitlePath},
         {"m_vdcPlayList", joined(player.m_vdcPlayList)},
         {"m_vdcLandscapeVideos", joined(player.m_vdcLandscapeVideos)},
         {"m_vdcPortraitVideos", joined(player.m_vdcPortraitVideos)},
         {"m_vdcLandscapePhotos", joined(player.m_vdcLandscapePhotos)},
         {"m_vdcPortraitPhotos", joined(player.m_vdcPortraitPhotos)},
         {"m_vdcItemList", joined(player.m_vdcItemList)},
         {"m_pWindow", yes_no(player.m_pWindow != nullptr)},
         {"window shown", yes_no(shown(player.m_pWindow))},
         {"m_pPopup", yes_no(player.m_pPopup != nullptr)},
         {"popup shown", yes_no(shown(player.m_pPopup))},
         {"m_pPopupLayout", yes_no(player.m_pPopupLayout != nullptr)},
         {"m_pGenlist", yes_no(player.m_pGenlist != nullptr)},
         {"rows", joined(player.m_pGenlist)},
         {"focused row",
          std::to_string(player.m_pGenlist != nullptr ? set.widgets.focused_row(player.m_pGenlist)
                                                      : -1)},
         {"m_pNotificationLabel", yes_no(player.m_pNotificationLabel != nullptr)},
         {"toast text", player.m_pNotificationLabel != nullptr
                            ? set.widgets.text(player.m_pNotificationLabel)
                            : ""},
         {"m_pDisclaimerRootLayout", yes_no(player.m_pDisclaimerRootLayout != nullptr)},
         {"m_pDisclaimerImageBox", yes_no(image != nullptr)},
         {"disclaimer shown", yes_no(shown(player.m_pDisclaimerRootLayout) && shown(image))},
         {"disclaimer picture", image != nullptr ? set.widgets.file(image) : ""},
         {"m_pSlideShowTimer", yes_no(player.m_pSlideShowTimer != nullptr)},
         {"m_pPhotoPlayEndTimer", yes_no(player.m_pPhotoPlayEndTimer != nullptr)},
         {"m_pDestroyPopupTimer", yes_no(player.m_pDestroyPopupTimer != nullptr)},
         {"m_pDisclaimerTimer", yes_no(player.m_pDisclaimerTimer != nullptr)},
         {"m_pZavoTimer", yes_no(player.m_pZavoTimer != nullptr)},
         {"m_hRotationDelayTimer", yes_no(player.m_hRotationDelayTimer != nullptr)}});
    return state;
}

std::string broken_invariant(COstrelDemoPlayer *controller, bool popup_calls_failed)
{
    const fake::Platform &set = fake::platform();
    for (const char *passing : {"row-class", "open folder", "iterator"}) {
        if (set.registry.living(passing) != 0)
            return std::string("not released: ") + passing;
    }
    if (const auto texts = set.texts.held(); !texts.empty())
        return "not released: " + texts.front();
    if (controller == nullptr)
        return "";

    const CPlayerInspector player(*controller);
    // The end timer of the photos keeps its value when timed rotation takes over; nobody reads it.
    const std::vector<std::pair<const char *, const void *>> handles = {
        {"m_pWindow", player.m_pWindow},
        {"m_pPopup", player.m_pPopup},
        {"m_pPopupLayout", player.m_pPopupLayout},
        {"m_pGenlist", player.m_pGenlist},
        {"m_pNotificationLabel", player.m_pNotificationLabel},
        {"m_pDisclaimerRootLayout", player.m_pDisclaimerRootLayout},
        {"m_pDisclaimerImageBox", player.m_pDisclaimerImageBox},
        {"m_pSlideShowTimer", player.m_pSlideShowTimer},
        {"m_pDestroyPopupTimer", player.m_pDestroyPopupTimer},
        {"m_pZavoTimer", player.m_pZavoTimer},
        {"m_pDisclaimerTimer", player.m_pDisclaimerTimer},
        {"m_hRotationDelayTimer", player.m_hRotationDelayTimer},
        {"m_pKeyDownHandler", player.m_pKeyDownHandler},
        {"m_pWlSurface", player.m_pWlSurface},
        {"m_pWlWindow", player.m_pWlWindow},
        {"m_hPlayer", player.m_hPlayer},
        {"m_pPicture", player.m_pPicture},
    };
    for (const auto &[name, handle] : handles) {
        if (handle != nullptr && !set.registry.alive(handle))
            return std::string(name) + " points to " + set.registry.describe(handle) +
                   ", which is gone";
    }

    const int popups = set.registry.living("popup");
    const int owned = (player.m_pPopup != nullptr) + (player.m_pNotificationLabel != nullptr);
    if (popups != owned)
        return std::to_string(popups) + " popups and toasts, but " + std::to_string(owned) +
               " known to the player";
    if (!popup_calls_failed && is_held("pop-up block") != shown(player.m_pPopup))
        return "the set's own pop-ups are blocked without the popup, or not blocked with it";

    const bool starts = set.transcript.count("player_set_uri") != 0 ||
                        set.transcript.count("pictrel_create_from_url") != 0;
    if (starts && player.m_uiCurPlayIndex >= player.m_vdcPlayList.size())
        return "an entry beside the list is played";
    return "";
}

std::string leftover(bool popup_failed)
{
    const fake::Platform &set = fake::platform();
    for (const char *kind : {"player", "picture", "pipe", "popup", "window", "key-down handler",
                             "row-class", "open folder", "iterator"}) {
        if (set.registry.living(kind) != 0)
            return std::string("held after the end: ") + kind;
    }
    for (const char *kind : {"genlist", "button", "row"}) {
        if (!popup_failed && set.registry.living(kind) != 0)
            return std::string("held after the end: ") + kind;
    }
    if (!set.texts.held().empty())
        return "held after the end: " + set.texts.held().front();
    return set.rotator.callback == nullptr ? "" : "held after the end: the rotator callback";
}

} // namespace model
