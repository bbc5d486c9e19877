/**
 * The state machine behind the C interface: says which call fits which state, owns the file being
 * prepared or played, and lets its callbacks through one at a time as long as it is the current
 * one.
 */
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <future>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include <Ecore.h>

#include "media_player.h"
#include "media_player/playback.h"
#include "media_player/player_options.h"
#include "media_player/player_status.h"

namespace platform {

class Player : public std::enable_shared_from_this<Player> {
  public:
    static std::shared_ptr<Player> create(PlayerOptions options = {});

    /** The player made last, or null. */
    static std::shared_ptr<Player> latest();

    /**
     * Ends everything. Waits for the file to be let go of, two seconds at most; not when called
     * from inside a callback, where the file would wait for itself.
     */
    void destroy();

    void set_completed_cb(player_completed_cb callback, void *user_data);
    void set_interrupted_cb(player_interrupted_cb callback, void *user_data);
    void set_error_cb(player_error_cb callback, void *user_data);
    void set_subtitle_cb(player_subtitle_updated_cb_ex callback, void *user_data);

    // As in the C interface.
    int set_uri(const std::string &uri);
    int set_subtitle_path(const std::string &path);

    // In any state. The arguments are to be good: the C interface has checked them.
    /** Where pictures go from the next frame on; null: nowhere. A frame on screen is not moved. */
    void set_plane(std::shared_ptr<VideoPlane> plane);
    /** @param degrees 0, 90, 180 or 270, clockwise; a picture that stands is drawn anew */
    void set_rotation(int degrees);
    /** See DisplaySettings::set_area(); a picture that stands is drawn anew. */
    void set_area(const Rect &area);

    /** Opens a file in the hope that prepare_async() will ask for it. Any thread. */
    void open_ahead(const PlayedItem &item);
    void drop_ahead();

    // As in the C interface.
    int prepare_async(player_prepared_cb callback, void *user_data);
    void unprepare();
    int start();
    int stop();
    int pause();
    player_state_e state() const;
    void set_looping(bool looping);
    int set_rate(double rate);
    double rate() const;

    PlayerStatus status() const;

    explicit Player(PlayerOptions options);

  private:
    template <typename Function> struct Callback {
        Function function = nullptr;
        void *user_data = nullptr;
    };

    void join_lookahead();
    PlaybackEvents playback_events();
    void on_prepared(const Playback &from);
    void on_completed(const Playback &from);
    void on_sound_unsupported(const Playback &from);
    void on_failed(Playback &from, int error_code);
    void on_interrupted(Playback &from);
    void on_subtitle(const Playback &from, const SubtitleTrack::Cue &cue);
    void on_normal_speed(const Playback &from, uint64_t request);
    void on_nearly_over(const Playback &from);
    void on_stalled(const Playback &from);
    void on_stale(Playback &from);

    std::shared_ptr<Playback> open(const PlayedItem &item, bool ahead);
    std::shared_ptr<Playback> take_ahead();

    template <typename Change> void notify(const Playback *from, Change change);
    /** Lets the results of one file through, from the main loop; or that there is no file. */
    struct Release {
        std::weak_ptr<Player> player;
        std::weak_ptr<Playback> playback;
    };
    /** Of a job, which is the main loop's own: one that ends elsewhere finds its file gone. */
    struct ReleaseJobEnd {
        void operator()(Ecore_Job *job) const;
    };
    void schedule_release(const std::shared_ptr<Playback> &playback);
    static void release_now(void *data);
    void report_refusal();
    void discard_current();
    void keep_as_previous(const Playback &former);

    const std::shared_ptr<const PlayerOptions> options_;
    const std::shared_ptr<DisplaySettings> display_ = std::make_shared<DisplaySettings>();
    const std::shared_ptr<std::atomic<uint64_t>> let_go_of_ =
        std::make_shared<std::atomic<uint64_t>>(0); ///< see PlaybackRequest

    mutable std::mutex mutex_; ///< guards all below
    std::condition_variable call_over_;
    bool calling_ = false; ///< a callback is being made, with the mutex released
    std::thread::id calling_thread_;

    player_state_e state_ = PLAYER_STATE_IDLE;
    std::string uri_;
    std::string subtitle_;
    bool looping_ = false;
    double rate_ = 1.0;
    uint64_t rate_request_ = 0;
    uint64_t stalls_ = 0;
    std::string last_stall_; ///< path
    std::shared_ptr<Playback> current_;
    bool refused_ = false; ///< there is no thread for a current one, which the caller learns soon
    /** Waits, prepared, to become the current one; nobody hears of it before. */
    struct Ahead {
        std::string uri; ///< as set_uri() would give it
        std::shared_ptr<Playback> playback;
    } ahead_;
    std::shared_future<void> previous_;
    std::shared_future<void> before_previous_;
    std::unique_ptr<Ecore_Job, ReleaseJobEnd> release_job_;

    Callback<player_prepared_cb> prepared_;
    Callback<player_completed_cb> completed_;
    Callback<player_interrupted_cb> interrupted_;
    Callback<player_error_cb> error_;
    Callback<player_subtitle_updated_cb_ex> subtitle_updated_;
};

} // namespace platform
