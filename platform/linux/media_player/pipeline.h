/**
 * One file in one GStreamer pipeline: the thin layer between the player's rules and `playbin`. It
 * knows how to do things and what the file is like, and decides nothing. One thread at a time;
 * the events come on GStreamer's threads.
 */
#pragma once

#include <atomic>
#include <chrono>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "media_player/frame_output.h"
#include "media_player/gst_ptr.h"
#include "media_player/player_errors.h"

namespace platform {

enum class Track { Picture, Sound };

/** What a pipeline tells; any of GStreamer's threads, and not to be blocked. */
struct PipelineEvents {
    std::function<void()> ready; ///< first frame, or the one after a seek, is there
    std::function<void()> ended; ///< everything has been shown
    /** A stretch in rounds has been read, and is still being shown. `fresh`: since the last seek */
    std::function<void(bool fresh)> round_read;
    std::function<void(Failure)> failed;
    /** No decoder is installed for a track; `what` names it in words. Comes before `failed`. */
    std::function<void(Track track, const std::string &what)> decoder_missing;
    /** The file is none that may be a video; `what` names its kind. Comes before `failed`. */
    std::function<void(const std::string &what)> format_refused;
    std::function<void()> frame_dropped; ///< a frame came too late
    /** An interlaced film goes on with one picture a frame, because two came too late; once. */
    std::function<void()> fields_halved;
    std::function<void()> clock_lost;
};

class Pipeline {
  public:
    using AudioSinkMaker = std::function<ElementPtr()>;

    /**
     * Nothing is opened yet.
     *
     * @param make_audio_sink called for the sound's end; empty: silent
     * @param patience        how long a seek may take before the pipeline counts as hanging
     */
    Pipeline(const std::string &uri, const std::shared_ptr<FrameOutput> &output,
             const AudioSinkMaker &make_audio_sink, std::chrono::milliseconds patience,
             PipelineEvents events);

    /** Stops and lets go of everything; may block as long as the file does. */
    ~Pipeline();

    Pipeline(const Pipeline &) = delete;
    Pipeline &operator=(const Pipeline &) = delete;

    /**
     * Opens the file and decodes up to its first frame; `ready` or `failed` tells the end. May
     * block as long as the disk does.
     */
    bool open();

    /** The same for a thread that is needed: see hangs(). */
    bool open_in_time();

    /**
     * Whether it has not come back from open_in_time(), play(), hold() or seek(), which return true
     * if anything then: a decoder hangs, or the disk. Nothing more comes of such a pipeline,
     * whatever is asked.
     */
    bool hangs() const { return hangs_; }

    /**
     * Lets it run, or holds the picture. Both may return before the pipeline has followed. Behind a
     * seek that is still unanswered they wait, for the constructor's `patience` at most; then it
     * hangs(). A pipeline that cannot follow is told by `failed`, like everything that breaks after
     * open().
     */
    void play();
    void hold();

    /** How to seek; see seek(). */
    struct Seek {
        double rate = 1.0;
        GstClockTime position = 0;
        bool key_frame = false; ///< go to the key frame before, not to the position itself
        bool in_rounds = false; ///< at the end wait for next_round() instead of ending
    };

    /** Goes to another place or speed; `ready` follows. @return false when the file cannot */
    bool seek(const Seek &seek);

    /** Goes on from the start without a seam, after a stretch that was sought in rounds ended. */
    bool next_round(double rate);

    /** Silences the sound, or lets it be heard again. */
    void mute(bool silent);

    /**
     * Whether the file's reader has stopped without finding anything in it. Its error message gets
     * lost when it comes while the pipeline is still being put together.
     */
    bool reader_gave_up() const;

    bool has_picture() const;
    bool has_sound() const;

    /** Whether a stretch can be sought in rounds, as far as is known. */
    bool goes_in_rounds() const;

    /** Whether the file is a photo, which decodes like a video of one frame. */
    bool is_photo() const;

    /** Length; GST_CLOCK_TIME_NONE when the file does not tell. */
    GstClockTime duration() const;

    /** Media time being shown; GST_CLOCK_TIME_NONE when unknown. */
    GstClockTime position() const;

    /** What moves in it, for somebody who looks again and again. */
    struct Motion {
        GstClockTime clock = GST_CLOCK_TIME_NONE; ///< while it plays
        uint64_t coded = 0;                       ///< frames that went to the decoder so far
        bool decoding = false; ///< what parses and decodes the picture is at work
        uint64_t sound = 0;    ///< pieces of sound so far
        bool sounding = false; ///< the newest, or a pause between them, waits for its time
    };

    /** Never waits, whatever hangs. */
    Motion motion() const;

    /**
     * Whether backwards play is smooth within reasonable memory: the demuxer has to be good at it,
     * and every stretch between key frames seen so far has to be short, because it is held decoded.
     */
    bool plays_backwards() const;

  private:
    static GstBusSyncReply on_message(GstBus *bus, GstMessage *message, gpointer self);
    static void on_element(GstBin *bin, GstBin *child, GstElement *element, gpointer self);
    static GstPadProbeReturn on_coded_frame(GstPad *pad, GstPadProbeInfo *info, gpointer self);
    static GstPadProbeReturn on_sound(GstPad *pad, GstPadProbeInfo *info, gpointer self);
    static GstPadProbeReturn on_parsed_event(GstPad *pad, GstPadProbeInfo *info, gpointer self);
    static GstPadProbeReturn on_decoded_event(GstPad *pad, GstPadProbeInfo *info, gpointer self);
    static GstPadProbeReturn on_coded_event(GstPad *pad, GstPadProbeInfo *info, gpointer self);
    static bool is_at_work(const PadPtr &entry);
    void on_nothing_to_read_it(GstMessage *message) const;
    std::string demuxer() const;
    bool has_one_picture() const;
    void note_coded_frame(GstBuffer *frame);
    void note_coded_event(GstEventType type);
    bool is_stale(GstMessage *message) const;
    bool send_seek(double rate, int flags, gint64 start, GstSeekType stop_type, gint64 stop);
    void go_to(GstState state);
    bool ask(std::function<bool(GstElement *)> question, bool at_once = true);

    const PipelineEvents events_;
    const std::chrono::milliseconds patience_;
    bool hangs_ = false;
    ElementPtr playbin_;
    ElementPtr volume_;
    PadPtr sound_step_; ///< where the last step of the sound takes it in
    std::atomic<uint64_t> sound_pieces_{0};
    const std::shared_ptr<FrameOutput> output_;

    mutable std::mutex facts_mutex_; ///< guards all below, for the streaming threads
    std::string demuxer_;
    ElementPtr reader_; ///< the demuxer itself
    bool photo_decoder_ = false;
    int frames_since_key_ = -1;    ///< -1 before the first key frame
    int longest_key_distance_ = 0; ///< frames
    int key_frames_ = 0;
    uint64_t coded_frames_ = 0;
    int stretch_ = 0;                   ///< coded frames since the last segment began
    int longest_stretch_ = 0;           ///< the most of them so far
    bool end_coded_ = false;            ///< the decoder has heard of a round's end
    std::vector<PadPtr> picture_steps_; ///< where parsers and decoders take the picture in
    std::deque<guint32> seeks_;         ///< numbers of the last seeks, the newest in front
};

} // namespace platform
