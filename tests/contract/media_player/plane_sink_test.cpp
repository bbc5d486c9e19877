// What the pipeline's end for pictures does with frames that come late, and with those whose times
// no good file has.

#include <chrono>
#include <thread>

#include <gst/app/gstappsrc.h>
#include <gst/check/gsttestclock.h>
#include <gtest/gtest.h>

#include "media_player/plane_sink.h"

namespace player_test {
namespace {

using platform::BusPtr;
using platform::DisplaySettings;
using platform::ElementPtr;
using platform::FrameOutput;

constexpr GstClockTime DEADLINE = 20 * GST_SECOND;

/** A source in the test's hand before the sink. Nothing is to be seen. */
class PlaneSink : public testing::Test {
  protected:
    void SetUp() override
    {
        gst_init(nullptr, nullptr);
        pipeline_.reset(GST_ELEMENT(gst_object_ref_sink(gst_pipeline_new(nullptr))));
        source_ = platform::make_element("appsrc");
        output_ = std::make_shared<FrameOutput>(display_, platform::REFERENCE_WHITE);
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

    const std::shared_ptr<DisplaySettings> display_ = std::make_shared<DisplaySettings>();
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

/** Its clock is in the test's hand as well, and frames go to a plane. */
class FramesOfTime : public PlaneSink {
  protected:
    void SetUp() override
    {
        PlaneSink::SetUp();
        clock_.reset(GST_CLOCK(gst_object_ref_sink(gst_test_clock_new())));
        gst_pipeline_use_clock(GST_PIPELINE(pipeline_.get()), clock_.get());
        display_->set_plane(platform::VideoPlane::offscreen(16, 16));
        output_->set_visible(true);
    }

    /** Lets frames be shown as time goes, and stops where the sink waits for one of this time. */
    bool run_until(guint64 milliseconds) const
    {
        auto *clock = GST_TEST_CLOCK(clock_.get());
        GstClockTime time = 0;
        // The first frame may be through before the elements know that they play.
        gst_element_get_state(pipeline_.get(), nullptr, nullptr, DEADLINE);
        while (gst_test_clock_timed_wait_for_multiple_pending_ids(clock, 1, DEADLINE / GST_MSECOND,
                                                                  nullptr)) {
            time = gst_test_clock_get_next_entry_time(clock);
            if (time >= milliseconds * GST_MSECOND)
                break;
            gst_test_clock_crank(clock);
        }
        return time == milliseconds * GST_MSECOND;
    }

    /** Lets time pass while the sink waits. */
    void set_time(guint64 milliseconds) const
    {
        auto *clock = GST_TEST_CLOCK(clock_.get());
        const GstClockTime time = milliseconds * GST_MSECOND;
        gst_test_clock_set_time(clock, time);
        gst_clock_id_unref(gst_test_clock_process_next_clock_id(clock));
    }

    void push_ms(guint64 time) { push(time * GST_MSECOND, GST_MSECOND); }

    std::unique_ptr<GstClock, platform::GstObjectUnref> clock_;
};

TEST_F(FramesOfTime, AreShownOnceWhereTheyFillThePipelineDuringAPause)
{
    push_ms(0);
    push_ms(100);
    ASSERT_TRUE(run_until(100));
    gst_element_set_state(pipeline_.get(), GST_STATE_PAUSED);
    ASSERT_EQ(gst_element_get_state(pipeline_.get(), nullptr, nullptr, DEADLINE),
              GST_STATE_CHANGE_SUCCESS);
    EXPECT_EQ(output_->status().shown, 2u) << "the next one is seen ahead of its time";
    gst_element_set_state(pipeline_.get(), GST_STATE_PLAYING);
    push_ms(200);
    ASSERT_TRUE(run_until(200));

    EXPECT_EQ(output_->status().shown, 2u);
    EXPECT_EQ(output_->status().late, 0u);
}

TEST_F(FramesOfTime, AreLateWhereTheyAreReadyAfterTheirTimeAndStillShown)
{
    push_ms(0);
    push_ms(100);
    push_ms(200);
    ASSERT_TRUE(run_until(200));
    EXPECT_EQ(output_->status().shown, 2u);
    EXPECT_EQ(output_->status().late, 0u);

    set_time(310);
    push_ms(270); // by 40 ms, which is too much
    push_ms(300); // by 10 ms
    push_ms(400);
    ASSERT_TRUE(run_until(400));
    EXPECT_EQ(output_->status().shown, 4u);
    EXPECT_EQ(output_->status().late, 1u);
    EXPECT_EQ(display_->view().plane->statistics().late, 1u);
}

TEST_F(FramesOfTime, AreInHandUntilTheirTimeHasCome)
{
    const auto has_none = [this] {
        const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (output_->in_hand() && std::chrono::steady_clock::now() < limit)
            std::this_thread::yield();
        return !output_->in_hand();
    };
    push_ms(0);
    push_ms(100);
    ASSERT_TRUE(run_until(100));
    EXPECT_TRUE(output_->in_hand());
    EXPECT_EQ(output_->arrivals(), 2u);

    set_time(100);
    EXPECT_TRUE(has_none());

    skip(200 * GST_MSECOND, 50 * GST_MSECOND);
    ASSERT_TRUE(run_until(200));
    EXPECT_TRUE(output_->in_hand()) << "word that no frame is to come";
    set_time(300);
    EXPECT_TRUE(has_none());
    EXPECT_EQ(output_->arrivals(), 3u);

    push_ms(210); // too late to be shown
    push_ms(400);
    ASSERT_TRUE(run_until(400));
    EXPECT_EQ(output_->arrivals(), 5u);
    set_time(400);
    EXPECT_TRUE(has_none());

    push_ms(500);
    end();
    ASSERT_TRUE(run_until(500));
    set_time(500);
    ASSERT_TRUE(run_until(501));
    EXPECT_TRUE(output_->in_hand()) << "the last frame has a time as well";
}

TEST_F(FramesOfTime, AreNotLateAtOtherSpeeds)
{
    push_ms(0);
    push_ms(100);
    ASSERT_TRUE(run_until(100));
    output_->set_direction(2);
    set_time(210);
    push_ms(200);
    push_ms(300);
    ASSERT_TRUE(run_until(300));

    EXPECT_EQ(output_->status().shown, 3u);
    EXPECT_EQ(output_->status().late, 0u);
}

} // namespace
} // namespace player_test
