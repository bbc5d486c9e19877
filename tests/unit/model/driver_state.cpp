// What the real player and the fake set look like after a step beside what the model has, and what
// must always hold.

#include <algorithm>
#include <set>
#include <sstream>

#include "driver.h"
#include "platform.h"
#include "player/control/OstrelDemoPlayer.h"
#include "player_inspector.h"

namespace model {

namespace {

std::string line_of(const stPlayListItem &entry)
{
    return (entry.iType == 0 ? "v:" : "p:") + entry.strFileName + "/" + entry.strSubtitleName;
}

std::string line_of(const Entry &entry)
{
    return (entry.type == 0 ? "v:" : "p:") + entry.name + "/" + entry.subtitle;
}

std::string line_of(const stItemData &row)
{
    return std::to_string(row.iIndex) + "=" + row.strText;
}

std::string line_of(const Row &row)
{
    return std::to_string(row.first) + "=" + row.second;
}

std::string line_of(const std::pair<const std::string, int> &key)
{
    return key.first + "=" + std::to_string(key.second);
}

template <class List> std::string joined(const List &list)
{
    std::string text;
    for (const auto &entry : list)
        text += line_of(entry) + " ";
    return text;
}

std::string joined(Evas_Object *list)
{
    std::string text;
    if (list == nullptr)
        return text;
    for (const fake::Row *row : fake::platform().widgets.find("rows", list)->rows)
        text += line_of(*static_cast<const stItemData *>(row->data)) + " ";
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

std::string state_difference(COstrelDemoPlayer *controller, const Model &model)
{
    const fake::Platform &set = fake::platform();
    const ExpectedSet &expected = model.set;
    std::ostringstream text, timers, expected_timers;
    text << std::boolalpha;
    const auto row = [&text](const char *name, const auto &is, const auto &should) {
        if (is != should)
            text << name << " is [" << is << "], expected [" << should << "]\n";
    };
    for (const double interval : set.loop.timers())
        timers << interval << " ";
    for (const ExpectedSet::Timer &timer : expected.timers) {
        if (timer.running)
            expected_timers << static_cast<double>(timer.interval) / 1000.0 << " ";
    }

    row("configuration", joined(set.store.values), joined(expected.config));
    row("exit requests", set.app.exit_requests, expected.exit_requests);
    row("records on their way", set.loop.queued_records(), expected.queue.size());
    row("timers", timers.str(), expected_timers.str());
    row("idlers", static_cast<int>(set.loop.idlers()), expected.idlers);
    row("follows demo_mode", follows(DEMO_MODE), expected.follows_demo_mode);
    row("follows use_mode", follows(USE_MODE), expected.follows_use_mode);
    row("E-POP blocked", is_held("pop-up block"), expected.epop_blocked);
    row("sound route", set.system.sound_route, expected.sound_route);
    row("panel", COstrelDemoUtil::GetWindowRotationType(), model.panel);
    row("picture display", set.pictures.display_ready, expected.display_ready);
    row("controller", controller != nullptr, model.launched);
    if (controller == nullptr || !model.launched)
        return text.str();

    const CPlayerInspector player(*controller);
    const bool has_player = player.m_hPlayer != nullptr;
    const _pictrel_s *picture = player.m_pPicture;
    // Until the player has set its picture up, the library's own value stands there.
    const int mark = picture == nullptr                               ? 0
                     : picture->render_state == fake::Pictures::FRESH ? -1
                                                                      : picture->render_state;
    Evas_Object *image = player.m_pDisclaimerImageBox;
    Evas_Object *toast = player.m_pNotificationLabel;

    row("m_hPlayer", has_player, expected.player);
    row("video state", has_player ? set.media.state : 0,
        expected.player ? static_cast<int>(expected.video) : 0);
    row("video preparing", set.media.preparing(), expected.preparing);
    row("video uri", set.media.uri, expected.uri);
    row("video subtitle", set.media.subtitle_path, expected.subtitle);
    row("video looping", set.media.looping, expected.looping);
    row("video rotation", set.media.rotation, expected.video_rotation);
    row("video rate", static_cast<double>(set.media.rate), expected.rate);
    row("m_pPicture", picture != nullptr, expected.picture);
    row("picture mark", mark, expected.picture ? expected.picture_mark : 0);
    row("m_bRepeat", player.m_bRepeat, model.repeat);
    row("m_bFolderContentsPlayer", player.m_bFolderContentsPlayer, model.folder_contents);
    row("m_bSlideShowStarted", player.m_bSlideShowStarted, model.slide_show);
    row("m_bUsbLocation", player.m_bUsbLocation, model.usb);
    row("m_bRotationAutoMode", player.m_bRotationAutoMode, model.auto_rotation);
    row("m_bRotating", player.m_bRotating, model.turning);
    row("m_pPictureDisplay", player.m_pPictureDisplay != 0, model.display);
    row("m_iPlayIndex", player.m_iPlayIndex, model.play_index);
    row("m_uiCurPlayIndex", player.m_uiCurPlayIndex, model.current);
    row("m_iPlayingType", player.m_iPlayingType, model.playing_type);
    row("m_iVideoPlayerState", player.m_iVideoPlayerState, model.video_state);
    row("m_strFolderPath", player.m_strFolderPath, model.folder);
    row("m_strPlayPath", player.m_strPlayPath, model.play_path);
    row("m_strSubtitlePath", player.m_strSubtitlePath, model.subtitle_path);
    row("m_vdcPlayList", joined(player.m_vdcPlayList), joined(model.play_list));
    row("m_vdcLandscapeVideos", joined(player.m_vdcLandscapeVideos),
        joined(model.landscape_videos));
    row("m_vdcPortraitVideos", joined(player.m_vdcPortraitVideos), joined(model.portrait_videos));
    row("m_vdcLandscapePhotos", joined(player.m_vdcLandscapePhotos),
        joined(model.landscape_photos));
    row("m_vdcPortraitPhotos", joined(player.m_vdcPortraitPhotos), joined(model.portrait_photos));
    row("m_vdcItemList", joined(player.m_vdcItemList), joined(model.items));
    row("m_pWindow", player.m_pWindow != nullptr, model.window);
    row("window shown", shown(player.m_pWindow), model.window_visible);
    row("m_pPopup", player.m_pPopup != nullptr, model.popup);
    row("popup shown", shown(player.m_pPopup), model.popup_visible);
    row("m_pPopupLayout", player.m_pPopupLayout != nullptr, model.popup_layout);
    row("m_pGenlist", player.m_pGenlist != nullptr, model.genlist);
    row("rows", joined(player.m_pGenlist), joined(model.rows));
    row("focused row",
        player.m_pGenlist != nullptr ? set.widgets.focused_row(player.m_pGenlist) : -1,
        model.focused_row);
    row("m_pNotificationLabel", toast != nullptr, model.toast);
    row("toast text", toast != nullptr ? set.widgets.text(toast) : "",
        model.toast ? model.toast_text : "");
    row("m_pDisclaimerRootLayout", player.m_pDisclaimerRootLayout != nullptr,
        model.disclaimer_root);
    row("m_pDisclaimerImageBox", image != nullptr, model.disclaimer_image);
    row("disclaimer shown", shown(player.m_pDisclaimerRootLayout) && shown(image),
        model.disclaimer_visible);
    row("disclaimer picture", image != nullptr ? set.widgets.file(image) : "",
        model.disclaimer_image ? model.disclaimer_file : "");
    row("m_pSlideShowTimer", player.m_pSlideShowTimer != nullptr, model.slide_show_timer != NONE);
    row("m_pPhotoPlayEndTimer", player.m_pPhotoPlayEndTimer != nullptr,
        model.photo_end_timer != NONE);
    row("m_pDestroyPopupTimer", player.m_pDestroyPopupTimer != nullptr, model.popup_timer != NONE);
    row("m_pDisclaimerTimer", player.m_pDisclaimerTimer != nullptr, model.disclaimer_timer != NONE);
    row("m_pZavoTimer", player.m_pZavoTimer != nullptr, model.rotation_timer != NONE);
    row("m_hRotationDelayTimer", player.m_hRotationDelayTimer != nullptr,
        model.delay_timer != NONE);
    return text.str();
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
