/**
 * What the numbers in a picture mean as colours: gathered on the way of a file's tags to the sink,
 * completed there. GStreamer loses part of them on the way, and takes a part that nobody states for
 * something else than what it mostly is.
 */
#pragma once

#include <map>
#include <mutex>
#include <optional>
#include <string>

#include "colour/hdr_curves.h"
#include "media_player/gst_ptr.h"
#include "media_player/player_status.h"

namespace platform {

/** Id of the stream that flows through a pad, the same on all its way; empty before it flows. */
std::string stream_of(GstPad *pad);

/** The colours of a picture, and who told each part of them. */
struct TaggedColour {
    GstVideoColorimetry parts;
    ColourSource range;
    ColourSource matrix;
    ColourSource transfer;
    ColourSource primaries;
};

/**
 * The colours of a decoded picture, with every part known.
 *
 * Range, matrix, transfer and primaries come each from the first that knows it: the stream, the
 * container, the usual. Usual is BT.2020 for what has a transfer of high dynamic range, else BT.709
 * for what is at least 1280 wide or more than 576 high and BT.601 for what is smaller, in limited
 * range; for RGB it is sRGB in full range. Primaries that nobody states are BT.2020's for high
 * dynamic range and BT.709's for all else: they are too slight a difference for a guess by size.
 * Decoders of JPEG state its full range themselves.
 *
 * Decoders hand on what they were fed with where the stream is silent, and so do parsers, which add
 * what they read. So a part that the container states as well counts as the container's.
 *
 * @param decoded   "colorimetry" as GStreamer writes it, of the decoded frames
 * @param coded     the same, of what the decoder was fed with; empty or nonsense: nothing is known
 * @param container the same, of what the container's reader gives
 * @param frame     format of the frames, and their size before any turn
 */
TaggedColour colour_of(const std::string &decoded, const std::string &coded,
                       const std::string &container, const GstVideoInfo &frame);

/**
 * The same for conversion. Primaries that no lamp can have are taken for BT.709's.
 *
 * @param peak of a film of high dynamic range, as film_peak() tells it
 */
ColourSpace colour_space_of(const GstVideoColorimetry &colour, double peak);

/** The brightest that a film of high dynamic range has, cd/m², as far as it can be believed. */
double film_peak(const GstCaps *frames);

/** The colours that one file's containers and parsers state, kept for the sink. Any thread. */
class ColourTags {
  public:
    /** Keeps the colours that an event tells before a parser's sink pad, in a probe. */
    void on_parsed_event(GstPad *pad, GstPadProbeInfo *info);

    /**
     * Looks at an event before a decoder's sink pad, in a probe, and keeps the colours it tells.
     *
     * The reader of MP4 says "limited" where the file says "full", or nothing. So for H.264 and
     * HEVC out of MP4 the range is taken away from a decoder of libav, which fills in what the
     * stream itself says. Other decoders, those of graphics hardware (VA, V4L2) among them, leave
     * the range open or to a guess: they keep the container's.
     *
     * @param demuxer factory name of the container's reader
     */
    void on_coded_event(GstPad *pad, GstPadProbeInfo *info, const std::string &demuxer);

    /** The colours of frames that arrive at a sink's pad. */
    TaggedColour of_frames(GstPad *pad, const GstCaps *caps, const GstVideoInfo &frame);

  private:
    /** "colorimetry" on its way. */
    struct Told {
        std::optional<std::string> parsed; ///< before the parser, where there is one
        std::string coded;                 ///< before the decoder
    };

    std::mutex mutex_;
    std::map<std::string, Told> streams_;
};

} // namespace platform
