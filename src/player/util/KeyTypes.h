/**
 * What the keys of the remote control ask for, and which key asks for what. What is then done is in
 * RemoteKeyActions.cpp. Any thread.
 */
#pragma once

#include <map>
#include <string>

/** What a key asks for. The numbers travel in events; 11 is left free on purpose. */
enum ENDEMO_KEY_TYPE : int {
    KEY_TYPE_BACK = 0,
    KEY_TYPE_ENTER = 1,
    KEY_TYPE_PLAY = 2,
    KEY_TYPE_PAUSE = 3,
    KEY_TYPE_STOP = 4,
    KEY_TYPE_PLAY_PAUSE = 5,
    KEY_TYPE_SOUND_OUTPUT = 6,
    KEY_TYPE_REWIND = 7,
    KEY_TYPE_FORWARD = 8,
    KEY_TYPE_PREVIOUS = 9,
    KEY_TYPE_NEXT = 10,
    KEY_TYPE_ROTATION_AUTO = 12,
    KEY_TYPE_ROTATE = 13,
    KEY_TYPE_PORTRAIT_TIMER = 14,
    KEY_TYPE_LANDSCAPE_TIMER = 15,
    KEY_TYPE_TIMER_RESET = 16,
    KEY_TYPE_UNKNOWN = 17,
};

/** The key type of each key name that the player knows; all others are unknown. */
inline const std::map<std::string, int> &GetKeyTypes()
{
    static const std::map<std::string, int> s_mapKeyTypes = {
        {"XF86Back", KEY_TYPE_BACK},
        {"Return", KEY_TYPE_ENTER},
        {"XF86AudioPlay", KEY_TYPE_PLAY},
        {"XF86AudioPause", KEY_TYPE_PAUSE},
        {"XF86AudioStop", KEY_TYPE_STOP},
        {"XF86PlayBack", KEY_TYPE_PLAY_PAUSE},
        {"XF86PlayBackGame", KEY_TYPE_SOUND_OUTPUT},
        {"XF86AudioRewind", KEY_TYPE_REWIND},
        {"XF86AudioNext", KEY_TYPE_FORWARD},
        {"XF86PreviousChapter", KEY_TYPE_PREVIOUS},
        {"Left", KEY_TYPE_PREVIOUS},
        {"XF86NextChapter", KEY_TYPE_NEXT},
        {"Right", KEY_TYPE_NEXT},
        {"XF86Color", KEY_TYPE_ROTATION_AUTO},
        {"XF86More", KEY_TYPE_ROTATION_AUTO},
        {"XF86PanelEnter", KEY_TYPE_ROTATE},
        {"XF86RaiseChannel", KEY_TYPE_PORTRAIT_TIMER},
        {"XF86LowerChannel", KEY_TYPE_LANDSCAPE_TIMER},
        {"XF86ChannelGuide", KEY_TYPE_TIMER_RESET},
    };
    return s_mapKeyTypes;
}
