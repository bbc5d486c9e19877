// A file that is opened while another one plays, in the hope that it is asked for next.

#include <filesystem>
#include <future>
#include <limits>

#include <fcntl.h>
#include <sys/stat.h>

#include <gmock/gmock.h>

#include "media_player/audio_sink.h"
#include "player_fixture.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

namespace {

/** A disk that does not answer when it is asked for facts, as long as it stands still. */
class Disk {
  public:
    /** @param path a file of it; empty: all are */
    void stand_still(const std::string &path = {})
    {
        path_ = path;
        answer_ = std::promise<void>();
        answered_ = answer_.get_future().share();
        asked_ = 0;
        stands_still_ = true;
    }
    void go_on()
    {
        if (stands_still_.exchange(false))
            answer_.set_value();
    }
    void ask(const std::string &path)
    {
        if (!stands_still_ || !(path_.empty() || path == path_))
            return;
        ++asked_;
        answered_.wait();
    }
    bool is_asked() const { return asked_ > 0; }

  private:
    std::string path_;
    std::promise<void> answer_;
    std::shared_future<void> answered_;
    std::atomic<int> asked_{0};
    std::atomic<bool> stands_still_{false};
} disk;

} // namespace

/** Stands before the C library's own. */
extern "C" int stat(const char *path, struct stat *facts) noexcept
{
    disk.ask(path);
    return fstatat(AT_FDCWD, path, facts, 0);
}

namespace player_test {
namespace {

using platform::Lookahead;
using platform::PlayedItem;

class Ahead : public PlayerTest {
  protected:
    void SetUp() override
    {
        PlayerTest::SetUp();
        make_player(counting_options());
    }

    /** Usual ones that count how often a file has been opened. */
    platform::PlayerOptions counting_options()
    {
        platform::PlayerOptions options = usual_options();
        options.make_audio_sink = [this] {
            platform::ElementPtr sink = platform::make_element("fakeaudiosink");
            g_object_set(sink.get(), "sync", TRUE, nullptr);
            device_.reset(GST_ELEMENT(gst_object_ref(sink.get())));
            opened_++;
            return sink;
        };
        return options;
    }

    /** Opens a file ahead and waits until it stands at its first frame. */
    void open_ahead(const PlayedItem &item)
    {
        const int before = opened_;
        player_->open_ahead(item);
        ASSERT_TRUE(wait_for([&] { return opened_ > before && is_open(item.path); }));
    }

    static bool is_open(const std::string &path)
    {
        for (const auto &entry : std::filesystem::directory_iterator("/proc/self/fd")) {
            std::error_code gone;
            if (std::filesystem::read_symlink(entry.path(), gone) == path)
                return true;
        }
        return false;
    }

    static bool is_in_state(const platform::ElementPtr &element, GstState state)
    {
        GstState present = GST_STATE_VOID_PENDING;
        return gst_element_get_state(element.get(), &present, nullptr, 0) ==
                   GST_STATE_CHANGE_SUCCESS &&
               present == state;
    }

    bool is_let_go(const std::string &path) const
    {
        return wait_for([&] { return !is_open(path); });
    }

    std::atomic<int> opened_{0};
    platform::ElementPtr device_; ///< what the last pipeline plays its sound into
};

TEST_F(Ahead, AFileIsTakenAsItWasOpened)
{
    const std::string file = clip("a.mp4");
    ASSERT_NO_FATAL_FAILURE(open_ahead({file, {}}));

    ASSERT_TRUE(playing(file));

    EXPECT_EQ(opened_, 1);
    EXPECT_TRUE(wait_for_event("completed"));
    EXPECT_THAT(events(), ElementsAre("prepared", "completed"));
}

TEST_F(Ahead, NothingIsToldOrSeenOfItBeforeItIsAskedFor)
{
    ASSERT_NO_FATAL_FAILURE(open_ahead({clip("a.mp4"), {}}));

    EXPECT_TRUE(stays([this] { return events().empty() && shown() == 0; }, 0.3));
    EXPECT_EQ(player_->state(), PLAYER_STATE_IDLE);
    EXPECT_EQ(player_->status().path, "");
}

TEST_F(Ahead, AnotherFileThatIsAskedForTakesItsPlace)
{
    const std::string guessed = clip("a.mp4");
    const std::string wanted = clip("b.mp4");
    ASSERT_NO_FATAL_FAILURE(open_ahead({guessed, {}}));

    ASSERT_TRUE(playing(wanted));

    EXPECT_TRUE(is_let_go(guessed));
    EXPECT_EQ(player_->status().path, wanted);
    EXPECT_EQ(count("prepared"), 1);
}

TEST_F(Ahead, OneIsOpenAtATime)
{
    const std::string first = clip("a.mp4");
    const std::string second = clip("b.mp4");
    ASSERT_NO_FATAL_FAILURE(open_ahead({first, {}}));

    ASSERT_NO_FATAL_FAILURE(open_ahead({second, {}}));

    EXPECT_TRUE(is_let_go(first));
}

TEST_F(Ahead, AFileThatHasChangedIsOpenedAnew)
{
    const std::string file = clip("a.mp4");
    ASSERT_NO_FATAL_FAILURE(open_ahead({file, {}}));
    Clip larger;
    larger.width = 320;
    make_clip(path("new.mp4"), larger);
    std::filesystem::rename(path("new.mp4"), file);

    ASSERT_TRUE(playing(file));

    EXPECT_EQ(player_->status().video.width, 320);
    EXPECT_THAT(events(), ElementsAre("prepared"));
}

TEST_F(Ahead, ASubtitleThatHasChangedIsReadAnew)
{
    write_file(path("a.srt"), "1\n00:00:00,000 --> 00:00:10,000\nHello shop\n");
    const std::string file = clip("a.mp4");
    ASSERT_NO_FATAL_FAILURE(open_ahead({file, path("a.srt")}));
    write_file(path("a.srt"), "1\n00:00:00,000 --> 00:00:10,000\nGood evening\n");
    ASSERT_EQ(player_->set_subtitle_path(path("a.srt")), PLAYER_ERROR_NONE);

    ASSERT_TRUE(playing(file));

    EXPECT_TRUE(wait_for_event("subtitle 10000 Good evening"));
    EXPECT_EQ(count("subtitle 10000 Hello shop"), 0);
}

TEST_F(Ahead, AFileWhoseDiskDoesNotAnswerAnyMoreIsGivenUp)
{
    platform::PlayerOptions options = counting_options();
    options.first_frame_timeout = std::chrono::milliseconds(1500);
    make_player(options);
    write_file(path("a.srt"), "1\n00:00:00,000 --> 00:00:10,000\nHello shop\n");
    const std::string file = clip("a.mp4");
    ASSERT_NO_FATAL_FAILURE(open_ahead({file, {}}));
    ASSERT_TRUE(stays([this] { return events().empty(); }, 0.3)) << "it stands at its first frame";
    disk.stand_still();
    ASSERT_EQ(player_->set_subtitle_path(path("a.srt")), PLAYER_ERROR_NONE);

    ASSERT_EQ(prepare(file), PLAYER_ERROR_NONE);

    EXPECT_TRUE(wait_for([this] { return !events().empty(); }));
    EXPECT_THAT(events(), ElementsAre("error " + std::to_string(PLAYER_ERROR_NOT_SUPPORTED_FILE)));
    EXPECT_TRUE(disk.is_asked());
    disk.go_on();
}

TEST_F(Ahead, AVideoWhoseSubtitleDoesNotAnswerPlaysWithoutIt)
{
    platform::PlayerOptions options = counting_options();
    options.subtitle_timeout = std::chrono::milliseconds(200);
    make_player(options);
    write_file(path("a.srt"), "1\n00:00:00,000 --> 00:00:10,000\nHello shop\n");
    const std::string file = clip("a.mp4");
    ASSERT_EQ(player_->set_subtitle_path(path("a.srt")), PLAYER_ERROR_NONE);
    disk.stand_still(path("a.srt"));

    EXPECT_TRUE(playing(file));

    EXPECT_TRUE(disk.is_asked());
    disk.go_on();
}

TEST_F(Ahead, AFileThatIsGoneFailsAsItAlwaysDoes)
{
    const std::string file = clip("a.mp4");
    ASSERT_NO_FATAL_FAILURE(open_ahead({file, {}}));
    std::filesystem::remove(file);

    ASSERT_EQ(prepare(file), PLAYER_ERROR_NONE);

    EXPECT_TRUE(wait_for([this] { return !events().empty(); }));
    EXPECT_THAT(events(), ElementsAre("error " + std::to_string(PLAYER_ERROR_NO_SUCH_FILE)));
}

TEST_F(Ahead, OneThatCouldNotBePreparedIsTriedOnceMoreAndToldOfThenOnly)
{
    write_file(path("a.mp4"), "this is no film");
    testing::internal::CaptureStderr();
    player_->open_ahead({path("a.mp4"), {}});
    ASSERT_TRUE(stays([this] { return events().empty(); }, 0.3));

    ASSERT_EQ(prepare(path("a.mp4")), PLAYER_ERROR_NONE);

    EXPECT_TRUE(wait_for([this] { return !events().empty(); }));
    EXPECT_THAT(events(), ElementsAre(HasSubstr("error ")));
    const std::string log = testing::internal::GetCapturedStderr();
    const size_t told = log.find("a.mp4 cannot be played");
    EXPECT_NE(told, std::string::npos);
    EXPECT_EQ(log.find("a.mp4 cannot be played", told + 1), std::string::npos) << log;
}

TEST_F(Ahead, OneThatFailsAfterItWasAskedForIsTriedOnceMoreAsWell)
{
    platform::PlayerOptions options = counting_options();
    std::promise<void> asked;
    std::atomic<int> tries{0};
    options.set_up = [&tries, after = asked.get_future().share()](const std::atomic<bool> &) {
        if (tries++ > 0)
            return true;
        after.wait();
        return false;
    };
    make_player(options);
    const std::string file = clip("a.mp4");
    player_->open_ahead({file, {}});
    ASSERT_EQ(prepare(file), PLAYER_ERROR_NONE);
    ASSERT_TRUE(stays([this] { return events().empty(); }, 0.1));

    asked.set_value();

    EXPECT_TRUE(wait_for_event("prepared"));
    EXPECT_THAT(events(), ElementsAre("prepared"));
    EXPECT_EQ(tries, 2);
}

TEST_F(Ahead, ThatItPlaysInSilenceIsToldWhateverSubtitleItGets)
{
    write_file(path("b.srt"), "1\n00:00:00,000 --> 00:00:10,000\nGood evening\n");
    platform::PlayerOptions options = usual_options();
    std::atomic<GstElement *> converter{nullptr};
    options.make_audio_sink = [&converter] {
        GError *error = nullptr;
        platform::ElementPtr sink(GST_ELEMENT(gst_object_ref_sink(gst_parse_bin_from_description(
            "audioconvert name=converter ! fakesink sync=true", TRUE, &error))));
        converter = gst_bin_get_by_name(GST_BIN(sink.get()), "converter");
        return sink;
    };
    make_player(options);
    const std::string file = clip("a.mp4");
    testing::internal::CaptureStderr();
    player_->open_ahead({file, {}});
    ASSERT_TRUE(wait_for([&] { return converter.load() != nullptr; }));
    const platform::ElementPtr broken(converter.exchange(nullptr));
    ASSERT_TRUE(wait_for([&] { return is_in_state(broken, GST_STATE_PAUSED); }));
    GST_ELEMENT_ERROR(broken.get(), STREAM, DECODE, ("its sound is rubbish"), (nullptr));
    ASSERT_TRUE(wait_for([&] { return is_in_state(broken, GST_STATE_NULL); }));
    ASSERT_EQ(player_->set_subtitle_path(path("b.srt")), PLAYER_ERROR_NONE);

    ASSERT_TRUE(playing(file));

    EXPECT_TRUE(wait_for_event("subtitle 10000 Good evening"));
    EXPECT_THAT(testing::internal::GetCapturedStderr(),
                HasSubstr("plays in silence: its sound is rubbish"));
}

TEST_F(Ahead, ItIsShownWithTheSubtitleThatIsAskedFor)
{
    write_file(path("a.srt"), "1\n00:00:00,000 --> 00:00:10,000\nHello shop\n");
    write_file(path("b.srt"), "1\n00:00:00,000 --> 00:00:10,000\nGood evening\n");
    const std::string file = clip("a.mp4");
    for (const char *guessed : {"", "a.srt", "b.srt"}) {
        SCOPED_TRACE(guessed);
        ASSERT_NO_FATAL_FAILURE(open_ahead({file, *guessed ? path(guessed) : ""}));
        ASSERT_EQ(player_->set_subtitle_path(path("b.srt")), PLAYER_ERROR_NONE);

        ASSERT_TRUE(playing(file));

        EXPECT_TRUE(player_->status().has_subtitle);
        EXPECT_TRUE(wait_for_event("subtitle 10000 Good evening"));
        EXPECT_EQ(count("subtitle 10000 Hello shop"), 0);
        player_->unprepare();
    }
}

TEST_F(Ahead, ItIsShownWithoutASubtitleThatIsNotAskedFor)
{
    write_file(path("a.srt"), "1\n00:00:00,000 --> 00:00:10,000\nHello shop\n");
    const std::string file = clip("a.mp4");
    ASSERT_NO_FATAL_FAILURE(open_ahead({file, path("a.srt")}));

    ASSERT_TRUE(playing(file));

    EXPECT_FALSE(player_->status().has_subtitle);
    EXPECT_TRUE(wait_for_event("completed"));
    EXPECT_THAT(events(), ElementsAre("prepared", "completed"));
}

TEST_F(Ahead, ASubtitleThatCannotBeReadIsToldOfWhenTheFileIsAskedFor)
{
    const std::string file = clip("a.mp4");
    testing::internal::CaptureStderr();
    ASSERT_NO_FATAL_FAILURE(open_ahead({file, path("missing.srt")}));
    ASSERT_TRUE(stays([this] { return events().empty(); }, 0.3));
    EXPECT_THAT(testing::internal::GetCapturedStderr(), Not(HasSubstr("missing.srt")));
    testing::internal::CaptureStderr();
    ASSERT_EQ(player_->set_subtitle_path(path("missing.srt")), PLAYER_ERROR_NONE);

    ASSERT_TRUE(playing(file));

    EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("plays without its subtitle"));
}

TEST_F(Ahead, OneThatLosesItsSoundDevicePlaysWithSoundAllTheSame)
{
    const std::string file = clip("a.mp4");
    testing::internal::CaptureStderr();
    ASSERT_NO_FATAL_FAILURE(open_ahead({file, {}}));
    const platform::ElementPtr lost = std::move(device_);
    ASSERT_TRUE(wait_for([&] { return is_in_state(lost, GST_STATE_PAUSED); }));

    GST_ELEMENT_ERROR(lost.get(), RESOURCE, WRITE, ("the device is gone"), (nullptr));
    ASSERT_TRUE(wait_for([&] { return is_in_state(lost, GST_STATE_NULL); }));
    ASSERT_TRUE(playing(file));

    EXPECT_TRUE(wait_for_event("completed"));
    EXPECT_THAT(events(), ElementsAre("prepared", "completed"));
    EXPECT_THAT(testing::internal::GetCapturedStderr(), Not(HasSubstr("plays in silence")));
    EXPECT_EQ(opened_, 2) << "it is not opened anew with its sound";
}

TEST_F(Ahead, ItGoesWithThePlayer)
{
    const std::string file = clip("a.mp4");
    ASSERT_NO_FATAL_FAILURE(open_ahead({file, {}}));

    player_->destroy();

    EXPECT_FALSE(is_open(file)) << "destroying it waits for its files";
    player_->open_ahead({file, {}});
    EXPECT_EQ(opened_, 1) << "and opens none any more";
}

/** With a sound device and no server. */
class AheadWithDevice : public Ahead {
  protected:
    /** @param device the library's kind of it */
    void use(const std::string &device)
    {
        write_file(path("alsa.conf"), "pcm.!default { type " + device + " }\n");
        setenv("ALSA_CONFIG_PATH", path("alsa.conf").c_str(), 1);
        choose("alsasink");
    }

    void TearDown() override
    {
        unsetenv("ALSA_CONFIG_PATH");
        choose("fakesink");
        Ahead::TearDown();
    }

  private:
    static void choose(const char *sink)
    {
        setenv("OSTREL_DEMO_AUDIO_SINK", sink, 1);
        platform::forget_audio_sink();
        platform::choose_audio_sink();
    }
};

TEST_F(AheadWithDevice, NoneIsOpenedWhereTwoFilesCannotShareIt)
{
    use("missing");

    player_->open_ahead({clip("a.mp4"), {}});

    EXPECT_TRUE(stays([this] { return opened_ == 0; }, 0.2));
}

TEST_F(AheadWithDevice, OneIsOpenedWhereTheyCan)
{
    use("null");

    EXPECT_NO_FATAL_FAILURE(open_ahead({clip("a.mp4"), {}}));
}

/** With a look-ahead that names what the test wants. */
class AheadByItself : public Ahead {
  protected:
    void SetUp() override
    {
        Ahead::SetUp();
        platform::PlayerOptions options = counting_options();
        options.lookahead = &lookahead_;
        make_player(options);
        next_ = clip("next.mp4");
    }

    void TearDown() override
    {
        player_->destroy();
        lookahead_.wait_until_done();
        Ahead::TearDown();
    }

    std::string next_;
    std::function<int64_t()> private_memory_kb_;
    Lookahead lookahead_{{[this](const std::string &) {
                              return PlayedItem{next_, {}};
                          },
                          [] { return std::numeric_limits<int64_t>::max(); },
                          [this] { return private_memory_kb_(); }}};
};

TEST_F(AheadByItself, AFileNearItsEndHasTheNextOneOpened)
{
    ASSERT_TRUE(playing(clip("a.mp4")));

    EXPECT_TRUE(wait_for([this] { return is_open(next_); }));

    EXPECT_TRUE(wait_for_event("completed"));
    player_->unprepare();
    ASSERT_TRUE(playing(next_));
    EXPECT_EQ(opened_, 2);
}

TEST_F(AheadByItself, AFileThatPlaysOverAndOverHasNone)
{
    player_->set_looping(true);
    ASSERT_TRUE(playing(clip("a.mp4")));
    const uint64_t begun = shown();

    ASSERT_TRUE(wait_for([&] { return shown() > begun + 70; })) << "a round and more";

    EXPECT_EQ(opened_, 1);
}

TEST_F(AheadByItself, TheEndOfEachRoundIsAPlaceToLookAtTheMemory)
{
    std::atomic<int> looks{0};
    private_memory_kb_ = [&looks] {
        looks++;
        return 0;
    };
    lookahead_.set_growth_listener([] {});
    player_->set_looping(true);
    ASSERT_TRUE(playing(clip("a.mp4")));

    EXPECT_TRUE(wait_for([&] { return looks >= 3; }));
    lookahead_.set_growth_listener({});
    lookahead_.wait_until_done();
}

TEST_F(AheadByItself, ItIsLetGoOfWhenTheFileIsHeldOrPlaysFast)
{
    Clip film;
    film.frames = 600;
    film.width = 64;
    film.height = 36;
    film.sound = false;
    ASSERT_TRUE(playing(clip("a.mp4", film)));
    const auto let_go_of_by = [this](const auto &call) {
        lookahead_.on_nearly_over(path("a.mp4"));
        ASSERT_TRUE(wait_for([this] { return is_open(next_); }));

        ASSERT_EQ(call(), PLAYER_ERROR_NONE);

        EXPECT_TRUE(is_let_go(next_));
    };
    let_go_of_by([this] { return player_->pause(); });
    ASSERT_EQ(player_->start(), PLAYER_ERROR_NONE);
    let_go_of_by([this] { return player_->set_rate(2.0); });
}

} // namespace
} // namespace player_test
