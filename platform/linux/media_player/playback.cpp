#include "media_player/playback.h"

#include <algorithm>
#include <utility>

#include "log/platform_log.h"
#include "media_player.h"
#include "media_player/audio_sink.h"
#include "media_player/media_uri.h"
#include "media_player/playback_times.h"
#include "media_player/thread_start.h"

namespace platform {

std::shared_ptr<Playback> Playback::open(PlaybackRequest request,
                                         std::shared_ptr<PlaybackListener> listener)
{
    auto playback = std::make_shared<Playback>(std::move(request), std::move(listener));
    // The thread keeps its file alive, and may outlive everybody else who knows it.
    std::thread thread = start_thread("a file", [playback] { playback->run(); });
    if (!thread.joinable())
        return nullptr;
    thread.detach();
    return playback;
}

Playback::Playback(PlaybackRequest request, std::shared_ptr<PlaybackListener> listener)
    : request_(std::move(request)), listener_(std::move(listener)),
      output_(std::make_shared<FrameOutput>(request_.display)), disposed_(disposal_.get_future()),
      looping_(request_.looping), sound_pause_(request_.sound_pause)
{
    const std::string path = local_path(request_.uri);
    name_ = path.empty() ? request_.uri : path;
}

Playback::~Playback() = default;

void Playback::release_results()
{
    tasks_.post([this] {
        results_released_ = true;
        for (const auto &result : std::exchange(held_results_, {}))
            result();
    });
}

void Playback::start()
{
    tasks_.post([this] { do_start(); });
}

void Playback::pause()
{
    tasks_.post([this] {
        if (phase_ != Phase::Running || paused_)
            return;
        paused_ = true;
        trick_->set_running(false);
        pipeline_->hold();
    });
}

void Playback::stop()
{
    tasks_.post([this] { do_stop(); });
}

void Playback::set_rate(double rate, uint64_t request)
{
    tasks_.post([this, rate, request] {
        rate_request_ = request;
        wanted_rate_ = rate;
        if (phase_ == Phase::Running)
            take_speed(rate);
    });
}

void Playback::set_looping(bool looping)
{
    tasks_.post([this, looping] { looping_ = looping; });
}

void Playback::redraw()
{
    tasks_.post([this] {
        if (phase_ == Phase::Ended || (phase_ == Phase::Running && paused_))
            output_->redraw();
    });
}

void Playback::close()
{
    closing_ = true;
    tasks_.close();
    output_->close();
}

void Playback::run()
{
    disposal_.set_value_at_thread_exit();
    arm_first_frame();
    opener_ = start_thread("the opening of a file", [this] { open_file(); });
    if (!opener_.joinable())
        fail(PLAYER_ERROR_RESOURCE_LIMIT, "there is no thread to open it");
    while (!tasks_.closed()) {
        if (const TaskQueue::Task task = tasks_.take(next_deadline()))
            task();
        else if (!tasks_.closed())
            on_deadline();
    }
    dispose();
}

void Playback::dispose()
{
    if (subtitle_loader_)
        subtitle_loader_->stop();
    if (opener_.joinable())
        opener_.join();
    trick_.reset();
    pipeline_.reset();
    if (subtitle_loader_)
        subtitle_loader_->wait_for_end(LONGEST_WAIT_FOR_SUBTITLE_END);
    listener_.reset();
}

std::optional<Playback::Clock::time_point> Playback::next_deadline() const
{
    std::optional<Clock::time_point> next;
    const auto consider = [&next](const std::optional<Clock::time_point> &time) {
        if (time && (!next || *time < *next))
            next = time;
    };
    if (phase_ == Phase::Failed)
        return next;
    if (on_ready_)
        consider(ready_limit_);
    else if (phase_ == Phase::Running && !paused_)
        consider(trick_->deadline());
    consider(subtitle_limit_);
    consider(round_time_);
    consider(broken_check_);
    consider(progress_check_);
    return next;
}

void Playback::on_deadline()
{
    const auto now = Clock::now();
    if (on_ready_ && now >= ready_limit_) {
        on_ready_ = nullptr;
        std::exchange(on_too_late_, nullptr)();
    } else if (subtitle_limit_ && now >= *subtitle_limit_) {
        give_up_subtitle();
    } else if (round_time_ && now >= *round_time_) {
        round_time_.reset();
        next_round();
    } else if (broken_check_ && now >= *broken_check_) {
        check_broken();
    } else if (progress_check_ && now >= *progress_check_) {
        watch_progress();
    } else if (!on_ready_ && phase_ == Phase::Running && !paused_ && trick_->stepping()) {
        on_speed(trick_->step());
    }
}

void Playback::await_ready(std::function<void()> next, std::chrono::milliseconds limit,
                           std::function<void()> too_late)
{
    on_ready_ = std::move(next);
    on_too_late_ = std::move(too_late);
    ready_limit_ = Clock::now() + limit;
}

void Playback::arm_first_frame()
{
    opening_since_ = Clock::now();
    subtitle_limit_.reset();
    await_first_frame();
}

void Playback::await_first_frame()
{
    await_ready([this] { on_first_frame(); }, LOOK_AFTER_OPENING, [this] { on_nothing_came(); });
}

void Playback::open_file()
{
    const int code = try_open();
    tasks_.post([this, code] {
        opened_ = true;
        // Where the pipeline told a reason, that has been dealt with by now.
        if (code != PLAYER_ERROR_NONE && phase_ == Phase::Opening && !silent_)
            fail(code, "it cannot be opened");
    });
}

int Playback::try_open()
{
    if (!request_.set_up())
        return PLAYER_ERROR_INVALID_OPERATION;
    tasks_.post([this] {
        system_up_ = true;
        arm_first_frame();
    });
    wait_for_others();
    const std::string path = local_path(request_.uri);
    if (!path.empty()) {
        if (const int code = check_media_file(path))
            return code;
    }
    output_->set_end_listener([this] { tasks_.post([this] { on_round_shown(); }); });
    tasks_.post([this] { start_subtitle(); });
    if (closing_)
        return PLAYER_ERROR_NONE;
    make_pipeline();
    return pipeline_->open() ? PLAYER_ERROR_NONE : PLAYER_ERROR_INVALID_OPERATION;
}

// Two files can be open at a time, so that a change between them is quick, but no more. Where they
// cannot share the sound device the former one has to be gone.
void Playback::wait_for_others() const
{
    const std::shared_future<void> &other =
        audio_sink_is_shared() ? request_.before_predecessor : request_.predecessor;
    if (other.valid())
        other.wait_for(LONGEST_WAIT_FOR_PREDECESSOR);
}

// A pipeline that has seen an error is not fit for anything more: each new try takes a new one.
void Playback::make_pipeline()
{
    trick_.reset();
    pipeline_.reset();
    generation_++;
    broken_ = false;
    pipeline_ = std::make_unique<Pipeline>(
        request_.uri, output_, silent_ ? Pipeline::AudioSinkMaker{} : request_.make_audio_sink,
        pipeline_events());
    if (!silent_)
        without_device_ = !request_.find_sound();
    sound_trial_ = Clock::now() + sound_pause_;
    trick_.emplace(*pipeline_, *output_);
}

bool Playback::open_again()
{
    if (opener_.joinable())
        opener_.join();
    make_pipeline();
    return pipeline_->open();
}

PipelineEvents Playback::pipeline_events()
{
    // What a pipeline told before it was replaced is of no interest any more.
    const auto post = [this, generation = generation_](TaskQueue::Task task) {
        tasks_.post([this, generation, task = std::move(task)] {
            if (generation == generation_)
                task();
        });
    };
    PipelineEvents events;
    events.ready = [this, post] {
        post([this] {
            if (on_ready_)
                std::exchange(on_ready_, nullptr)();
        });
    };
    events.ended = [this, post] { post([this] { on_ended(); }); };
    events.round_read = [this, post](bool fresh) { post([this, fresh] { on_round_read(fresh); }); };
    events.failed = [this, post](const Failure &failure) {
        post([this, failure] { on_failure(failure); });
    };
    events.decoder_missing = [this, post](Track track, const std::string &what) {
        post([this, track, what] { on_decoder_missing(track, what); });
    };
    events.frame_dropped = [this] {
        if (count_drops_)
            output_->count_dropped();
    };
    events.clock_lost = [this, post] {
        post([this] {
            if (phase_ == Phase::Running && !paused_ && !trick_->stepping()) {
                pipeline_->hold();
                pipeline_->play();
            }
        });
    };
    return events;
}

void Playback::on_first_frame()
{
    if (!pipeline_->has_picture()) {
        fail(PLAYER_ERROR_NOT_SUPPORTED_VIDEO_CODEC, why_no_picture("it has no picture"));
        return;
    }
    if (pipeline_->is_photo()) {
        fail(PLAYER_ERROR_NOT_SUPPORTED_FILE, "it is a photo");
        return;
    }
    duration_ = pipeline_->duration();
    await_subtitle();
}

void Playback::on_nothing_came()
{
    const auto waited = Clock::now() - opening_since_;
    if (waited > (system_up_ ? request_.patience : LONGEST_SET_UP))
        fail(PLAYER_ERROR_NOT_SUPPORTED_FILE, "its first frame does not come");
    else if (opened_ && pipeline_ && pipeline_->reader_gave_up())
        fail(PLAYER_ERROR_NOT_SUPPORTED_FILE, "its reader found nothing in it");
    else if (waited > request_.patience / 2 && output_->width() > 0 && !silent_)
        // Pictures but no sound arrived: a sound track without contents must not stop the show.
        go_silent("no sound arrives");
    else
        await_first_frame();
}

void Playback::tell_result(std::function<void()> result)
{
    if (results_released_)
        result();
    else
        held_results_.push_back(std::move(result));
}

// Runs when the caller has said all it wants to say about this file, looping included.
void Playback::finish_preparation()
{
    if (phase_ != Phase::Opening)
        return;
    if (sound_unsupported_ && !pipeline_->has_sound()) {
        if (!missing_sound_.empty())
            PLATFORM_LOGW("player", "%s plays in silence: no decoder is installed for it (%s)",
                          name_.c_str(), missing_sound_.c_str());
        listener_->on_sound_unsupported(*this);
    }
    const auto prepared = [this] {
        phase_ = Phase::Ready;
        listener_->on_prepared(*this);
    };
    if (!looping_ || !pipeline_->goes_in_rounds()) {
        prepared();
        return;
    }
    // A stretch that ends in a round has to be one from the beginning; seeking later would show.
    if (trick_->begin(1.0, 0, false, true) == TrickPlay::Next::AwaitFrame)
        await_ready(prepared, LONGEST_SEEK, prepared);
    else
        prepared();
}

void Playback::fail(int error_code, const std::string &why)
{
    if (phase_ == Phase::Failed)
        return;
    PLATFORM_LOGW("player", "%s cannot be played: %s", name_.c_str(), why.c_str());
    phase_ = Phase::Failed;
    on_ready_ = nullptr;
    output_->close();
    tell_result([this, error_code] { listener_->on_failed(*this, error_code); });
}

void Playback::interrupt(const std::string &why)
{
    if (phase_ == Phase::Failed)
        return;
    PLATFORM_LOGW("player", "%s was interrupted: %s", name_.c_str(), why.c_str());
    phase_ = Phase::Failed;
    on_ready_ = nullptr;
    output_->close();
    tell_result([this] { listener_->on_interrupted(*this); });
}

} // namespace platform
