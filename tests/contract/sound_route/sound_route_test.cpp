// The routes, seen from the player's side, against a sound server that tells what it was asked.
// The settings and the route's memory belong to the process, so each test is a process of its own:
// it runs in a child, which ends with the result.
#include <ctime>
#include <functional>
#include <optional>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fake_sound_server.h"
#include "settings/settings.h"
#include "sound_route.h"
#include "store_support/captured_log.h"
#include "store_support/scratch.h"

namespace {

using store_test::CapturedLog;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Pair;

constexpr int INTERNAL = SOUND_SPEAKER_INTERNAL;
constexpr int EXTERNAL = SOUND_SPEAKER_EXTERNAL;

const char *const BOTH_SINKS = "[sound]\ninternal_sink = speakers\nexternal_sink = hdmi\n";
const char *const EXTERNAL_ONLY = "[sound]\nexternal_sink = hdmi\n";

FakeSoundServer::State three_sinks(const std::string &default_sink)
{
    FakeSoundServer::State state;
    state.sinks = {"speakers", "hdmi", "headset"};
    state.default_sink = default_sink;
    state.streams = {{7, default_sink}, {9, default_sink}};
    return state;
}

class SoundRoute : public testing::Test {
  protected:
    // Runs `body` in a process of its own with this tv.conf; its failures are failures here.
    void alone(const std::string &tv_conf, const std::function<void()> &body)
    {
        store_test::write_file(scratch_ / "tv.conf", tv_conf);
        const pid_t child = fork();
        if (child == 0) {
            body();
            std::exit(HasFailure() ? 1 : 0);
        }
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0) << "failures above";
    }

    std::string socket() const { return scratch_ / "socket"; }

    static std::optional<int> selection()
    {
        int speaker = 99;
        const int result = sound_manager_get_speaker_selection(&speaker);
        EXPECT_EQ(result == 0, speaker != 99) << "the variable is written on success only";
        return result == 0 ? std::optional<int>(speaker) : std::nullopt;
    }

    store_test::ScratchDir scratch_;
    store_test::Environment conf_{"OSTREL_DEMO_TV_CONF", scratch_ / "tv.conf"};
    store_test::Environment server_{"PULSE_SERVER", "unix:" + socket()};
    store_test::Environment cookie_{"PULSE_COOKIE", scratch_ / "cookie"};
    store_test::Environment home_{"HOME", scratch_.path()};
    store_test::Environment display_{"DISPLAY"};
};

TEST_F(SoundRoute, RouteIsThatOfTheDefaultSink)
{
    alone(BOTH_SINKS, [&] {
        FakeSoundServer server(socket(), three_sinks("speakers"));
        EXPECT_EQ(selection(), INTERNAL);
        server.change([](auto &state) { state.default_sink = "hdmi"; });
        EXPECT_EQ(selection(), EXTERNAL);
    });
}

TEST_F(SoundRoute, SinkThatIsNeitherOfTheTwoIsAnotherRouteThatCanBeLeft)
{
    alone(BOTH_SINKS, [&] {
        FakeSoundServer server(socket(), three_sinks("headset"));
        const std::optional<int> other = selection();
        ASSERT_TRUE(other);
        EXPECT_GT(*other, 1);
        EXPECT_NE(*other, EXTERNAL);
        EXPECT_EQ(sound_manager_set_speaker_selection(INTERNAL), 0);
        EXPECT_EQ(selection(), INTERNAL);
    });
}

TEST_F(SoundRoute, ServerWithoutASinkIsOnNoRoute)
{
    alone(BOTH_SINKS, [&] {
        const FakeSoundServer server(socket(), {});
        EXPECT_EQ(selection(), std::nullopt);
    });
}

TEST_F(SoundRoute, SwitchChangesTheDefaultAndMovesWhatPlays)
{
    alone(BOTH_SINKS, [&] {
        FakeSoundServer server(socket(), three_sinks("speakers"));
        EXPECT_EQ(sound_manager_set_speaker_selection(EXTERNAL), 0);
        EXPECT_EQ(server.state().default_sink, "hdmi");
        EXPECT_THAT(server.state().streams, ElementsAre(Pair(7, "hdmi"), Pair(9, "hdmi")));
        EXPECT_EQ(selection(), EXTERNAL);

        EXPECT_EQ(sound_manager_set_speaker_selection(INTERNAL), 0);
        EXPECT_EQ(server.state().default_sink, "speakers");
        EXPECT_THAT(server.state().streams, ElementsAre(Pair(7, "speakers"), Pair(9, "speakers")));
    });
}

TEST_F(SoundRoute, StreamThatCannotMoveDoesNotHoldTheOthers)
{
    alone(BOTH_SINKS, [&] {
        FakeSoundServer::State state = three_sinks("speakers");
        state.tied_streams = {7};
        FakeSoundServer server(socket(), state);
        EXPECT_EQ(sound_manager_set_speaker_selection(EXTERNAL), 0);
        EXPECT_THAT(server.state().streams, ElementsAre(Pair(7, "speakers"), Pair(9, "hdmi")));
    });
}

TEST_F(SoundRoute, InternalSinkIsTheDefaultAtTheFirstUseUnlessConfigured)
{
    alone(EXTERNAL_ONLY, [&] {
        FakeSoundServer server(socket(), three_sinks("headset"));
        EXPECT_EQ(selection(), INTERNAL);
        EXPECT_EQ(sound_manager_set_speaker_selection(EXTERNAL), 0);
        EXPECT_EQ(sound_manager_set_speaker_selection(INTERNAL), 0);
        EXPECT_EQ(server.state().default_sink, "headset");
    });
}

TEST_F(SoundRoute, ExternalDefaultAtTheFirstUseIsNotTakenForTheInternalOne)
{
    alone(EXTERNAL_ONLY, [&] {
        FakeSoundServer server(socket(), three_sinks("hdmi"));
        EXPECT_EQ(selection(), EXTERNAL);
        const CapturedLog log;
        EXPECT_EQ(sound_manager_set_speaker_selection(INTERNAL), -1);
        EXPECT_THAT(log.text(), HasSubstr("route 0 has no sink"));
        EXPECT_EQ(server.state().default_sink, "hdmi");
    });
}

TEST_F(SoundRoute, RouteWithoutASinkIsRefused)
{
    alone("[sound]\nexternal_sink = missing\n", [&] {
        FakeSoundServer server(socket(), three_sinks("speakers"));
        const CapturedLog log;
        EXPECT_EQ(sound_manager_set_speaker_selection(EXTERNAL), -1);
        EXPECT_THAT(log.text(), HasSubstr("route 8 has no sink named missing"));
        EXPECT_EQ(server.state().default_sink, "speakers");
    });
}

TEST_F(SoundRoute, ServerThatRefusesFailsTheSwitch)
{
    alone(BOTH_SINKS, [&] {
        FakeSoundServer::State state = three_sinks("speakers");
        state.refuse_default = true;
        FakeSoundServer server(socket(), state);
        const CapturedLog log;
        EXPECT_EQ(sound_manager_set_speaker_selection(EXTERNAL), -1);
        EXPECT_THAT(log.text(), HasSubstr("did not switch to hdmi"));
        EXPECT_THAT(server.state().streams, ElementsAre(Pair(7, "speakers"), Pair(9, "speakers")));
    });
}

TEST_F(SoundRoute, ServerThatHangsWhileStreamsMoveFailsTheSwitch)
{
    alone(BOTH_SINKS, [&] {
        FakeSoundServer::State state = three_sinks("speakers");
        state.silent_after_a_move = true;
        FakeSoundServer server(socket(), state);
        EXPECT_EQ(sound_manager_set_speaker_selection(EXTERNAL), -1);
        EXPECT_THAT(server.state().streams, ElementsAre(Pair(7, "hdmi"), Pair(9, "speakers")));
    });
}

TEST_F(SoundRoute, ServerThatHangsIsNotWaitedForLong)
{
    alone(BOTH_SINKS, [&] {
        FakeSoundServer::State state = three_sinks("speakers");
        state.silent = true;
        FakeSoundServer server(socket(), state);
        // The process's own time shows that the wait is a sleep and no spinning.
        const std::clock_t before = std::clock();
        EXPECT_EQ(selection(), std::nullopt);
        EXPECT_LT(static_cast<double>(std::clock() - before) / CLOCKS_PER_SEC, 0.4);
        EXPECT_EQ(server.state().clients, 1);
    });
}

TEST_F(SoundRoute, WithoutAServerCallsFailAndOneLineSaysSo)
{
    alone(BOTH_SINKS, [&] {
        const CapturedLog log;
        EXPECT_EQ(selection(), std::nullopt);
        const std::string said = log.text();
        EXPECT_THAT(said, HasSubstr("no sound server answers"));
        EXPECT_EQ(said.substr(0, 2), "W/");
        EXPECT_EQ(sound_manager_set_speaker_selection(EXTERNAL), -1);
        EXPECT_EQ(selection(), std::nullopt);
        EXPECT_EQ(log.text(), said);
    });
}

TEST_F(SoundRoute, ServerThatComesLaterIsFound)
{
    alone(BOTH_SINKS, [&] {
        EXPECT_EQ(selection(), std::nullopt);
        const FakeSoundServer server(socket(), three_sinks("speakers"));
        EXPECT_EQ(selection(), INTERNAL);
    });
}

TEST_F(SoundRoute, BadArgumentsAreRefused)
{
    alone(BOTH_SINKS, [&] {
        FakeSoundServer server(socket(), three_sinks("speakers"));
        EXPECT_EQ(sound_manager_get_speaker_selection(nullptr), -1);
        for (const int unknown : {-1, 1, 7, 9})
            EXPECT_EQ(sound_manager_set_speaker_selection(unknown), -1);
        EXPECT_EQ(server.state().default_sink, "speakers");
    });
}

} // namespace
