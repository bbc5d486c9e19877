/**
 * The keys of the set as its makers list them, for all tests that go through them: what the program
 * does with each is compared with these tables and not with its own.
 */
#pragma once

namespace set_keys {

/** Keys that the set keeps for itself, in the order in which the player leaves them to it. */
constexpr const char *PASSED_ON[] = {
    "XF86PowerOff",
    "XF86AudioRaiseVolume",
    "XF86AudioLowerVolume",
    "XF86AudioMute",
    "XF86Home",
    "XF86Display",
    "XF86SysMenu",
    "XF86Exit",
    "XF86Ambient",
    "XF86PanelUp",
    "XF86PanelDown",
    "XF86PanelPlus",
    "XF86PanelMinus",
    "XF86Netflix",
    "XF86Amazon",
    "XF86WWW",
    "XF86LaunchApp1",
    "XF86LaunchApp2",
    "XF86KeyTVPlus",
    "XF86KeyRotatePanel",
    "XF86KeyAod",
    "XF86MultiView",
    "XF86KeyGlobo",
    "XF86KeyGraphicZoom",
    "XF86Disney",
    "XF86Tving",
    "XF86VirtualOption",
    "XF86AndroidMenu",
};

/** A key that the player acts on, and its type; 17 is every other key. */
struct Key {
    const char *name;
    int type;
};

constexpr Key USED[] = {
    {"XF86Back", 0},
    {"Return", 1},
    {"XF86AudioPlay", 2},
    {"XF86AudioPause", 3},
    {"XF86AudioStop", 4},
    {"XF86PlayBack", 5},
    {"XF86PlayBackGame", 6},
    {"XF86AudioRewind", 7},
    {"XF86AudioNext", 8},
    {"Left", 9},
    {"Right", 10},
    {"XF86PreviousChapter", 9},
    {"XF86NextChapter", 10},
    {"XF86Color", 12},
    {"XF86More", 12},
    {"XF86PanelEnter", 13},
    {"XF86RaiseChannel", 14},
    {"XF86LowerChannel", 15},
    {"XF86ChannelGuide", 16},
};

} // namespace set_keys
