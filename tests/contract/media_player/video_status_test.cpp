// What is told of a film's picture while it plays.

#include <future>

#include <gmock/gmock.h>

#include "media_player/video_facts.h"
#include "player_fixture.h"

using platform::ColourPart;
using platform::ColourSource;
using platform::ToneMapping;
using platform::VideoStatus;
using testing::HasSubstr;

namespace player_test {
namespace {

const std::string CHART = "-f lavfi -i testsrc2=size=64x32:duration=0.4:rate=";
const std::string H264 = "-c:v libx264 -pix_fmt yuv420p ";
const std::string BT709 = "-vf setparams=color_primaries=bt709:color_trc=bt709:colorspace=bt709 "
                          "-color_primaries bt709 -color_trc bt709 -colorspace bt709 ";

std::string text_of(const ColourPart &part)
{
    static const char *const sources[] = {"stream", "container", "usual"};
    return part.name + " (" + sources[static_cast<size_t>(part.source)] + ")";
}

std::string colours_of(const VideoStatus &video)
{
    return text_of(video.range) + ", " + text_of(video.matrix) + ", " + text_of(video.transfer) +
           ", " + text_of(video.primaries);
}

class VideoStatusTest : public PlayerTest {
  protected:
    VideoStatus status() const { return player_->status().video; }

    /** What is told when a file's first frame is seen. */
    VideoStatus status_of(const std::string &file)
    {
        player_->unprepare();
        EXPECT_TRUE(playing(file));
        return status();
    }

    std::string files_of(const std::string &options, const std::vector<std::string> &names) const
    {
        std::string all;
        for (const std::string &name : names)
            all += options + path(name) + " ";
        return all;
    }

    static Clip short_clip()
    {
        Clip facts;
        facts.frames = 10;
        facts.sound = false;
        return facts;
    }
};

TEST_F(VideoStatusTest, TellsDecoderAndFramesAsTheyAreStored)
{
    run_ffmpeg("-f lavfi -i testsrc2=size=64x64:rate=50:duration=0.4 "
               "-vf tinterlace=interleave_top,setsar=16/15 -flags +ilme+ildct -x264opts tff=1 " +
               H264 + path("fields.ts"));

    const VideoStatus video = status_of(path("fields.ts"));

    EXPECT_EQ(video.decoder, "avdec_h264");
    EXPECT_THAT(video.decoder_name, HasSubstr("H.264"));
    EXPECT_FALSE(video.hardware);
    EXPECT_EQ(video.width, 64);
    EXPECT_EQ(video.height, 64);
    EXPECT_EQ(video.pixel_width, 16);
    EXPECT_EQ(video.pixel_height, 15);
    EXPECT_EQ(video.frame_rate, 25);
    EXPECT_TRUE(video.interlaced);
    EXPECT_EQ(video.format, "I420");
    EXPECT_EQ(video.depth, 8);
    EXPECT_TRUE(video.exact);
    EXPECT_EQ(video.mapping, ToneMapping::None);
}

TEST_F(VideoStatusTest, TellsOfFramesThatNeedNoDecoder)
{
    run_ffmpeg(CHART + "24000/1001 -c:v rawvideo -pix_fmt yuv420p " + path("raw.avi"));

    const VideoStatus video = status_of(path("raw.avi"));

    EXPECT_EQ(video.decoder, "");
    EXPECT_EQ(video.width, 64);
    EXPECT_FALSE(video.interlaced);
    EXPECT_NEAR(video.frame_rate, 23.976, 0.001);

    run_ffmpeg(CHART + "25 -vf setfield=tff -c:v rawvideo -pix_fmt yuv420p " + path("raw.mkv"));
    const VideoStatus fields = status_of(path("raw.mkv"));
    EXPECT_EQ(fields.decoder, "");
    EXPECT_TRUE(fields.interlaced);
}

TEST_F(VideoStatusTest, TellsWhoToldEachPartOfTheColours)
{
    const std::string silent = "-x264-params colorprim=undef:transfer=undef:colormatrix=undef ";
    run_ffmpeg(CHART + "25 " + files_of(BT709 + H264, {"both.mkv", "stream.ts"}) +
               files_of(BT709 + silent + H264, {"container.mkv"}) +
               files_of(H264, {"none.mkv", "none.mp4"}) +
               files_of(BT709 + "-color_range pc " + H264 + "-pix_fmt yuvj420p ", {"full.mp4"}));
    const std::pair<const char *, const char *> rows[] = {
        {"stream.ts", "limited (stream), bt709 (stream), bt709 (stream), bt709 (stream)"},
        {"both.mkv", "limited (stream), bt709 (container), bt709 (container), bt709 (container)"},
        {"container.mkv",
         "limited (usual), bt709 (container), bt709 (container), bt709 (container)"},
        {"full.mp4", "full (stream), bt709 (container), bt709 (container), bt709 (container)"},
        {"none.mkv", "limited (usual), bt601 (usual), bt601 (usual), bt709 (usual)"},
        {"none.mp4", "limited (usual), bt601 (usual), bt601 (usual), bt709 (usual)"},
    };
    for (const auto &[name, expected] : rows)
        EXPECT_EQ(colours_of(status_of(path(name))), expected) << name;
}

TEST_F(VideoStatusTest, TellsHowHighDynamicRangeIsMapped)
{
    const auto tagged = [](const std::string &transfer) {
        return "-vf setparams=color_primaries=bt2020:color_trc=" + transfer +
               ":colorspace=bt2020nc -color_primaries bt2020 -colorspace bt2020nc -color_trc " +
               transfer + " ";
    };
    const std::string hevc = "-pix_fmt yuv420p10le -c:v libx265 -preset ultrafast ";
    const std::string pq = tagged("smpte2084");
    run_ffmpeg(CHART + "25 " + pq + hevc + "-x265-params log-level=error:hdr10=1:max-cll=600,200 " +
               path("pq.mkv") + " " + tagged("arib-std-b67") + hevc +
               "-x265-params log-level=error:hdr10=1:max-cll=600,200 " + path("hlg.ts") + " " + pq +
               "-c:v ffv1 -pix_fmt yuv444p10le " + path("other.mkv"));
    auto options = usual_options();
    options.sdr_white = 150;
    make_player(options);

    VideoStatus video = status_of(path("pq.mkv"));
    EXPECT_EQ(video.transfer.name, "smpte2084");
    EXPECT_EQ(video.depth, 10);
    EXPECT_EQ(video.mapping, ToneMapping::PQ);
    EXPECT_EQ(video.peak, 600);
    EXPECT_EQ(video.white, 150);

    video = status_of(path("hlg.ts"));
    EXPECT_EQ(video.mapping, ToneMapping::HLG);
    EXPECT_EQ(video.peak, 1000);

    video = status_of(path("other.mkv"));
    EXPECT_EQ(video.format, "Y444_10LE");
    EXPECT_FALSE(video.exact);
    EXPECT_EQ(video.mapping, ToneMapping::Ignored);
    EXPECT_EQ(video.peak, 0);
    EXPECT_EQ(video.white, 0);
}

TEST_F(VideoStatusTest, IsOfTheTrackThatIsShown)
{
    run_ffmpeg(CHART + "25 -map 0 -map 0 -filter:v:1 scale=128:64 " + H264 + path("two.mp4"));

    EXPECT_EQ(status_of(path("two.mp4")).width, 64);
}

TEST_F(VideoStatusTest, CountsFramesFromTheBeginningOfTheFile)
{
    const std::string file = clip("a.mp4", short_clip());
    ASSERT_TRUE(playing(file));
    ASSERT_TRUE(wait_for_event("completed"));
    EXPECT_EQ(status().shown + status().dropped, 10u);
    EXPECT_EQ(status().shown, shown());

    player_->unprepare();
    ASSERT_EQ(prepare(file), PLAYER_ERROR_NONE);
    player_->set_looping(true);
    ASSERT_TRUE(wait_for([this] { return count("prepared") == 2; }));
    EXPECT_EQ(status().shown, 0u);
    player_->start();

    EXPECT_TRUE(wait_for([this] { return status().shown + status().dropped > 10; }))
        << "the second round";
}

// The pipeline runs only when its first frame is there, so that this is never ready in time.
TEST_F(VideoStatusTest, DoesNotCountTheFrameThatFilledThePipelineAsLate)
{
    Clip one = short_clip();
    one.frames = 1;
    const std::string file = clip("a.mp4", one);
    for (int play = 0; play < 8; play++)
        EXPECT_EQ(status_of(file).late, 0u);
}

/** A plane that has no memory for pictures. */
class FullPlane : public platform::VideoPlane {
  public:
    int width() const override { return 64; }
    int height() const override { return 36; }
    platform::PlaneBufferPtr acquire() override { return nullptr; }
    bool present(const platform::PlaneBufferPtr &) override { return true; }
};

TEST_F(VideoStatusTest, CountsFramesForWhichThereIsNoMemoryAsDropped)
{
    const auto plane = std::make_shared<FullPlane>();
    player_->set_plane(plane);
    ASSERT_TRUE(prepared(clip("a.mp4", short_clip())));
    player_->start();
    ASSERT_TRUE(wait_for_event("completed"));

    EXPECT_GE(status().dropped, 10u);
    EXPECT_EQ(status().dropped, plane->statistics().dropped);
    EXPECT_EQ(status().shown, 0u);
}

TEST(FrameOutput, CountsAFrameThatCameTooLateAsDropped)
{
    platform::FrameOutput output(std::make_shared<platform::DisplaySettings>(),
                                 platform::REFERENCE_WHITE);
    output.count_dropped();

    EXPECT_EQ(output.status().dropped, 1u);
}

TEST(FrameOutput, TellsOfAFilmThatGoesOnWithOnePictureAFrame)
{
    platform::FrameOutput output(std::make_shared<platform::DisplaySettings>(),
                                 platform::REFERENCE_WHITE);
    EXPECT_FALSE(output.status().halved);
    for (int i = 0; i < 150; i++)
        output.field_pace().on_picture(std::chrono::seconds(1));

    EXPECT_TRUE(output.status().halved);
}

/** A plane that gives no picture before it is let go on. */
class HeldPlane : public FullPlane {
  public:
    platform::PlaneBufferPtr acquire() override
    {
        if (!std::exchange(asked_, true))
            painting_.set_value();
        goes_on_.wait();
        return nullptr;
    }
    std::promise<void> painting_;
    std::promise<void> go_on_;

  private:
    bool asked_ = false;
    std::shared_future<void> goes_on_ = go_on_.get_future();
};

TEST_F(VideoStatusTest, DoesNotWaitForAFrameThatIsBeingPainted)
{
    Clip one = short_clip();
    one.frames = 1;
    const auto plane = std::make_shared<HeldPlane>();
    player_->set_plane(plane);
    ASSERT_TRUE(prepared(clip("a.mp4", one)));
    player_->start();
    constexpr std::chrono::seconds PATIENCE{20};
    ASSERT_EQ(plane->painting_.get_future().wait_for(PATIENCE), std::future_status::ready);

    auto asked = std::async(std::launch::async, [this] { return status(); });

    EXPECT_EQ(asked.wait_for(PATIENCE), std::future_status::ready);
    plane->go_on_.set_value();
    EXPECT_EQ(asked.get().width, one.width);
}

struct HardwareDecoder {
    GstElement base;
};
struct HardwareDecoderClass {
    GstElementClass base;
};
GType hardware_decoder_get_type();
G_DEFINE_TYPE(HardwareDecoder, hardware_decoder, GST_TYPE_ELEMENT)
void hardware_decoder_class_init(HardwareDecoderClass *type)
{
    gst_element_class_set_static_metadata(GST_ELEMENT_CLASS(type), "Chip of a test",
                                          "Codec/Decoder/Video/Hardware", "None", "nobody");
}
void hardware_decoder_init(HardwareDecoder *decoder)
{
    gst_element_add_pad(GST_ELEMENT(decoder), gst_pad_new("src", GST_PAD_SRC));
}

TEST(VideoFacts, TellOfHardwareThatDecodes)
{
    gst_init(nullptr, nullptr);
    gst_element_register(nullptr, "chipdec", GST_RANK_NONE, hardware_decoder_get_type());
    const platform::ElementPtr decoder = platform::make_element("chipdec");
    const platform::PadPtr pad(gst_element_get_static_pad(decoder.get(), "src"));
    const platform::CapsPtr caps(
        gst_caps_from_string("video/x-raw,format=NV12,width=16,height=8,framerate=25/1"));
    GstPadProbeInfo info = {};
    info.data = gst_event_new_caps(caps.get());
    platform::VideoFacts facts;

    facts.on_event(pad.get(), &info);
    gst_event_unref(GST_PAD_PROBE_INFO_EVENT(&info));
    facts.on_frames(platform::stream_of(pad.get()), {}, {});

    EXPECT_EQ(facts.get().decoder, "chipdec");
    EXPECT_EQ(facts.get().decoder_name, "Chip of a test");
    EXPECT_TRUE(facts.get().hardware);
    EXPECT_EQ(facts.get().format, "NV12");
}

} // namespace
} // namespace player_test
