#include <algorithm>
#include <utility>

#include "log/platform_log.h"
#include "media_player.h"
#include "media_player/audio_sink.h"
#include "media_player/playback.h"

namespace platform {
namespace {

// A sound server that is well answers in a few milliseconds; judged, not measured.
constexpr auto LONGEST_ANSWER_OF_DEVICE = std::chrono::milliseconds(2000);

} // namespace

void Playback::on_decoder_missing(Track track, const std::string &what)
{
    failure_facts_.on_decoder_missing(track, what);
    if (track == Track::Sound)
        sound_unsupported_ = true;
}

void Playback::on_failure(const Failure &failure)
{
    if (phase_ >= Phase::Ended)
        return;
    if (!failure.details.empty())
        PLATFORM_LOGD("player", "%s: %s", name_.c_str(), failure.details.c_str());
    // A decoder that others have is one more reason to go on with the next file, where such are
    // passed over; a screen that others have is none.
    const bool may_pass_over =
        preparing() && request_.options->unplayable_files && failure.part != Failure::Part::Display;
    if (failure.busy && failure.part != Failure::Part::SoundDevice && !may_pass_over) {
        interrupt(failure.text);
        return;
    }
    switch (failure.part) {
    case Failure::Part::Sound:
        sound_unsupported_ = true;
        go_silent(failure.text);
        return;
    case Failure::Part::SoundDevice:
        forget_audio_sink();
        sound_.on_device_lost(Clock::now());
        go_silent(failure.text);
        return;
    default:
        break;
    }
    if (preparing())
        fail(failure.code, failure_facts_.why_no_picture(failure.text));
    else
        on_broken(failure.text);
}

// The pipeline is opened anew without its sound.
void Playback::go_silent(const std::string &why)
{
    if (!sound_.go_silent())
        return;
    const auto warn = [this, why] {
        PLATFORM_LOGW("player", "%s plays in silence: %s", name_.c_str(), why.c_str());
    };
    if (preparing()) {
        report_result(warn);
        phase_ = Phase::AwaitingFrame;
        begin_wait_for_first_frame();
        if (!open_again())
            fail(PLAYER_ERROR_INVALID_OPERATION, "it cannot be opened without sound either");
        return;
    }
    warn();
    reopen_at_position([this] { on_broken("it does not come back without sound"); });
}

void Playback::reopen_at_position(const std::function<void()> &give_up)
{
    const GstClockTime position = output_->position();
    const auto go_on = [this, position] {
        play_from(GST_CLOCK_TIME_IS_VALID(position) ? position : 0);
    };
    reopen(go_on, request_.options->first_frame_timeout, give_up);
}

// The last picture stays until the film is where it is to go on.
void Playback::reopen(const std::function<void()> &go_on, std::chrono::milliseconds limit,
                      const std::function<void()> &give_up)
{
    rounds_.reset();
    output_->set_visible(false);
    needs_rewind_ = true;
    if (!open_again()) {
        give_up();
        return;
    }
    if (phase_ == Phase::Ready)
        return;
    const auto ready = [this, go_on] {
        output_->set_visible(true);
        go_on();
    };
    await_ready(ready, limit, give_up);
}

// A sound server that has been stopped takes half a minute to be given up by its own library.
bool Playback::sound_device_hangs() const
{
    if (!sound_device_ || sound_.silent())
        return false;
    GST_OBJECT_LOCK(sound_device_.get());
    const bool opening = GST_STATE(sound_device_.get()) == GST_STATE_NULL &&
                         GST_STATE_NEXT(sound_device_.get()) == GST_STATE_READY;
    GST_OBJECT_UNLOCK(sound_device_.get());
    // Once it is open it knows only from its server what can be played.
    return opening || !WorkerThread::run_apart(
                          "sound-asker",
                          [device = sound_device_] {
                              const PadPtr entry(gst_element_get_static_pad(device.get(), "sink"));
                              if (entry)
                                  gst_caps_unref(gst_pad_query_caps(entry.get(), nullptr));
                          },
                          LONGEST_ANSWER_OF_DEVICE);
}

void Playback::on_sound_device_hangs()
{
    PLATFORM_LOGW("player", "the sound device does not answer; videos play in silence");
    avoid_audio_sink();
}

// Asked between two rounds of a file that plays over and over, which nothing else would ever bring
// its sound back to.
bool Playback::sound_is_back()
{
    if (break_.broken() || trick_->rate() != 1.0)
        return false;
    if (sound_.found_device())
        return true;
    if (sound_.try_is_due(pipeline_->has_sound(), Clock::now()))
        search_sound();
    return false;
}

// A sound server that hangs takes seconds to answer, and the next round would come late.
void Playback::search_sound()
{
    sound_search_.post([weak = weak_from_this(), find = request_.options->find_sound] {
        const bool found = find();
        if (const std::shared_ptr<Playback> playback = weak.lock())
            playback->thread_.post(
                [self = playback.get(), found] { self->sound_.on_search_over(found); });
    });
}

// A pipeline that was put together without a sound device takes none in later: it is opened anew.
void Playback::reopen_with_sound()
{
    sound_.on_device_found();
    const auto go_on = [this] {
        PLATFORM_LOGI("player", "%s plays with sound again", name_.c_str());
        play_from(0);
    };
    reopen(go_on, LONGEST_SEEK, [this] {
        sound_.on_failed_return();
        go_silent("its sound does not come back");
    });
}

void Playback::check_for_stall()
{
    StallWatch::Progress progress;
    progress.shown = output_->shown();
    const bool expected = phase_ == Phase::Playing && !break_.due();
    progress.held = !expected || wait_ || trick_->stepping();
    progress.hangs = expected && pipeline_->hangs();
    progress.rate = trick_->rate();
    progress.position = known(output_->position());
    progress.length = known(duration_);
    progress.arrivals = output_->arrivals();
    progress.in_hand = output_->in_hand();
    const Pipeline::Motion motion = pipeline_->motion();
    progress.clock = known(motion.clock);
    progress.coded = motion.coded;
    progress.decoding = motion.decoding;
    progress.sound = motion.sound;
    progress.sounding = motion.sounding;
    const auto here = progress.position.value_or(std::chrono::nanoseconds(0));
    const StallWatch::Verdict verdict = stall_.check(progress, Clock::now());
    if (verdict != StallWatch::Verdict::Wait && sound_device_hangs()) {
        on_sound_device_hangs();
        stall_.forgive();
        sound_.on_device_lost(Clock::now());
        go_silent("its sound device does not answer");
        return;
    }
    switch (verdict) {
    case StallWatch::Verdict::Wait:
        break;
    case StallWatch::Verdict::Restart:
        events_.stalled(*this);
        PLATFORM_LOGW("player", "%s stands still at %.1f s: no frame comes; it is opened anew",
                      name_.c_str(), std::chrono::duration<double>(here).count());
        reopen_at_position(
            [this] { give_up_stalled("it does not come back after it stood still"); });
        break;
    case StallWatch::Verdict::GiveUp:
        events_.stalled(*this);
        give_up_stalled("no frame comes any more");
        break;
    case StallWatch::Verdict::AtEnd:
        on_broken("it stands still near its end");
        break;
    }
}

// What hangs in it goes on to take memory, and a processor where it turns in circles; so it is not
// to do the same in each lap, where others can be played meanwhile.
void Playback::give_up_stalled(const std::string &why)
{
    UnplayableFiles *unplayable = request_.options->unplayable_files;
    if (unplayable && stamp_) {
        given_up_ = true;
        unplayable->note_stalls(name_, *stamp_, why);
    }
    on_broken(why);
}

/** It has been shown to its end, or in rounds to the end of one. */
void Playback::on_played()
{
    UnplayableFiles *unplayable = request_.options->unplayable_files;
    if (unplayable && !break_.broken())
        unplayable->forget_stalls(name_);
}

void Playback::on_broken(const std::string &why)
{
    if (!break_.on_broken(output_->shown(), Clock::now()))
        return;
    if (!std::exchange(damage_logged_, true))
        PLATFORM_LOGW("player", "%s is broken: %s", name_.c_str(), why.c_str());
    wait_.reset();
}

void Playback::check_broken()
{
    BreakWatch::Progress progress;
    progress.shown = output_->shown();
    progress.playing = phase_ == Phase::Playing;
    progress.looping = looping_ && !given_up_;
    progress.position = known(output_->position());
    switch (break_.check(progress, Clock::now())) {
    case BreakWatch::Verdict::Wait:
        break;
    case BreakWatch::Verdict::Restart:
        restart();
        break;
    case BreakWatch::Verdict::End:
        complete();
        break;
    }
}

void Playback::restart()
{
    break_.on_restart(output_->shown());
    const auto go_on = [this] {
        take_speed();
        if (!wait_)
            resume_pipeline();
    };
    reopen(go_on, LONGEST_SEEK, [this] { complete(); });
}

void Playback::fail(int error_code, const std::string &why)
{
    if (phase_ >= Phase::Failed)
        return;
    // Before the media system is up the machine is to blame, and no file.
    const bool may_pass_over = request_.options->unplayable_files && phase_ != Phase::SettingUp;
    end_in_failure([this, error_code, why, may_pass_over] {
        if (may_pass_over && pass_over(error_code, why))
            return;
        PLATFORM_LOGW("player", "%s cannot be played: %s", name_.c_str(), why.c_str());
        events_.failed(*this, error_code);
    });
}

void Playback::interrupt(const std::string &why)
{
    if (phase_ >= Phase::Failed)
        return;
    end_in_failure([this, why] {
        PLATFORM_LOGW("player", "%s was interrupted: %s", name_.c_str(), why.c_str());
        events_.interrupted(*this);
    });
}

void Playback::end_in_failure(std::function<void()> tell)
{
    if (preparing() && may_be_stale_) {
        become_stale();
        return;
    }
    phase_ = Phase::Failed;
    wait_.reset();
    output_->close();
    report_result(std::move(tell));
}

// What was to be told of it is told of the one that takes its place.
void Playback::become_stale()
{
    phase_ = Phase::Failed;
    wait_.reset();
    output_->close();
    if (held_results_)
        held_results_->clear();
    report_result([this] { events_.stale(*this); });
}

// There is nothing to show of it, so the last picture stays, and once it is started it is over.
bool Playback::pass_over(int error_code, const std::string &why)
{
    const PlayerOptions &options = *request_.options;
    const bool its_own_fault = failure_facts_.is_its_own_fault(error_code);
    const std::shared_ptr<VideoPlane> plane = request_.display->view().plane;
    // What a key took from the screen before its first picture might have shown one.
    const uint64_t progress =
        *request_.let_go_of + (plane ? plane->statistics().presented : uint64_t{0});
    // A file that comes too slowly is not to hold up the others again and again; but where none
    // comes, the disk or the machine may be slow.
    const FruitlessRounds::Verdict verdict = options.fruitless_rounds->on_passed_over(
        name_, its_own_fault && !failure_facts_.timed_out(), progress);
    if (verdict.give_up)
        return false;
    pass_over_time_ = verdict.pause;
    if (options.unplayable_files->note(name_, its_own_fault ? stamp_ : std::nullopt, why,
                                       failure_facts_.kind(error_code)))
        PLATFORM_LOGW("player", "%s cannot be played: %s; it is passed over", name_.c_str(),
                      why.c_str());
    phase_ = Phase::PassedOver;
    events_.prepared(*this);
    let_go_of_file();
    return true;
}

// What opens it may hang in a read: then all else goes on, and the file is let go of afterwards.
void Playback::let_go_of_file()
{
    subtitle_.give_up();
    const auto let_go = [this] {
        trick_.reset();
        pipeline_.reset();
        opener_.close();
    };
    if (!opener_.post(let_go))
        let_go(); // there is no thread for it
}

void Playback::end_passing_over()
{
    passing_over_ends_ = NEVER;
    events_.completed(*this);
}

std::chrono::milliseconds Playback::waits() const
{
    const Clock::time_point end = passing_over_ends_;
    if (end == NEVER)
        return {};
    return std::max(std::chrono::milliseconds(0),
                    std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()));
}

} // namespace platform
