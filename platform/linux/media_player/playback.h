/**
 * One file's play from opening to the end, on a thread of its own that also makes the callbacks.
 * Whatever blocks on a slow or pulled-out disk blocks here, never the main loop.
 */
#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/regular_file.h"
#include "base/worker_thread.h"
#include "media_player/display_settings.h"
#include "media_player/failure_facts.h"
#include "media_player/frame_output.h"
#include "media_player/pipeline.h"
#include "media_player/player_options.h"
#include "media_player/progress_watch.h"
#include "media_player/rounds.h"
#include "media_player/sound_recovery.h"
#include "media_player/subtitle_reading.h"
#include "media_player/trick_play.h"

namespace platform {

class Playback;

/** What becomes of a file; told on the file's thread. */
struct PlaybackEvents {
    std::function<void(Playback &from)> prepared;
    std::function<void(Playback &from)> completed;
    /** The file plays on in silence. */
    std::function<void(Playback &from)> sound_unsupported;
    /** The file cannot be prepared, and is not passed over; nothing more comes. */
    std::function<void(Playback &from, int error_code)> failed;
    /** Something else took what is needed; nothing more comes. */
    std::function<void(Playback &from)> interrupted;
    std::function<void(Playback &from, const SubtitleTrack::Cue &cue)> subtitle;
    /** The speed went back to 1.0 by itself; `request` is the set_rate() it answers. */
    std::function<void(Playback &from, uint64_t request)> normal_speed;
    /** It will soon have played to its end, and not begin anew. */
    std::function<void(Playback &from)> nearly_over;
    /** No frame has come for long. It is opened anew where it stands, or soon completed. */
    std::function<void(Playback &from)> stalled;
    /** What was opened ahead is of no use; opened anew, the file may be. Nothing more comes. */
    std::function<void(Playback &from)> stale;
};

struct PlaybackRequest {
    std::string uri;
    std::string subtitle; ///< path; empty: none
    std::shared_ptr<DisplaySettings> display;
    bool looping = false;
    bool ahead = false; ///< nobody has asked for it yet, and another file may still play
    std::shared_ptr<const PlayerOptions> options;
    /** Preparations that were let go of before anything was told of them; each is a fresh start. */
    std::shared_ptr<const std::atomic<uint64_t>> let_go_of;
    std::shared_future<void> previous;        ///< the file before, as far as it still goes away
    std::shared_future<void> before_previous; ///< and the one before that
};

class Playback : public std::enable_shared_from_this<Playback> {
  public:
    /**
     * Begins to open a file. Nothing is told before release_results().
     *
     * @return null when there is no thread for it
     */
    static std::shared_ptr<Playback> open(PlaybackRequest request, PlaybackEvents events);

    // Any thread; all return at once, but for close(), which waits for a frame being drawn.
    /** Says what the caller wants of a file opened ahead of the call; before its results. */
    void apply_request(const std::string &subtitle, bool looping);
    void release_results();
    void start();
    void pause();
    void stop();
    void set_rate(double rate, uint64_t request);
    void set_looping(bool looping);
    void redraw();
    void close();

    /** Done when the file has been let go of. */
    std::shared_future<void> disposed() const { return thread_.ended(); }

    /** Facts for a status report; any thread. */
    GstClockTime position() const { return output_->position(); }
    GstClockTime duration() const { return duration_; }
    VideoStatus video() const { return output_->status(); }
    bool has_subtitle() const { return has_subtitle_; }
    /** Of a file that is passed over: how long it lasts, where nothing can be played; else 0. */
    std::chrono::milliseconds waits() const;

    Playback(PlaybackRequest request, PlaybackEvents events);
    ~Playback();

  private:
    using Clock = WorkerThread::Clock;
    static constexpr Clock::time_point NEVER = Clock::time_point::max();

    /**
     * A picture that was sought is given up after this, and the play goes on with what there is.
     * Even an exact seek decodes one stretch between key frames, mostly well below a second's work.
     */
    static constexpr auto LONGEST_SEEK = std::chrono::milliseconds(5000);

    /** In their order; up to Ready the file is being prepared. */
    enum class Phase {
        SettingUp,        ///< the media system is not up yet
        Opening,          ///< the opener is at work
        AwaitingFrame,    ///< opened; its first frame is to come
        AwaitingSubtitle, ///< all else is ready
        Prepared,         ///< ready, but not yet told so
        Ready,
        Playing,
        Paused,
        Ended,
        Failed,     ///< or stale; nothing more is done
        PassedOver, ///< told to be ready, though it has failed, and to be over once it is started
    };
    bool preparing() const { return phase_ < Phase::Ready; }
    bool running() const { return phase_ == Phase::Playing || phase_ == Phase::Paused; }

    /** Something that falls due; see deadlines(). */
    struct Deadline {
        std::optional<Clock::time_point> time;
        void (Playback::*act)();
    };

    /** What is to follow when the pipeline has a frame ready, after opening or a seek. */
    struct PipelineWait {
        std::function<void()> ready;
        Clock::time_point limit;
        std::function<void()> too_late;
    };

    // The thread.
    void begin();
    void dispose();
    std::array<Deadline, 9> deadlines() const;
    std::optional<Clock::time_point> next_deadline() const;
    void act_on_deadline();
    void await_ready(std::function<void()> next, std::chrono::milliseconds limit,
                     std::function<void()> too_late);
    void on_ready_too_late();

    // Preparation.
    void open_file();
    int try_open();
    void wait_for_others() const;
    void make_pipeline();
    void let_go_of_pipeline();
    bool open_again();
    PipelineEvents pipeline_events();
    void begin_wait_for_first_frame();
    void await_first_frame();
    void on_first_frame();
    void on_nothing_came();
    void fail_for_time();
    void look_at_files(const std::string &subtitle);
    void on_look_too_late();
    void tell_results();
    void report_result(std::function<void()> result);
    void finish_preparation();

    // Its subtitle.
    void take_subtitle(const std::string &path);
    void read_subtitle();
    void await_subtitle();
    void on_subtitle_read(const SubtitleReading::Result &result);
    void give_up_subtitle();
    void warn_about_subtitle(const std::string &why);

    // Playing.
    void do_start();
    void do_pause();
    void do_stop();
    void play_from(GstClockTime position);
    void begin_stretch(double rate, GstClockTime position);
    void take_speed();
    void on_speed(TrickPlay::Next next);
    void on_speed_taken();
    void step_back();
    void back_to_normal();
    void announce_normal_speed();
    void resume_pipeline();
    void on_ended();
    void warn_if_cut_short();
    Rounds::Plan plan_for_round();
    void on_round_read(bool fresh);
    void plan_round();
    void on_round_shown();
    void tell_round_over();
    void on_played();
    void on_round_due();
    void check_for_end();
    static std::optional<std::chrono::nanoseconds> known(GstClockTime time);
    void follow(Rounds::Step step);
    void begin_round();
    void complete();

    // Trouble.
    void on_failure(const Failure &failure);
    void on_decoder_missing(Track track, const std::string &what);
    void go_silent(const std::string &why);
    bool sound_device_hangs() const;
    void on_sound_device_hangs();
    bool sound_is_back();
    void search_sound();
    void reopen_with_sound();
    void reopen_at_position(const std::function<void()> &give_up);
    void reopen(const std::function<void()> &go_on, std::chrono::milliseconds limit,
                const std::function<void()> &give_up);
    void check_for_stall();
    void give_up_stalled(const std::string &why);
    void on_broken(const std::string &why);
    void check_broken();
    void restart();
    void fail(int error_code, const std::string &why);
    bool pass_over(int error_code, const std::string &why);
    void let_go_of_file();
    void end_passing_over();
    void interrupt(const std::string &why);
    void become_stale();
    void end_in_failure(std::function<void()> tell);

    const PlaybackRequest request_;
    PlaybackEvents events_;
    const std::shared_ptr<FrameOutput> output_;
    const std::string path_; ///< of a local file; empty: it is none
    const std::string name_; ///< for log lines
    WorkerThread thread_{"file"};
    WorkerThread opener_{"file-opener"};
    WorkerThread sound_search_{"sound-search"};
    std::atomic<GstClockTime> duration_{GST_CLOCK_TIME_NONE};
    std::atomic<bool> has_subtitle_{false};
    std::atomic<bool> count_drops_{true};
    std::atomic<Clock::time_point> passing_over_ends_{NEVER};

    // Made by the opener, or by the thread while the opener is idle, and used by the thread. Of a
    // file that is passed over the opener ends pipeline_ and trick_: nobody uses them any more.
    int generation_ = 0; ///< of the pipeline
    std::unique_ptr<Pipeline> pipeline_;
    std::optional<TrickPlay> trick_;
    SoundRecovery sound_;

    // The thread's own.
    Phase phase_ = Phase::SettingUp;
    std::shared_ptr<GstElement> sound_device_; ///< the last pipeline's; null: none was made
    std::optional<FileStamp> stamp_;           ///< of the file, as it was opened
    Clock::time_point waiting_since_;          ///< for the media system, or for the first frame
    std::optional<PipelineWait> wait_;
    /** What is to be told of the preparation, until the caller wants to hear it; null: it does. */
    std::optional<std::vector<std::function<void()>>> held_results_{std::in_place};
    bool released_ = false;                     ///< the caller wants to hear it
    std::optional<Clock::time_point> look_due_; ///< the files are looked at before it hears it
    bool may_be_stale_; ///< what goes wrong with it may not go wrong when it is opened anew
    FailureFacts failure_facts_;
    bool sound_unsupported_ = false;
    bool damage_logged_ = false; ///< a file that plays over and over would tell it each time
    bool given_up_ = false;      ///< it stalls, and is not to begin anew
    bool looping_;
    bool needs_rewind_ = false; ///< it was started, or opened anew, before
    double wanted_rate_ = 1.0;
    uint64_t rate_request_ = 0;
    std::chrono::milliseconds pass_over_time_{0}; ///< of one passed over: from its start to its end

    SubtitleReading subtitle_;
    Rounds rounds_;
    StallWatch stall_;
    BreakWatch break_;
    EndWatch end_;
};

} // namespace platform
