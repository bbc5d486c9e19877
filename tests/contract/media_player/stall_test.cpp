// A decoder or a disk that hangs in the middle of a film: where the film goes on, or that it ends.

#include <algorithm>
#include <condition_variable>
#include <mutex>

#include <gst/base/gstbasesrc.h>
#include <gst/video/gstvideodecoder.h>

#include <gmock/gmock.h>

#include "base/worker_thread.h"
#include "player_fixture.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

namespace {

/** Elements of one kind, and where they hang until the test is over. */
class Hang {
  public:
    /** So many of them, one after the other, hang at the first place from this one on. */
    void arm(int times, uint64_t place = 0)
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        place_ = place;
        times_ = times;
    }

    void pass(uint64_t place)
    {
        std::unique_lock<std::mutex> lock(mutex_);
        if (place < place_ || times_ == 0)
            return;
        times_--;
        hung_++;
        changed_.wait(lock, [this] { return over_; });
    }

    void count_element(int change)
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        elements_ += change;
    }

    /** How many of them hang, or did. */
    int hung() const
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        return hung_;
    }

    void end()
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        over_ = true;
        changed_.notify_all();
    }

    /** Once it has been ended, and all elements are gone. @return whether they are */
    bool reset()
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (elements_ > 0)
            return false;
        times_ = hung_ = 0;
        over_ = false;
        return true;
    }

  private:
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    uint64_t place_ = 0;
    int times_ = 0;
    int hung_ = 0;
    int elements_ = 0;
    bool over_ = false;
};

Hang &decoders() ///< places are times
{
    static Hang all;
    return all;
}

Hang &readers() ///< places are offsets
{
    static Hang all;
    return all;
}

/** Makes grey pictures of whatever comes. */
struct HangingDecoder {
    GstVideoDecoder base;
};
struct HangingDecoderClass {
    GstVideoDecoderClass base;
};
GType hanging_decoder_get_type();
G_DEFINE_TYPE(HangingDecoder, hanging_decoder, GST_TYPE_VIDEO_DECODER)

GstStaticPadTemplate sink_template = GST_STATIC_PAD_TEMPLATE(
    "sink", GST_PAD_SINK, GST_PAD_ALWAYS, GST_STATIC_CAPS("video/x-h264, alignment=au"));
GstStaticPadTemplate src_template = GST_STATIC_PAD_TEMPLATE(
    "src", GST_PAD_SRC, GST_PAD_ALWAYS, GST_STATIC_CAPS(GST_VIDEO_CAPS_MAKE("GRAY8")));

gboolean set_format(GstVideoDecoder *decoder, GstVideoCodecState *coded)
{
    gst_video_codec_state_unref(gst_video_decoder_set_output_state(
        decoder, GST_VIDEO_FORMAT_GRAY8, GST_VIDEO_INFO_WIDTH(&coded->info),
        GST_VIDEO_INFO_HEIGHT(&coded->info), coded));
    return TRUE;
}

GstFlowReturn handle_frame(GstVideoDecoder *decoder, GstVideoCodecFrame *frame)
{
    decoders().pass(frame->pts);
    const GstFlowReturn result = gst_video_decoder_allocate_output_frame(decoder, frame);
    if (result != GST_FLOW_OK) {
        gst_video_decoder_release_frame(decoder, frame);
        return result;
    }
    gst_buffer_memset(frame->output_buffer, 0, 0x80, static_cast<gsize>(-1));
    return gst_video_decoder_finish_frame(decoder, frame);
}

void hanging_decoder_finalize(GObject *object)
{
    G_OBJECT_CLASS(hanging_decoder_parent_class)->finalize(object);
    decoders().count_element(-1);
}

void hanging_decoder_class_init(HangingDecoderClass *type)
{
    auto *element = GST_ELEMENT_CLASS(type);
    gst_element_class_add_static_pad_template(element, &sink_template);
    gst_element_class_add_static_pad_template(element, &src_template);
    gst_element_class_set_static_metadata(element, "Decoder that hangs", "Codec/Decoder/Video",
                                          "Hangs where a test wants it", "nobody");
    GST_VIDEO_DECODER_CLASS(type)->set_format = set_format;
    GST_VIDEO_DECODER_CLASS(type)->handle_frame = handle_frame;
    G_OBJECT_CLASS(type)->finalize = hanging_decoder_finalize;
}

void hanging_decoder_init(HangingDecoder *)
{
    decoders().count_element(1);
}

/** Reads files as GStreamer's own element does, which it is made from; its class is the plugin's.
 */
GstBaseSrcClass *file_source_class = nullptr;

GstFlowReturn fill(GstBaseSrc *source, guint64 offset, guint length, GstBuffer *buffer)
{
    readers().pass(offset);
    return file_source_class->fill(source, offset, length, buffer);
}

gboolean start(GstBaseSrc *source)
{
    readers().pass(0);
    return file_source_class->start(source);
}

void hanging_reader_finalize(GObject *object)
{
    G_OBJECT_CLASS(file_source_class)->finalize(object);
    readers().count_element(-1);
}

GType hanging_reader_type()
{
    gst_object_unref(gst_element_factory_make("filesrc", nullptr)); // loads it
    const GType parent = g_type_from_name("GstFileSrc");
    GTypeQuery facts = {};
    g_type_query(parent, &facts);
    GTypeInfo info = {};
    info.class_size = static_cast<guint16>(facts.class_size);
    info.instance_size = static_cast<guint16>(facts.instance_size);
    info.class_init = [](gpointer type, gpointer) {
        file_source_class = GST_BASE_SRC_CLASS(g_type_class_peek_parent(type));
        GST_BASE_SRC_CLASS(type)->start = start;
        GST_BASE_SRC_CLASS(type)->fill = fill;
        G_OBJECT_CLASS(type)->finalize = hanging_reader_finalize;
    };
    info.instance_init = [](GTypeInstance *, gpointer) { readers().count_element(1); };
    return g_type_register_static(parent, "HangingReader", &info, GTypeFlags{});
}

Hang &devices() ///< there is one place
{
    static Hang all;
    return all;
}

std::atomic<bool> devices_are_gone{false};

/** A sound device that hangs when it is opened, if it is to after it has told that it is gone. */
struct LostDevice {
    GstBaseSink base;
};
struct LostDeviceClass {
    GstBaseSinkClass base;
};
GType lost_device_get_type();
G_DEFINE_TYPE(LostDevice, lost_device, GST_TYPE_BASE_SINK)

GstStaticPadTemplate sound_template =
    GST_STATIC_PAD_TEMPLATE("sink", GST_PAD_SINK, GST_PAD_ALWAYS, GST_STATIC_CAPS("audio/x-raw"));

GstStateChangeReturn lost_device_change_state(GstElement *device, GstStateChange change)
{
    if (change == GST_STATE_CHANGE_NULL_TO_READY) {
        if (devices_are_gone)
            GST_ELEMENT_ERROR(device, RESOURCE, OPEN_WRITE, ("the device is gone"), (nullptr));
        devices().pass(0);
    }
    return GST_ELEMENT_CLASS(lost_device_parent_class)->change_state(device, change);
}

void lost_device_finalize(GObject *object)
{
    G_OBJECT_CLASS(lost_device_parent_class)->finalize(object);
    devices().count_element(-1);
}

void lost_device_class_init(LostDeviceClass *type)
{
    auto *element = GST_ELEMENT_CLASS(type);
    gst_element_class_add_static_pad_template(element, &sound_template);
    gst_element_class_set_static_metadata(element, "Device that is gone", "Sink/Audio",
                                          "Hangs when it is opened", "nobody");
    element->change_state = lost_device_change_state;
    G_OBJECT_CLASS(type)->finalize = lost_device_finalize;
}

void lost_device_init(LostDevice *)
{
    devices().count_element(1);
}

} // namespace

namespace player_test {
namespace {

class StallTest : public PlayerTest {
  protected:
    static void SetUpTestSuite()
    {
        PlayerTest::SetUpTestSuite();
        gst_element_register(nullptr, "hangingdec", GST_RANK_NONE, hanging_decoder_get_type());
        gst_element_register(nullptr, "hangingsrc", GST_RANK_NONE, hanging_reader_type());
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
    static platform::PlayerOptions options_with_device_that_hangs(int after = 0)
    {
        devices().arm(after == 0 ? 1 : 0);
        platform::PlayerOptions options = impatient_options();
        options.make_audio_sink = [after, opened = std::make_shared<std::atomic<int>>(0)] {
            if (after > 0 && (*opened)++ == after)
                devices().arm(1);
            return platform::ElementPtr(
                GST_ELEMENT(gst_object_ref_sink(g_object_new(lost_device_get_type(), nullptr))));
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
        devices_are_gone = false;
        PlayerTest::TearDown();
        EXPECT_TRUE(wait_for([] {
            return decoders().reset() && readers().reset() && devices().reset();
        })) << "what was left to itself has ended";
    }

    static void set_rank(const char *element, guint rank)
    {
        GstPluginFeature *feature = GST_PLUGIN_FEATURE(gst_element_factory_find(element));
        gst_plugin_feature_set_rank(feature, rank);
        gst_object_unref(feature);
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

TEST_F(StallTest, AFileThatLosesItsSoundAndHangsAllTheSameIsGivenUp)
{
    make_player(options_with_device_that_hangs());
    devices_are_gone = true;

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
