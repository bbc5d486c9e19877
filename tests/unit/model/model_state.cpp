// What is compared after each step, as the model has it. driver_state.cpp has the same list as the
// player and the fake set have it.

#include <sstream>

#include "model.h"

namespace model {

namespace {

std::string joined(const std::vector<Entry> &list)
{
    std::string text;
    for (const Entry &entry : list)
        text += (entry.type == 0 ? "v:" : "p:") + entry.name + "/" + entry.subtitle + " ";
    return text;
}

std::string joined(const std::vector<Row> &list)
{
    std::string text;
    for (const Row &row : list)
        text += std::to_string(row.first) + "=" + row.second + " ";
    return text;
}

} // namespace

State Model::state() const
{
    std::ostringstream config, timers;
    for (const auto &[key, value] : set.config)
        config << key << "=" << value << " ";
    for (const ExpectedSet::Timer &timer : set.timers) {
        if (timer.running)
            timers << static_cast<double>(timer.interval) / 1000.0 << " ";
    }
    State state = {
        {"configuration", config.str()},
        {"exit requests", std::to_string(set.exit_requests)},
        {"records on their way", std::to_string(set.queue.size())},
        {"timers", timers.str()},
        {"idlers", std::to_string(set.idlers)},
        {"follows demo_mode", yes_no(set.follows_demo_mode)},
        {"follows use_mode", yes_no(set.follows_use_mode)},
        {"E-POP blocked", yes_no(set.epop_blocked)},
        {"sound route", std::to_string(set.sound_route)},
        {"panel", std::to_string(panel)},
        {"picture display", yes_no(set.display_ready)},
        {"controller", yes_no(launched)},
    };
    if (!launched)
        return state;

    state.insert(state.end(),
                 {{"m_hPlayer", yes_no(set.player)},
                  {"video state", set.player ? std::to_string(static_cast<int>(set.video)) : ""},
                  {"video preparing", yes_no(set.preparing)},
                  {"video uri", set.uri},
                  {"video subtitle", set.subtitle},
                  {"video looping", yes_no(set.looping)},
                  {"video rotation", std::to_string(set.video_rotation)},
                  {"video rate", std::to_string(set.rate)},
                  {"m_pPicture", yes_no(set.picture)},
                  {"picture mark", set.picture ? std::to_string(set.picture_mark) : ""},
                  {"m_bRepeat", yes_no(repeat)},
                  {"m_bFolderContentsPlayer", yes_no(folder_contents)},
                  {"m_bSlideShowStarted", yes_no(slide_show)},
                  {"m_bUsbLocation", yes_no(usb)},
                  {"m_bRotationAutoMode", yes_no(auto_rotation)},
                  {"m_bRotating", yes_no(turning)},
                  {"m_pPictureDisplay", yes_no(display)},
                  {"m_iPlayIndex", std::to_string(play_index)},
                  {"m_uiCurPlayIndex", std::to_string(current)},
                  {"m_iPlayingType", std::to_string(playing_type)},
                  {"m_iVideoPlayerState", std::to_string(video_state)},
                  {"m_strFolderPath", folder},
                  {"m_strPlayPath", play_path},
                  {"m_strSubtitlePath", subtitle_path},
                  {"m_vdcPlayList", joined(play_list)},
                  {"m_vdcLandscapeVideos", joined(landscape_videos)},
                  {"m_vdcPortraitVideos", joined(portrait_videos)},
                  {"m_vdcLandscapePhotos", joined(landscape_photos)},
                  {"m_vdcPortraitPhotos", joined(portrait_photos)},
                  {"m_vdcItemList", joined(items)},
                  {"m_pWindow", yes_no(window)},
                  {"window shown", yes_no(window_visible)},
                  {"m_pPopup", yes_no(popup)},
                  {"popup shown", yes_no(popup_visible)},
                  {"m_pPopupLayout", yes_no(popup_layout)},
                  {"m_pGenlist", yes_no(genlist)},
                  {"rows", joined(rows)},
                  {"focused row", std::to_string(focused_row)},
                  {"m_pNotificationLabel", yes_no(toast)},
                  {"toast text", toast ? toast_text : ""},
                  {"m_pDisclaimerRootLayout", yes_no(disclaimer_root)},
                  {"m_pDisclaimerImageBox", yes_no(disclaimer_image)},
                  {"disclaimer shown", yes_no(disclaimer_visible)},
                  {"disclaimer picture", disclaimer_image ? disclaimer_file : ""},
                  {"m_pSlideShowTimer", yes_no(slide_show_timer != NONE)},
                  {"m_pPhotoPlayEndTimer", yes_no(photo_end_timer != NONE)},
                  {"m_pDestroyPopupTimer", yes_no(popup_timer != NONE)},
                  {"m_pDisclaimerTimer", yes_no(disclaimer_timer != NONE)},
                  {"m_pZavoTimer", yes_no(rotation_timer != NONE)},
                  {"m_hRotationDelayTimer", yes_no(delay_timer != NONE)}});
    return state;
}

} // namespace model
