// The media player as its caller sees it: states, and which callback comes when.

#include <algorithm>
#include <mutex>
#include <string>
#include <vector>

#include "media_player.h"
#include "seam_test.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class MediaPlayerSeam : public SeamTest {
  protected:
    void SetUp() override
    {
        SeamTest::SetUp();
        ASSERT_EQ(player_create(&player_), PLAYER_ERROR_NONE);
        player_set_completed_cb(player_, on_completed, this);
        player_set_error_cb(player_, on_error, this);
    }

    void TearDown() override
    {
        if (player_)
            player_destroy(player_);
        SeamTest::TearDown();
    }

    player_state_e state() const
    {
        player_state_e state = PLAYER_STATE_NONE;
        EXPECT_EQ(player_get_state(player_, &state), PLAYER_ERROR_NONE);
        return state;
    }

    float rate() const
    {
        float rate = 0;
        EXPECT_EQ(player_get_playback_rate(player_, &rate), PLAYER_ERROR_NONE);
        return rate;
    }

    int prepare(const std::string &file)
    {
        if (const int failed = player_set_uri(player_, file.c_str()))
            return failed;
        return player_prepare_async(player_, on_prepared, this);
    }

    /** Brings the player into a state on its shortest way. */
    void reach(player_state_e wanted)
    {
        if (wanted >= PLAYER_STATE_READY) {
            ASSERT_EQ(prepare(set_under_test::good_video()), PLAYER_ERROR_NONE);
            ASSERT_TRUE(
                set_under_test::goes_on_until([this] { return state() == PLAYER_STATE_READY; }));
        }
        if (wanted >= PLAYER_STATE_PLAYING) {
            ASSERT_EQ(player_start(player_), PLAYER_ERROR_NONE);
        }
        if (wanted == PLAYER_STATE_PAUSED) {
            ASSERT_EQ(player_pause(player_), PLAYER_ERROR_NONE);
        }
        ASSERT_EQ(state(), wanted);
    }

    std::vector<std::string> told() const
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        return told_;
    }

    bool is_told(const std::string &event)
    {
        return set_under_test::goes_on_until([&] {
            const std::vector<std::string> all = told();
            return std::find(all.begin(), all.end(), event) != all.end();
        });
    }

    player_h player_ = nullptr;

  private:
    static void note(void *self, const std::string &event)
    {
        auto *test = static_cast<MediaPlayerSeam *>(self);
        const std::lock_guard<std::mutex> lock(test->mutex_);
        test->told_.push_back(event);
    }
    static void on_prepared(void *self) { note(self, "prepared"); }
    static void on_completed(void *self) { note(self, "completed"); }
    static void on_error(int, void *self) { note(self, "error"); }

    mutable std::mutex mutex_;
    std::vector<std::string> told_;
};

/** One call, the state it is made in, and what must come of it. */
struct Step {
    player_state_e in;
    const char *call;
    bool accepted;
    player_state_e then;
};

std::ostream &operator<<(std::ostream &out, const Step &step)
{
    return out << step.call << " in state " << step.in;
}

class MediaPlayerStates : public MediaPlayerSeam, public testing::WithParamInterface<Step> {
  protected:
    int make(const std::string &call)
    {
        if (call == "set_uri")
            return player_set_uri(player_, set_under_test::good_video().c_str());
        if (call == "set_subtitle_path")
            return player_set_subtitle_path(player_, "/subtitle.srt");
        if (call == "prepare_async")
            return player_prepare_async(
                player_, [](void *) {}, nullptr);
        if (call == "unprepare")
            return player_unprepare(player_);
        if (call == "start")
            return player_start(player_);
        if (call == "stop")
            return player_stop(player_);
        if (call == "pause")
            return player_pause(player_);
        if (call == "set_looping")
            return player_set_looping(player_, true);
        if (call == "set_rate")
            return player_set_playback_rate(player_, 2.0F);
        ADD_FAILURE() << "no such call: " << call;
        return -1;
    }
};

TEST_P(MediaPlayerStates, CallFitsTheStateOrChangesNothing)
{
    const Step step = GetParam();
    reach(step.in);

    const int result = make(step.call);

    EXPECT_EQ(result == PLAYER_ERROR_NONE, step.accepted) << "it answers " << result;
    EXPECT_EQ(state(), step.then);
}

constexpr player_state_e IDLE = PLAYER_STATE_IDLE;
constexpr player_state_e READY = PLAYER_STATE_READY;
constexpr player_state_e PLAYING = PLAYER_STATE_PLAYING;
constexpr player_state_e PAUSED = PLAYER_STATE_PAUSED;

INSTANTIATE_TEST_SUITE_P(
    , MediaPlayerStates,
    testing::Values(
        Step{IDLE, "set_uri", true, IDLE}, Step{IDLE, "set_subtitle_path", true, IDLE},
        Step{IDLE, "prepare_async", false, IDLE}, Step{IDLE, "unprepare", true, IDLE},
        Step{IDLE, "start", false, IDLE}, Step{IDLE, "stop", false, IDLE},
        Step{IDLE, "pause", false, IDLE}, Step{IDLE, "set_looping", true, IDLE},
        Step{IDLE, "set_rate", false, IDLE}, Step{READY, "set_uri", false, READY},
        Step{READY, "set_subtitle_path", false, READY}, Step{READY, "prepare_async", false, READY},
        Step{READY, "unprepare", true, IDLE}, Step{READY, "start", true, PLAYING},
        Step{READY, "stop", true, READY}, Step{READY, "pause", false, READY},
        Step{READY, "set_looping", true, READY}, Step{READY, "set_rate", true, READY},
        Step{PLAYING, "set_uri", false, PLAYING}, Step{PLAYING, "prepare_async", false, PLAYING},
        Step{PLAYING, "unprepare", true, IDLE}, Step{PLAYING, "start", true, PLAYING},
        Step{PLAYING, "stop", true, READY}, Step{PLAYING, "pause", true, PAUSED},
        Step{PLAYING, "set_looping", true, PLAYING}, Step{PLAYING, "set_rate", true, PLAYING},
        Step{PAUSED, "set_uri", false, PAUSED}, Step{PAUSED, "prepare_async", false, PAUSED},
        Step{PAUSED, "unprepare", true, IDLE}, Step{PAUSED, "start", true, PLAYING},
        Step{PAUSED, "stop", true, READY}, Step{PAUSED, "pause", false, PAUSED},
        Step{PAUSED, "set_looping", true, PAUSED}, Step{PAUSED, "set_rate", true, PAUSED}),
    [](const testing::TestParamInfo<Step> &step) {
        return std::string(step.param.call) + "_in_state_" + std::to_string(step.param.in);
    });

TEST_F(MediaPlayerSeam, PreparedIsToldOnceAndNotFromInsideTheCall)
{
    ASSERT_EQ(prepare(set_under_test::good_video()), PLAYER_ERROR_NONE);
    EXPECT_THAT(told(), IsEmpty());
    EXPECT_EQ(state(), PLAYER_STATE_IDLE);

    EXPECT_TRUE(is_told("prepared"));
    EXPECT_THAT(told(), ElementsAre("prepared"));
    EXPECT_EQ(state(), PLAYER_STATE_READY);
}

TEST_F(MediaPlayerSeam, NothingIsChangedWhileItPrepares)
{
    ASSERT_EQ(prepare(set_under_test::good_video()), PLAYER_ERROR_NONE);

    EXPECT_EQ(player_set_uri(player_, set_under_test::broken_video().c_str()),
              PLAYER_ERROR_INVALID_STATE);
    EXPECT_EQ(player_set_subtitle_path(player_, "/subtitle.srt"), PLAYER_ERROR_INVALID_STATE);
    EXPECT_NE(player_prepare_async(
                  player_, [](void *) {}, nullptr),
              PLAYER_ERROR_NONE);
    EXPECT_TRUE(is_told("prepared"));
}

TEST_F(MediaPlayerSeam, AFileThatCannotBePreparedIsAnErrorOnce)
{
    for (const std::string &file :
         {set_under_test::missing_video(), set_under_test::broken_video()}) {
        SCOPED_TRACE(file);
        const size_t before = told().size();
        ASSERT_EQ(prepare(file), PLAYER_ERROR_NONE);
        EXPECT_TRUE(set_under_test::goes_on_until([&] { return told().size() > before; }));
        EXPECT_EQ(state(), PLAYER_STATE_IDLE);
        EXPECT_NE(player_start(player_), PLAYER_ERROR_NONE);
        EXPECT_EQ(player_unprepare(player_), PLAYER_ERROR_NONE);
    }

    ASSERT_EQ(prepare(set_under_test::good_video()), PLAYER_ERROR_NONE);
    EXPECT_TRUE(is_told("prepared"));
    EXPECT_THAT(told(), ElementsAre("error", "error", "prepared"));
}

TEST_F(MediaPlayerSeam, APreparationThatWasGivenUpIsNotTold)
{
    ASSERT_EQ(prepare(set_under_test::missing_video()), PLAYER_ERROR_NONE);
    ASSERT_EQ(player_unprepare(player_), PLAYER_ERROR_NONE);
    ASSERT_EQ(prepare(set_under_test::good_video()), PLAYER_ERROR_NONE);

    EXPECT_TRUE(is_told("prepared"));
    EXPECT_THAT(told(), ElementsAre("prepared"));
}

TEST_F(MediaPlayerSeam, TheEndIsToldOnceAndTheFileIsReadyAgain)
{
    reach(PLAYER_STATE_PLAYING);

    EXPECT_TRUE(is_told("completed"));
    EXPECT_EQ(state(), PLAYER_STATE_READY);
    EXPECT_EQ(player_start(player_), PLAYER_ERROR_NONE);
    EXPECT_THAT(told(), ElementsAre("prepared", "completed"));
}

TEST_F(MediaPlayerSeam, UnprepareForgetsTheFile)
{
    reach(PLAYER_STATE_READY);
    ASSERT_EQ(player_unprepare(player_), PLAYER_ERROR_NONE);

    EXPECT_NE(player_prepare_async(
                  player_, [](void *) {}, nullptr),
              PLAYER_ERROR_NONE);
}

TEST_F(MediaPlayerSeam, SpeedIsKeptUntilTheFileIsStoppedOrLetGo)
{
    reach(PLAYER_STATE_READY);
    EXPECT_EQ(rate(), 1.0F);

    EXPECT_EQ(player_set_playback_rate(player_, -2.0F), PLAYER_ERROR_NONE);
    EXPECT_EQ(rate(), -2.0F);
    EXPECT_EQ(player_stop(player_), PLAYER_ERROR_NONE);
    EXPECT_EQ(rate(), 1.0F);

    EXPECT_EQ(player_set_playback_rate(player_, 2.0F), PLAYER_ERROR_NONE);
    EXPECT_EQ(player_unprepare(player_), PLAYER_ERROR_NONE);
    EXPECT_EQ(rate(), 1.0F);
}

TEST_F(MediaPlayerSeam, ASpeedThatIsNoneIsRefused)
{
    reach(PLAYER_STATE_READY);

    EXPECT_EQ(player_set_playback_rate(player_, 0.0F), PLAYER_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(rate(), 1.0F);
}

} // namespace
