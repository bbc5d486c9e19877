// Which call fits which state.

#include <cmath>
#include <future>

#include <gmock/gmock.h>

#include "player_fixture.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace player_test {
namespace {

constexpr int OK = PLAYER_ERROR_NONE;
constexpr int BAD_STATE = PLAYER_ERROR_INVALID_STATE;
constexpr int BAD_OPERATION = PLAYER_ERROR_INVALID_OPERATION;

struct Call {
    const char *name;
    std::function<int(platform::Player &)> make;
    int in_idle;
    int in_ready;
    int in_playing;
    int in_paused;
};

const std::vector<Call> &calls()
{
    using platform::Player;
    static const std::vector<Call> all = {
        {"set_uri", [](Player &p) { return p.set_uri("/x.mp4"); }, OK, BAD_STATE, BAD_STATE,
         BAD_STATE},
        {"set_subtitle_path", [](Player &p) { return p.set_subtitle_path("/x.srt"); }, OK,
         BAD_STATE, BAD_STATE, BAD_STATE},
        {"prepare_async", [](Player &p) { return p.prepare_async(nullptr, nullptr); },
         BAD_OPERATION, BAD_STATE, BAD_STATE, BAD_STATE},
        {"start", [](Player &p) { return p.start(); }, BAD_STATE, OK, OK, OK},
        {"stop", [](Player &p) { return p.stop(); }, BAD_STATE, OK, OK, OK},
        {"pause", [](Player &p) { return p.pause(); }, BAD_STATE, BAD_STATE, OK, BAD_STATE},
        {"set_rate", [](Player &p) { return p.set_rate(2.0); }, BAD_STATE, OK, OK, OK},
    };
    return all;
}

class States : public PlayerTest {
  protected:
    /** Brings the player into a state, from any. */
    testing::AssertionResult enter(player_state_e state)
    {
        player_->unprepare();
        if (state == PLAYER_STATE_IDLE)
            return testing::AssertionSuccess();
        if (const auto result = prepared(file_); !result)
            return result;
        if (state >= PLAYER_STATE_PLAYING && player_->start() != OK)
            return testing::AssertionFailure() << "it does not start";
        if (state == PLAYER_STATE_PAUSED && player_->pause() != OK)
            return testing::AssertionFailure() << "it does not pause";
        return testing::AssertionSuccess();
    }

    void check(player_state_e state, int Call::*expected)
    {
        file_ = clip("a.mp4");
        for (const Call &call : calls()) {
            SCOPED_TRACE(call.name);
            ASSERT_TRUE(enter(state));
            EXPECT_EQ(call.make(*player_), call.*expected);
            if (call.*expected != OK) {
                EXPECT_EQ(player_->state(), state);
            }
        }
    }

    std::string file_;
};

TEST_F(States, IdleTakesFileNamesAndNothingElse)
{
    check(PLAYER_STATE_IDLE, &Call::in_idle);
}

TEST_F(States, ReadyStartsStopsAndTakesASpeed)
{
    check(PLAYER_STATE_READY, &Call::in_ready);
}

TEST_F(States, PlayingPausesStopsAndTakesASpeed)
{
    check(PLAYER_STATE_PLAYING, &Call::in_playing);
}

TEST_F(States, PausedStartsStopsAndTakesASpeed)
{
    check(PLAYER_STATE_PAUSED, &Call::in_paused);
}

TEST_F(States, ASecondPreparationIsRefusedWhileOneRuns)
{
    ASSERT_EQ(prepare(clip("a.mp4")), OK);

    EXPECT_EQ(player_->prepare_async(nullptr, nullptr), BAD_OPERATION);
    EXPECT_EQ(player_->set_uri("/other.mp4"), BAD_STATE);

    EXPECT_TRUE(wait_for_event("prepared"));
    EXPECT_EQ(player_->state(), PLAYER_STATE_READY);
}

TEST_F(States, UnprepareForgetsTheFile)
{
    ASSERT_TRUE(prepared(clip("a.mp4")));

    player_->unprepare();

    EXPECT_EQ(player_->state(), PLAYER_STATE_IDLE);
    EXPECT_EQ(player_->prepare_async(nullptr, nullptr), BAD_OPERATION);
    EXPECT_EQ(player_->status().path, "");
}

TEST_F(States, AFailedPreparationLeavesThePlayerReadyForAnother)
{
    ASSERT_EQ(prepare(path("missing.mp4")), OK);
    ASSERT_TRUE(wait_for_event("error -2"));
    EXPECT_EQ(player_->state(), PLAYER_STATE_IDLE);

    EXPECT_TRUE(prepared(clip("a.mp4")));
}

TEST_F(States, ImpossibleSpeedsAreRefused)
{
    ASSERT_TRUE(prepared(clip("a.mp4")));

    for (const double rate : {0.0, 5.5, -6.0, std::nan(""), HUGE_VAL})
        EXPECT_EQ(player_->set_rate(rate), PLAYER_ERROR_INVALID_PARAMETER) << rate;
    EXPECT_EQ(player_->rate(), 1.0);
}

TEST_F(States, NothingIsToldAfterUnprepare)
{
    const std::string file = clip("a.mp4");
    for (int round = 0; round < 10; round++) {
        ASSERT_EQ(prepare(file), OK);
        wait_for([] { return false; }, 0.01 * round);
        player_->unprepare();
        const size_t told = events().size();
        EXPECT_TRUE(stays([&] { return events().size() == told; }, 0.05));
    }
}

TEST_F(States, NoFrameComesAfterUnprepare)
{
    ASSERT_TRUE(playing(clip("a.mp4")));

    player_->unprepare();

    const uint64_t last = shown();
    EXPECT_TRUE(stays([&] { return shown() == last; }, 0.3));
}

TEST_F(States, UnprepareInsideACallbackDoesNotHang)
{
    const std::string file = clip("a.mp4");
    on_event_ = [this](const std::string &event) {
        if (event == "completed")
            player_->unprepare();
    };
    ASSERT_TRUE(playing(file));
    ASSERT_TRUE(wait_for_event("completed"));
    EXPECT_TRUE(wait_for([this] { return player_->state() == PLAYER_STATE_IDLE; }));
    // Waits for the callback to return.
    player_->unprepare();
    on_event_ = nullptr;

    EXPECT_TRUE(prepared(file));
}

TEST_F(States, DestroyInsideACallbackDoesNotHang)
{
    std::atomic<bool> destroyed{false};
    on_event_ = [&](const std::string &) {
        player_->destroy();
        destroyed = true;
    };

    ASSERT_EQ(prepare(clip("a.mp4")), OK);

    EXPECT_TRUE(wait_for([&] { return destroyed.load(); }));
    EXPECT_TRUE(stays([this] { return events().size() == 1; }, 0.2));
}

TEST_F(States, TheNextFileCanBePreparedInsideACallback)
{
    const std::string file = clip("a.mp4");
    on_event_ = [this, &file](const std::string &event) {
        if (event != "completed")
            return;
        player_->unprepare();
        prepare(file);
    };
    ASSERT_TRUE(playing(file));

    EXPECT_TRUE(wait_for([this] { return count("prepared") == 2; }));
    player_->unprepare();
    on_event_ = nullptr;
}

TEST_F(States, TheNextFilesCallbackWaitsForThePresentOne)
{
    Clip facts;
    facts.frames = 10;
    const std::string file = clip("a.mp4", facts);
    std::promise<void> next;
    std::future<void> next_told = next.get_future();
    std::future_status while_calling = std::future_status::deferred;
    on_event_ = [&](const std::string &event) {
        if (event == "prepared" && count("completed") == 1)
            next.set_value();
        if (event != "completed" || count("completed") > 1)
            return;
        player_->unprepare();
        prepare(file);
        // Its length is known when its first frame is there; all that is left is to be told.
        const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(40);
        while (player_->status().duration_ms < 0 && std::chrono::steady_clock::now() < limit)
            std::this_thread::yield();
        while_calling = next_told.wait_for(std::chrono::milliseconds(200));
    };
    ASSERT_TRUE(playing(file));

    EXPECT_TRUE(wait_for([this] { return count("prepared") == 2; }));

    // Waits for the callback to return.
    player_->unprepare();
    EXPECT_EQ(while_calling, std::future_status::timeout);
    on_event_ = nullptr;
}

// The C interface: what a null or an impossible argument is answered with.

TEST_F(States, TheInterfaceRefusesNullAndImpossibleArguments)
{
    player_h player = nullptr;
    player_state_e state = PLAYER_STATE_NONE;
    float rate = 7;
    constexpr int BAD = PLAYER_ERROR_INVALID_PARAMETER;
    EXPECT_EQ(player_create(nullptr), BAD);
    EXPECT_EQ(player_start(nullptr), BAD);
    EXPECT_EQ(player_unprepare(nullptr), BAD);
    EXPECT_EQ(player_destroy(nullptr), BAD);
    ASSERT_EQ(player_create(&player), OK);

    EXPECT_EQ(player_set_uri(player, nullptr), BAD);
    EXPECT_EQ(player_set_uri(player, ""), BAD);
    EXPECT_EQ(player_set_subtitle_path(player, nullptr), BAD);
    EXPECT_EQ(player_set_display(player, PLAYER_DISPLAY_TYPE_OVERLAY, nullptr), BAD);
    // Far beyond any panel, and so small that sums of it do not overflow.
    constexpr int LARGEST = 1 << 20;
    EXPECT_EQ(player_resize_video_render_rect(player, LARGEST, -LARGEST, LARGEST, LARGEST), OK);
    EXPECT_EQ(player_resize_video_render_rect(player, -LARGEST, LARGEST, 1, 1), OK);
    for (const int bad : {-1, 0, LARGEST + 1}) {
        EXPECT_EQ(player_resize_video_render_rect(player, 0, 0, bad, 100), BAD) << bad;
        EXPECT_EQ(player_resize_video_render_rect(player, 0, 0, 100, bad), BAD) << bad;
    }
    for (const int bad : {-LARGEST - 1, LARGEST + 1}) {
        EXPECT_EQ(player_resize_video_render_rect(player, bad, 0, 100, 100), BAD) << bad;
        EXPECT_EQ(player_resize_video_render_rect(player, 0, bad, 100, 100), BAD) << bad;
    }
    EXPECT_EQ(player_get_state(player, nullptr), BAD);
    EXPECT_EQ(player_get_playback_rate(player, nullptr), BAD);

    EXPECT_EQ(player_set_display(player, PLAYER_DISPLAY_TYPE_NONE, nullptr), OK);
    EXPECT_EQ(player_get_state(player, &state), OK);
    EXPECT_EQ(state, PLAYER_STATE_IDLE);
    EXPECT_EQ(player_get_playback_rate(player, &rate), OK);
    EXPECT_EQ(rate, 1.0f);
    EXPECT_EQ(player_destroy(player), OK);
}

} // namespace
} // namespace player_test
