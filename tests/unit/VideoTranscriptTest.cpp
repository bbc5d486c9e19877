// Every way through the operations on the media player: each state, each combination of failures.

#include <functional>
#include <set>

#include "player_lines.h"

namespace {

using Failures = std::set<std::string>;

// Every subset of the functions.
std::vector<Failures> subsets(const std::vector<std::string> &functions)
{
    std::vector<Failures> all;
    for (unsigned int bits = 0; bits < 1U << functions.size(); ++bits) {
        Failures failures;
        for (size_t i = 0; i < functions.size(); ++i) {
            if ((bits >> i & 1U) != 0)
                failures.insert(functions[i]);
        }
        all.push_back(failures);
    }
    return all;
}

std::string describe(const Failures &failures)
{
    std::string text = "failing:";
    for (const std::string &function : failures)
        text += " " + function;
    return text;
}

class VideoTranscriptTest : public PlayerTest {
  protected:
    // A set on which exactly these functions fail from now on.
    void begin(player_state_e state, float rate, const Failures &failures)
    {
        fake_.script = fake::Script();
        if (player_.m_hPlayer != nullptr)
            player_unprepare(player_.m_hPlayer);
        fake_.media.state = state;
        fake_.media.rate = rate;
        for (const std::string &function : failures)
            fake_.script.fail_always(function);
        fake_.forget();
    }

    // Which failures come about is part of the transcript.
    ~VideoTranscriptTest() override { fake_.script = fake::Script(); }
};

// ---- m_CreateVideoPlayer ----

struct Registration {
    const char *function;
    const char *error;
    bool ends_the_creation;
};

constexpr Registration REGISTRATIONS[] = {
    {"player_create", "player create error", true},
    {"player_set_completed_cb", "player_set_completed_cb error", true},
    {"player_set_interrupted_cb", "player_set_interrupted_cb error", true},
    {"player_set_error_cb", "player_set_error_cb error", true},
    {"player_set_subtitle_updated_cb_ex", "player_set_subtitle_updated_cb failed", false},
};

class VideoRegistrationTest : public VideoTranscriptTest,
                              public testing::WithParamInterface<size_t> {};

TEST_P(VideoRegistrationTest, AFailureEndsTheCreationAndLeavesWhatIsThere)
{
    const Registration &failing = REGISTRATIONS[GetParam()];
    Lines expected = {"I \"\""};
    for (size_t i = 0; i <= GetParam(); ++i)
        expected += std::string(REGISTRATIONS[i].function) + (i == 0 ? "()" : "(controller)");
    expected += std::string("E \"") + failing.error + "\"";
    fake_.fail(failing.function);

    EXPECT_EQ(player_.m_CreateVideoPlayer(), !failing.ends_the_creation);

    EXPECT_EQ(fake_.all(), expected);
    EXPECT_EQ(player_.m_hPlayer != nullptr, GetParam() > 0);
    EXPECT_EQ(fake_.transcript.count("player_destroy"), 0);
}

INSTANTIATE_TEST_SUITE_P(Calls, VideoRegistrationTest, testing::Range(size_t{0}, size_t{5}));

// ---- OnPlayVideo ----

struct PlayCase {
    player_state_e state;
    std::string subtitle;
    size_t list_size;
    Failures failures;

    bool fails(const char *function) const { return failures.count(function) != 0; }
    // A media player that still holds its last file takes no other.
    bool stuck() const { return fails("player_unprepare") && state != PLAYER_STATE_IDLE; }
    bool succeeds() const
    {
        return !fails("player_set_uri") && !fails("player_prepare_async") && !stuck();
    }

    Lines expected() const
    {
        Lines lines = {"I \"/demo/a.mp4 " + subtitle + "\"", "I \"\"", "player_get_state()"};
        if (!fails("player_get_state") && state != PLAYER_STATE_IDLE) {
            lines += "player_stop()";
            if (fails("player_stop"))
                lines += "E \"player_stop error\"";
        }
        lines += "player_unprepare()";
        if (fails("player_unprepare"))
            lines += "E \"player_unprepare error\"";
        if (!subtitle.empty()) {
            lines += "player_set_subtitle_path(\"" + subtitle + "\")";
            if (fails("player_set_subtitle_path") || stuck())
                lines += "E \"player_set_subtitle_path failed\"";
        }
        lines += "player_set_uri(\"/demo/a.mp4\")";
        if (fails("player_set_uri") || stuck())
            return lines += "E \"player_set_uri error\"";
        lines += "player_set_display(0, window#1)";
        if (fails("player_set_display"))
            lines += "E \"player_set_display error\"";
        lines += "player_prepare_async(controller)";
        if (fails("player_prepare_async"))
            return lines += "E \"player_prepare_async failed\"";
        const std::string loops = list_size == 1 ? "true" : "false";
        lines += "player_set_looping(" + loops + ")";
        if (fails("player_set_looping"))
            lines += "E \"player_set_looping " + loops + " failed\"";
        return lines += "I \"player_set_looping " + loops + " finish\"";
    }
};

TEST_F(VideoTranscriptTest, PlayingAVideoInEveryStateWithEveryCombinationOfFailures)
{
    make_window();
    make_video_player();
    const std::vector<Failures> combinations = subsets(
        {"player_get_state", "player_stop", "player_unprepare", "player_set_subtitle_path",
         "player_set_uri", "player_set_display", "player_prepare_async", "player_set_looping"});
    for (const Failures &failures : combinations) {
        for (const auto state :
             {PLAYER_STATE_IDLE, PLAYER_STATE_READY, PLAYER_STATE_PLAYING, PLAYER_STATE_PAUSED}) {
            for (const char *subtitle : {"", "/demo/a.srt"}) {
                for (const size_t size : {1U, 2U}) {
                    const PlayCase now = {state, subtitle, size, failures};
                    fill_play_list(std::vector<std::string>(size, "a.mp4"));
                    begin(state, 1.0F, failures);
                    player_.m_iVideoPlayerState = 2;

                    EXPECT_EQ(player_.OnPlayVideo("/demo/a.mp4", subtitle), now.succeeds());

                    ASSERT_EQ(fake_.all(), now.expected())
                        << "state " << state << ", " << size << " entries, " << describe(failures);
                    EXPECT_EQ(player_.m_iVideoPlayerState, now.succeeds() ? 1 : 0);
                }
            }
        }
    }
}

// ---- Questions, pause, resume, trick speeds ----

struct TrickCase {
    bool has_player;
    player_state_e state;
    float rate;
    Failures failures;

    bool fails(const std::string &function) const { return failures.count(function) != 0; }
    // The media player refuses what does not fit its state.
    bool opened() const { return has_player && state >= PLAYER_STATE_READY; }
    std::string call(const std::string &function, const std::string &arguments = "") const
    {
        if (has_player)
            return function + "(" + arguments + ")";
        return function + "(null" + (arguments.empty() ? "" : ", ") + arguments + ")";
    }

    // What each operation is told to do; the result and the lines behind the ones so far.
    int player_state(Lines &lines) const
    {
        lines += "D \"\"";
        if (!has_player) {
            lines += "W \"hPlayer is null\"";
            return 0;
        }
        lines += "player_get_state()";
        if (!fails("player_get_state"))
            return state;
        lines += "E \"player_get_state error\"";
        return 0;
    }
    int playback_status(Lines &lines) const
    {
        lines += {"D \"\"", call("player_get_state")};
        if (!has_player || fails("player_get_state")) {
            lines += "E \"player_get_state error\"";
            return 1;
        }
        lines += "I \"" + std::to_string(state) + " \"";
        return state;
    }
    bool trick_speed(Lines &lines, int speed) const
    {
        lines += "I \"" + std::to_string(static_cast<double>(speed)) + "\"";
        lines += call("player_set_playback_rate", std::to_string(speed));
        if (opened() && !fails("player_set_playback_rate"))
            return true;
        lines += "E \"player_set_playback_rate error\"";
        return false;
    }
    // Starting or pausing, at normal speed.
    bool change(Lines &lines, const std::string &function) const
    {
        trick_speed(lines, 1);
        lines += call(function);
        if (!fails(function))
            return true;
        lines += "E \"" + function + " error\"";
        return false;
    }
    bool pause(Lines &lines) const
    {
        lines += "D \"\"";
        if (player_state(lines) == 3)
            return change(lines, "player_pause");
        lines += "I \"playerState is not PLAYING\"";
        return false;
    }
    bool resume(Lines &lines) const
    {
        lines += "D \"\"";
        const int now = player_state(lines);
        lines += "D \"playerState:" + std::to_string(now) + "\"";
        if (now == 4)
            return change(lines, "player_start");
        lines += call("player_get_playback_rate");
        if (!has_player || fails("player_get_playback_rate")) {
            lines += "E \"player_get_playback_rate error\"";
            return false;
        }
        lines += "D \"dSpeed:" + std::to_string(static_cast<double>(rate)) + "\"";
        if (now == 3 && rate != 1.0F)
            return change(lines, "player_start");
        lines += "I \"playerState is not PAUSED\"";
        return false;
    }
    bool resume_or_pause(Lines &lines) const
    {
        lines += "D \"\"";
        switch (player_state(lines)) {
        case 4:
            return change(lines, "player_start");
        case 3:
            return change(lines, "player_pause");
        default:
            return true;
        }
    }
    bool skim(Lines &lines, int speed) const
    {
        // The media player is at the same speed and in the same state after a resumption that
        // failed; after one that worked it plays.
        TrickCase then = *this;
        if (playback_status(lines) == 4) {
            if (resume(lines))
                then.state = PLAYER_STATE_PLAYING;
        }
        then.trick_speed(lines, speed);
        return true;
    }
    bool forward(Lines &lines) const { return skim(lines, 2); }
    bool rewind(Lines &lines) const { return skim(lines, -2); }
};

class TrickPlayTest : public VideoTranscriptTest {
  protected:
    // Runs a check in every state, at each speed, with every combination of failures.
    template <typename Check> void in_every_case(Check check)
    {
        const std::vector<Failures> combinations =
            subsets({"player_get_state", "player_set_playback_rate", "player_get_playback_rate",
                     "player_start", "player_pause"});
        for (const bool has_player : {false, true}) {
            if (has_player)
                make_video_player();
            for (const Failures &failures : combinations) {
                for (int state = has_player ? 1 : 0; state <= (has_player ? 4 : 0); ++state) {
                    for (const float rate : {1.0F, 2.0F, -2.0F, 0.5F}) {
                        const auto player_state = static_cast<player_state_e>(state);
                        begin(player_state, rate, failures);
                        SCOPED_TRACE("state " + std::to_string(state) + ", speed " +
                                     std::to_string(rate) + ", " + describe(failures));
                        check(TrickCase{has_player, player_state, rate, failures});
                        if (HasFailure())
                            return;
                    }
                }
            }
        }
    }

    // Compares an operation's result and transcript with what is expected.
    template <typename Operation, typename Expectation>
    void expect_case(const TrickCase &now, Operation operation, Expectation expectation)
    {
        fake_.forget();
        Lines expected;
        EXPECT_EQ(std::invoke(operation, player_), std::invoke(expectation, now, expected));
        EXPECT_EQ(fake_.all(), expected);
    }

    template <typename Operation, typename Expectation>
    void expect_in_every_case(Operation operation, Expectation expectation)
    {
        in_every_case([&](const TrickCase &now) { expect_case(now, operation, expectation); });
    }
};

TEST_F(TrickPlayTest, ThePlayersStateIsAskedAndToldInEveryCase)
{
    expect_in_every_case(&CPlayerInspector::m_GetPlayerState, &TrickCase::player_state);
}

TEST_F(TrickPlayTest, ThePlayBackStatusIsAskedAndToldInEveryCase)
{
    expect_in_every_case(&CPlayerInspector::m_GetPlayBackStatus, &TrickCase::playback_status);
}

TEST_F(TrickPlayTest, ASpeedIsSetOrRefusedInEveryCase)
{
    in_every_case([this](const TrickCase &now) {
        for (const int speed : {1, 2, -2})
            expect_case(
                now, [=](CPlayerInspector &player) { return player.m_SetTrickSpeed(speed); },
                [=](const TrickCase &then, Lines &lines) {
                    return then.trick_speed(lines, speed);
                });
    });
}

TEST_F(TrickPlayTest, OnlyAPlayingVideoIsPaused)
{
    expect_in_every_case(&CPlayerInspector::OnPause, &TrickCase::pause);
}

TEST_F(TrickPlayTest, OnlyAPausedOrFastVideoIsResumed)
{
    expect_in_every_case(&CPlayerInspector::OnResume, &TrickCase::resume);
}

TEST_F(TrickPlayTest, TheToggleResumesOrPausesInEveryCase)
{
    expect_in_every_case(&CPlayerInspector::OnResumeOrPause, &TrickCase::resume_or_pause);
}

TEST_F(TrickPlayTest, ForwardResumesAPausedVideoAndDoublesTheSpeed)
{
    expect_in_every_case(&CPlayerInspector::m_Forward, &TrickCase::forward);
}

TEST_F(TrickPlayTest, RewindResumesAPausedVideoAndTurnsTheSpeedRound)
{
    expect_in_every_case(&CPlayerInspector::m_Rewind, &TrickCase::rewind);
}

} // namespace
