/**
 * One file's play from opening to the end, on a thread of its own that also makes the callbacks.
 * Whatever blocks on a slow or pulled-out disk blocks here, never the main loop.
 */
#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "media_player/display_settings.h"
#include "media_player/frame_output.h"
#include "media_player/pipeline.h"
#include "media_player/subtitle_loader.h"
#include "media_player/task_queue.h"
#include "media_player/trick_play.h"

namespace platform {

class Playback;

/** Hears what becomes of a file; on the file's thread. */
class PlaybackListener {
  public:
    virtual ~PlaybackListener() = default;
    virtual void on_prepared(Playback &from) = 0;
    virtual void on_completed(Playback &from) = 0;
    /** The file plays on in silence. */
    virtual void on_sound_unsupported(Playback &from) = 0;
    /** The file cannot be prepared; nothing more comes. */
    virtual void on_failed(Playback &from, int error_code) = 0;
    /** Something else took what is needed; nothing more comes. */
    virtual void on_interrupted(Playback &from) = 0;
    virtual void on_subtitle(Playback &from, const SubtitleTrack::Cue &cue) = 0;
    /** The speed went back to 1.0 by itself. @param request the set_rate() it answers */
    virtual void on_normal_speed(Playback &from, uint64_t request) = 0;
};

struct PlaybackRequest {
    std::string uri;
    std::string subtitle; ///< path; empty: none
    std::shared_ptr<DisplaySettings> display;
    bool looping = false;
    Pipeline::AudioSinkMaker make_audio_sink;
    std::function<bool()>
        find_sound; ///< whether there is a sound device; looks again for a lost one
    std::chrono::milliseconds sound_pause{60000}; ///< from losing the sound to the first new try
    std::function<bool()> set_up;              ///< waits for the media system; false: there is none
    std::chrono::milliseconds patience{15000}; ///< longest wait for the first frame
    SubtitleLoader::Load load_subtitle;
    std::chrono::milliseconds subtitle_patience{3000}; ///< longest wait for it, past that frame
    std::shared_future<void> predecessor;        ///< the file before, as far as it still goes away
    std::shared_future<void> before_predecessor; ///< and the one before that
};

class Playback : public std::enable_shared_from_this<Playback> {
  public:
    /**
     * Begins to open a file. Nothing is told before release_results().
     *
     * @return null when there is no thread for it
     */
    static std::shared_ptr<Playback> open(PlaybackRequest request,
                                          std::shared_ptr<PlaybackListener> listener);

    // Any thread; all return at once, but for close(), which waits for a frame being drawn.
    void release_results();
    void start();
    void pause();
    void stop();
    void set_rate(double rate, uint64_t request);
    void set_looping(bool looping);
    void redraw();
    void close();

    /** Done when the file has been let go of. */
    std::shared_future<void> disposed() const { return disposed_; }

    /** Facts for a status report; any thread. */
    GstClockTime position() const { return output_->position(); }
    GstClockTime duration() const { return duration_; }
    int width() const { return output_->width(); }
    int height() const { return output_->height(); }
    bool has_subtitle() const { return has_subtitle_; }

    Playback(PlaybackRequest request, std::shared_ptr<PlaybackListener> listener);
    ~Playback();

  private:
    using Clock = TaskQueue::Clock;
    enum class Phase { Opening, Ready, Running, Ended, Failed };

    // The thread.
    void run();
    void dispose();
    std::optional<Clock::time_point> next_deadline() const;
    void on_deadline();
    void await_ready(std::function<void()> next, std::chrono::milliseconds limit,
                     std::function<void()> too_late);

    // Preparation.
    void open_file();
    int try_open();
    void wait_for_others() const;
    void make_pipeline();
    bool open_again();
    PipelineEvents pipeline_events();
    void on_first_frame();
    void on_nothing_came();
    void arm_first_frame();
    void await_first_frame();
    void tell_result(std::function<void()> result);
    void finish_preparation();

    // Its subtitle.
    void start_subtitle();
    void await_subtitle();
    void on_subtitle_read();
    void give_up_subtitle();
    void warn_about_subtitle(const std::string &why) const;

    // Playing.
    void do_start();
    void do_stop();
    void run_from(GstClockTime position);
    void take_speed(double rate);
    void on_speed(TrickPlay::Next next);
    void on_speed_taken();
    void back_to_normal(GstClockTime position);
    void announce_normal_speed();
    void resume_pipeline();
    void on_ended();
    void warn_if_cut_short();
    void on_round_read(bool fresh);
    void on_round_shown();
    void follow_up_round();
    void go_round();
    void next_round();
    void complete();

    // Trouble.
    void on_failure(const Failure &failure);
    void on_decoder_missing(Track track, const std::string &what);
    std::string why_no_picture(const std::string &otherwise) const;
    void go_silent(const std::string &why);
    bool sound_is_back();
    void renew_with_sound();
    void watch_progress();
    void on_broken(const std::string &why);
    void check_broken();
    void start_anew();
    void fail(int error_code, const std::string &why);
    void interrupt(const std::string &why);

    PlaybackRequest request_;
    std::shared_ptr<PlaybackListener> listener_;
    const std::shared_ptr<FrameOutput> output_;
    std::string name_; ///< for log lines
    TaskQueue tasks_;
    std::promise<void> disposal_;
    std::shared_future<void> disposed_;
    std::thread opener_;
    std::atomic<GstClockTime> duration_{GST_CLOCK_TIME_NONE};
    std::atomic<bool> has_subtitle_{false};
    std::atomic<bool> closing_{false};
    std::atomic<bool> count_drops_{true};

    // Made by the opener, then used by the thread alone.
    int generation_ = 0; ///< of the pipeline
    std::unique_ptr<Pipeline> pipeline_;
    std::optional<TrickPlay> trick_;

    std::shared_ptr<SubtitleLoader> subtitle_loader_;
    bool subtitle_pending_ = false;                   ///< it is being read
    std::optional<Clock::time_point> subtitle_limit_; ///< all else is ready and waits for it

    Phase phase_ = Phase::Opening;
    bool paused_ = false;
    bool looping_ = false;
    bool round_read_ = false; ///< a round has been read and not been followed up
    bool round_is_last_ = false;
    int rounds_ahead_ = 0; ///< rounds begun by the reader and not yet by the picture
    bool needs_rewind_ = false;
    bool system_up_ = false;
    bool opened_ = false; ///< the opener has handed the pipeline over
    Clock::time_point opening_since_;
    bool sound_unsupported_ = false;
    std::string missing_sound_; ///< decoders that are not installed, in words; empty: none
    std::string missing_picture_;
    bool silent_ = false;         ///< plays without sound, after trouble with it
    bool without_device_ = false; ///< there was no sound device for it, or it was lost
    bool sound_due_ = false;      ///< at the end of this round the sound is to be tried again
    std::chrono::milliseconds sound_pause_;
    Clock::time_point sound_trial_; ///< not before then
    bool results_released_ = false;
    std::vector<std::function<void()>> held_results_;
    double wanted_rate_ = 1.0;
    uint64_t rate_request_ = 0;
    bool rate_pending_ = false; ///< wanted_rate_ came while a seek was under way

    std::function<void()> on_ready_;
    std::function<void()> on_too_late_;
    Clock::time_point ready_limit_;

    std::optional<Clock::time_point> round_time_; ///< when the next round is to begin
    Clock::time_point last_round_;
    std::optional<Clock::time_point> progress_check_;
    Clock::time_point last_progress_;
    uint64_t shown_at_progress_ = 0;
    bool broken_ = false; ///< the pipeline has seen an error
    std::optional<Clock::time_point> broken_check_;
    uint64_t shown_at_check_ = 0;
    Clock::time_point last_restart_;
};

} // namespace platform
