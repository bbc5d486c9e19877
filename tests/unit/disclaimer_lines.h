/**
 * The disclaimer in transcripts of everything (`fake_.all()`): its pictures, and how it is built.
 */
#pragma once

#include <string>

#include "player_lines.h"

/** How much of the overlay is there. */
enum class Overlay { None, Half, Full };

struct DisclaimerPicture {
    std::string name;
    std::string path;
    int width;
    int height;
};

inline const DisclaimerPicture &disclaimer_picture(bool upright)
{
    static const DisclaimerPicture landscape = {"ostrel_demo/player_img_china_disclaimer.png",
                                                "/res/landscape.png", 240, 135};
    static const DisclaimerPicture portrait = {
        "ostrel_demo/player_img_china_disclaimer_portrait.png", "/res/portrait.png", 135, 240};
    return upright ? portrait : landscape;
}

inline void install_disclaimer_pictures(fake::System &system)
{
    for (const bool upright : {false, true}) {
        const DisclaimerPicture &picture = disclaimer_picture(upright);
        system.resources[picture.name] = picture.path;
    }
}

/** Choosing the picture of the panel and finding its file. */
inline Lines disclaimer_picture_lines(bool upright, bool found)
{
    const DisclaimerPicture &picture = disclaimer_picture(upright);
    Lines lines = {panel_line(upright),
                   "getResourcePath(\"org.tizen.video-player-tv\", \"" + picture.name + "\")"};
    if (found)
        lines += "freeResourcePath(\"" + picture.path + "\")";
    return lines += "I \"" + picture.name + " path[" + (found ? picture.path : "") + "]\"";
}

/**
 * Building the overlay anew.
 *
 * @param overlay what there is of the one before, which was the first
 * @param failing the platform's function that fails, "resources" when no picture is found
 */
inline Lines disclaimer_creation_lines(bool on, Overlay overlay, bool upright,
                                       const std::string &failing)
{
    Lines lines = disclaimer_feature_lines(on);
    if (!on)
        return lines;
    lines += disclaimer_feature_lines(on);
    if (overlay != Overlay::None)
        lines += "evas_object_del(layout#1)";
    if (overlay == Overlay::Full)
        lines += "evas_object_del(imagebox#1)";
    lines += "elm_velt_layout_add(window#1)";
    if (failing == "elm_velt_layout_add")
        return lines += "E \"NULL == m_pDisclaimerRootLayout\"";
    const std::string root = overlay == Overlay::None ? "layout#1" : "layout#2";
    lines += {"elm_velt_layout_type_set(" + root + ", 1)",
              "evas_object_size_hint_weight_set(" + root + ", 1, 1)",
              "elm_win_resize_object_add(window#1, " + root + ")",
              "elm_velt_layout_align_set(" + root + ", 8)", "elm_velt_imagebox_add(" + root + ")"};
    if (failing == "elm_velt_imagebox_add")
        return lines += "E \"NULL == m_pDisclaimerImageBox\"";
    const std::string number = overlay == Overlay::Full ? "#2" : "#1";
    const std::string box = "imagebox" + number;
    const DisclaimerPicture &picture = disclaimer_picture(upright);
    const bool found = failing != "resources";
    const std::string file = found ? picture.path : "";
    const std::string width = std::to_string(picture.width * 8);
    const std::string height = std::to_string(picture.height * 8);
    lines += disclaimer_picture_lines(upright, found);
    return lines +=
           {"I \"add[" + file + "]\"", "elm_velt_imagebox_file_set(" + box + ", \"" + file + "\")",
            "elm_velt_imagebox_responsive_rule_set(" + box + ", 1)",
            "elm_velt_imagebox_native_get(" + box + ")",
            "elm_object_focus_allow_set(image" + number + ", false)",
            "elm_velt_layout_align_set(" + box + ", 8)",
            "elm_velt_object_resize_policy_set(" + box + ", 4, 4)",
            "elm_velt_unit_to_pixel(" + std::to_string(picture.width) + ")",
            "elm_velt_unit_to_pixel(" + std::to_string(picture.height) + ")",
            "elm_velt_object_size_max_set(" + box + ", " + width + ", " + height + ")",
            // The minimum has its two values swapped.
            "elm_velt_object_size_min_set(" + box + ", " + height + ", " + width + ")",
            "elm_velt_layout_item_append(" + root + ", " + box + ", " + width + ", " + height + ")",
            "evas_object_hide(" + root + ")", "evas_object_hide(" + box + ")"};
}
