#include "media_player/progress_watch.h"

#include <algorithm>
#include <utility>

namespace platform {
namespace {

// A file whose end should have been reached is given up after this long without a frame. Long
// enough for a stick that wakes up; a film of stills with longer ones is saved by its length.
constexpr auto SHORTEST_STALL = std::chrono::milliseconds(4000);

// Of the time between two looks no more than so many intervals count: a busy machine looks late,
// but one that looks so late was stopped.
constexpr int LATEST_LOOK = 2;

// No film pauses its sound for longer while it has no pictures either. Broken files have times that
// are hours ahead; what the sink for pictures does about them, those for sound do not.
constexpr auto LONGEST_SILENCE = std::chrono::minutes(10);

// What was decoded before a file broke is still shown; this long without a frame is the end.
// Several times the distance of frames, even of slow ones.
constexpr auto BREAK_PATIENCE = std::chrono::milliseconds(700);

// The same for a file that broke before it was started, whose first frame is still to come.
constexpr auto BREAK_START_PATIENCE = std::chrono::milliseconds(1000);

// A looping file that breaks sooner in its film is not begun anew: there is too little of it.
constexpr auto SHORTEST_LIFE = std::chrono::milliseconds(1000);

// Opening a file takes some tenths of a second, several times that on a cold disk or a small
// machine that decodes another one meanwhile. Its memory is taken for no longer. A short film's
// beginning, when the one before it goes away, is left in peace.
constexpr std::chrono::nanoseconds NEAR_THE_END = std::chrono::seconds(4);

// Some readers learn how long a film is while they read it; where nobody does, its end comes
// unawares. A successor that is open for the whole of a film would cost more than it gains.
constexpr std::chrono::nanoseconds LENGTH_INTERVAL = std::chrono::seconds(2);

// The newest frame may stand, and the end with it; that is no reason to look all the time.
constexpr std::chrono::nanoseconds SHORTEST_INTERVAL = std::chrono::milliseconds(100);

// Whether the decoder, as far as two looks tell, owes no picture: it has been given nothing to make
// one of. Sound that goes on says then that the reader has none.
bool owes_no_picture(const StallWatch::Progress &before, const StallWatch::Progress &now)
{
    return now.coded == before.coded && !now.decoding;
}

// Whether the looks differ in what is seen or heard of the file.
bool goes_on(const StallWatch::Progress &before, const StallWatch::Progress &now)
{
    return now.shown != before.shown || now.arrivals != before.arrivals ||
           (now.sound != before.sound && owes_no_picture(before, now));
}

// Whether what waits for its time may hope for it.
bool clock_goes(const StallWatch::Progress &before, const StallWatch::Progress &now)
{
    return now.clock && now.clock != before.clock;
}

} // namespace

void StallWatch::start(Time now)
{
    last_look_ = now;
    due_ = now + interval();
    still_ = waiting_ = {};
    restarted_ = false;
}

StallWatch::Verdict StallWatch::check(const Progress &progress, Time now)
{
    const auto passed = std::min<std::chrono::nanoseconds>(now - std::exchange(last_look_, now),
                                                           LATEST_LOOK * interval());
    due_ = now + interval();
    const Progress before = std::exchange(seen_, progress);
    still_ += passed;
    waiting_ += passed;
    if (progress.held || goes_on(before, progress))
        still_ = waiting_ = {};
    const bool sound_waits =
        progress.sounding && owes_no_picture(before, progress) && still_ < LONGEST_SILENCE;
    if ((progress.in_hand || sound_waits) && clock_goes(before, progress))
        waiting_ = {};
    if (progress.hangs || waiting_ >= patience_) {
        waiting_ = {};
        return std::exchange(restarted_, true) ? Verdict::GiveUp : Verdict::Restart;
    }
    if (still_ < SHORTEST_STALL || !progress.length || !progress.position || progress.rate < 0)
        return Verdict::Wait;
    const std::chrono::duration<double, std::nano> gone = still_ * progress.rate;
    return *progress.position + gone > *progress.length ? Verdict::AtEnd : Verdict::Wait;
}

void BreakWatch::on_new_pipeline()
{
    broken_ = false;
    due_.reset();
}

bool BreakWatch::on_broken(uint64_t shown, Time now)
{
    if (due_)
        return false;
    broken_ = true;
    shown_ = shown;
    due_ = now + BREAK_PATIENCE;
    return true;
}

void BreakWatch::on_start(Time now)
{
    if (due_)
        due_ = now + BREAK_START_PATIENCE;
}

BreakWatch::Verdict BreakWatch::check(const Progress &progress, Time now)
{
    if (!progress.playing || progress.shown != shown_) {
        shown_ = progress.shown;
        due_ = now + BREAK_PATIENCE;
        return Verdict::Wait;
    }
    due_.reset();
    // The position is that of the run before where this one has shown nothing.
    const bool lived =
        progress.shown > shown_before_ && progress.position && *progress.position >= SHORTEST_LIFE;
    return progress.looping && lived ? Verdict::Restart : Verdict::End;
}

bool EndWatch::check(const Progress &progress, Time now)
{
    due_.reset();
    if (!progress.length) {
        due_ = now + LENGTH_INTERVAL;
        return false;
    }
    const auto near = std::min(NEAR_THE_END, *progress.length / 2);
    const auto left = *progress.length - progress.position.value_or(std::chrono::nanoseconds(0));
    if (left <= near)
        return true;
    due_ = now + std::max(left - near, SHORTEST_INTERVAL);
    return false;
}

} // namespace platform
