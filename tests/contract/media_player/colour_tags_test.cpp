// Files that say what their numbers mean as colours, and files that say less: what is seen is
// compared with colours computed here from the numbers that were coded.

#include <algorithm>
#include <array>
#include <cmath>

#include <gmock/gmock.h>

#include "colour/reference.h"
#include "media_player/colour_tags.h"
#include "player_fixture.h"

using platform::bt2020;
using platform::ColourSpace;
using platform::Transfer;
using testing::HasSubstr;

namespace player_test {
namespace {

using platform::ColourSource;

std::string text_of(const GstVideoColorimetry &colour)
{
    return platform::CharsPtr(gst_video_colorimetry_to_string(&colour)).get();
}

TEST(ColourOf, TakesEachPartFromTheFirstThatKnowsIt)
{
    const struct {
        const char *stream;
        const char *container;
        GstVideoFormat format;
        guint width;
        guint height;
        const char *expected;
    } rows[] = {
        // What the stream says stands, whatever the container and the size.
        {"1:3:5:1", "bt601", GST_VIDEO_FORMAT_I420, 64, 32, "1:3:5:1"},
        {"bt601", "", GST_VIDEO_FORMAT_I420, 1920, 1080, "bt601"},
        {"bt2100-pq", "bt709", GST_VIDEO_FORMAT_I420_10LE, 3840, 2160, "bt2100-pq"},
        // What it leaves open comes from the container.
        {"0:3:5:1", "bt601", GST_VIDEO_FORMAT_I420, 64, 32, "bt709"},
        {"0:3:5:1", "1:3:5:1", GST_VIDEO_FORMAT_I420, 64, 32, "1:3:5:1"},
        {"1:0:0:0", "bt709", GST_VIDEO_FORMAT_I420, 64, 32, "1:3:5:1"},
        {"2:3:0:0", "1:6:14:7", GST_VIDEO_FORMAT_I420, 64, 32, "2:3:14:7"},
        {"", "1:3:5:1", GST_VIDEO_FORMAT_NV12, 64, 32, "1:3:5:1"},
        // What nobody knows is the usual for the size, in limited range.
        {"1:0:0:0", "", GST_VIDEO_FORMAT_I420, 64, 32, "1:4:16:1"},
        {"1:0:0:0", "", GST_VIDEO_FORMAT_I420, 1920, 1080, "1:3:5:1"},
        {"0:3:5:1", "0:3:5:1", GST_VIDEO_FORMAT_I420, 64, 32, "bt709"},
        {"1:4:0:0", "", GST_VIDEO_FORMAT_I420, 1920, 1080, "1:4:5:1"},
        {"", "", GST_VIDEO_FORMAT_I420, 720, 576, "2:4:16:1"},
        {"", "", GST_VIDEO_FORMAT_I420, 1279, 576, "2:4:16:1"},
        {"", "", GST_VIDEO_FORMAT_I420, 1280, 536, "bt709"},
        {"", "", GST_VIDEO_FORMAT_I420, 608, 577, "bt709"},
        {"", "", GST_VIDEO_FORMAT_GRAY8, 64, 32, "2:4:16:1"},
        {"", "", GST_VIDEO_FORMAT_BGRx, 64, 32, "sRGB"},
        {"2:1:5:1", "", GST_VIDEO_FORMAT_GBR, 64, 32, "2:1:5:1"},
        // A film of high dynamic range is one of BT.2020.
        {"2:0:14:0", "", GST_VIDEO_FORMAT_I420_10LE, 64, 32, "bt2100-pq"},
        {"0:0:0:0", "1:0:15:0", GST_VIDEO_FORMAT_I420_10LE, 64, 32, "1:6:15:7"},
        {"0:0:14:0", "", GST_VIDEO_FORMAT_GBR_10LE, 1920, 1080, "1:1:14:7"},
        // Nonsense is as good as nothing.
        {"loud", "shrill", GST_VIDEO_FORMAT_I420, 64, 32, "2:4:16:1"},
        {"sRGB", "", GST_VIDEO_FORMAT_I420, 1920, 1080, "1:3:7:1"},
        {"bt709", "", GST_VIDEO_FORMAT_GBR, 1920, 1080, "2:1:5:1"},
    };
    for (const auto &row : rows) {
        GstVideoInfo frame;
        gst_video_info_set_format(&frame, row.format, row.width, row.height);
        EXPECT_EQ(text_of(platform::colour_of(row.stream, row.container, "", frame).parts),
                  row.expected)
            << "stream '" << row.stream << "', container '" << row.container << "', " << row.width
            << "x" << row.height;
    }
}

TEST(ColourSpaceOf, HasThePrimariesOfItsTagWhereLampsCanHaveThem)
{
    const struct {
        GstVideoColorPrimaries tag;
        double red_x;
    } rows[] = {
        {GST_VIDEO_COLOR_PRIMARIES_BT709, 0.640},
        {GST_VIDEO_COLOR_PRIMARIES_BT2020, 0.708},
        {GST_VIDEO_COLOR_PRIMARIES_SMPTEST428, 0.640},
        {GST_VIDEO_COLOR_PRIMARIES_UNKNOWN, 0.640},
    };
    for (const auto &row : rows) {
        const GstVideoColorimetry colour = {GST_VIDEO_COLOR_RANGE_16_235,
                                            GST_VIDEO_COLOR_MATRIX_BT709, GST_VIDEO_TRANSFER_BT709,
                                            row.tag};
        EXPECT_NEAR(platform::colour_space_of(colour, 0).primaries.red.x, row.red_x, 1e-6)
            << "primaries " << row.tag;
    }
}

TEST(ColourOf, NamesWhoToldEachPart)
{
    constexpr auto S = ColourSource::Stream;
    constexpr auto C = ColourSource::Container;
    constexpr auto U = ColourSource::Usual;
    const struct {
        const char *decoded;
        const char *coded;
        const char *container;
        ColourSource range, matrix, transfer, primaries;
    } rows[] = {
        {"", "", "", U, U, U, U},
        {"1:3:5:1", "", "", S, S, S, S},
        {"2:4:0:0", "", "", S, S, U, U},
        // A decoder hands on what the container says, and where both say the same either is right.
        {"0:3:5:1", "0:3:5:1", "0:3:5:1", U, C, C, C},
        {"bt709", "0:3:5:1", "0:3:5:1", S, C, C, C},
        // A parser adds what it finds in the stream, and a decoder may lose it.
        {"1:3:5:1", "1:3:5:1", "", S, S, S, S},
        {"", "1:3:5:1", "", S, S, S, S},
        {"0:0:0:0", "1:3:5:1", "1:0:0:0", C, S, S, S},
        // What the container says is not what holds where the stream says something else.
        {"1:3:5:1", "2:4:16:4", "2:4:16:4", S, S, S, S},
        {"0:0:14:0", "1:0:0:0", "1:0:0:0", C, U, S, U},
        {"loud", "shrill", "shrill", U, U, U, U},
    };
    for (const auto &row : rows) {
        GstVideoInfo frame;
        gst_video_info_set_format(&frame, GST_VIDEO_FORMAT_I420, 64, 32);
        const platform::TaggedColour colour =
            platform::colour_of(row.decoded, row.coded, row.container, frame);
        EXPECT_EQ(std::tie(colour.range, colour.matrix, colour.transfer, colour.primaries),
                  std::tie(row.range, row.matrix, row.transfer, row.primaries))
            << row.decoded << ", " << row.coded << ", " << row.container;
    }
}

/** The sink pad of an element, and the colours told to it. */
class CodedCaps {
  public:
    explicit CodedCaps(const char *element)
        : element_(platform::make_element(element)),
          pad_(gst_element_get_static_pad(element_.get(), "sink"))
    {
    }

    /** Has the tags look at caps. @return the colorimetry that is left in them */
    std::string passed_on(const char *demuxer, const char *media, const char *colorimetry)
    {
        const platform::CapsPtr caps(
            gst_caps_new_simple(media, "colorimetry", G_TYPE_STRING, colorimetry, nullptr));
        GstPadProbeInfo info = {};
        info.data = gst_event_new_caps(caps.get());
        tags_.on_coded_event(pad_.get(), &info, demuxer);
        GstCaps *left = nullptr;
        gst_event_parse_caps(GST_PAD_PROBE_INFO_EVENT(&info), &left);
        const GstStructure *stream = gst_caps_get_structure(left, 0);
        const char *text = gst_structure_get_string(stream, "colorimetry");
        const bool there = gst_structure_has_field(stream, "colorimetry");
        std::string result = text ? text : there ? "null" : "none";
        gst_event_unref(GST_PAD_PROBE_INFO_EVENT(&info));
        return result;
    }

    /** The colours of frames of which a decoder says nothing. */
    std::string of_frames()
    {
        GstVideoInfo frame;
        gst_video_info_set_format(&frame, GST_VIDEO_FORMAT_I420, 64, 32);
        const platform::CapsPtr caps(gst_caps_new_empty_simple("video/x-raw"));
        return text_of(tags_.of_frames(pad_.get(), caps.get(), frame).parts);
    }

  private:
    platform::ColourTags tags_;
    platform::ElementPtr element_;
    platform::PadPtr pad_;
};

TEST(ColourTagsOfMp4, ReachADecoderThatFindsTheRangeItselfWithoutIt)
{
    gst_init(nullptr, nullptr);
    const struct {
        const char *decoder;
        const char *demuxer;
        const char *media;
        const char *told;
        const char *expected;
    } rows[] = {
        {"avdec_h264", "qtdemux", "video/x-h264", "bt709", "0:3:5:1"},
        {"avdec_h264", "qtdemux", "video/x-h264", "1:3:5:1", "0:3:5:1"},
        {"avdec_h264", "qtdemux", "video/x-h264", "2:0:0:0", "none"},
        {"avdec_h265", "qtdemux", "video/x-h265", "bt2100-pq", "0:6:14:7"},
        {"avdec_h264", "matroskademux", "video/x-h264", "bt709", "bt709"},
        {"avdec_vp9", "qtdemux", "video/x-vp9", "bt709", "bt709"},
        {"fakesink", "qtdemux", "video/x-h264", "bt709", "bt709"},
        {"avdec_h264", "qtdemux", "video/x-h264", "loud", "loud"},
    };
    for (const auto &row : rows)
        EXPECT_EQ(CodedCaps(row.decoder).passed_on(row.demuxer, row.media, row.told), row.expected)
            << row.decoder << " behind " << row.demuxer << " told " << row.told;
}

TEST(ColourTagsOfMp4, HoldWhereTheDecoderSaysNothing)
{
    gst_init(nullptr, nullptr);
    CodedCaps coded("avdec_h264");
    EXPECT_EQ(coded.of_frames(), "2:4:16:1");
    coded.passed_on("qtdemux", "video/x-h264", "1:3:5:1");
    EXPECT_EQ(coded.of_frames(), "1:3:5:1");
}

// Half a code is for rounding; the rest the coding may cost.
constexpr double TOLERANCE = 1.6;

constexpr int COLUMNS = 4;
constexpr int ROWS = 2;

/** The numbers of a flat patch as they are coded. */
struct Patch {
    int y;
    int cb;
    int cr;
};

// Black and white of limited range, greys between, and colours, mostly not too bright for any
// reading; the third is 200,40,40 in full range BT.709.
constexpr std::array<Patch, COLUMNS *ROWS> PATCHES = {{
    {16, 128, 128},
    {235, 128, 128},
    {74, 110, 208},
    {126, 128, 128},
    {81, 90, 200},
    {145, 70, 60},
    {70, 180, 120},
    {160, 120, 90},
}};

ColourSpace bt709(bool full_range)
{
    ColourSpace space;
    space.full_range = full_range;
    return space;
}

ColourSpace bt601(bool full_range)
{
    ColourSpace space = platform::bt601();
    space.full_range = full_range;
    return space;
}

constexpr bool FULL_RANGE = true;
constexpr bool LIMITED_RANGE = false;

/** The size of a frame that is to be coded, in pixels. */
struct Size {
    int width = 64;
    int height = 32;
};

constexpr Size SCOPE = {1280, 536};

/** @param wide two bytes for each of 10 bits, else one of 8 */
std::string patches(const Size &size, bool wide)
{
    std::string numbers;
    const auto add_plane = [&numbers, wide](int Patch::*part, int width, int height) {
        for (int y = 0; y < height; y++)
            for (int x = 0; x < width; x++) {
                const int place = y * ROWS / height * COLUMNS + x * COLUMNS / width;
                const int number = PATCHES[static_cast<size_t>(place)].*part;
                if (wide)
                    numbers += {static_cast<char>(number << 2), static_cast<char>(number >> 6)};
                else
                    numbers += static_cast<char>(number);
            }
    };
    add_plane(&Patch::y, size.width, size.height);
    add_plane(&Patch::cb, size.width / 2, size.height / 2);
    add_plane(&Patch::cr, size.width / 2, size.height / 2);
    return numbers;
}

const std::string H264 = "-c:v libx264 -qp 1 -threads 1 ";
const std::string HEVC = "-c:v libx265 -preset ultrafast -x265-params log-level=error:qp=4 ";
const std::string MPEG2 = "-c:v mpeg2video -q:v 1 ";
const std::string MPEG4 = "-c:v mpeg4 -q:v 1 ";

const std::string FULL = "-vf setparams=range=full -color_range pc ";
const std::string BT709 = "-color_primaries bt709 -color_trc bt709 -colorspace bt709 ";
const std::string BT709_PARTS = "color_primaries=bt709:color_trc=bt709:colorspace=bt709 ";
const std::string FULL_BT709 =
    "-vf setparams=range=full:" + BT709_PARTS + "-color_range pc " + BT709;

struct Output {
    std::string name;
    std::string options; ///< of ffmpeg
};

// Ogg is missing because Theora states no range, and a program stream of MPEG because H.264 in one
// is not played.
std::vector<Output> h264_in_all_containers(const std::string &tags)
{
    std::vector<Output> outputs;
    for (const char *extension : {"mp4", "mkv", "ts", "avi", "flv", "asf"})
        outputs.push_back({std::string("a.") + extension, tags + H264});
    outputs.push_back({"a.tp", tags + H264 + "-f mpegts "});
    outputs.push_back({"a.wmv", tags + H264 + "-f asf "});
    return outputs;
}

class ColourTags : public PlayerTest {
  protected:
    /** Codes the patches into files, all in one go. */
    void make(const std::vector<Output> &outputs, const Size &size = {},
              const char *pixel_format = "yuvj420p") const
    {
        write_file(path("patches.yuv"), patches(size, g_str_has_suffix(pixel_format, "10le")));
        std::string command = "-f rawvideo -framerate 25 -stream_loop 1 -pix_fmt ";
        command += pixel_format;
        command += " -video_size " + std::to_string(size.width) + "x" +
                   std::to_string(size.height) + " -i " + path("patches.yuv");
        for (const Output &output : outputs)
            command += " " + output.options + path(output.name);
        run_ffmpeg(command);
    }

    /** Shows a file and compares the middle of each patch. */
    void expect_colours(const std::string &name, const ColourSpace &space, int depth = 8)
    {
        SCOPED_TRACE(name);
        player_->unprepare();
        ASSERT_TRUE(playing(path(name)));
        const Picture shown = picture();
        // Where the frame is lower than the plane it lies between bars of the same height; the
        // places are the middle of the patches but nearer to the middle of the picture.
        for (size_t i = 0; i < PATCHES.size(); i++) {
            const int column = static_cast<int>(i) % COLUMNS;
            const int row = static_cast<int>(i) / COLUMNS;
            const uint32_t pixel =
                shown.at((2 * column + 1) * shown.width / (2 * COLUMNS),
                         shown.height / 2 + (2 * row + 1 - ROWS) * shown.height / (4 * ROWS));
            const int unit = 1 << (depth - 8);
            const platform::Rgb expected = platform::reference(
                space, depth, PATCHES[i].y * unit, PATCHES[i].cb * unit, PATCHES[i].cr * unit);
            EXPECT_NEAR(pixel >> 16 & 0xff, expected.red, TOLERANCE) << "patch " << i;
            EXPECT_NEAR(pixel >> 8 & 0xff, expected.green, TOLERANCE) << "patch " << i;
            EXPECT_NEAR(pixel & 0xff, expected.blue, TOLERANCE) << "patch " << i;
        }
    }

    void expect_colours_of_all(const std::vector<Output> &outputs, const ColourSpace &space,
                               int depth = 8)
    {
        for (const Output &output : outputs)
            expect_colours(output.name, space, depth);
    }
};

TEST_F(ColourTags, OfFullRangeHoldInEveryContainer)
{
    std::vector<Output> outputs = h264_in_all_containers(FULL_BT709);
    outputs.push_back({"hevc.mp4", FULL_BT709 + HEVC});
    outputs.push_back({"quicktime.mp4", FULL_BT709 + H264 + "-f mov "});
    make(outputs);
    ASSERT_THAT(read_file(path("a.mp4")), HasSubstr("colrnclx"));
    ASSERT_THAT(read_file(path("quicktime.mp4")), HasSubstr("colrnclc"));
    expect_colours_of_all(outputs, bt709(FULL_RANGE));
}

TEST_F(ColourTags, OfARangeAloneHoldInEveryContainer)
{
    std::vector<Output> outputs = h264_in_all_containers(FULL);
    outputs.push_back({"unspecified.mp4", FULL + H264 + "-movflags write_colr "});
    outputs.push_back({"jpeg.avi", FULL + "-c:v mjpeg -q:v 1 "});
    make(outputs);
    ASSERT_THAT(read_file(path("unspecified.mp4")), HasSubstr("colrnclx"));
    expect_colours_of_all(outputs, bt601(FULL_RANGE));
}

// MPEG-2 has no range to state, and Matroska's own tags need not state one.
TEST_F(ColourTags, OfAMatrixAloneMeanLimitedRange)
{
    const std::string tagged = "-vf setparams=" + BT709_PARTS + BT709;
    const std::vector<Output> outputs = {
        {"mpeg2.mpeg", tagged + MPEG2 + "-f vob "},
        {"mpeg2.ts", tagged + MPEG2},
        {"mpeg4.mkv", tagged + MPEG4},
        {"h264.mkv",
         tagged + H264 + "-x264-params colorprim=undef:transfer=undef:colormatrix=undef "},
    };
    make(outputs, {}, "yuv420p");
    expect_colours_of_all(outputs, bt709(LIMITED_RANGE));
}

// Theora is BT.601 at any size by its definition, and its decoder says so.
TEST_F(ColourTags, ThatAreMissingFollowFromTheSize)
{
    const std::vector<Output> outputs = {
        {"a.mp4", H264},
        {"a.mkv", "-c:v libvpx -b:v 20M -qmax 4 -deadline realtime -cpu-used 16 "},
        {"a.ts", HEVC},
        {"a.tp", MPEG2 + "-f mpegts "},
        {"a.avi", MPEG4},
        {"a.flv", "-c:v flv -q:v 1 "},
        {"a.asf", "-c:v wmv2 -q:v 1 "},
        {"a.wmv", "-c:v wmv2 -q:v 1 -f asf "},
        {"a.mpeg", MPEG2 + "-f vob "},
    };
    make(outputs, SCOPE, "yuv420p");
    expect_colours_of_all(outputs, bt709(LIMITED_RANGE));
    make({{"small.avi", MPEG4}}, {}, "yuv420p");
    expect_colours("small.avi", bt601(LIMITED_RANGE));
    make({{"a.ogg", "-c:v libtheora -q:v 10 "}}, SCOPE, "yuv420p");
    expect_colours("a.ogg", bt601(LIMITED_RANGE));
}

// Matroska's own tags mend what a stream says wrongly. MP4's could, but their range gets lost.
TEST_F(ColourTags, OfAFileThatContradictsItselfAreTheContainersButForMp4sRange)
{
    const std::string contradiction = FULL_BT709 + H264 + "-x264-params fullrange=off ";
    make({{"a.mkv", contradiction}, {"a.mp4", contradiction}});
    expect_colours("a.mkv", bt709(FULL_RANGE));
    expect_colours("a.mp4", bt709(LIMITED_RANGE));
}

TEST_F(ColourTags, OfTenBitsHold)
{
    const std::vector<Output> outputs = {
        {"full.mkv", FULL_BT709 + HEVC},
        {"full.mp4", FULL_BT709 + HEVC},
        {"h264.mkv", FULL_BT709 + H264},
    };
    make(outputs, {}, "yuv420p10le");
    expect_colours_of_all(outputs, bt709(FULL_RANGE), 10);
    make({{"scope.ts", HEVC}}, SCOPE, "yuv420p10le");
    expect_colours("scope.ts", bt709(LIMITED_RANGE), 10);
}

TEST_F(ColourTags, OfOtherLightsBecomeThoseOfTheScreen)
{
    const auto tagged = [](const std::string &primaries, const std::string &matrix) {
        return "-vf setparams=color_primaries=" + primaries +
               ":color_trc=bt709:colorspace=" + matrix + " -color_primaries " + primaries +
               " -color_trc bt709 -colorspace " + matrix + " ";
    };
    make({{"ntsc.mkv", tagged("smpte170m", "smpte170m") + H264}}, {}, "yuv420p");
    ColourSpace ntsc = bt601(LIMITED_RANGE);
    ntsc.primaries = {{0.630, 0.340}, {0.310, 0.595}, {0.155, 0.070}}; // SMPTE ST 170, 6.1
    expect_colours("ntsc.mkv", ntsc);
    make({{"wide.mkv", tagged("bt2020", "bt2020nc") + HEVC}}, {}, "yuv420p10le");
    expect_colours("wide.mkv", bt2020(), 10);
}

TEST_F(ColourTags, OfHighDynamicRangeAreMappedByTheFilmsPeak)
{
    const auto hdr = [](const std::string &transfer, const std::string &more) {
        return "-vf setparams=color_primaries=bt2020:color_trc=" + transfer +
               ":colorspace=bt2020nc -c:v libx265 -preset ultrafast -color_primaries bt2020 "
               "-color_trc " +
               transfer +
               " -colorspace bt2020nc "
               "-x265-params log-level=error:qp=2" +
               more + " ";
    };
    const std::string display =
        ":hdr10=1:master-display=G(13250,34500)B(7500,3000)R(34000,16000)WP(15635,16450)"
        "L(40000000,50)";
    const std::vector<Output> content = {
        {"content.mkv", hdr("smpte2084", display + ":max-cll=600,200")},
        {"content.mp4", hdr("smpte2084", display + ":max-cll=600,200")},
        {"content.ts", hdr("smpte2084", display + ":max-cll=600,200")}};
    const Output mastering = {"display.mkv", hdr("smpte2084", display)};
    const Output untold = {"untold.mp4", hdr("smpte2084", "")};
    const Output hlg = {"hlg.mkv", hdr("arib-std-b67", "")};
    std::vector<Output> all = content;
    all.insert(all.end(), {mastering, untold, hlg});
    make(all, {}, "yuv420p10le");
    expect_colours_of_all(content, bt2020(Transfer::PQ, 600), 10);
    expect_colours(mastering.name, bt2020(Transfer::PQ, 4000), 10);
    expect_colours(untold.name, bt2020(Transfer::PQ, 1000), 10);
    expect_colours(hlg.name, bt2020(Transfer::HLG), 10);
}

TEST_F(ColourTags, OfAnotherTrackAreNotTaken)
{
    make({{"a.mp4", "-map 0 -map 0 " + H264 + "-filter:v:1 setparams=" + BT709_PARTS +
                        "-color_primaries:v:1 bt709 -color_trc:v:1 bt709 -colorspace:v:1 bt709 "}},
         {}, "yuv420p");
    ASSERT_THAT(read_file(path("a.mp4")), HasSubstr("colrnclx"));
    expect_colours("a.mp4", bt601(LIMITED_RANGE));
}

} // namespace
} // namespace player_test
