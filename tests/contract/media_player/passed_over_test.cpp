// A video that cannot be opened, where the show is to go on.

#include <filesystem>
#include <future>

#include <sys/stat.h>

#include <gmock/gmock.h>

#include "player_fixture.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace player_test {
namespace {

class PassedOver : public PlayerTest {
  protected:
    void SetUp() override
    {
        PlayerTest::SetUp();
        make_player(skipping_options());
        write_file(path("bad.mp4"), "Shall I compare thee to a summer's day?\n");
    }

    /** Usual ones that pass over what is bad, and count how often a file has been opened. */
    platform::PlayerOptions skipping_options()
    {
        platform::PlayerOptions options = usual_options();
        options.broken_files = &broken_;
        options.make_audio_sink = [this, make = options.make_audio_sink] {
            openings_++;
            return make();
        };
        return options;
    }

    /** Asks for a file, and tells all that comes of it until it is over. */
    std::vector<std::string> outcome(const std::string &file)
    {
        player_->unprepare();
        const size_t before = events().size();
        if (prepare(file) != PLAYER_ERROR_NONE ||
            !wait_for([&] { return events().size() > before; }) ||
            player_->start() != PLAYER_ERROR_NONE ||
            !wait_for([&] { return events().size() > before + 1; }))
            return {"nothing"};
        const std::vector<std::string> all = events();
        return {all.begin() + static_cast<long>(before), all.end()};
    }

    /** Has a file started and something done to it before anything can become of the start. */
    void at_once_when_prepared(const std::function<int()> &act)
    {
        on_event_ = [this, act](const std::string &event) {
            if (event != "prepared")
                return;
            EXPECT_EQ(player_->start(), PLAYER_ERROR_NONE);
            EXPECT_EQ(act(), PLAYER_ERROR_NONE);
        };
    }

    /** Makes the next round of nothing but bad.mp4 wait for longer than any test. */
    void make_waits_long()
    {
        broken_.note(path("bad.mp4"), {}, "", false);
        for (int round = 0; round < 8; round++)
            broken_.pause_for(path("bad.mp4"), shown());
    }

    platform::BrokenFiles broken_;
    std::atomic<int> openings_{0};
};

TEST_F(PassedOver, IsPreparedAndCompletedAndLeavesTheLastPicture)
{
    ASSERT_TRUE(playing(clip("a.mp4")));
    ASSERT_TRUE(wait_for_event("completed"));
    const uint64_t shown_before = shown();
    testing::internal::CaptureStderr();

    EXPECT_THAT(outcome(path("bad.mp4")), ElementsAre("prepared", "completed"));

    EXPECT_EQ(player_->state(), PLAYER_STATE_READY);
    EXPECT_EQ(shown(), shown_before);
    EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("bad.mp4 cannot be played: "));
    ASSERT_EQ(broken_.all().size(), 1u);
    EXPECT_EQ(broken_.all()[0].path, path("bad.mp4"));
    player_->unprepare();
    EXPECT_TRUE(playing(path("a.mp4"))) << "the next one plays";
}

TEST_F(PassedOver, IsWhateverCannotBeOpened)
{
    write_file(path("empty.mp4"), "");
    write_file(path("noise.mp4"), std::string(100000, '\x55'));
    write_file(path("cut.mp4"), read_file(clip("a.mp4")).substr(0, 500));
    mkdir(path("folder.mp4").c_str(), 0700);
    make_sound(path("song.ogg"));
    make_photo(path("photo.mp4"));

    for (const char *name : {"empty.mp4", "noise.mp4", "cut.mp4", "folder.mp4", "song.ogg",
                             "photo.mp4", "missing.mp4"})
        EXPECT_THAT(outcome(path(name)), ElementsAre("prepared", "completed")) << name;

    EXPECT_EQ(broken_.all().size(), 7u);
    EXPECT_EQ(shown(), 0u);
}

TEST_F(PassedOver, IsNotOpenedAgainUntilItChanges)
{
    ASSERT_TRUE(prepared(path("bad.mp4")));
    EXPECT_EQ(openings_, 1);
    testing::internal::CaptureStderr();

    player_->unprepare();
    EXPECT_TRUE(prepared(path("bad.mp4")));

    EXPECT_EQ(openings_, 1);
    EXPECT_THAT(testing::internal::GetCapturedStderr(), Not(HasSubstr("cannot be played")));
    player_->unprepare();
    std::filesystem::rename(clip("good.mp4"), path("bad.mp4"));
    EXPECT_TRUE(playing(path("bad.mp4")));
    EXPECT_THAT(broken_.all(), IsEmpty());
}

TEST_F(PassedOver, ThatIsMissingIsLookedForEachTimeAndToldOfOnce)
{
    testing::internal::CaptureStderr();
    for (int round = 0; round < 2; round++) {
        EXPECT_TRUE(prepared(path("later.mp4")));
        player_->unprepare();
    }
    const std::string log = testing::internal::GetCapturedStderr();
    const std::string line = "later.mp4 cannot be played: there is no such file";
    EXPECT_THAT(log, HasSubstr(line));
    EXPECT_EQ(log.find(line), log.rfind(line)) << log;

    EXPECT_TRUE(playing(clip("later.mp4")));
}

TEST_F(PassedOver, ThatComesToNothingInTimeIsTriedTwice)
{
    platform::PlayerOptions options = skipping_options();
    options.first_frame_timeout = std::chrono::milliseconds(1000);
    std::promise<void> answer;
    options.make_audio_sink = [make = options.make_audio_sink,
                               answered = answer.get_future().share()] {
        platform::ElementPtr sink = make();
        answered.wait();
        return sink;
    };
    make_player(options);
    const std::string file = clip("slow.mp4");

    for (int time = 0; time < 2; time++) {
        EXPECT_TRUE(prepared(file));
        player_->unprepare();
    }
    answer.set_value();
    EXPECT_TRUE(prepared(file));

    EXPECT_EQ(openings_, 2);
}

TEST_F(PassedOver, ThatFailsForWhatIsAroundItIsTriedEachTime)
{
    platform::PlayerOptions options = skipping_options();
    options.make_audio_sink = [this, make = options.make_audio_sink] {
        platform::ElementPtr sink = make();
        if (openings_ <= 2)
            gst_util_set_object_arg(G_OBJECT(sink.get()), "state-error", "ready-to-paused");
        return sink;
    };
    make_player(options);
    const std::string file = clip("a.mp4");

    for (int time = 0; time < 2; time++) {
        EXPECT_TRUE(prepared(file));
        EXPECT_EQ(broken_.all().size(), 1u);
        player_->unprepare();
    }

    EXPECT_TRUE(playing(file));
}

TEST_F(PassedOver, IsHeldLikeAnyOther)
{
    at_once_when_prepared([this] { return player_->pause(); });
    ASSERT_TRUE(prepared(path("bad.mp4")));

    EXPECT_TRUE(stays([this] { return player_->state() == PLAYER_STATE_PAUSED; }, 0.3));
    EXPECT_EQ(player_->set_rate(2.0), PLAYER_ERROR_NONE);
    EXPECT_EQ(player_->rate(), 2.0);

    EXPECT_EQ(player_->start(), PLAYER_ERROR_NONE);
    EXPECT_TRUE(wait_for_event("completed"));
    EXPECT_EQ(player_->rate(), 1.0);
}

TEST_F(PassedOver, IsStoppedLikeAnyOther)
{
    at_once_when_prepared([this] { return player_->stop(); });
    ASSERT_TRUE(prepared(path("bad.mp4")));

    EXPECT_TRUE(stays([this] { return count("completed") == 0; }, 0.3));
    EXPECT_EQ(player_->state(), PLAYER_STATE_READY);
    EXPECT_EQ(player_->status().path, path("bad.mp4"));

    EXPECT_EQ(player_->start(), PLAYER_ERROR_NONE);
    EXPECT_TRUE(wait_for_event("completed"));
}

TEST_F(PassedOver, CompletesWhereItIsToPlayOverAndOver)
{
    player_->set_looping(true);

    EXPECT_THAT(outcome(path("bad.mp4")), ElementsAre("prepared", "completed"));
}

TEST_F(PassedOver, WaitsWhereNothingElseHasBeenShown)
{
    make_waits_long();
    ASSERT_TRUE(prepared(path("bad.mp4")));
    ASSERT_EQ(player_->start(), PLAYER_ERROR_NONE);

    EXPECT_TRUE(stays([this] { return player_->state() == PLAYER_STATE_PLAYING; }, 0.3));

    player_->unprepare();
    ASSERT_TRUE(playing(clip("a.mp4")));
    EXPECT_THAT(outcome(path("bad.mp4")), ElementsAre("prepared", "completed"));
}

TEST_F(PassedOver, ThatWasOpenedAheadIsPassedOverWhenItIsAskedFor)
{
    player_->open_ahead({path("bad.mp4"), {}});
    EXPECT_TRUE(wait_for([this] { return openings_ == 1; }));
    EXPECT_THAT(broken_.all(), IsEmpty()) << "nobody has asked for it";

    EXPECT_THAT(outcome(path("bad.mp4")), ElementsAre("prepared", "completed"));

    EXPECT_EQ(broken_.all().size(), 1u);
}

TEST_F(PassedOver, IsNoFileThatBreaksInItsMiddle)
{
    const std::string whole = read_file(clip("a.mkv"));
    write_file(path("cut.mkv"), whole.substr(0, whole.size() / 2));

    ASSERT_TRUE(playing(path("cut.mkv")));

    EXPECT_TRUE(wait_for_event("completed"));
    EXPECT_THAT(broken_.all(), IsEmpty());
}

} // namespace
} // namespace player_test
