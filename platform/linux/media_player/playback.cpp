#include "media_player/playback.h"

#include <algorithm>
#include <utility>

#include "log/platform_log.h"
#include "media_player.h"
#include "media_player/media_uri.h"

namespace platform {
namespace {

// How long a file's play waits for what. Unless it says otherwise a time was chosen by judgement
// and found to do in the tests; nothing measured stands behind the last digit.

// A file that goes away slowly, from a disk that was pulled out say, holds up the next no longer. A
// sound one is gone in far less; a second without a new picture is what a viewer still takes for a
// change of films.
constexpr auto LONGEST_WAIT_FOR_PREDECESSOR = std::chrono::milliseconds(1000);

// A load that was told to stop ends within milliseconds, unless its disk is gone: then it is left
// to itself, as it holds nothing of the file's. The next file waits this long anyway.
constexpr auto LONGEST_WAIT_FOR_SUBTITLE_END = LONGEST_WAIT_FOR_PREDECESSOR;

// How often a file that opens is looked after while nothing comes of it: often enough for a reader
// that gave up without a word to cost no more than a blink, seldom enough to cost no work.
constexpr auto LOOK_AFTER_OPENING = std::chrono::milliseconds(250);

// The first start on a machine looks at every plugin there is, which is slow on a small one with a
// cold disk. Nothing plays before its end, so it is given up late.
constexpr auto LONGEST_SET_UP = std::chrono::seconds(180);

const char *why_not_opened(int error_code)
{
    switch (error_code) {
    case PLAYER_ERROR_NO_SUCH_FILE:
        return "there is no such file";
    case PLAYER_ERROR_PERMISSION_DENIED:
        return "it may not be read";
    case PLAYER_ERROR_NOT_SUPPORTED_FILE:
        return "it is empty, or no ordinary file";
    default:
        return "it cannot be opened";
    }
}

} // namespace

std::shared_ptr<Playback> Playback::open(PlaybackRequest request, PlaybackEvents events)
{
    auto playback = std::make_shared<Playback>(std::move(request), std::move(events));
    Playback &self = *playback;
    WorkerThread::Hooks hooks;
    hooks.next_deadline = [&self] { return self.next_deadline(); };
    hooks.on_deadline = [&self] { self.act_on_deadline(); };
    // The thread keeps its file alive, and may outlive everybody else who knows it.
    hooks.at_end = [playback] { playback->dispose(); };
    if (!self.thread_.start(std::move(hooks))) {
        PLATFORM_LOGW("player", "there is no thread for %s", self.name_.c_str());
        return nullptr;
    }
    self.thread_.post([&self] { self.begin(); });
    return playback;
}

Playback::Playback(PlaybackRequest request, PlaybackEvents events)
    : request_(std::move(request)), events_(std::move(events)),
      output_(std::make_shared<FrameOutput>(request_.display, request_.options->sdr_white)),
      path_(local_path(request_.uri)), name_(path_.empty() ? request_.uri : path_),
      sound_(request_.options->sound_retry_interval), may_be_stale_(request_.ahead),
      looping_(request_.looping), subtitle_(request_.subtitle),
      stall_(request_.options->stall_patience)
{
}

Playback::~Playback() = default;

void Playback::apply_request(const std::string &subtitle, bool looping)
{
    thread_.post([this, subtitle, looping] {
        looping_ = looping;
        if (phase_ == Phase::Failed)
            return;
        waiting_since_ = Clock::now();
        if (sound_.lost_device() || !opener_.post([this, subtitle] { look_at_files(subtitle); }))
            become_stale();
        else
            look_due_ = waiting_since_ + request_.options->first_frame_timeout;
    });
}

// The disk may have stopped to answer since the file was opened.
void Playback::look_at_files(const std::string &subtitle)
{
    const std::optional<FileStamp> stamp = file_stamp(path_);
    const std::optional<FileStamp> subtitle_stamp = file_stamp(subtitle);
    thread_.post([this, stamp, subtitle, subtitle_stamp] {
        if (!std::exchange(look_due_, std::nullopt))
            return;
        if (phase_ != Phase::Failed) {
            if ((stamp_ && stamp_ != stamp) || subtitle_.is_outdated(subtitle, subtitle_stamp))
                become_stale();
            else
                take_subtitle(subtitle);
        }
        tell_results();
    });
}

void Playback::on_look_too_late()
{
    look_due_.reset();
    fail_for_time();
    tell_results();
}

void Playback::release_results()
{
    thread_.post([this] {
        released_ = true;
        tell_results();
    });
}

void Playback::tell_results()
{
    if (!released_ || look_due_ || !held_results_)
        return;
    const auto results = *std::exchange(held_results_, std::nullopt);
    for (const auto &result : results)
        result();
    if (phase_ == Phase::AwaitingSubtitle)
        await_subtitle();
    else if (phase_ == Phase::Prepared)
        finish_preparation();
}

void Playback::start()
{
    thread_.post([this] { do_start(); });
}

void Playback::pause()
{
    thread_.post([this] { do_pause(); });
}

void Playback::stop()
{
    thread_.post([this] { do_stop(); });
}

void Playback::set_rate(double rate, uint64_t request)
{
    thread_.post([this, rate, request] {
        rate_request_ = request;
        wanted_rate_ = rate;
        if (running())
            take_speed();
    });
}

void Playback::set_looping(bool looping)
{
    thread_.post([this, looping] {
        looping_ = looping;
        if (phase_ == Phase::Playing)
            end_.start(Clock::now());
    });
}

void Playback::redraw()
{
    thread_.post([this] {
        if (phase_ == Phase::Ended || phase_ == Phase::Paused)
            output_->redraw();
    });
}

void Playback::close()
{
    thread_.close();
    output_->close();
}

void Playback::begin()
{
    begin_wait_for_first_frame();
    if (!opener_.post([this] { open_file(); }))
        fail(PLAYER_ERROR_RESOURCE_LIMIT, "there is no thread to open it");
}

void Playback::dispose()
{
    subtitle_.give_up();
    sound_search_.close();
    opener_.close();
    opener_.wait_for_end({});
    trick_.reset();
    pipeline_.reset();
    subtitle_.wait_for_end(LONGEST_WAIT_FOR_SUBTITLE_END);
    events_ = {};
}

/** All that can fall due, the more urgent first. */
std::array<Playback::Deadline, 9> Playback::deadlines() const
{
    std::optional<Clock::time_point> step;
    if (phase_ == Phase::Playing && !wait_)
        step = trick_->deadline();
    const Clock::time_point end = passing_over_ends_;
    return {{{wait_ ? std::optional(wait_->limit) : std::nullopt, &Playback::on_ready_too_late},
             {look_due_, &Playback::on_look_too_late},
             {subtitle_.due(), &Playback::give_up_subtitle},
             {rounds_.due(), &Playback::on_round_due},
             {break_.due(), &Playback::check_broken},
             {stall_.due(), &Playback::check_for_stall},
             {step, &Playback::step_back},
             {end_.due(), &Playback::check_for_end},
             {end != NEVER ? std::optional(end) : std::nullopt, &Playback::end_passing_over}}};
}

std::optional<Playback::Clock::time_point> Playback::next_deadline() const
{
    std::optional<Clock::time_point> next;
    for (const Deadline &deadline : deadlines())
        if (deadline.time && (!next || *deadline.time < *next))
            next = deadline.time;
    return next;
}

void Playback::act_on_deadline()
{
    const auto now = Clock::now();
    for (const Deadline &deadline : deadlines())
        if (deadline.time && now >= *deadline.time) {
            (this->*deadline.act)();
            return;
        }
}

void Playback::await_ready(std::function<void()> next, std::chrono::milliseconds limit,
                           std::function<void()> too_late)
{
    wait_ = PipelineWait{std::move(next), Clock::now() + limit, std::move(too_late)};
}

void Playback::on_ready_too_late()
{
    std::exchange(wait_, std::nullopt)->too_late();
}

void Playback::begin_wait_for_first_frame()
{
    waiting_since_ = Clock::now();
    subtitle_.expect_by({});
    await_first_frame();
}

void Playback::await_first_frame()
{
    await_ready([this] { on_first_frame(); }, LOOK_AFTER_OPENING, [this] { on_nothing_came(); });
}

void Playback::open_file()
{
    const int code = try_open();
    thread_.post([this, code] {
        // Where the pipeline told a reason, that has been dealt with by now.
        if (code != PLAYER_ERROR_NONE && preparing() && !sound_.silent())
            fail(code, why_not_opened(code));
        else if (phase_ == Phase::Opening)
            phase_ = Phase::AwaitingFrame;
    });
}

int Playback::try_open()
{
    if (!request_.options->set_up(opener_.stopping()))
        return PLAYER_ERROR_INVALID_OPERATION;
    thread_.post([this] {
        if (phase_ != Phase::SettingUp)
            return;
        phase_ = Phase::Opening;
        begin_wait_for_first_frame();
    });
    wait_for_others();
    if (!path_.empty()) {
        if (const int code = check_media_file(path_))
            return code;
    }
    const std::optional<FileStamp> stamp = file_stamp(path_);
    thread_.post([this, stamp] { stamp_ = stamp; });
    const UnplayableFiles *unplayable = request_.options->unplayable_files;
    if (const auto why = unplayable && stamp ? unplayable->why(path_, *stamp) : std::nullopt) {
        thread_.post([this, why = *why] { fail(PLAYER_ERROR_NOT_SUPPORTED_FILE, why); });
        return PLAYER_ERROR_NONE;
    }
    output_->set_end_listener([this] { thread_.post([this] { on_round_shown(); }); });
    thread_.post([this] {
        if (preparing())
            read_subtitle();
    });
    if (thread_.stopping())
        return PLAYER_ERROR_NONE;
    make_pipeline();
    return pipeline_->open() ? PLAYER_ERROR_NONE : PLAYER_ERROR_INVALID_OPERATION;
}

// Two files can be open at a time, so that a change between them is quick, but no more. Where they
// cannot share the sound device the former one has to be gone.
void Playback::wait_for_others() const
{
    const std::shared_future<void> &other =
        audio_sink_is_shared() ? request_.before_previous : request_.previous;
    if (other.valid())
        other.wait_for(LONGEST_WAIT_FOR_PREDECESSOR);
}

// A pipeline that has seen an error is not fit for anything more: each new try takes a new one.
void Playback::make_pipeline()
{
    let_go_of_pipeline();
    generation_++;
    const PlayerOptions &options = *request_.options;
    const bool silent = sound_.silent();
    const auto make_sound_device = [this, &options] {
        ElementPtr device = options.make_audio_sink();
        const std::shared_ptr<GstElement> shared(
            device ? GST_ELEMENT(gst_object_ref(device.get())) : nullptr, GstObjectUnref());
        thread_.post([this, shared] { sound_device_ = shared; });
        return device;
    };
    pipeline_ = std::make_unique<Pipeline>(request_.uri, output_,
                                           silent ? Pipeline::AudioSinkMaker{} : make_sound_device,
                                           options.stall_patience, pipeline_events());
    sound_.on_pipeline(!silent && options.find_sound(), Clock::now());
    trick_.emplace(*pipeline_, *output_);
}

// One whose decoder hangs does not end, and is left to itself. Of its sinks, which are stopped
// first, nothing more comes.
void Playback::let_go_of_pipeline()
{
    trick_.reset();
    if (!pipeline_)
        return;
    WorkerThread::run_apart(
        "file-closer",
        [self = shared_from_this(),
         former = std::shared_ptr<Pipeline>(std::move(pipeline_))]() mutable { former.reset(); },
        LONGEST_WAIT_FOR_PREDECESSOR);
}

// The opener has nothing to do any more, unless it hangs in what is to be opened anew.
bool Playback::open_again()
{
    const auto idle = std::make_shared<std::promise<void>>();
    if (opener_.post([idle] { idle->set_value(); }) &&
        idle->get_future().wait_for(request_.options->stall_patience) ==
            std::future_status::timeout)
        return false;
    break_.on_new_pipeline();
    make_pipeline();
    return pipeline_->open_in_time();
}

PipelineEvents Playback::pipeline_events()
{
    // What a pipeline told before it was replaced is of no interest any more.
    const auto post = [this, generation = generation_](WorkerThread::Task task) {
        thread_.post([this, generation, task = std::move(task)] {
            if (generation == generation_)
                task();
        });
    };
    PipelineEvents events;
    events.ready = [this, post] {
        post([this] {
            if (wait_)
                std::exchange(wait_, std::nullopt)->ready();
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
    events.format_refused = [this, post](const std::string &what) {
        post([this, what] { failure_facts_.on_format_refused(what); });
    };
    events.frame_dropped = [this] {
        if (count_drops_)
            output_->count_dropped();
    };
    events.fields_halved = [this] {
        PLATFORM_LOGW("player",
                      "%s is interlaced, and this machine too slow to show each of its fields: it "
                      "goes on with one picture a frame, and tries two now and then",
                      name_.c_str());
    };
    events.clock_lost = [this, post] {
        post([this] {
            if (phase_ == Phase::Playing && !trick_->stepping()) {
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
        fail(PLAYER_ERROR_NOT_SUPPORTED_VIDEO_CODEC,
             failure_facts_.why_no_picture("it has no picture"));
        return;
    }
    if (pipeline_->is_photo()) {
        fail(PLAYER_ERROR_NOT_SUPPORTED_FILE, "it is a photo");
        return;
    }
    duration_ = pipeline_->duration();
    phase_ = Phase::AwaitingSubtitle;
    await_subtitle();
}

void Playback::on_nothing_came()
{
    const auto waited = Clock::now() - waiting_since_;
    const auto timeout = request_.options->first_frame_timeout;
    if (waited > (phase_ == Phase::SettingUp ? LONGEST_SET_UP : timeout))
        fail_for_time();
    else if (phase_ == Phase::AwaitingFrame && pipeline_ && pipeline_->reader_gave_up())
        fail(PLAYER_ERROR_NOT_SUPPORTED_FILE, "its reader found nothing in it");
    else if (waited > timeout / 2 && sound_device_hangs()) {
        // What opens it cannot be had back: another one does it, in silence.
        on_sound_device_hangs();
        become_stale();
    } else if (waited > timeout / 2 && output_->width() > 0 && !sound_.silent())
        // Pictures but no sound arrived: a sound track without contents must not stop the show.
        go_silent("no sound arrives");
    else
        await_first_frame();
}

void Playback::fail_for_time()
{
    // One that was asked for has been waited for long enough.
    may_be_stale_ = may_be_stale_ && !released_;
    failure_facts_.on_timed_out();
    fail(PLAYER_ERROR_NOT_SUPPORTED_FILE, "its first frame does not come");
}

void Playback::read_subtitle()
{
    const auto deliver = [weak = weak_from_this()](const SubtitleReading::Result &result) {
        if (const std::shared_ptr<Playback> playback = weak.lock())
            playback->thread_.post(
                [self = playback.get(), result] { self->on_subtitle_read(result); });
    };
    if (!subtitle_.begin(request_.options->load_subtitle, deliver))
        warn_about_subtitle("there is no thread to read it");
}

// A file that was opened ahead may have been opened with another one, or with none.
void Playback::take_subtitle(const std::string &path)
{
    if (path == subtitle_.path())
        return;
    subtitle_.want(path);
    has_subtitle_ = false;
    output_->set_subtitle(nullptr, {});
    read_subtitle();
    if (phase_ == Phase::Prepared)
        phase_ = Phase::AwaitingSubtitle;
    if (phase_ == Phase::AwaitingSubtitle)
        await_subtitle();
}

// Of a file that is open ahead it may take its time, as nobody waits for it.
void Playback::await_subtitle()
{
    if (subtitle_.pending()) {
        if (!held_results_)
            subtitle_.expect_by(Clock::now() + request_.options->subtitle_timeout);
        return;
    }
    subtitle_.expect_by({});
    phase_ = Phase::Prepared;
    if (!held_results_)
        finish_preparation();
}

void Playback::on_subtitle_read(const SubtitleReading::Result &result)
{
    if (!subtitle_.accept(result)) {
        read_subtitle(); // unless it was of no interest any more
        return;
    }
    if (result.track) {
        has_subtitle_ = true;
        output_->set_subtitle(result.track, [this](const SubtitleTrack::Cue &cue) {
            thread_.post([this, cue] { events_.subtitle(*this, cue); });
        });
    } else {
        warn_about_subtitle(result.error);
    }
    if (phase_ == Phase::AwaitingSubtitle)
        await_subtitle();
}

void Playback::give_up_subtitle()
{
    subtitle_.give_up();
    warn_about_subtitle("it was not read in time");
    await_subtitle();
}

void Playback::warn_about_subtitle(const std::string &why)
{
    report_result([this, why, subtitle = subtitle_.path()] {
        // A guess that was not asked for is nobody's loss.
        if (subtitle == subtitle_.path())
            PLATFORM_LOGW("player", "%s plays without its subtitle %s: %s", name_.c_str(),
                          subtitle.c_str(), why.c_str());
    });
}

void Playback::report_result(std::function<void()> result)
{
    if (held_results_)
        held_results_->push_back(std::move(result));
    else
        result();
}

// Runs when the caller has said all it wants to say about this file, looping included.
void Playback::finish_preparation()
{
    if (sound_unsupported_ && !pipeline_->has_sound()) {
        const std::string missing = failure_facts_.missing_decoders(Track::Sound);
        if (!missing.empty())
            PLATFORM_LOGW("player", "%s plays in silence: no decoder is installed for it (%s)",
                          name_.c_str(), missing.c_str());
        events_.sound_unsupported(*this);
    }
    const auto prepared = [this] {
        phase_ = Phase::Ready;
        if (UnplayableFiles *unplayable = request_.options->unplayable_files)
            unplayable->forget(name_);
        events_.prepared(*this);
    };
    if (!looping_ || !pipeline_->goes_in_rounds()) {
        prepared();
        return;
    }
    // A stretch that ends in a round has to be one from the beginning; seeking later would show.
    if (trick_->begin(1.0, 0, false, true, Clock::now()) == TrickPlay::Next::AwaitFrame)
        await_ready(prepared, LONGEST_SEEK, prepared);
    else
        prepared();
}

} // namespace platform
