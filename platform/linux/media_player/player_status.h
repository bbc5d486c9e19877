/**
 * What the media player is doing at this moment, for a status report. Any thread; never blocks on
 * the file being played, nor on a frame being painted.
 */
#pragma once

#include <cstdint>
#include <string>

#include "media_player.h"

namespace platform {

/** Who tells a part of what the numbers of a film mean as colours. */
enum class ColourSource {
    Stream,    ///< the coded stream itself, or its decoder
    Container, ///< the file around it; the stream may say the same
    Usual,     ///< nobody: it is what is usual for such a film
};

struct ColourPart {
    /** GStreamer's name for it, such as "bt709" or "smpte2084"; a range is "limited" or "full". */
    std::string name;
    ColourSource source = ColourSource::Usual;
};

/** What becomes of high dynamic range. */
enum class ToneMapping {
    None, ///< the film has none
    PQ,   ///< it is mapped from PQ (HDR10) by ITU-R BT.2390
    HLG,  ///< the same from HLG
    /** The frames go through GStreamer's converter, which knows nothing of it. */
    Ignored,
};

/** The picture of a film. Texts are empty, numbers 0, where nothing is known. */
struct VideoStatus {
    std::string decoder;      ///< name of the GStreamer element, such as "avdec_h264"
    std::string decoder_name; ///< what it calls itself in words
    bool hardware = false;    ///< it decodes with hardware

    // Of the frames as the decoder gives them.
    int width = 0; ///< pixels, before any turn
    int height = 0;
    int pixel_width = 1; ///< pixel aspect ratio
    int pixel_height = 1;
    double frame_rate = 0; ///< frames a second; two fields count as one
    bool interlaced = false;
    bool halved = false; ///< interlaced, and shown with one picture a frame: two came too late
    std::string format;  ///< GStreamer's name, such as "I420_10LE"
    int depth = 0;       ///< bits of a component

    ColourPart range;
    ColourPart matrix;
    ColourPart transfer;
    ColourPart primaries;

    bool exact = false; ///< converted to the screen by our loops, else by GStreamer's converter
    ToneMapping mapping = ToneMapping::None;
    double peak = 0;  ///< cd/m² that the mapping takes for the film's brightest; 0 without one
    double white = 0; ///< cd/m² that it makes the screen's white; 0 without one

    // Pictures since the file began, all rounds of one that loops included: a frame is one, of
    // which an interlaced film's mostly have two.
    uint64_t shown = 0; ///< the late ones included
    /** Not shown at normal speed: ready too late, or no memory for them. A frame that the decoder
     * leaves out is one. */
    uint64_t dropped = 0;
    /** Shown at normal speed, but ready only after their time, by up to 30 ms; later ones drop. */
    uint64_t late = 0;
};

struct PlayerStatus {
    player_state_e state = PLAYER_STATE_NONE;
    std::string path;         ///< as the caller named it; empty when nothing is prepared
    int64_t position_ms = -1; ///< -1 before the first frame
    int64_t duration_ms = -1; ///< -1 when unknown
    double rate = 1.0;
    VideoStatus video;         ///< all defaults before the first frame
    bool has_subtitle = false; ///< a subtitle file was read and is being shown
    bool looping = false;
    int64_t looks_again_ms = -1; ///< while nothing can be played: when it is tried again; else -1
    uint64_t stalls = 0;         ///< of all films of this player: no frame came for long
    std::string last_stall;      ///< path of the film that stalled last; empty: none has
};

/** The status of the player that was made last; all defaults when there is none. */
PlayerStatus current_player_status();

} // namespace platform
