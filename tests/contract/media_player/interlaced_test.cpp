// Interlaced films, coded as broadcasters do: what is seen of a chart whose lines stand still and
// whose bar moves with each field.

#include <algorithm>
#include <cstdlib>
#include <mutex>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gst/app/gstappsink.h>

#include "media_player/deinterlacer.h"
#include "player_fixture.h"

namespace player_test {
namespace {

constexpr int WIDTH = 160;
constexpr int HEIGHT = 576;
constexpr int LINES = HEIGHT / 4; ///< rows of the part that stands still
constexpr int FRAMES = 25;
constexpr int STEP = 2; ///< pixels by which the bar moves from field to field
constexpr int BAR = 24;
constexpr int MARGIN = 8; ///< rows beside the border of the two parts
constexpr char BLACK = 16;
constexpr char WHITE = static_cast<char>(235);

/** Where the bar begins in a field, of which a frame has two. */
int bar_at(int field)
{
    return 8 + field * STEP;
}

/** One-row lines above, which one field alone has; below the bar, in rows of both fields. */
std::string chart(bool bottom_first, bool woven = true)
{
    std::string luma;
    const std::string differences(static_cast<size_t>(WIDTH) * HEIGHT / 2, static_cast<char>(128));
    std::string film;
    for (int frame = 0; frame < FRAMES; frame++) {
        luma.assign(static_cast<size_t>(WIDTH) * HEIGHT, BLACK);
        for (int y = 0; y < HEIGHT; y++) {
            const bool second = woven && (y % 2 == 1) != bottom_first;
            const int bar = bar_at(2 * frame + (second ? 1 : 0));
            for (int x = 0; x < WIDTH; x++) {
                const bool lit = y < LINES ? y % 4 == 1 : x >= bar && x < bar + BAR;
                if (lit)
                    luma[static_cast<size_t>(y) * WIDTH + x] = WHITE;
            }
        }
        film += luma + differences;
    }
    return film;
}

/** What a shown picture of the chart is like. */
struct Shown {
    int field; ///< by where its bar begins; -1 where that is no field's place
    int comb;  ///< pixels by which the bar's edge jumps from row to row, at most
    int lines; ///< of the part that stands still: the least difference of a line and its neighbours
};

int luma(uint32_t pixel)
{
    return static_cast<int>(pixel >> 8 & 0xff);
}

int edge(const Picture &picture, int y)
{
    int x = 0;
    while (x < picture.width && luma(picture.at(x, y)) < 128)
        x++;
    return x;
}

Shown look_at(const Picture &picture)
{
    const int bar = edge(picture, HEIGHT * 5 / 8) - bar_at(0);
    Shown shown = {bar % STEP == 0 ? bar / STEP : -1, 0, 255};
    for (int y = LINES + MARGIN; y + 1 < HEIGHT; y++)
        shown.comb = std::max(shown.comb, std::abs(edge(picture, y + 1) - edge(picture, y)));
    for (int y = 1; y < LINES - MARGIN; y += 4)
        for (int x = 0; x < WIDTH; x++)
            for (const int beside : {y - 1, y + 1, y + 2})
                shown.lines =
                    std::min(shown.lines, luma(picture.at(x, y)) - luma(picture.at(x, beside)));
    return shown;
}

/** A coding of the chart. */
struct Coding {
    std::string name;    ///< of the file
    std::string options; ///< of ffmpeg
    bool bottom_first;
};

const std::string MPEG2 = "-c:v mpeg2video -flags +ilme+ildct -g 12 -bf 2 -q:v 2 ";
const std::string H264 = "-c:v libx264 -preset veryfast -g 12 -qp 10 -flags +ilme+ildct ";
const std::string TOP_FIRST = "-vf setfield=tff ";
const std::string BOTTOM_FIRST = "-vf setfield=bff ";

const Coding MPEG2_TS = {"mpeg2.ts", TOP_FIRST + MPEG2, false};
const Coding MPEG2_PS = {"mpeg2.mpeg", BOTTOM_FIRST + MPEG2 + "-f vob ", true};
const Coding H264_TS = {"h264.ts", TOP_FIRST + H264 + "-x264-params tff=1 ", false};
const Coding H264_MP4 = {"h264.mp4", BOTTOM_FIRST + H264 + "-x264-params bff=1 ", true};
const Coding H264_MKV = {"h264.mkv", TOP_FIRST + H264 + "-x264-params tff=1 ", false};
// Its container says that it is progressive, and has the last word in the caps.
const Coding H264_SAID_PROGRESSIVE = {
    "said_progressive.mkv", "-vf setfield=tff,setfield=prog " + H264 + "-x264-params tff=1 ",
    false};

const Coding PROGRESSIVE[] = {
    {"a.mp4", "-c:v libx264 -preset veryfast -qp 10 ", false},
    // Film as broadcasters code it: by the rules of interlaced streams, frame by frame.
    {"b.ts", "-c:v libx264 -preset veryfast -qp 10 -x264-params fake-interlaced=1 ", false},
};

class Interlaced : public PlayerTest {
  protected:
    void SetUp() override
    {
        plane_width_ = WIDTH;
        plane_height_ = HEIGHT;
        on_picture_ = [this](const Picture &picture) {
            const Shown shown = look_at(picture);
            const std::lock_guard<std::mutex> lock(shown_mutex_);
            shown_.push_back(shown);
        };
        PlayerTest::SetUp();
    }

    /** Codes a chart. @return the file's path */
    std::string code(const Coding &coding, bool woven = true) const
    {
        write_file(path("chart.yuv"), chart(coding.bottom_first, woven));
        const std::string command =
            "ffmpeg -y -nostdin -loglevel error -f rawvideo -pix_fmt yuv420p -framerate 25 "
            "-video_size " +
            std::to_string(WIDTH) + "x" + std::to_string(HEIGHT) + " -i " + path("chart.yuv") +
            " " + coding.options + path(coding.name);
        EXPECT_EQ(std::system(command.c_str()), 0) << command;
        return path(coding.name);
    }

    std::vector<Shown> shown_pictures() const
    {
        const std::lock_guard<std::mutex> lock(shown_mutex_);
        return shown_;
    }

    size_t pictures() const { return shown_pictures().size(); }

    /** The picture on which a play is held may be shown anew when it goes on. */
    void forget_repeats()
    {
        const std::lock_guard<std::mutex> lock(shown_mutex_);
        const auto same = [](const Shown &one, const Shown &other) {
            return one.field == other.field;
        };
        shown_.erase(std::unique(shown_.begin(), shown_.end(), same), shown_.end());
    }

    /** Every picture is whole, and they follow each other field by field, round after round. */
    void expect_smooth(size_t at_least) const
    {
        const std::vector<Shown> all = shown_pictures();
        ASSERT_FALSE(all.empty());
        size_t missing = 0;
        for (size_t i = 0; i < all.size(); i++) {
            ASSERT_GE(all[i].field, 0) << "picture " << i;
            EXPECT_LE(all[i].comb, 1) << "picture " << i;
            EXPECT_GE(all[i].lines, 200) << "picture " << i;
            if (i > 0)
                missing += (all[i].field - all[i - 1].field - 1 + 4 * FRAMES) % (2 * FRAMES);
        }
        // A busy machine leaves some out, and counts them; a frame has two.
        const size_t left_out = 2 * plane_->statistics().dropped;
        EXPECT_LE(missing, left_out);
        EXPECT_GE(all.size() + left_out, at_least);
    }

    /** What the pipeline's parts make of a file's frames, as fast as they can. */
    struct Passed {
        std::vector<platform::BufferPtr> decoded;
        std::vector<platform::BufferPtr> pictures;
    };
    static Passed pass(const std::string &file)
    {
        const platform::ElementPtr player = platform::make_element("playbin");
        platform::FieldPace pace;
        const platform::ElementPtr deinterlacer = platform::make_deinterlacer(pace, [] {});
        GstElement *sink = gst_element_factory_make("appsink", nullptr);
        g_object_set(sink, "sync", FALSE, nullptr);
        GstElement *bin = gst_bin_new(nullptr);
        gst_bin_add_many(GST_BIN(bin), deinterlacer.get(), sink, nullptr);
        gst_element_link(deinterlacer.get(), sink);
        const platform::PadPtr pad(gst_element_get_static_pad(deinterlacer.get(), "sink"));
        gst_element_add_pad(bin, gst_ghost_pad_new("sink", pad.get()));
        constexpr int VIDEO_AS_IT_IS = 1 << 0 | 1 << 6;
        g_object_set(player.get(), "uri", ("file://" + file).c_str(), "video-sink", bin, "flags",
                     VIDEO_AS_IT_IS, nullptr);
        Passed passed;
        gst_pad_add_probe(
            pad.get(), GST_PAD_PROBE_TYPE_BUFFER,
            [](GstPad *, GstPadProbeInfo *info, gpointer decoded) {
                static_cast<std::vector<platform::BufferPtr> *>(decoded)->emplace_back(
                    gst_buffer_ref(GST_PAD_PROBE_INFO_BUFFER(info)));
                return GST_PAD_PROBE_OK;
            },
            &passed.decoded, nullptr);
        gst_element_set_state(player.get(), GST_STATE_PLAYING);
        while (GstSample *sample =
                   gst_app_sink_try_pull_sample(GST_APP_SINK(sink), 40 * GST_SECOND)) {
            passed.pictures.emplace_back(gst_buffer_ref(gst_sample_get_buffer(sample)));
            gst_sample_unref(sample);
        }
        gst_element_set_state(player.get(), GST_STATE_NULL);
        return passed;
    }

  private:
    mutable std::mutex shown_mutex_;
    std::vector<Shown> shown_;
};

class InterlacedFile : public Interlaced, public testing::WithParamInterface<Coding> {};

TEST_P(InterlacedFile, IsShownFieldByFieldInFullHeightAndNotCombed)
{
    ASSERT_TRUE(playing(code(GetParam())));
    ASSERT_TRUE(wait_for_event("completed"));

    expect_smooth(2 * FRAMES);
    EXPECT_LE(pictures(), 2u * FRAMES);
    EXPECT_TRUE(player_->status().video.interlaced);
}

INSTANTIATE_TEST_SUITE_P(Codings, InterlacedFile,
                         testing::Values(MPEG2_TS, MPEG2_PS, H264_TS, H264_MP4,
                                         H264_SAID_PROGRESSIVE),
                         [](const auto &tested) {
                             std::string name = tested.param.name;
                             return name.replace(name.find('.'), 1, "_");
                         });

TEST_F(Interlaced, EachFieldHasItsTimeInEveryContainer)
{
    constexpr double FIELD = 20.0;
    constexpr double ROUNDING = 1.0; // Matroska counts milliseconds
    for (const Coding &coding : {MPEG2_TS, MPEG2_PS, H264_TS, H264_MP4, H264_MKV}) {
        SCOPED_TRACE(coding.name);
        const Passed passed = pass(code(coding));
        EXPECT_EQ(passed.decoded.size(), 1u * FRAMES);
        ASSERT_EQ(passed.pictures.size(), 2u * FRAMES);
        const GstClockTime first = GST_BUFFER_PTS(passed.pictures[0].get());
        for (size_t i = 0; i < passed.pictures.size(); i++) {
            const GstClockTime time = GST_BUFFER_PTS(passed.pictures[i].get()) - first;
            EXPECT_NEAR(static_cast<double>(time) / GST_MSECOND, static_cast<double>(i) * FIELD,
                        ROUNDING);
        }
    }
}

TEST_F(Interlaced, ProgressiveFramesReachTheSinkInTheDecodersMemory)
{
    for (const Coding &coding : PROGRESSIVE) {
        SCOPED_TRACE(coding.name);
        const Passed passed = pass(code(coding, false));
        ASSERT_EQ(passed.decoded.size(), 1u * FRAMES);
        ASSERT_EQ(passed.pictures.size(), 1u * FRAMES);
        for (size_t i = 0; i < FRAMES; i++)
            EXPECT_EQ(gst_buffer_peek_memory(passed.pictures[i].get(), 0),
                      gst_buffer_peek_memory(passed.decoded[i].get(), 0));
    }
}

TEST_F(Interlaced, ALoopHasNoSeam)
{
    ASSERT_EQ(prepare(code(H264_MP4)), PLAYER_ERROR_NONE);
    player_->set_looping(true);
    ASSERT_TRUE(wait_for_event("prepared"));
    player_->start();

    ASSERT_TRUE(wait_for([this] { return pictures() > 5 * FRAMES; }));

    player_->pause();
    expect_smooth(5 * FRAMES);
}

TEST_F(Interlaced, APauseHoldsAFieldAndGoesOnWithTheNext)
{
    ASSERT_TRUE(playing(code(H264_MKV)));
    ASSERT_TRUE(wait_for([this] { return pictures() > 10; }));
    player_->pause();
    size_t held = 0;
    do
        held = pictures();
    while (!stays([&] { return pictures() == held; }, 0.2));
    EXPECT_LT(held, 2u * FRAMES);
    player_->start();
    ASSERT_TRUE(wait_for_event("completed"));

    forget_repeats();
    expect_smooth(2 * FRAMES);
}

// At double speed there are as many pictures a second as there are at normal speed.
TEST_F(Interlaced, FastPlayShowsOneFieldOfEachFrame)
{
    ASSERT_EQ(prepare(code(H264_MP4)), PLAYER_ERROR_NONE);
    ASSERT_TRUE(wait_for_event("prepared"));
    player_->set_rate(2.0);
    player_->start();
    ASSERT_TRUE(wait_for_event("completed"));

    for (const Shown &picture : shown_pictures()) {
        EXPECT_EQ(picture.field % 2, 0);
        EXPECT_LE(picture.comb, 1);
    }
}

} // namespace
} // namespace player_test
