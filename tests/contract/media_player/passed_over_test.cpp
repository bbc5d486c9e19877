// A video that cannot be opened, where the show is to go on.

#include <filesystem>
#include <future>

#include <sys/stat.h>

#include <gmock/gmock.h>

#include "player_fixture.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace player_test {
namespace {

using Kind = platform::UnplayableFile::Kind;

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
        options.unplayable_files = &unplayable_;
        options.fruitless_rounds = &rounds_;
        options.make_audio_sink = [this, make = options.make_audio_sink] {
            openings_++;
            return make();
        };
        return options;
    }

    /** Options with a sound device that refuses the first so many files for no fault of theirs. */
    platform::PlayerOptions options_without_sound_device(int refusals)
    {
        platform::PlayerOptions options = skipping_options();
        options.make_audio_sink = [this, refusals, make = options.make_audio_sink] {
            platform::ElementPtr sink = make();
            if (openings_ <= refusals)
                gst_util_set_object_arg(G_OBJECT(sink.get()), "state-error", "ready-to-paused");
            return sink;
        };
        return options;
    }

    /** Options with which each file finds, before it is ready, that others have an element. */
    platform::PlayerOptions options_with_busy(const char *factory)
    {
        platform::PlayerOptions options = skipping_options();
        options.make_audio_sink = [factory] {
            platform::ElementPtr sink = platform::make_element("fakeaudiosink");
            const platform::PadPtr entry(gst_element_get_static_pad(sink.get(), "sink"));
            const auto tell = [](GstPad *pad, GstPadProbeInfo *, gpointer name) {
                const platform::ElementPtr element =
                    platform::make_element(static_cast<const char *>(name));
                GError *busy = g_error_new_literal(GST_RESOURCE_ERROR, GST_RESOURCE_ERROR_BUSY,
                                                   "another program has it");
                gst_element_post_message(
                    GST_ELEMENT(GST_OBJECT_PARENT(pad)),
                    gst_message_new_error(GST_OBJECT(element.get()), busy, nullptr));
                g_error_free(busy);
                return GST_PAD_PROBE_DROP;
            };
            gst_pad_add_probe(entry.get(), GST_PAD_PROBE_TYPE_BUFFER, tell,
                              const_cast<char *>(factory), nullptr);
            return sink;
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

    /** Makes the next round of nothing but one file wait for longer than any test. */
    void make_waits_long(const std::string &file)
    {
        while (rounds_.on_passed_over(file, true, shown()).pause < std::chrono::seconds(60))
            ;
    }

    /** Asks for a file, and tells whether it becomes ready. */
    testing::AssertionResult ready(const std::string &file)
    {
        player_->unprepare();
        return prepared(file);
    }

    /** Whether a file that has not changed would be passed over untried. */
    bool is_known(const std::string &file, std::chrono::hours from_now = {}) const
    {
        return unplayable_
            .why(file, *platform::file_stamp(file), std::chrono::steady_clock::now() + from_now)
            .has_value();
    }

    /** What staff are told of a file. */
    std::optional<Kind> kind_of(const std::string &file) const
    {
        for (const platform::UnplayableFile &known : unplayable_.all()) {
            if (known.path == file)
                return known.kind;
        }
        return std::nullopt;
    }

    platform::UnplayableFiles unplayable_;
    platform::FruitlessRounds rounds_;
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
    ASSERT_EQ(unplayable_.all().size(), 1u);
    EXPECT_EQ(unplayable_.all()[0].path, path("bad.mp4"));
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
                             "photo.mp4", "missing.mp4"}) {
        EXPECT_THAT(outcome(path(name)), ElementsAre("prepared", "completed")) << name;
        EXPECT_EQ(kind_of(path(name)),
                  name == std::string("missing.mp4") ? Kind::Unreadable : Kind::Damaged)
            << name;
    }

    EXPECT_EQ(unplayable_.all().size(), 7u);
    EXPECT_EQ(shown(), 0u);
}

TEST_F(PassedOver, IsOpenedTwiceAndThenNotUntilItChanges)
{
    testing::internal::CaptureStderr();
    for (const int openings : {1, 2, 2, 2}) {
        ASSERT_TRUE(ready(path("bad.mp4")));
        EXPECT_EQ(openings_, openings);
    }
    const std::string log = testing::internal::GetCapturedStderr();
    EXPECT_EQ(log.find("cannot be played"), log.rfind("cannot be played")) << log;
    EXPECT_TRUE(is_known(path("bad.mp4"), std::chrono::hours(24)));

    player_->unprepare();
    std::filesystem::rename(clip("good.mp4"), path("bad.mp4"));
    EXPECT_TRUE(playing(path("bad.mp4")));
    EXPECT_THAT(unplayable_.all(), IsEmpty());
}

TEST_F(PassedOver, IsLetGoOfAtOnce)
{
    platform::PlayerOptions options = skipping_options();
    std::shared_ptr<GstElement> device;
    options.make_audio_sink = [&device, make = options.make_audio_sink] {
        platform::ElementPtr sink = make();
        device.reset(GST_ELEMENT(gst_object_ref(sink.get())), gst_object_unref);
        return sink;
    };
    std::atomic<bool> given_up{false};
    options.load_subtitle = [&given_up](const std::string &, std::string &,
                                        const platform::StopRequest &stop) {
        while (!stop())
            std::this_thread::yield();
        given_up = true;
        return std::unique_ptr<platform::SubtitleTrack>();
    };
    make_player(options);
    make_sound(path("song.ogg"));
    make_waits_long(path("song.ogg"));
    ASSERT_EQ(player_->set_subtitle_path(path("song.srt")), PLAYER_ERROR_NONE);
    ASSERT_TRUE(prepared(path("song.ogg")));
    ASSERT_EQ(player_->start(), PLAYER_ERROR_NONE);

    const auto stopped = [&device] {
        GstState state = GST_STATE_VOID_PENDING;
        gst_element_get_state(device.get(), &state, nullptr, 0);
        return state == GST_STATE_NULL;
    };
    EXPECT_TRUE(wait_for(stopped));
    EXPECT_TRUE(wait_for([&given_up] { return given_up.load(); }));

    EXPECT_EQ(player_->state(), PLAYER_STATE_PLAYING) << "it waits";
    player_->destroy();
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

TEST_F(PassedOver, ThatFailsForWhatIsAroundItIsTriedEachTime)
{
    make_player(options_without_sound_device(2));
    const std::string file = clip("a.mp4");

    for (int time = 0; time < 2; time++) {
        EXPECT_TRUE(ready(file));
        EXPECT_EQ(unplayable_.all().size(), 1u);
        EXPECT_EQ(kind_of(file), Kind::Refused);
    }

    player_->unprepare();
    EXPECT_TRUE(playing(file));
}

TEST_F(PassedOver, IsOneWhoseDecoderIsBusyAndNoneWithoutAScreen)
{
    const std::string file = clip("a.mp4");

    make_player(options_with_busy("identity"));
    ASSERT_TRUE(ready(file));
    EXPECT_EQ(unplayable_.all().size(), 1u);
    EXPECT_FALSE(is_known(file)) << "it is tried each time";

    make_player(options_with_busy("fakevideosink"));
    ASSERT_EQ(prepare(file), PLAYER_ERROR_NONE);
    EXPECT_TRUE(
        wait_for_event("interrupted " + std::to_string(PLAYER_INTERRUPTED_BY_RESOURCE_CONFLICT)));
}

TEST_F(PassedOver, IsAnErrorWhereNothingPlaysAndTheFilesAreNotToBlame)
{
    make_player(options_without_sound_device(100));
    const std::string file = clip("a.mp4");
    make_waits_long(path("bad.mp4"));
    ASSERT_TRUE(ready(file));
    testing::internal::CaptureStderr();

    player_->unprepare();
    ASSERT_EQ(prepare(path("bad.mp4")), PLAYER_ERROR_NONE);

    EXPECT_TRUE(wait_for([this] { return events().size() == 2; }));
    EXPECT_THAT(events().back(), HasSubstr("error "));
    EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("bad.mp4 cannot be played: "));
    EXPECT_EQ(player_->state(), PLAYER_STATE_IDLE);
}

TEST_F(PassedOver, IsNoneBeforeTheMediaSystemIsUp)
{
    platform::PlayerOptions options = skipping_options();
    options.set_up = [](const std::atomic<bool> &) { return false; };
    make_player(options);

    ASSERT_EQ(prepare(clip("a.mp4")), PLAYER_ERROR_NONE);

    EXPECT_TRUE(wait_for_event("error " + std::to_string(PLAYER_ERROR_INVALID_OPERATION)));
    EXPECT_THAT(unplayable_.all(), IsEmpty());
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
    make_waits_long(path("bad.mp4"));
    ASSERT_TRUE(prepared(path("bad.mp4")));
    EXPECT_EQ(player_->status().looks_again_ms, -1);
    ASSERT_EQ(player_->start(), PLAYER_ERROR_NONE);

    EXPECT_TRUE(wait_for([this] { return player_->status().looks_again_ms > 0; }));
    EXPECT_TRUE(stays([this] { return player_->state() == PLAYER_STATE_PLAYING; }, 0.3));
    EXPECT_LE(player_->status().looks_again_ms, 60000);
    EXPECT_EQ(player_->pause(), PLAYER_ERROR_NONE);
    EXPECT_TRUE(wait_for([this] { return player_->status().looks_again_ms == -1; }));

    player_->unprepare();
    ASSERT_TRUE(playing(clip("a.mp4")));
    EXPECT_THAT(outcome(path("bad.mp4")), ElementsAre("prepared", "completed"));
}

TEST_F(PassedOver, IsNotWaitedWithAfterOneThatWasLetGoOfBeforeItsFirstPicture)
{
    ASSERT_TRUE(ready(path("bad.mp4")));
    player_->unprepare();
    ASSERT_EQ(prepare(clip("good.mp4")), PLAYER_ERROR_NONE);
    player_->unprepare(); // by a key
    testing::internal::CaptureStderr();

    EXPECT_THAT(outcome(path("bad.mp4")), ElementsAre("prepared", "completed"));

    EXPECT_EQ(testing::internal::GetCapturedStderr().find("nothing that is to be played"),
              std::string::npos);
}

TEST_F(PassedOver, ThatWasOpenedAheadIsPassedOverWhenItIsAskedFor)
{
    player_->open_ahead({path("bad.mp4"), {}});
    EXPECT_TRUE(wait_for([this] { return openings_ == 1; }));
    EXPECT_THAT(unplayable_.all(), IsEmpty()) << "nobody has asked for it";

    EXPECT_THAT(outcome(path("bad.mp4")), ElementsAre("prepared", "completed"));

    EXPECT_EQ(unplayable_.all().size(), 1u);
}

TEST_F(PassedOver, IsNoFileThatBreaksInItsMiddle)
{
    const std::string whole = read_file(clip("a.mkv"));
    write_file(path("cut.mkv"), whole.substr(0, whole.size() / 2));

    ASSERT_TRUE(playing(path("cut.mkv")));

    EXPECT_TRUE(wait_for_event("completed"));
    EXPECT_THAT(unplayable_.all(), IsEmpty());
}

} // namespace
} // namespace player_test
