// What the pipeline's end for pictures does with frames whose times no good file has.

#include <gst/app/gstappsrc.h>
#include <gtest/gtest.h>

#include "media_player/plane_sink.h"

namespace player_test {
namespace {

using platform::BusPtr;
using platform::DisplaySettings;
using platform::ElementPtr;
using platform::FrameOutput;

constexpr GstClockTime DEADLINE = 20 * GST_SECOND;

/** A source in the test's hand before the sink. The plane is missing; nothing is to be seen. */
class PlaneSink : public testing::Test {
  protected:
    void SetUp() override
    {
        gst_init(nullptr, nullptr);
        pipeline_.reset(GST_ELEMENT(gst_object_ref_sink(gst_pipeline_new(nullptr))));
        source_ = platform::make_element("appsrc");
        output_ = std::make_shared<FrameOutput>(std::make_shared<DisplaySettings>(),
                                                platform::REFERENCE_WHITE);
        const ElementPtr sink = platform::make_plane_sink(output_);
        const platform::CapsPtr caps(gst_caps_from_string(
            "video/x-raw,format=BGRx,width=16,height=16,framerate=30/1,pixel-aspect-ratio=1/1"));
        g_object_set(source_.get(), "caps", caps.get(), "format", GST_FORMAT_TIME, nullptr);
        gst_bin_add_many(GST_BIN(pipeline_.get()), source_.get(), sink.get(), nullptr);
        gst_element_link(source_.get(), sink.get());
        gst_element_set_state(pipeline_.get(), GST_STATE_PLAYING);
    }

    void TearDown() override { gst_element_set_state(pipeline_.get(), GST_STATE_NULL); }

    void push(GstClockTime time, GstClockTime duration = GST_SECOND / 30)
    {
        GstBuffer *frame = gst_buffer_new_allocate(nullptr, 16 * 16 * 4, nullptr);
        GST_BUFFER_PTS(frame) = time;
        GST_BUFFER_DURATION(frame) = duration;
        gst_app_src_push_buffer(GST_APP_SRC(source_.get()), frame);
    }

    void skip(GstClockTime time, GstClockTime duration)
    {
        gst_element_send_event(source_.get(), gst_event_new_gap(time, duration));
    }

    void end() { gst_app_src_end_of_stream(GST_APP_SRC(source_.get())); }

    /** What the pipeline says first, the end or an error. */
    GstMessageType outcome() const
    {
        const BusPtr bus(gst_element_get_bus(pipeline_.get()));
        GstMessage *message = gst_bus_timed_pop_filtered(
            bus.get(), DEADLINE, static_cast<GstMessageType>(GST_MESSAGE_EOS | GST_MESSAGE_ERROR));
        if (!message)
            return GST_MESSAGE_UNKNOWN;
        const GstMessageType type = GST_MESSAGE_TYPE(message);
        gst_message_unref(message);
        return type;
    }

    ElementPtr pipeline_;
    ElementPtr source_;
    std::shared_ptr<FrameOutput> output_;
};

TEST_F(PlaneSink, FramesInTurnComeToTheirEnd)
{
    push(0);
    push(GST_SECOND / 30);
    end();

    EXPECT_EQ(outcome(), GST_MESSAGE_EOS);
}

TEST_F(PlaneSink, AFrameHoursAheadIsAnErrorAndNotAWait)
{
    push(0);
    push(3600 * GST_SECOND);
    end();

    EXPECT_EQ(outcome(), GST_MESSAGE_ERROR);
}

TEST_F(PlaneSink, AnHourOfALastFrameIsNotWaitedFor)
{
    push(0, 3600 * GST_SECOND);
    end();

    EXPECT_EQ(outcome(), GST_MESSAGE_EOS);
}

TEST_F(PlaneSink, AGapOfAnHourIsNotWaitedFor)
{
    push(0);
    skip(GST_SECOND / 30, 3600 * GST_SECOND);
    end();

    EXPECT_EQ(outcome(), GST_MESSAGE_EOS);
}

} // namespace
} // namespace player_test
