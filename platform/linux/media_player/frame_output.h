/**
 * The last stretch of a video's way: takes decoded frames in turn, paints them for the plane with
 * their subtitle, and hands them over when their time has come. Belongs to one file. Frames come on
 * a streaming thread, everything else on any.
 */
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>

#include "media_player/colour_tags.h"
#include "media_player/display_settings.h"
#include "media_player/field_pace.h"
#include "media_player/frame_painter.h"
#include "media_player/video_facts.h"
#include "subtitles/subtitle_track.h"

namespace platform {

class FrameOutput {
  public:
    /** @param sdr_white of films of high dynamic range: the light that becomes white, cd/m² */
    FrameOutput(std::shared_ptr<DisplaySettings> display, double sdr_white);

    /** The file's subtitle, before it is visible. `on_cue` hears each text as it appears. */
    void set_subtitle(std::shared_ptr<SubtitleTrack> subtitle,
                      std::function<void(const SubtitleTrack::Cue &)> on_cue);

    /** `on_end` hears when the last frame of a stretch has been shown. */
    void set_end_listener(std::function<void()> on_end) { on_end_ = std::move(on_end); }

    /** Whether frames go to the plane. Not before the caller has started the file. */
    void set_visible(bool visible);

    /** Stops for good; when it returns no frame of this file reaches the plane any more. */
    void close();

    /** What the file says about its colours; any thread. */
    ColourTags &colour_tags() { return colour_tags_; }

    /** What the file's decoders tell; any thread. */
    VideoFacts &facts() { return facts_; }

    // Streaming thread.
    /** How well an interlaced file's pictures keep their time, also in its next pipeline. */
    FieldPace &field_pace() { return field_pace_; }

    /** What the frames of a stream are. @param info its colorimetry is taken from `colour` */
    void set_format(const std::string &stream, GstVideoInfo info, const TaggedColour &colour,
                    double peak);
    void set_orientation(GstVideoOrientationMethod method);
    void set_direction(double rate) { direction_ = rate; }
    void set_at_end(bool at_end);
    void set_in_hand(bool in_hand) { in_hand_ = in_hand; }

    /** Paints a frame ahead of its time, once the file has been started. */
    void prepare(GstBuffer *frame, GstClockTime position);

    /**
     * The frame's time has come.
     *
     * @param late it was prepared only after its time
     * @return false when there is no plane any more
     */
    bool show(GstBuffer *frame, GstClockTime position, bool late);

    /** Paints the frame on screen anew, after a change of the display's settings. */
    void redraw();

    /** Counts a frame that came too late to be shown. */
    void count_dropped();

    /** Counts a frame that has come, to be shown or not, or word that none comes for a while. */
    void count_arrival() { ++arrivals_; }

    /** What is known of the picture; never waits for a frame that is being painted. */
    VideoStatus status() const;

    /** Frames that went to the plane. */
    uint64_t shown() const { return shown_; }

    /** Media time of the newest frame whose time has come; GST_CLOCK_TIME_NONE before the first. */
    GstClockTime position() const { return position_; }

    /** Speed of the stretch that is being shown, as the file's reader granted it. */
    double direction() const { return direction_; }

    /** Whether the stretch being played has come to its end. */
    bool at_end() const { return at_end_; }

    /** Frames that came, also those that could not be shown any more. */
    uint64_t arrivals() const { return arrivals_; }

    /** Whether something has come that waits for its time, or is being shown. */
    bool in_hand() const { return in_hand_; }

    /** Size of the frames as they are stored; 0 before the first. */
    int width() const { return width_; }
    int height() const { return height_; }

  private:
    bool is_painted_for(const DisplayView &view) const;
    bool paint(GstBuffer *frame, GstClockTime position, const DisplayView &view);
    void report_cue(GstClockTime position);

    const std::shared_ptr<DisplaySettings> display_;
    const double sdr_white_;
    ColourTags colour_tags_;
    VideoFacts facts_;
    FieldPace field_pace_;
    std::atomic<uint64_t> shown_{0};
    std::atomic<uint64_t> dropped_{0};
    std::atomic<uint64_t> late_{0};
    std::atomic<GstClockTime> position_{GST_CLOCK_TIME_NONE};
    std::atomic<double> direction_{1.0};
    std::atomic<bool> at_end_{false};
    std::atomic<uint64_t> arrivals_{0};
    std::atomic<bool> in_hand_{false};
    std::function<void()> on_end_; ///< set before the first frame
    std::atomic<int> width_{0};
    std::atomic<int> height_{0};

    std::mutex mutex_; ///< guards all below
    bool visible_ = false;
    bool closed_ = false;
    Orientation stored_;
    FramePainter painter_;
    std::shared_ptr<SubtitleTrack> subtitle_;
    std::function<void(const SubtitleTrack::Cue &)> on_cue_;
    const SubtitleTrack::Cue *reported_cue_ = nullptr;

    BufferPtr frame_; ///< the newest frame, kept for redraw()
    GstClockTime frame_position_ = GST_CLOCK_TIME_NONE;
    DisplayView painted_view_;
    PlaneBufferPtr painted_; ///< the newest frame's picture, until it is shown
    bool frame_shown_ = false;
};

} // namespace platform
