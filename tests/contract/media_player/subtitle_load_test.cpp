// A subtitle that is slow to read: the video waits for it a little, and never because of it long.

#include <future>

#include <gmock/gmock.h>

#include "media_player/subtitle_reading.h"
#include "player_fixture.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

namespace player_test {
namespace {

using platform::SubtitleTrack;

/** Stands for a subtitle on a slow disk: read when the test says so, or never. */
class SlowSubtitle {
  public:
    platform::SubtitleLoad loader()
    {
        return [this](const std::string &path, std::string &error,
                      const platform::StopRequest &stop) -> std::unique_ptr<SubtitleTrack> {
            begun_ = true;
            while (released_.wait_for(std::chrono::milliseconds(5)) != std::future_status::ready) {
                if (stop()) {
                    stopped_ = true;
                    error = "stopped";
                    return nullptr;
                }
            }
            auto track = SubtitleTrack::load(path, error);
            read_ = true;
            return track;
        };
    }

    void release() { release_.set_value(); }
    bool begun() const { return begun_; }
    bool read() const { return read_; }
    bool stopped() const { return stopped_; }

  private:
    std::promise<void> release_;
    std::shared_future<void> released_ = release_.get_future().share();
    std::atomic<bool> begun_{false};
    std::atomic<bool> read_{false};
    std::atomic<bool> stopped_{false};
};

class SubtitleLoad : public PlayerTest {
  protected:
    void SetUp() override
    {
        plane_width_ = 640;
        plane_height_ = 360;
        PlayerTest::SetUp();
        write_file(path("a.srt"), "1\n00:00:00,000 --> 00:00:10,000\nHello shop\n");
    }

    void TearDown() override
    {
        // The slow subtitle is read by a thread that must not outlive it.
        PlayerTest::TearDown();
        EXPECT_TRUE(!slow_.begun() || slow_.stopped() || released_);
    }

    void make_slow_player(std::chrono::milliseconds subtitle_timeout)
    {
        platform::PlayerOptions options = usual_options();
        options.load_subtitle = slow_.loader();
        options.subtitle_timeout = subtitle_timeout;
        make_player(options);
        player_->set_subtitle_path(path("a.srt"));
    }

    void release()
    {
        released_ = true;
        slow_.release();
    }

    SlowSubtitle slow_;
    bool released_ = false;
};

TEST_F(SubtitleLoad, AVideoPlaysWithoutASubtitleThatIsLate)
{
    make_slow_player(std::chrono::milliseconds(200));
    testing::internal::CaptureStderr();

    EXPECT_TRUE(playing(clip("a.mp4")));

    EXPECT_TRUE(wait_for([this] { return slow_.stopped(); }));
    EXPECT_THAT(testing::internal::GetCapturedStderr(),
                HasSubstr("a.mp4 plays without its subtitle " + path("a.srt") +
                          ": it was not read in time"));
    EXPECT_FALSE(player_->status().has_subtitle);
    EXPECT_TRUE(wait_for_event("completed"));
    EXPECT_THAT(events(), ElementsAre("prepared", "completed"));
}

TEST_F(SubtitleLoad, AVideoThatIsReadyWaitsForItsSubtitleAndShowsItFromTheFirstFrame)
{
    make_slow_player(std::chrono::seconds(100));
    Clip one_frame;
    one_frame.frames = 1;
    one_frame.sound = false;
    ASSERT_EQ(prepare(clip("a.mp4", one_frame)), PLAYER_ERROR_NONE);
    ASSERT_TRUE(wait_for([this] { return player_->status().video.width > 0 && slow_.begun(); }));
    EXPECT_TRUE(stays([this] { return events().empty(); }, 0.5));

    release();
    ASSERT_TRUE(wait_for_event("prepared"));
    EXPECT_TRUE(player_->status().has_subtitle);
    ASSERT_EQ(player_->start(), PLAYER_ERROR_NONE);
    ASSERT_TRUE(wait_for([this] { return shown() > 0; }));

    const Picture first = picture();
    int outline = 0;
    for (int y = 240; y < 350; y++)
        for (int x = 100; x < 540; x++)
            outline += first.colour(x, y) == 'k';
    EXPECT_GT(outline, 100);
}

TEST_F(SubtitleLoad, AFileThatWasOpenedAheadDoesNotWaitForOneThatIsNotAskedFor)
{
    make_slow_player(std::chrono::seconds(100));
    player_->set_subtitle_path("");
    const std::string file = clip("a.mp4");
    player_->open_ahead({file, path("a.srt")});
    ASSERT_TRUE(wait_for([this] { return slow_.begun(); }));

    EXPECT_TRUE(prepared(file));

    EXPECT_FALSE(player_->status().has_subtitle);
    release();
}

TEST_F(SubtitleLoad, ItsTimeDoesNotCountAsWaitingForTheFirstFrame)
{
    platform::PlayerOptions options;
    options.first_frame_timeout = std::chrono::seconds(4);
    options.load_subtitle = slow_.loader();
    options.subtitle_timeout = std::chrono::seconds(100);
    make_player(options);
    player_->set_subtitle_path(path("a.srt"));
    ASSERT_EQ(prepare(clip("a.mp4")), PLAYER_ERROR_NONE);

    EXPECT_TRUE(stays([this] { return events().empty(); }, 4.5));
    release();

    ASSERT_TRUE(wait_for_event("prepared"));
    EXPECT_THAT(events(), ElementsAre("prepared"));
    EXPECT_TRUE(player_->status().has_subtitle);
}

TEST_F(SubtitleLoad, AFileThatFailsDoesNotWaitForIt)
{
    make_slow_player(std::chrono::seconds(100));
    write_file(path("text.mp4"), "Shall I compare thee to a summer's day?\n");

    ASSERT_EQ(prepare(path("text.mp4")), PLAYER_ERROR_NONE);

    ASSERT_TRUE(wait_for([this] { return !events().empty(); }));
    EXPECT_THAT(events(), ElementsAre("error -26476541"));
    // It may have failed before anybody began to read.
    EXPECT_TRUE(wait_for([this] { return slow_.stopped() || !slow_.begun(); }));
}

TEST_F(SubtitleLoad, ClosingStopsIt)
{
    make_slow_player(std::chrono::seconds(100));
    ASSERT_EQ(prepare(clip("a.mp4")), PLAYER_ERROR_NONE);
    ASSERT_TRUE(wait_for([this] { return slow_.begun(); }));

    player_->unprepare();

    EXPECT_TRUE(wait_for([this] { return slow_.stopped(); }));
    EXPECT_THAT(events(), ElementsAre());
}

TEST_F(SubtitleLoad, TheNextFileIsNotHeldUpByThePresentOnes)
{
    make_slow_player(std::chrono::seconds(100));
    const std::string file = clip("a.mp4");
    ASSERT_EQ(prepare(file), PLAYER_ERROR_NONE);
    ASSERT_TRUE(wait_for([this] { return slow_.begun(); }));
    player_->unprepare();

    EXPECT_TRUE(playing(file));
    EXPECT_FALSE(player_->status().has_subtitle);
}

TEST_F(SubtitleLoad, AFileThatIsOpenAheadHasTimeForIt)
{
    make_slow_player(std::chrono::milliseconds(200));
    const std::string file = clip("a.mp4");
    testing::internal::CaptureStderr();
    player_->open_ahead({file, path("a.srt")});
    ASSERT_TRUE(wait_for([this] { return slow_.begun(); }));
    EXPECT_TRUE(stays([this] { return !slow_.stopped(); }, 0.6));
    release();
    ASSERT_TRUE(wait_for([this] { return slow_.read(); }));

    ASSERT_TRUE(playing(file));

    EXPECT_TRUE(player_->status().has_subtitle);
    EXPECT_THAT(testing::internal::GetCapturedStderr(), Not(HasSubstr("without its subtitle")));
}

TEST_F(SubtitleLoad, AFileThatWasOpenAheadWaitsForItNoLongerThanAnyOther)
{
    make_slow_player(std::chrono::milliseconds(200));
    const std::string file = clip("a.mp4");
    player_->open_ahead({file, path("a.srt")});
    ASSERT_TRUE(wait_for([this] { return slow_.begun(); }));
    ASSERT_TRUE(stays([this] { return !slow_.stopped(); }, 0.6));

    EXPECT_TRUE(playing(file));

    EXPECT_FALSE(player_->status().has_subtitle);
    EXPECT_TRUE(wait_for([this] { return slow_.stopped(); }));
}

TEST_F(SubtitleLoad, OneThatChangesWhileItIsReadAheadIsReadAgain)
{
    std::promise<void> changed;
    platform::PlayerOptions options = usual_options();
    options.load_subtitle =
        [after = changed.get_future().share()](const std::string &file, std::string &error,
                                               const platform::StopRequest &stop) {
            auto track = SubtitleTrack::load(file, error, stop);
            after.wait();
            return track;
        };
    options.subtitle_timeout = std::chrono::seconds(100);
    make_player(options);
    const std::string file = clip("a.mp4");
    player_->open_ahead({file, path("a.srt")});
    ASSERT_TRUE(stays([this] { return events().empty(); }, 0.3)) << "it is being read";
    write_file(path("a.srt"), "1\n00:00:00,000 --> 00:00:10,000\nGood evening\n");
    ASSERT_EQ(player_->set_subtitle_path(path("a.srt")), PLAYER_ERROR_NONE);
    ASSERT_EQ(prepare(file), PLAYER_ERROR_NONE);
    ASSERT_TRUE(stays([this] { return events().empty(); }, 0.3));

    changed.set_value();

    ASSERT_TRUE(wait_for_event("prepared"));
    ASSERT_EQ(player_->start(), PLAYER_ERROR_NONE);
    EXPECT_TRUE(wait_for_event("subtitle 10000 Good evening"));
    EXPECT_EQ(count("subtitle 10000 Hello shop"), 0);
}

TEST_F(SubtitleLoad, OneThatWasGuessedDoesNotHoldUpTheOneThatIsAskedFor)
{
    write_file(path("b.srt"), "1\n00:00:00,000 --> 00:00:10,000\nGood evening\n");
    platform::PlayerOptions options = usual_options();
    options.subtitle_timeout = std::chrono::seconds(5);
    options.load_subtitle = [this, slow = slow_.loader()](const std::string &file,
                                                          std::string &error,
                                                          const platform::StopRequest &stop) {
        return file == path("a.srt") ? slow(file, error, stop)
                                     : SubtitleTrack::load(file, error, stop);
    };
    make_player(options);
    const std::string file = clip("a.mp4");
    player_->open_ahead({file, path("a.srt")});
    ASSERT_TRUE(wait_for([this] { return slow_.begun(); }));
    ASSERT_EQ(player_->set_subtitle_path(path("b.srt")), PLAYER_ERROR_NONE);

    ASSERT_TRUE(playing(file));

    EXPECT_TRUE(slow_.stopped());
    EXPECT_TRUE(player_->status().has_subtitle);
    EXPECT_TRUE(wait_for_event("subtitle 10000 Good evening"));
}

TEST(SubtitleReading, IsNotDueOnceItIsGivenUp)
{
    platform::SubtitleReading reading("/a.srt");
    reading.expect_by(std::chrono::steady_clock::now());
    ASSERT_TRUE(reading.due());

    reading.give_up();

    EXPECT_FALSE(reading.due());
}

} // namespace
} // namespace player_test
