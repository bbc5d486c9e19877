// What the step before the sink does with frames: which ones it leaves alone, how many pictures it
// makes of the others, and when they are due.

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gst/check/gstharness.h>

#include "media_player/deinterlacer.h"
#include "media_player/frame_pool.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace player_test {
namespace {

using platform::BufferPtr;

constexpr int WIDTH = 16;
constexpr int HEIGHT = 8;
constexpr GstClockTime FRAME = 40 * GST_MSECOND;
constexpr GstClockTime FIELD = FRAME / 2;
constexpr guint FLAG_INTERLACED = GST_VIDEO_BUFFER_FLAG_INTERLACED;
constexpr guint FLAG_TOP_FIRST = GST_VIDEO_BUFFER_FLAG_INTERLACED | GST_VIDEO_BUFFER_FLAG_TFF;
constexpr uint8_t TOP = 50;
constexpr uint8_t BOTTOM = 200;
constexpr int COMBED = -1;
/** Too late for a picture that is to be seen for 20 ms, but not for the sink. */
constexpr GstClockTimeDiff LATE = 30 * GST_MSECOND;

struct HarnessTeardown {
    void operator()(GstHarness *harness) const { gst_harness_teardown(harness); }
};

class Deinterlacer : public testing::Test {
  protected:
    void SetUp() override
    {
        gst_init(nullptr, nullptr);
        const platform::ElementPtr element =
            platform::make_deinterlacer(pace_, [this] { halved_++; });
        harness_.reset(gst_harness_new_with_element(element.get(), "sink", "src"));
    }

    void set_mode(const std::string &mode, const std::string &format = "I420", int width = WIDTH,
                  int rate = 25)
    {
        const std::string caps = "video/x-raw,height=8,format=" + format +
                                 ",width=" + std::to_string(width) +
                                 ",framerate=" + std::to_string(rate) + "/1,interlace-mode=" + mode;
        gst_harness_set_src_caps_str(harness_.get(), caps.c_str());
        gst_video_info_set_format(&info_, gst_video_format_from_string(format.c_str()),
                                  static_cast<guint>(width), HEIGHT);
    }

    /** A frame of grey rows. @param number of the frame, from which its time follows */
    BufferPtr frame(int number, guint flags = FLAG_TOP_FIRST, int brighter = 0) const
    {
        BufferPtr made(gst_buffer_new_allocate(nullptr, GST_VIDEO_INFO_SIZE(&info_), nullptr));
        gst_buffer_memset(made.get(), 0, 128, GST_VIDEO_INFO_SIZE(&info_));
        for (int y = 0; y < HEIGHT; y++)
            gst_buffer_memset(made.get(), static_cast<gsize>(y) * WIDTH,
                              static_cast<guint8>((y % 2 ? BOTTOM : TOP) + brighter), WIDTH);
        GST_BUFFER_PTS(made.get()) = number * FRAME;
        GST_BUFFER_DURATION(made.get()) = FRAME;
        GST_BUFFER_FLAG_SET(made.get(), flags);
        return made;
    }

    GstFlowReturn push(BufferPtr made) { return gst_harness_push(harness_.get(), made.release()); }

    void tell(GstEvent *event) { gst_harness_push_event(harness_.get(), event); }

    void set_rate(double rate)
    {
        GstSegment segment;
        gst_segment_init(&segment, GST_FORMAT_TIME);
        segment.rate = rate;
        segment.stop = 3600 * GST_SECOND;
        tell(gst_event_new_segment(&segment));
    }

    /** The pictures that have come out, as their times in fields. */
    std::vector<GstClockTime> pictures()
    {
        std::vector<GstClockTime> times;
        while (const BufferPtr picture{gst_harness_try_pull(harness_.get())})
            times.push_back(GST_BUFFER_PTS(picture.get()) / FIELD);
        return times;
    }

    /** Has the sink tell how late the picture of a field was. */
    void be_late(GstClockTimeDiff late, GstClockTime field)
    {
        gst_harness_push_upstream_event(
            harness_.get(), gst_event_new_qos(GST_QOS_TYPE_UNDERFLOW, 1, late, field * FIELD));
    }

    /** Plays on, with a sink that is so late with each picture. @return how many it got */
    size_t play(int frames, GstClockTimeDiff late)
    {
        size_t got = 0;
        for (int i = 0; i < frames; i++) {
            push(frame(next_++));
            for (const GstClockTime field : pictures()) {
                be_late(late, field);
                got++;
            }
        }
        return got;
    }

    /** The one brightness of the next picture; COMBED where it has more. */
    int next_grey()
    {
        const BufferPtr picture(gst_harness_pull(harness_.get()));
        uint8_t luma[WIDTH * HEIGHT] = {};
        gst_buffer_extract(picture.get(), 0, luma, sizeof luma);
        return std::count(std::begin(luma), std::end(luma), luma[0]) == WIDTH * HEIGHT ? luma[0]
                                                                                       : COMBED;
    }

    platform::FieldPace pace_;
    int halved_ = 0;
    int next_ = 0; ///< frame for play()
    GstVideoInfo info_ = {};
    std::unique_ptr<GstHarness, HarnessTeardown> harness_;
};

TEST_F(Deinterlacer, HandsProgressiveFramesOnAsTheyAre)
{
    set_mode("progressive");
    for (int i = 0; i < 3; i++) {
        BufferPtr made = frame(i, 0);
        const GstBuffer *pushed = made.get();
        ASSERT_EQ(push(std::move(made)), GST_FLOW_OK);
        const BufferPtr pulled(gst_harness_try_pull(harness_.get()));
        EXPECT_EQ(pulled.get(), pushed) << i;
    }
}

TEST_F(Deinterlacer, OffersTheSinksPoolToTheDecoder)
{
    const platform::PoolPtr pool = platform::make_frame_pool();
    set_mode("progressive");
    gst_pad_add_probe(
        harness_->sinkpad, GST_PAD_PROBE_TYPE_QUERY_DOWNSTREAM,
        [](GstPad *, GstPadProbeInfo *info, gpointer offered) {
            GstQuery *query = GST_PAD_PROBE_INFO_QUERY(info);
            if (GST_QUERY_TYPE(query) != GST_QUERY_ALLOCATION)
                return GST_PAD_PROBE_OK;
            gst_query_add_allocation_pool(query, GST_BUFFER_POOL(offered), 1, 0, 0);
            return GST_PAD_PROBE_HANDLED;
        },
        pool.get(), nullptr);
    const platform::CapsPtr caps(gst_pad_get_current_caps(harness_->srcpad));
    GstQuery *query = gst_query_new_allocation(caps.get(), TRUE);

    ASSERT_TRUE(gst_pad_peer_query(harness_->srcpad, query));

    ASSERT_EQ(gst_query_get_n_allocation_pools(query), 1u);
    GstBufferPool *offered = nullptr;
    gst_query_parse_nth_allocation_pool(query, 0, &offered, nullptr, nullptr, nullptr);
    EXPECT_EQ(offered, pool.get());
    gst_object_unref(offered);
    gst_query_unref(query);
}

TEST_F(Deinterlacer, ShowsEachFieldForHalfTheTimeOfItsFrame)
{
    for (const char *mode : {"interleaved", "mixed"}) {
        SCOPED_TRACE(mode);
        set_mode(mode);
        for (int i = 0; i < 3; i++)
            push(frame(i));
        EXPECT_THAT(pictures(), ElementsAre(0, 1, 2, 3)) << "the last one waits for the next";

        tell(gst_event_new_segment_done(GST_FORMAT_TIME, 0));

        for (const GstClockTime field : {4, 5}) {
            const BufferPtr picture(gst_harness_try_pull(harness_.get()));
            ASSERT_TRUE(picture);
            EXPECT_EQ(GST_BUFFER_PTS(picture.get()), field * FIELD);
            EXPECT_EQ(GST_BUFFER_DURATION(picture.get()), FIELD);
        }
        EXPECT_THAT(pictures(), IsEmpty());
    }
    const platform::CapsPtr caps(gst_pad_get_current_caps(harness_->sinkpad));
    EXPECT_STREQ(gst_structure_get_string(gst_caps_get_structure(caps.get(), 0), "interlace-mode"),
                 "progressive");
}

// Readers of broadcasts know a frame's length badly.
TEST_F(Deinterlacer, TrustsTheTimesOfFramesMoreThanTheirLengths)
{
    set_mode("interleaved");
    BufferPtr first = frame(0);
    GST_BUFFER_DURATION(first.get()) = FIELD;
    push(std::move(first));
    push(frame(1));
    EXPECT_THAT(pictures(), ElementsAre(0, 1));

    push(frame(100));
    EXPECT_THAT(pictures(), ElementsAre(2, 3)) << "a gap in the film is not a long frame";
}

TEST_F(Deinterlacer, LeavesFilmInAnInterlacedStreamAlone)
{
    set_mode("mixed");
    push(frame(0));
    BufferPtr made = frame(1, 0);
    const GstBuffer *film = made.get();
    push(std::move(made));
    push(frame(2));
    tell(gst_event_new_eos());

    EXPECT_EQ(gst_harness_buffers_in_queue(harness_.get()), 5u);
    for (const GstClockTime field : {0, 1})
        EXPECT_EQ(GST_BUFFER_PTS(BufferPtr(gst_harness_pull(harness_.get())).get()), field * FIELD);
    EXPECT_EQ(BufferPtr(gst_harness_pull(harness_.get())).get(), film);
    EXPECT_THAT(pictures(), ElementsAre(4, 5));
}

// Nothing tells what moves in it, so its fields are kept apart.
TEST_F(Deinterlacer, DoesNotCombAFrameThatIsAloneAmongProgressiveOnes)
{
    set_mode("mixed");
    push(frame(0, 0));
    push(frame(1));
    push(frame(2, 0));

    for (const int grey : {COMBED, int{TOP}, int{BOTTOM}, COMBED})
        EXPECT_EQ(next_grey(), grey);
}

// The caps may be the container's word, the flag is the coded picture's.
TEST_F(Deinterlacer, BelievesAFramesFlagMoreThanProgressiveCaps)
{
    set_mode("progressive");
    push(frame(0));
    push(frame(1));

    EXPECT_THAT(pictures(), ElementsAre(0, 1));
}

TEST_F(Deinterlacer, ShowsASecondFieldAtItsTimeWhereFramesAreMissing)
{
    set_mode("interleaved");
    push(frame(0));
    push(frame(3));
    push(frame(4));
    EXPECT_THAT(pictures(), ElementsAre(0, 1, 6, 7));
}

TEST_F(Deinterlacer, BelievesTheTimesOfFramesMoreThanARateThatMayBeOfFields)
{
    set_mode("interleaved", "I420", WIDTH, 50);
    push(frame(0));
    push(frame(1));
    pictures();
    push(frame(2));
    push(frame(3));
    EXPECT_THAT(pictures(), ElementsAre(2, 3, 4, 5));
}

TEST_F(Deinterlacer, BeginsWithTheFieldThatComesFirst)
{
    set_mode("interleaved");
    // All of it moves, so a picture is made of its own field alone.
    push(frame(0, FLAG_TOP_FIRST));
    push(frame(1, FLAG_TOP_FIRST, 50));
    EXPECT_EQ(next_grey(), TOP);
    EXPECT_EQ(next_grey(), BOTTOM);
    tell(gst_event_new_segment_done(GST_FORMAT_TIME, 0));
    pictures();

    push(frame(2, FLAG_INTERLACED));
    push(frame(3, FLAG_INTERLACED, 50));
    EXPECT_EQ(next_grey(), BOTTOM);
    EXPECT_EQ(next_grey(), TOP);
}

TEST_F(Deinterlacer, ShowsOnePictureAFrameAtOtherSpeedsAndBackwards)
{
    set_mode("interleaved");
    for (const double rate : {2.0, 0.5}) {
        SCOPED_TRACE(rate);
        set_rate(rate);
        for (int i = 0; i < 3; i++)
            push(frame(i));
        tell(gst_event_new_segment_done(GST_FORMAT_TIME, 0));
        EXPECT_THAT(pictures(), ElementsAre(0, 2, 4));
    }

    set_rate(-1.0);
    for (int i = 3; i > 0; i--)
        push(frame(i));
    set_rate(1.0);
    EXPECT_THAT(pictures(), ElementsAre(6, 4, 2));
}

TEST_F(Deinterlacer, ForgetsTheFrameThatWaitsWhenTheFilmIsSought)
{
    set_mode("interleaved");
    push(frame(0));

    tell(gst_event_new_flush_start());
    tell(gst_event_new_flush_stop(TRUE));
    set_rate(1.0);
    push(frame(50));
    tell(gst_event_new_segment_done(GST_FORMAT_TIME, 0));

    EXPECT_THAT(pictures(), ElementsAre(100, 101));
}

TEST_F(Deinterlacer, GoesDownToOnePictureAFrameForAWhileWherePicturesComeLate)
{
    set_mode("interleaved");
    push(frame(next_++));
    EXPECT_EQ(play(25, 0), 50u);
    play(75, LATE);
    EXPECT_EQ(play(25, 0), 25u);
    EXPECT_EQ(halved_, 1);
    EXPECT_TRUE(pace_.is_halved());

    play(750, 0);
    EXPECT_EQ(play(25, 0), 50u);
}

// Fast play may well come late, and so may frames that are not interlaced.
TEST_F(Deinterlacer, JudgesTheMachineByFieldsAtTheFilmsOwnSpeed)
{
    constexpr int PICTURES = 300;
    set_mode("mixed");
    set_rate(2.0);
    for (int i = 0; i < PICTURES; i++) {
        push(frame(i));
        be_late(LATE, 0);
    }
    EXPECT_EQ(halved_, 0);

    set_rate(1.0);
    push(frame(0));
    set_rate(1.0);
    for (int i = 0; i < PICTURES; i++)
        be_late(LATE, 0);
    EXPECT_EQ(halved_, 0) << "nothing of this stretch has been shown";

    push(frame(0));
    for (int i = 1; i < PICTURES; i++) {
        push(frame(i, 0));
        be_late(LATE, 0);
    }
    EXPECT_EQ(halved_, 0);
}

TEST_F(Deinterlacer, MakesNoPictureThatTheSinkWouldLeaveOut)
{
    set_mode("interleaved");
    const platform::BusPtr bus(gst_bus_new());
    gst_element_set_bus(harness_->element, bus.get());
    push(frame(0));
    push(frame(1));
    EXPECT_THAT(pictures(), ElementsAre(0, 1));

    be_late(10 * FIELD, 1);
    for (int i = 2; i < 8; i++)
        push(frame(i));

    // Field 11 is due. The sink bears 30 ms.
    EXPECT_THAT(pictures(), ElementsAre(10, 11, 12, 13));
    int dropped = 0;
    while (GstMessage *message = gst_bus_pop_filtered(bus.get(), GST_MESSAGE_QOS)) {
        dropped++;
        gst_message_unref(message);
    }
    EXPECT_EQ(dropped, 8) << "the bus hears of each";

    tell(gst_event_new_flush_start());
    tell(gst_event_new_flush_stop(TRUE));
    set_rate(1.0);
    push(frame(0));
    push(frame(1));
    EXPECT_THAT(pictures(), ElementsAre(0, 1)) << "a seek begins anew";
    gst_element_set_bus(harness_->element, nullptr);
}

TEST_F(Deinterlacer, CountsThePicturesThatItLeavesOutAsLate)
{
    set_mode("interleaved");
    EXPECT_LT(play(100, GST_SECOND), 20u);
    EXPECT_EQ(halved_, 1);
}

TEST_F(Deinterlacer, LeavesNoPoolBehind)
{
    set_mode("interleaved");
    push(frame(0));
    push(frame(1));
    gpointer pool = BufferPtr(gst_harness_pull(harness_.get()))->pool;
    ASSERT_TRUE(pool);
    g_object_add_weak_pointer(G_OBJECT(pool), &pool);

    harness_.reset();

    EXPECT_EQ(pool, nullptr);
}

TEST_F(Deinterlacer, KnowsEveryFormatWhoseRowsAreMadeOfSamples)
{
    const std::pair<const char *, int> kinds[] = {
        {"I420", WIDTH},      {"NV12", WIDTH}, {"Y42B", WIDTH},     {"I420_10LE", WIDTH},
        {"P010_10LE", WIDTH}, {"BGRx", WIDTH}, {"YUY2", WIDTH - 1}, {"UYVY", WIDTH - 1}};
    for (const auto &[format, width] : kinds) {
        SCOPED_TRACE(format);
        set_mode("interleaved", format, width);
        pictures();
        // A film that stands still, of rows that differ in each of their samples.
        const gsize size = GST_VIDEO_INFO_SIZE(&info_);
        std::vector<uint8_t> still(size);
        for (size_t i = 0; i < size; i++)
            still[i] = static_cast<uint8_t>(i * 37 % 251);
        for (int i = 0; i < 2; i++) {
            BufferPtr made(gst_buffer_new_memdup(still.data(), size));
            GST_BUFFER_PTS(made.get()) = i * FRAME;
            push(std::move(made));
        }
        for (int i = 0; i < 2; i++) {
            const BufferPtr picture(gst_harness_try_pull(harness_.get()));
            ASSERT_TRUE(picture);
            EXPECT_EQ(gst_buffer_memcmp(picture.get(), 0, still.data(), size), 0);
        }
    }
}

TEST_F(Deinterlacer, LeavesOtherRowsAlone)
{
    for (const char *format : {"v210", "RGB16", "RGB10A2_LE"}) {
        SCOPED_TRACE(format);
        set_mode("interleaved", format);
        pictures();
        BufferPtr made(gst_buffer_new_allocate(nullptr, GST_VIDEO_INFO_SIZE(&info_), nullptr));
        const GstBuffer *pushed = made.get();
        push(std::move(made));
        EXPECT_EQ(BufferPtr(gst_harness_try_pull(harness_.get())).get(), pushed);
    }
}

} // namespace
} // namespace player_test
