#include "media_player/player.h"

#include <cmath>
#include <functional>
#include <utility>

#include "log/platform_log.h"
#include "media_player/audio_sink.h"
#include "media_player/media_system.h"
#include "media_player/media_uri.h"

namespace platform {
namespace {

// The bound that player_set_playback_rate() promises.
constexpr double FASTEST = 5.0;

// A file on a good disk is let go of in some tens of milliseconds. The main loop stands still in
// destroy(), which the end of the program can bear for about so long; judged, not measured.
constexpr auto LONGEST_CLOSING = std::chrono::milliseconds(2000);

// The plane of a player that was given none: it plays, and nobody sees it.
constexpr int UNSEEN_WIDTH = 1920;
constexpr int UNSEEN_HEIGHT = 1080;

struct LatestPlayer {
    std::mutex mutex;
    std::weak_ptr<Player> player;
};

LatestPlayer &latest_player()
{
    static LatestPlayer latest;
    return latest;
}

int64_t milliseconds(GstClockTime time)
{
    return GST_CLOCK_TIME_IS_VALID(time) ? static_cast<int64_t>(time / GST_MSECOND) : -1;
}

} // namespace

std::shared_ptr<Player> Player::create(PlayerOptions options)
{
    start_media_system();
    auto player = std::make_shared<Player>(std::move(options));
    player->join_lookahead();
    LatestPlayer &latest = latest_player();
    const std::lock_guard<std::mutex> lock(latest.mutex);
    latest.player = player;
    return player;
}

std::shared_ptr<Player> Player::latest()
{
    LatestPlayer &latest = latest_player();
    const std::lock_guard<std::mutex> lock(latest.mutex);
    return latest.player.lock();
}

void Player::join_lookahead()
{
    if (!options_->lookahead)
        return;
    const std::weak_ptr<Player> weak = weak_from_this();
    Lookahead::Opener opener;
    opener.open = [weak](const PlayedItem &item) {
        if (const std::shared_ptr<Player> player = weak.lock())
            player->open_ahead(item);
    };
    opener.drop = [weak] {
        if (const std::shared_ptr<Player> player = weak.lock())
            player->drop_ahead();
    };
    options_->lookahead->set_opener(ContentKind::Video, std::move(opener));
}

Player::Player(PlayerOptions options)
    : options_(std::make_shared<const PlayerOptions>(std::move(options)))
{
}

void Player::destroy()
{
    unprepare();
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        state_ = PLAYER_STATE_NONE;
    }
    drop_ahead();
    std::shared_future<void> going[2];
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        going[0] = before_previous_;
        going[1] = previous_;
        // From inside a callback the file's own thread would wait for itself.
        if (calling_ && calling_thread_ == std::this_thread::get_id())
            return;
    }
    const auto limit = std::chrono::steady_clock::now() + LONGEST_CLOSING;
    for (const std::shared_future<void> &file : going)
        if (file.valid() && file.wait_until(limit) == std::future_status::timeout)
            PLATFORM_LOGW("player", "a file is slow to close; it is left to itself");
}

void Player::set_completed_cb(player_completed_cb callback, void *user_data)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    completed_ = {callback, user_data};
}

void Player::set_interrupted_cb(player_interrupted_cb callback, void *user_data)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    interrupted_ = {callback, user_data};
}

void Player::set_error_cb(player_error_cb callback, void *user_data)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    error_ = {callback, user_data};
}

void Player::set_subtitle_cb(player_subtitle_updated_cb_ex callback, void *user_data)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    subtitle_updated_ = {callback, user_data};
}

int Player::set_uri(const std::string &uri)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    if (state_ != PLAYER_STATE_IDLE || current_)
        return PLAYER_ERROR_INVALID_STATE;
    uri_ = uri;
    return PLAYER_ERROR_NONE;
}

int Player::set_subtitle_path(const std::string &path)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    if (state_ != PLAYER_STATE_IDLE || current_)
        return PLAYER_ERROR_INVALID_STATE;
    subtitle_ = path;
    return PLAYER_ERROR_NONE;
}

void Player::set_plane(std::shared_ptr<VideoPlane> plane)
{
    display_->set_plane(std::move(plane));
}

void Player::set_rotation(int degrees)
{
    display_->set_rotation(degrees);
    const std::lock_guard<std::mutex> lock(mutex_);
    if (current_)
        current_->redraw();
}

void Player::set_area(const Rect &area)
{
    display_->set_area(area);
    const std::lock_guard<std::mutex> lock(mutex_);
    if (current_)
        current_->redraw();
}

int Player::prepare_async(player_prepared_cb callback, void *user_data)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    if (state_ != PLAYER_STATE_IDLE)
        return PLAYER_ERROR_INVALID_STATE;
    if (uri_.empty() || current_ || refused_)
        return PLAYER_ERROR_INVALID_OPERATION;
    if (media_uri(uri_).empty())
        return PLAYER_ERROR_INVALID_PARAMETER;
    if (!display_->has_plane())
        display_->set_plane(VideoPlane::offscreen(UNSEEN_WIDTH, UNSEEN_HEIGHT));
    std::shared_ptr<Playback> opened = take_ahead();
    if (!opened)
        opened = open({uri_, subtitle_}, false);
    if (!opened) {
        refused_ = true;
        schedule_release(nullptr);
        return PLAYER_ERROR_NONE;
    }
    if (options_->lookahead)
        options_->lookahead->on_begun({uri_, subtitle_});
    prepared_ = {callback, user_data};
    rate_ = 1.0;
    current_ = opened;
    schedule_release(current_);
    return PLAYER_ERROR_NONE;
}

std::shared_ptr<Playback> Player::open(const PlayedItem &item, bool ahead)
{
    PlaybackRequest request;
    request.uri = media_uri(item.path);
    request.subtitle = item.subtitle;
    request.display = display_;
    request.looping = looping_;
    request.ahead = ahead;
    request.options = options_;
    request.let_go_of = let_go_of_;
    request.previous = current_ ? current_->disposed() : previous_;
    request.before_previous = current_ ? previous_ : before_previous_;
    return Playback::open(std::move(request), playback_events());
}

// Where two files cannot share the sound device the second one would play in silence.
void Player::open_ahead(const PlayedItem &item)
{
    if (!audio_sink_is_shared())
        return;
    drop_ahead();
    const std::lock_guard<std::mutex> lock(mutex_);
    if (state_ != PLAYER_STATE_NONE && !media_uri(item.path).empty())
        ahead_ = {item.path, open(item, true)};
}

void Player::drop_ahead()
{
    std::shared_ptr<Playback> dropped;
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        dropped = std::exchange(ahead_, {}).playback;
        if (dropped)
            keep_as_previous(*dropped);
    }
    if (dropped)
        dropped->close();
}

std::shared_ptr<Playback> Player::take_ahead()
{
    const Ahead ahead = std::exchange(ahead_, {});
    if (!ahead.playback)
        return nullptr;
    if (ahead.uri != uri_) {
        keep_as_previous(*ahead.playback);
        ahead.playback->close();
        return nullptr;
    }
    ahead.playback->apply_request(subtitle_, looping_);
    return ahead.playback;
}

// The caller goes on about this file after the call that prepares it. So nothing is told before
// the main loop has come back to itself.
void Player::schedule_release(const std::shared_ptr<Playback> &playback)
{
    release_job_.reset();
    auto *release = new Release{weak_from_this(), playback};
    if (eina_main_loop_is())
        release_job_.reset(ecore_job_add(release_now, release));
    else
        ecore_main_loop_thread_safe_call_async(release_now, release);
}

void Player::ReleaseJobEnd::operator()(Ecore_Job *job) const
{
    if (eina_main_loop_is())
        delete static_cast<Release *>(ecore_job_del(job));
}

void Player::release_now(void *data)
{
    const std::unique_ptr<Release> release(static_cast<Release *>(data));
    const std::shared_ptr<Player> player = release->player.lock();
    const std::shared_ptr<Playback> playback = release->playback.lock();
    if (!playback) {
        if (player)
            player->report_refusal();
        return;
    }
    if (player) {
        const std::lock_guard<std::mutex> lock(player->mutex_);
        if (player->current_ == playback)
            static_cast<void>(player->release_job_.release()); // it goes by itself
    }
    playback->release_results();
}

void Player::report_refusal()
{
    notify(nullptr, [this]() -> std::function<void()> {
        if (!std::exchange(refused_, false))
            return {};
        static_cast<void>(release_job_.release()); // it goes by itself
        if (!error_.function)
            return {};
        return [callback = error_] {
            callback.function(PLAYER_ERROR_RESOURCE_LIMIT, callback.user_data);
        };
    });
}

void Player::unprepare()
{
    std::shared_ptr<Playback> former;
    {
        std::unique_lock<std::mutex> lock(mutex_);
        release_job_.reset();
        refused_ = false;
        former = std::exchange(current_, nullptr);
        if (former && state_ == PLAYER_STATE_IDLE)
            ++*let_go_of_;
        state_ = PLAYER_STATE_IDLE;
        uri_.clear();
        subtitle_.clear();
        rate_ = 1.0;
        if (former)
            keep_as_previous(*former);
        if (calling_thread_ != std::this_thread::get_id())
            call_over_.wait(lock, [this] { return !calling_; });
    }
    if (former)
        former->close();
}

int Player::start()
{
    const std::lock_guard<std::mutex> lock(mutex_);
    switch (state_) {
    case PLAYER_STATE_READY:
    case PLAYER_STATE_PAUSED:
        state_ = PLAYER_STATE_PLAYING;
        current_->start();
        return PLAYER_ERROR_NONE;
    case PLAYER_STATE_PLAYING:
        return PLAYER_ERROR_NONE;
    default:
        return PLAYER_ERROR_INVALID_STATE;
    }
}

int Player::stop()
{
    const std::lock_guard<std::mutex> lock(mutex_);
    if (state_ != PLAYER_STATE_READY && state_ != PLAYER_STATE_PLAYING &&
        state_ != PLAYER_STATE_PAUSED)
        return PLAYER_ERROR_INVALID_STATE;
    state_ = PLAYER_STATE_READY;
    rate_ = 1.0;
    current_->stop();
    return PLAYER_ERROR_NONE;
}

int Player::pause()
{
    const std::lock_guard<std::mutex> lock(mutex_);
    if (state_ != PLAYER_STATE_PLAYING)
        return PLAYER_ERROR_INVALID_STATE;
    state_ = PLAYER_STATE_PAUSED;
    current_->pause();
    // Nobody knows how long it is held.
    if (options_->lookahead)
        options_->lookahead->drop();
    return PLAYER_ERROR_NONE;
}

player_state_e Player::state() const
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return state_;
}

void Player::set_looping(bool looping)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    looping_ = looping;
    if (current_)
        current_->set_looping(looping);
}

int Player::set_rate(double rate)
{
    if (!std::isfinite(rate) || rate == 0 || std::fabs(rate) > FASTEST)
        return PLAYER_ERROR_INVALID_PARAMETER;
    const std::lock_guard<std::mutex> lock(mutex_);
    if (state_ != PLAYER_STATE_READY && state_ != PLAYER_STATE_PLAYING &&
        state_ != PLAYER_STATE_PAUSED)
        return PLAYER_ERROR_INVALID_STATE;
    rate_ = rate;
    current_->set_rate(rate, ++rate_request_);
    // Another decoder beside one that plays fast is too much, and the end is far away again.
    if (rate != 1.0 && options_->lookahead)
        options_->lookahead->drop();
    return PLAYER_ERROR_NONE;
}

double Player::rate() const
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return rate_;
}

PlayerStatus Player::status() const
{
    const std::lock_guard<std::mutex> lock(mutex_);
    PlayerStatus status;
    status.state = state_;
    status.rate = rate_;
    status.looping = looping_;
    status.stalls = stalls_;
    status.last_stall = last_stall_;
    if (!current_)
        return status;
    status.path = uri_;
    status.position_ms = milliseconds(current_->position());
    status.duration_ms = milliseconds(current_->duration());
    status.video = current_->video();
    status.has_subtitle = current_->has_subtitle();
    if (const std::chrono::milliseconds wait = current_->waits(); wait.count() > 0)
        status.looks_again_ms = wait.count();
    return status;
}

// Makes one callback, unless its file is no longer the current one. `change` runs with the mutex
// held, brings the state up to date and returns the call, which is made with the mutex released.
template <typename Change> void Player::notify(const Playback *from, Change change)
{
    std::unique_lock<std::mutex> lock(mutex_);
    call_over_.wait(lock, [this] { return !calling_; });
    if (current_.get() != from)
        return;
    const std::function<void()> call = change();
    if (!call)
        return;
    calling_ = true;
    calling_thread_ = std::this_thread::get_id();
    lock.unlock();
    call();
    lock.lock();
    calling_ = false;
    calling_thread_ = {};
    lock.unlock();
    call_over_.notify_all();
}

// They keep the player alive until the file's thread ends.
PlaybackEvents Player::playback_events()
{
    using std::placeholders::_1, std::placeholders::_2;
    const std::shared_ptr<Player> self = shared_from_this();
    PlaybackEvents events;
    events.prepared = std::bind(&Player::on_prepared, self, _1);
    events.completed = std::bind(&Player::on_completed, self, _1);
    events.sound_unsupported = std::bind(&Player::on_sound_unsupported, self, _1);
    events.failed = std::bind(&Player::on_failed, self, _1, _2);
    events.interrupted = std::bind(&Player::on_interrupted, self, _1);
    events.subtitle = std::bind(&Player::on_subtitle, self, _1, _2);
    events.normal_speed = std::bind(&Player::on_normal_speed, self, _1, _2);
    events.nearly_over = std::bind(&Player::on_nearly_over, self, _1);
    events.stalled = std::bind(&Player::on_stalled, self, _1);
    events.stale = std::bind(&Player::on_stale, self, _1);
    return events;
}

void Player::on_prepared(const Playback &from)
{
    notify(&from, [this]() -> std::function<void()> {
        state_ = PLAYER_STATE_READY;
        if (!prepared_.function)
            return {};
        return [callback = prepared_] { callback.function(callback.user_data); };
    });
}

void Player::on_completed(const Playback &from)
{
    notify(&from, [this]() -> std::function<void()> {
        state_ = PLAYER_STATE_READY;
        rate_ = 1.0;
        if (!completed_.function)
            return {};
        return [callback = completed_] { callback.function(callback.user_data); };
    });
}

void Player::on_sound_unsupported(const Playback &from)
{
    notify(&from, [this]() -> std::function<void()> {
        if (!error_.function)
            return {};
        return [callback = error_] {
            callback.function(PLAYER_ERROR_NOT_SUPPORTED_AUDIO_CODEC, callback.user_data);
        };
    });
}

void Player::keep_as_previous(const Playback &former)
{
    before_previous_ = std::exchange(previous_, former.disposed());
}

// A file that has failed is let go of at once, so that its call can be answered by another try.
void Player::discard_current()
{
    release_job_.reset();
    state_ = PLAYER_STATE_IDLE;
    rate_ = 1.0;
    keep_as_previous(*current_);
    current_.reset();
}

void Player::on_failed(Playback &from, int error_code)
{
    notify(&from, [this, error_code]() -> std::function<void()> {
        discard_current();
        if (!error_.function)
            return {};
        return
            [callback = error_, error_code] { callback.function(error_code, callback.user_data); };
    });
    from.close();
}

void Player::on_interrupted(Playback &from)
{
    notify(&from, [this]() -> std::function<void()> {
        discard_current();
        if (!interrupted_.function)
            return {};
        return [callback = interrupted_] {
            callback.function(PLAYER_INTERRUPTED_BY_RESOURCE_CONFLICT, callback.user_data);
        };
    });
    from.close();
}

void Player::on_subtitle(const Playback &from, const SubtitleTrack::Cue &cue)
{
    notify(&from, [this, &cue]() -> std::function<void()> {
        if (!subtitle_updated_.function)
            return {};
        const auto duration = static_cast<unsigned long>(cue.duration_ms);
        return [callback = subtitle_updated_, duration, text = std::string(cue.text)]() mutable {
            callback.function(duration, text.data(), 0, 0, nullptr, callback.user_data);
        };
    });
}

void Player::on_normal_speed(const Playback &from, uint64_t request)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    if (current_.get() == &from && request == rate_request_)
        rate_ = 1.0;
}

void Player::on_stalled(const Playback &from)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    if (current_.get() != &from)
        return;
    stalls_++;
    last_stall_ = uri_;
}

// What could not be prepared beside the file that played may well be prepared alone.
void Player::on_stale(Playback &from)
{
    std::unique_lock<std::mutex> lock(mutex_);
    if (current_.get() == &from) {
        std::shared_ptr<Playback> anew = open({uri_, subtitle_}, false);
        if (!anew) {
            lock.unlock();
            on_failed(from, PLAYER_ERROR_RESOURCE_LIMIT);
            return;
        }
        PLATFORM_LOGI("player", "%s is opened anew", uri_.c_str());
        keep_as_previous(from);
        current_ = std::move(anew);
        schedule_release(current_);
    }
    lock.unlock();
    from.close();
}

void Player::on_nearly_over(const Playback &from)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    // It may have been held or sped up meanwhile.
    if (options_->lookahead && current_.get() == &from && state_ == PLAYER_STATE_PLAYING &&
        rate_ == 1.0)
        options_->lookahead->on_nearly_over(uri_);
}

PlayerStatus current_player_status()
{
    const std::shared_ptr<Player> player = Player::latest();
    return player ? player->status() : PlayerStatus{};
}

} // namespace platform
