#include "still_picture/picture.h"

#include <algorithm>
#include <new>
#include <utility>

#include "log/platform_log.h"
#include "lookahead/lookahead.h"
#include "player_rules/photo_time.h"
#include "settings/settings.h"
#include "still_picture/compose.h"
#include "still_picture/picture_status.h"
#include "unplayable_files/fruitless_rounds.h"

namespace platform {

namespace {

/** A folder of broken pictures must not keep the set busy. */
constexpr std::chrono::milliseconds FAILURE_DELAY{200};

constexpr char NO_MEMORY[] = "no memory";

StillPicture *made_last = nullptr;

/** A photo is tried each time, whatever became of it before. */
void note_failure(const std::string &path, const char *reason, UnplayableFile::Kind kind)
{
    if (UnplayableFiles::get().note(path, std::nullopt, reason, kind))
        PLATFORM_LOGW("still picture", "%s: %s", path.c_str(), reason);
}

/** Of photos alone: videos among them have their own, with waits of their own. */
FruitlessRounds &rounds()
{
    // Never destroyed: a thread that hangs at a disk may outlive it.
    static auto &those_of_photos = *new FruitlessRounds;
    return those_of_photos;
}

} // namespace

StillPicture::StillPicture(std::string path, std::chrono::milliseconds patience)
    : _pictrel_s{}, path_(std::move(path)), patience_(patience)
{
}

StillPicture *StillPicture::create(std::string path, std::chrono::milliseconds patience)
{
    Lookahead::get().on_begun({path, {}});
    auto picture = std::make_shared<StillPicture>(std::move(path), patience);
    picture->self_ = picture;
    made_last = picture.get();
    return made_last;
}

StillPicture *StillPicture::latest()
{
    return made_last;
}

PictureStatus current_picture_status()
{
    const StillPicture *picture = StillPicture::latest();
    if (!picture)
        return {};
    // The size is the worker's until it has told of the header.
    if (!picture->rendered())
        return {picture->path()};
    return {picture->path(), true, picture->width, picture->height, picture->colour_profile()};
}

void StillPicture::destroy()
{
    const std::shared_ptr<StillPicture> last = std::move(self_);
    if (made_last == this)
        made_last = nullptr;
    {
        std::unique_lock<std::mutex> lock(mutex_);
        destroyed_ = true;
        const int own_call = worker_.is_calling() || watch_.is_calling() ? 1 : 0;
        delivered_.wait(lock, [&] { return delivering_ <= own_call; });
    }
    watch_.close();
    worker_.stop();
}

void StillPicture::set_plane(std::shared_ptr<VideoPlane> plane)
{
    plane_ = std::move(plane);
}

void StillPicture::set_mixer(bool on)
{
    mixer_ = on;
}

void StillPicture::set_callback(pictrel_event_type_e type, pictrel_event_cb callback, void *data)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    callbacks_[type] = {callback, data ? data : user_data};
}

bool StillPicture::parse()
{
    return begin(Phase::Created, Phase::Parsing, &StillPicture::read_header);
}

bool StillPicture::decode()
{
    return plane_ && begin(Phase::Parsed, Phase::Decoding, &StillPicture::read_pixels);
}

bool StillPicture::begin(Phase from, Phase to, void (StillPicture::*work)(Time))
{
    if (phase() != from)
        return false;
    set_phase(to);
    const Time asked = WorkerThread::Clock::now();
    // Watched before an event can have it destroyed, and not read where nobody watches.
    if (watch() &&
        worker_.post([self = shared_from_this(), work, asked] { (self.get()->*work)(asked); }))
        return true;
    set_phase(from);
    PLATFORM_LOGE("still picture", "no thread for %s", path_.c_str());
    return false;
}

// A disk may never answer, and nothing else takes the show on then.
bool StillPicture::watch()
{
    const std::shared_ptr<StillPicture> self = shared_from_this();
    WorkerThread::Hooks hooks;
    hooks.next_deadline = [self] { return self->look_due_; };
    hooks.on_deadline = [self] { self->look_after(); };
    return watch_.post(
        [self] {
            self->standstill_ = {};
            self->look_after();
        },
        std::move(hooks));
}

void StillPicture::look_after()
{
    look_due_.reset();
    const Phase now = phase();
    if (now != Phase::Parsing && now != Phase::Decoding)
        return;
    if (!standstill_.look(progress_.steps)) {
        look_due_ = WorkerThread::Clock::now() + patience_ / StandstillWatch::LOOKS;
        return;
    }
    if (!move_on(now, Phase::Failed))
        return;
    note_failure(path_, "its reading hangs", UnplayableFile::Kind::TooSlow);
    if (now == Phase::Parsing)
        deliver(PICTREL_EVENT_PARSE, PICTREL_RESULT_PARSE_FAILED);
    else
        deliver(PICTREL_EVENT_DECODE, PICTREL_RESULT_DECODE_FAILED);
}

void StillPicture::read_header(Time asked)
{
    if (plane_)
        decoded_ = PictureAhead::get().take(path_, panel(), progress_);
    if (!decoded_) {
        decoded_ = std::make_unique<DecodedPicture>();
        try {
            reader_ = std::make_unique<JpegReader>(progress_);
            if (!reader_->open(path_))
                return fail(PICTREL_EVENT_PARSE, PICTREL_RESULT_PARSE_FAILED, asked,
                            reader_->error(), reader_->error_kind());
        } catch (const std::bad_alloc &) {
            return fail(PICTREL_EVENT_PARSE, PICTREL_RESULT_PARSE_FAILED, asked, NO_MEMORY,
                        UnplayableFile::Kind::Refused);
        }
        decoded_->stored = reader_->size();
        decoded_->orientation = reader_->orientation();
    }
    const Size upright = decoded_->orientation.of(decoded_->stored);
    width = upright.width;
    height = upright.height;
    if (move_on(Phase::Parsing, Phase::Parsed))
        deliver(PICTREL_EVENT_PARSE, PICTREL_RESULT_PARSED);
}

void StillPicture::read_pixels(Time asked)
{
    try {
        if (reader_ && !reader_->decode(size_to_keep(decoded_->stored, panel()), decoded_->image))
            return fail(PICTREL_EVENT_DECODE, PICTREL_RESULT_DECODE_FAILED, asked, reader_->error(),
                        reader_->error_kind());
    } catch (const std::bad_alloc &) {
        return fail(PICTREL_EVENT_DECODE, PICTREL_RESULT_DECODE_FAILED, asked, NO_MEMORY,
                    UnplayableFile::Kind::Refused);
    }
    if (reader_)
        decoded_->profile = reader_->profile_use();
    reader_.reset();
    if (!decoded_->profile.fault.empty())
        PLATFORM_LOGW("still picture", "%s: shown as sRGB, because of its colour profile: %s",
                      path_.c_str(), decoded_->profile.fault.c_str());
    if (!move_on(Phase::Decoding, Phase::Decoded))
        return;
    UnplayableFiles::get().forget(path_);
    deliver(PICTREL_EVENT_DECODE, PICTREL_RESULT_DECODED);
}

Size StillPicture::panel() const
{
    return {plane_->width(), plane_->height()};
}

void StillPicture::fail(pictrel_event_type_e type, pictrel_event_result_e result, Time asked,
                        const char *reason, UnplayableFile::Kind kind)
{
    if (!move_on(type == PICTREL_EVENT_PARSE ? Phase::Parsing : Phase::Decoding, Phase::Failed))
        return;
    if (worker_.stopping())
        return;
    note_failure(path_, reason, kind);
    reader_.reset(); // the reason went with it
    std::chrono::milliseconds pause = FAILURE_DELAY;
    if (Settings::get().skip_broken_videos) {
        const uint64_t shown = plane_ ? plane_->statistics().presented : 0;
        pause = std::max(pause, rounds().on_passed_over(path_, true, shown).pause);
    }
    if (worker_.wait_until(asked + pause))
        deliver(type, result);
}

bool StillPicture::render()
{
    if (phase() != Phase::Decoded || !plane_)
        return false;
    rendered_ = true;
    // With the mixer on, rotate() is to follow; it draws the picture turned in one go.
    return mixer_ || show(0, PICTREL_EVENT_RENDER);
}

bool StillPicture::rotate(int degrees)
{
    return rendered_ && show(degrees, PICTREL_EVENT_ROTATE);
}

bool StillPicture::show(int degrees, pictrel_event_type_e done)
{
    const PlaneBufferPtr buffer = plane_->acquire();
    if (!buffer) {
        PLATFORM_LOGW("still picture", "no room on the plane for %s", path_.c_str());
        return false;
    }
    try {
        compose(decoded_->image, decoded_->stored, decoded_->orientation.then_clockwise(degrees),
                *buffer);
    } catch (const std::bad_alloc &) {
        PLATFORM_LOGW("still picture", "no memory to draw %s", path_.c_str());
        return false;
    }
    if (!plane_->present(buffer)) {
        PLATFORM_LOGW("still picture", "the plane is gone for %s", path_.c_str());
        post_event(PICTREL_EVENT_RESOURCE_CONFLICT, PICTREL_RESULT_RESOURCE_LOST);
        return false;
    }
    Lookahead::get().on_end_expected(path_, photo_time(Settings::get().rotator));
    post_event(done, PICTREL_RESULT_DONE);
    return true;
}

void StillPicture::post_event(pictrel_event_type_e type, pictrel_event_result_e result)
{
    worker_.post([self = shared_from_this(), type, result] { self->deliver(type, result); });
}

void StillPicture::deliver(pictrel_event_type_e type, pictrel_event_result_e result)
{
    Callback callback;
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        callback = callbacks_[type];
        if (destroyed_ || !callback.function)
            return;
        ++delivering_;
    }
    callback.function(callback.user_data, type, result);
    const std::lock_guard<std::mutex> lock(mutex_);
    --delivering_;
    delivered_.notify_all();
}

StillPicture::Phase StillPicture::phase()
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return phase_;
}

void StillPicture::set_phase(Phase phase)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    phase_ = phase;
}

/** @return false, and nothing is changed, where the picture was given up meanwhile */
bool StillPicture::move_on(Phase from, Phase to)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    if (phase_ != from)
        return false;
    phase_ = to;
    return true;
}

} // namespace platform
