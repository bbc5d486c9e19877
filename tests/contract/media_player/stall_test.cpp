// A decoder or a disk that hangs in the middle of a film: where the film goes on, or that it ends.

#include <algorithm>

#include <gmock/gmock.h>

#include "base/worker_thread.h"
#include "hanging_elements.h"
#include "player_fixture.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

namespace player_test {
namespace {

class StallTest : public PlayerTest {
  protected:
    static void SetUpTestSuite()
    {
        PlayerTest::SetUpTestSuite();
        register_hanging_elements();
    }

    void SetUp() override
    {
        PlayerTest::SetUp();
        make_player(impatient_options());
    }

    static platform::PlayerOptions impatient_options()
    {
        platform::PlayerOptions options = usual_options();
        options.stall_patience = std::chrono::seconds(4);
        return options;
    }

    /** With a sound device that hangs once, after it has been opened so many times. */
    static platform::PlayerOptions options_with_device_that_hangs(int after = 0, bool gone = false)
    {
        devices().arm(after == 0 ? 1 : 0);
        platform::PlayerOptions options = impatient_options();
        options.make_audio_sink = [after, gone, opened = std::make_shared<std::atomic<int>>(0)] {
            if (after > 0 && (*opened)++ == after)
                devices().arm(1);
            return make_hanging_device(gone);
        };
        return options;
    }

    /** Has the player pass over what is bad. */
    void pass_over_bad_files(platform::PlayerOptions options = impatient_options())
    {
        options.unplayable_files = &unplayable_;
        options.fruitless_rounds = &rounds_;
        make_player(options);
    }

    /** Whether a file that has not changed would be passed over untried. */
    bool is_known(const std::string &file, std::chrono::hours from_now = {}) const
    {
        return unplayable_
            .why(file, *platform::file_stamp(file), std::chrono::steady_clock::now() + from_now)
            .has_value();
    }

    void TearDown() override
    {
        set_rank("hangingdec", GST_RANK_NONE);
        set_rank("hangingsrc", GST_RANK_NONE);
        decoders().end();
        readers().end();
        devices().end();
        PlayerTest::TearDown();
        EXPECT_TRUE(wait_for([] {
            return decoders().reset() && readers().reset() && devices().reset();
        })) << "what was left to itself has ended";
    }

    /** A film of twenty seconds, in which so many decoders hang at its first second. */
    std::string film_for_decoders_that_hang(int times)
    {
        set_rank("hangingdec", GST_RANK_PRIMARY + 1000);
        decoders().arm(times, GST_SECOND);
        Clip facts;
        facts.frames = 600;
        return clip("a.mp4", facts);
    }

    /** Plays a film of much to read, in which so many readers hang, each in what is read next. */
    testing::AssertionResult plays_from_a_disk_that_hangs(int times)
    {
        set_rank("hangingsrc", GST_RANK_PRIMARY + 1000);
        const std::string file = path("a.mkv");
        run_ffmpeg("-f lavfi -i nullsrc=size=640x360:rate=25:duration=8,noise=alls=100:allf=t "
                   "-c:v mjpeg -q:v 2 -pix_fmt yuvj420p " +
                   file);
        if (const testing::AssertionResult result = playing(file); !result)
            return result;
        readers().arm(times);
        return testing::AssertionSuccess();
    }

    /** Waits until the film has stalled once and plays again, from where it stood on. */
    testing::AssertionResult goes_on_where_it_stood()
    {
        if (!wait_for([this] { return stalls() == 1; }))
            return testing::AssertionFailure() << "it does not stall";
        const int64_t stood = position();
        int64_t least = stood;
        const bool went_on = wait_for([&] {
            least = std::min(least, position());
            return position() > stood + 1000;
        });
        if (!went_on || least < stood || stalls() != 1)
            return testing::AssertionFailure()
                   << "it stood at " << stood << ", then it is at " << least << " and at last at "
                   << position() << " after " << stalls() << " stalls";
        return testing::AssertionSuccess();
    }

    /** Plays a film over and over until so many pictures have been shown. */
    void expect_no_stall_in_rounds(const std::string &file, uint64_t pictures)
    {
        ASSERT_EQ(prepare(file), PLAYER_ERROR_NONE);
        player_->set_looping(true);
        ASSERT_TRUE(wait_for_event("prepared"));
        ASSERT_EQ(player_->start(), PLAYER_ERROR_NONE);

        EXPECT_TRUE(wait_for([&] { return shown() >= pictures || stalls() > 0; }));

        EXPECT_EQ(stalls(), 0u);
        EXPECT_THAT(events(), ElementsAre("prepared"));
    }

    uint64_t stalls() const { return player_->status().stalls; }

    platform::UnplayableFiles unplayable_;
    platform::FruitlessRounds rounds_;
};

TEST_F(StallTest, AFilmWhoseDecoderHangsGoesOnWhereItStoodWhileItsSoundIsStillHeard)
{
    const std::string file = film_for_decoders_that_hang(1);
    testing::internal::CaptureStderr();
    ASSERT_TRUE(playing(file));

    EXPECT_TRUE(goes_on_where_it_stood());

    EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("a.mp4 stands still at "));
    EXPECT_EQ(player_->status().last_stall, file);
    EXPECT_THAT(events(), ElementsAre("prepared"));
}

TEST_F(StallTest, AFilmThatHangsAgainIsCompletedAndPassedOverForAWhileAndTheNextOnePlays)
{
    pass_over_bad_files();
    player_->set_looping(true); // and does not begin anew
    const std::string file = film_for_decoders_that_hang(2);
    testing::internal::CaptureStderr();
    ASSERT_TRUE(playing(file));

    ASSERT_TRUE(wait_for_event("completed"));

    EXPECT_EQ(stalls(), 2u);
    EXPECT_THAT(events(), ElementsAre("prepared", "completed"));
    EXPECT_THAT(testing::internal::GetCapturedStderr(),
                HasSubstr("a.mp4 is broken: no frame comes any more"));
    EXPECT_TRUE(is_known(file));
    EXPECT_FALSE(is_known(file, std::chrono::hours(24))) << "the disk may have hung";
    player_->unprepare();
    ASSERT_TRUE(prepared(file));
    ASSERT_EQ(player_->start(), PLAYER_ERROR_NONE);
    EXPECT_TRUE(wait_for([this] { return count("completed") == 2; })) << "it is not opened";
    player_->unprepare();
    EXPECT_TRUE(playing(clip("b.mp4")));
    EXPECT_TRUE(wait_for(
        [] { return platform::WorkerThread::hanging(std::chrono::milliseconds(500)) == 2; }));
}

TEST_F(StallTest, AFilmThatHungOnceIsForgivenWhenItPlaysToItsEnd)
{
    pass_over_bad_files();
    const std::string file = clip("a.mp4");
    unplayable_.note_stalls(file, *platform::file_stamp(file), "no frame comes any more",
                            std::chrono::steady_clock::now() - std::chrono::hours(1));
    ASSERT_TRUE(playing(file));
    EXPECT_EQ(unplayable_.all().size(), 1u) << "it may hang again";

    ASSERT_TRUE(wait_for_event("completed"));

    EXPECT_EQ(unplayable_.all().size(), 0u);
}

TEST_F(StallTest, AFileThatNeverComesIsTriedTwice)
{
    platform::PlayerOptions options = impatient_options();
    options.first_frame_timeout = std::chrono::milliseconds(1500); // a former file has a second
    pass_over_bad_files(options);
    set_rank("hangingsrc", GST_RANK_PRIMARY + 1000);
    readers().arm(3);
    const std::string file = clip("slow.mp4");

    for (int time = 0; time < 2; time++) {
        player_->unprepare();
        EXPECT_TRUE(prepared(file));
        EXPECT_EQ(is_known(file), time == 1);
    }
    EXPECT_FALSE(is_known(file, std::chrono::hours(24))) << "the disk may have hung";
    EXPECT_EQ(unplayable_.all().at(0).kind, platform::UnplayableFile::Kind::TooSlow);
    player_->unprepare();
    EXPECT_TRUE(prepared(file));
    EXPECT_EQ(readers().hung(), 2);
}

TEST_F(StallTest, AFileWhoseSoundDeviceHangsPlaysInSilence)
{
    platform::PlayerOptions options = options_with_device_that_hangs();
    options.first_frame_timeout = std::chrono::seconds(4);
    pass_over_bad_files(options);
    testing::internal::CaptureStderr();

    ASSERT_TRUE(playing(clip("a.mp4")));
    EXPECT_THAT(testing::internal::GetCapturedStderr(),
                HasSubstr("the sound device does not answer; videos play in silence"));
    EXPECT_THAT(events(), ElementsAre("prepared"));
    EXPECT_EQ(unplayable_.all().size(), 0u);
    EXPECT_EQ(devices().hung(), 1);
}

TEST_F(StallTest, AFilmWhoseSoundDeviceHangsWhenItIsOpenedAnewGoesOnWhereItStood)
{
    make_player(options_with_device_that_hangs(1));
    ASSERT_TRUE(playing(film_for_decoders_that_hang(1)));

    ASSERT_TRUE(goes_on_where_it_stood());
    EXPECT_EQ(devices().hung(), 1);
    EXPECT_THAT(events(), ElementsAre("prepared"));
}

TEST_F(StallTest, AFilmWhoseSoundDeviceHungMayStallOnceLikeAnyOther)
{
    make_player(options_with_device_that_hangs(1));
    ASSERT_TRUE(playing(film_for_decoders_that_hang(2)));

    ASSERT_TRUE(wait_for([this] { return stalls() == 2; }));
    const uint64_t before = shown();
    EXPECT_TRUE(wait_for([&] { return shown() > before + 2; }));
    EXPECT_EQ(count("completed"), 0);
}

TEST_F(StallTest, AFileThatLosesItsSoundAndHangsAllTheSameIsGivenUp)
{
    make_player(options_with_device_that_hangs(0, true));

    ASSERT_EQ(prepare(clip("a.mp4")), PLAYER_ERROR_NONE);
    EXPECT_TRUE(wait_for_event("error " + std::to_string(PLAYER_ERROR_INVALID_OPERATION)));
    EXPECT_EQ(devices().hung(), 1);
}

TEST_F(StallTest, AFilmThatIsSoughtWhileItsDecoderHangsGoesOnAtTheNewSpeed)
{
    ASSERT_TRUE(playing(film_for_decoders_that_hang(1)));
    ASSERT_TRUE(wait_for([] { return decoders().hung() == 1; }));

    ASSERT_EQ(player_->set_rate(2.0), PLAYER_ERROR_NONE);

    EXPECT_TRUE(goes_on_where_it_stood());
    EXPECT_EQ(player_->rate(), 2.0);
    EXPECT_THAT(events(), ElementsAre("prepared"));
}

// Its reader has asked for the next round, and is not answered as long as slides are in its way.
TEST_F(StallTest, AFilmThatGoesRoundAndIsPausedWhileItsDecoderHangsGoesOn)
{
    set_rank("hangingdec", GST_RANK_PRIMARY + 1000);
    const std::string file = path("slides.flv");
    run_ffmpeg("-f lavfi -i testsrc2=size=64x32:rate=1/2:duration=6 -c:v libx264 -bf 0 " + file);
    ASSERT_EQ(prepare(file), PLAYER_ERROR_NONE);
    player_->set_looping(true);
    ASSERT_TRUE(wait_for_event("prepared"));
    ASSERT_EQ(player_->start(), PLAYER_ERROR_NONE);
    ASSERT_TRUE(wait_for([this] { return shown() > 0; }));
    decoders().arm(1);
    ASSERT_TRUE(wait_for([this] { return decoders().hung() == 1 && shown() > 1; }));

    ASSERT_EQ(player_->pause(), PLAYER_ERROR_NONE);
    ASSERT_EQ(player_->start(), PLAYER_ERROR_NONE);

    ASSERT_TRUE(wait_for([this] { return stalls() == 1; }));
    const uint64_t before = shown();
    EXPECT_TRUE(wait_for([&] { return shown() > before + 2; }));
    EXPECT_EQ(stalls(), 1u);
    EXPECT_THAT(events(), ElementsAre("prepared"));
}

TEST_F(StallTest, AFilmThatCannotBeOpenedAnewIsCompletedAndTheNextOnePlays)
{
    ASSERT_TRUE(plays_from_a_disk_that_hangs(2));

    ASSERT_TRUE(wait_for_event("completed"));

    EXPECT_THAT(events(), ElementsAre("prepared", "completed"));
    player_->unprepare();
    EXPECT_TRUE(playing(path("a.mkv")));
}

TEST_F(StallTest, AFilmWhoseDiskHangsGoesOnWhereItStood)
{
    ASSERT_TRUE(plays_from_a_disk_that_hangs(1));

    EXPECT_TRUE(goes_on_where_it_stood());
    EXPECT_EQ(count("completed"), 0);
}

TEST_F(StallTest, AFilmWhoseDecoderHangsDoesNotStallBeforeItsPauseIsOver)
{
    ASSERT_TRUE(playing(film_for_decoders_that_hang(1)));
    ASSERT_TRUE(wait_for([] { return decoders().hung() == 1; }));
    ASSERT_EQ(player_->pause(), PLAYER_ERROR_NONE);

    EXPECT_TRUE(stays([&] { return stalls() == 0; }, 6));

    ASSERT_EQ(player_->start(), PLAYER_ERROR_NONE);
    EXPECT_TRUE(goes_on_where_it_stood());
}

/** A film whose pictures stand for longer than the patience, and which does not stall. */
struct SlowFilm {
    const char *name;
    const char *made_of; ///< for ffmpeg
};

class SlowFilms : public StallTest, public testing::WithParamInterface<SlowFilm> {};

TEST_P(SlowFilms, DoNotStall)
{
    const std::string file = path(GetParam().name);
    run_ffmpeg(GetParam().made_of + (" " + file));
    testing::internal::CaptureStderr();
    ASSERT_TRUE(playing(file));

    ASSERT_TRUE(wait_for_event("completed"));

    EXPECT_EQ(stalls(), 0u);
    EXPECT_THAT(testing::internal::GetCapturedStderr(), Not(HasSubstr(" is broken")));
}

INSTANTIATE_TEST_SUITE_P(
    ForAllReasons, SlowFilms,
    testing::Values(SlowFilm{"slides.mp4", "-f lavfi -i testsrc2=size=64x32:rate=1/5:duration=10"},
                    SlowFilm{"explained_slides.mkv",
                             "-f lavfi -i testsrc2=size=64x32:rate=1/5:duration=10 "
                             "-f lavfi -i sine=duration=10"},
                    SlowFilm{"radio.mkv", "-f lavfi -i testsrc2=size=64x32:rate=10:duration=1 "
                                          "-f lavfi -i sine=duration=6"}),
    [](const auto &film) {
        const std::string name = film.param.name;
        return name.substr(0, name.find('.'));
    });

/** Of one picture, which some readers do not find again as long as they stand at it. */
class FilmOfOnePicture : public StallTest, public testing::WithParamInterface<const char *> {};

TEST_P(FilmOfOnePicture, GoesRoundAndDoesNotStall)
{
    const std::string file = path(GetParam());
    run_ffmpeg("-f lavfi -i testsrc2=size=64x32:rate=5:duration=0.2 " + file);
    expect_no_stall_in_rounds(file, 4);
}

INSTANTIATE_TEST_SUITE_P(OfEachReader, FilmOfOnePicture,
                         testing::Values("slide.mkv", "slide.flv", "slide.mp4"),
                         [](const auto &film) {
                             return std::string(film.param).substr(sizeof "slide." - 1);
                         });

// The reader asks for the next round as soon as it has read one, and holds the last picture then
// until there is room for it behind slides that are still to be shown.
TEST_F(StallTest, AFilmOfSlowSlidesThatGoesRoundDoesNotStall)
{
    const std::string file = path("slides.flv");
    run_ffmpeg("-f lavfi -i testsrc2=size=64x32:rate=1/5:duration=15 " + file);
    expect_no_stall_in_rounds(file, 3);
}

} // namespace
} // namespace player_test
