#include "player_rules/key_names.h"

#include <algorithm>

namespace platform {

const std::vector<const char *> &tv_key_names()
{
    static const std::vector<const char *> names = {
        // Moving and choosing.
        "Up",
        "Down",
        "Left",
        "Right",
        "Return",
        "XF86Back",
        "XF86Exit",
        "XF86Home",
        "XF86Info",
        "XF86More",
        "XF86SysMenu",
        "XF86AndroidMenu",
        "XF86VirtualOption",
        "XF86Search",
        // Digits.
        "0",
        "1",
        "2",
        "3",
        "4",
        "5",
        "6",
        "7",
        "8",
        "9",
        "minus",
        // Colours.
        "XF86Color",
        "XF86Red",
        "XF86Green",
        "XF86Yellow",
        "XF86Blue",
        // Playing.
        "XF86AudioPlay",
        "XF86AudioPause",
        "XF86AudioStop",
        "XF86AudioRecord",
        "XF86AudioRewind",
        "XF86AudioNext",
        "XF86PlayBack",
        "XF86PlayBackGame",
        "XF86PreviousChapter",
        "XF86NextChapter",
        "XF86Subtitle",
        // Channels and sources.
        "XF86RaiseChannel",
        "XF86LowerChannel",
        "XF86PreviousChannel",
        "XF86ChannelList",
        "XF86ChannelGuide",
        "XF86TV",
        "XF86Display",
        "XF86MultiView",
        // Sound and power.
        "XF86PowerOff",
        "XF86AudioRaiseVolume",
        "XF86AudioLowerVolume",
        "XF86AudioMute",
        "XF86Sleep",
        // The panel and its keys.
        "XF86PanelEnter",
        "XF86PanelUp",
        "XF86PanelDown",
        "XF86PanelPlus",
        "XF86PanelMinus",
        "XF86KeyRotatePanel",
        "XF86PictureSize",
        "XF86KeyGraphicZoom",
        "XF86Ambient",
        "XF86KeyAod",
        // Applications.
        "XF86WWW",
        "XF86LaunchApp1",
        "XF86LaunchApp2",
        "XF86Netflix",
        "XF86Amazon",
        "XF86Disney",
        "XF86Tving",
        "XF86KeyTVPlus",
        "XF86KeyGlobo",
    };
    return names;
}

bool is_tv_key_name(const std::string &name)
{
    const auto &names = tv_key_names();
    return std::find(names.begin(), names.end(), name) != names.end();
}

const std::map<std::string, std::string> &default_key_translations()
{
    static const std::map<std::string, std::string> translations = {
        // Every key that the player acts on can be typed on a plain keyboard.
        {"Escape", "XF86Back"},
        {"BackSpace", "XF86Back"},
        {"KP_Enter", "Return"},
        {"ISO_Enter", "Return"},
        {"space", "XF86PlayBack"},
        {"p", "XF86AudioPlay"},
        {"h", "XF86AudioPause"},
        {"Pause", "XF86AudioPause"},
        {"s", "XF86AudioStop"},
        {"o", "XF86PlayBackGame"},
        {"r", "XF86AudioRewind"},
        {"f", "XF86AudioNext"},
        {"b", "XF86PreviousChapter"},
        {"n", "XF86NextChapter"},
        {"a", "XF86Color"},
        {"Menu", "XF86More"},
        {"m", "XF86More"},
        {"t", "XF86PanelEnter"},
        {"Prior", "XF86RaiseChannel"},
        {"Next", "XF86LowerChannel"},
        {"g", "XF86ChannelGuide"},
        // The toolkit's own idea of this key leads out of the options.
        {"Tab", "Down"},
        {"ISO_Left_Tab", "Up"},
        {"KP_Up", "Up"},
        {"KP_Down", "Down"},
        {"KP_Left", "Left"},
        {"KP_Right", "Right"},
        {"KP_Prior", "XF86RaiseChannel"},
        {"KP_Next", "XF86LowerChannel"},
        // Media remotes and the media keys of keyboards.
        {"XF86Select", "Return"},
        {"XF86Stop", "XF86AudioStop"},
        {"XF86AudioPrev", "XF86PreviousChapter"},
        {"XF86AudioForward", "XF86AudioNext"},
        {"XF86Forward", "XF86AudioNext"},
        {"XF86ChannelUp", "XF86RaiseChannel"},
        {"XF86ChannelDown", "XF86LowerChannel"},
        {"XF86RotateWindows", "XF86PanelEnter"},
        {"XF86MenuKB", "XF86More"},
        {"XF86ContextMenu", "XF86More"},
        {"XF86Option", "XF86More"},
        {"XF86HomePage", "XF86Home"},
        // A remote with four coloured keys has none of the set's special ones.
        {"XF86Red", "XF86Color"},
        {"XF86Green", "XF86PanelEnter"},
        {"XF86Yellow", "XF86ChannelGuide"},
        {"XF86Blue", "XF86PlayBackGame"},
    };
    return translations;
}

namespace {

const char *find(const std::map<std::string, std::string> &table, const char *name)
{
    if (!name)
        return nullptr;
    const auto found = table.find(name);
    return found == table.end() ? nullptr : found->second.c_str();
}

} // namespace

const char *translate_key(const char *keyname, const char *key,
                          const std::map<std::string, std::string> &extra)
{
    for (const auto *table : {&extra, &default_key_translations()}) {
        for (const char *name : {key, keyname}) {
            if (const char *translated = find(*table, name))
                return translated;
        }
    }
    return nullptr;
}

} // namespace platform
