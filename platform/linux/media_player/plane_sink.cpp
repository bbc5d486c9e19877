#include "media_player/plane_sink.h"

#include <algorithm>
#include <optional>

#include <gst/video/gstvideometa.h>
#include <gst/video/gstvideosink.h>

#include "media_player/frame_pool.h"

using platform::FrameOutput;

namespace {

struct PlaneSink {
    GstVideoSink base;
    std::shared_ptr<FrameOutput> *output; ///< ours; GObject memory knows no constructors
    GstClockTime newest;      ///< latest time of a frame in this segment; streaming thread
    GstBuffer *filling;       ///< the frame that filled the pipeline, if it is the newest; not ours
    gboolean late;            ///< the newest frame was prepared after its time; streaming thread
    GstPadChainFunction take; ///< the parent's
};

struct PlaneSinkClass {
    GstVideoSinkClass base;
};

GType plane_sink_get_type();

G_DEFINE_TYPE(PlaneSink, plane_sink, GST_TYPE_VIDEO_SINK)

// No video shows one picture for longer. Broken files carry times that are hours ahead, and the
// wait for such a time would be the end of the show.
constexpr GstClockTime LONGEST_STILL = GstClockTime{10} * 60 * GST_SECOND;

GstStaticPadTemplate sink_template =
    GST_STATIC_PAD_TEMPLATE("sink", GST_PAD_SINK, GST_PAD_ALWAYS,
                            GST_STATIC_CAPS(GST_VIDEO_CAPS_MAKE(GST_VIDEO_FORMATS_ALL)));

FrameOutput &output_of(gpointer sink)
{
    return **static_cast<PlaneSink *>(sink)->output;
}

GstClockTime media_time(GstBaseSink *sink, GstBuffer *frame)
{
    return gst_segment_to_stream_time(&sink->segment, GST_FORMAT_TIME, GST_BUFFER_PTS(frame));
}

// Whether a frame's time has passed by more than a while.
bool is_past(GstBaseSink *sink, GstBuffer *frame, gint64 by)
{
    if (by < 0 || GST_STATE(sink) != GST_STATE_PLAYING || sink->need_preroll)
        return false;
    const GstClockTime due =
        gst_segment_to_running_time(&sink->segment, GST_FORMAT_TIME, GST_BUFFER_PTS(frame));
    const GstClockTime now = gst_element_get_current_running_time(GST_ELEMENT(sink));
    return GST_CLOCK_TIME_IS_VALID(due) && GST_CLOCK_TIME_IS_VALID(now) &&
           now > due + gst_base_sink_get_latency(sink) + static_cast<GstClockTime>(by);
}

// Whether a frame's time is one that no good file has. Times only ever run ahead within a segment.
bool hopelessly_early(GstBaseSink *sink, GstBuffer *frame)
{
    const GstClockTime time = GST_BUFFER_PTS(frame);
    if (!GST_CLOCK_TIME_IS_VALID(time) || sink->segment.rate < 0)
        return false;
    GstClockTime &newest = reinterpret_cast<PlaneSink *>(sink)->newest;
    if (GST_CLOCK_TIME_IS_VALID(newest) && time > newest + LONGEST_STILL)
        return true;
    newest = GST_CLOCK_TIME_IS_VALID(newest) ? std::max(newest, time) : time;
    return false;
}

// The sink waits for the end of the last frame before it tells of the end of the stream.
void plane_sink_get_times(GstBaseSink *sink, GstBuffer *frame, GstClockTime *start,
                          GstClockTime *end)
{
    GST_BASE_SINK_CLASS(plane_sink_parent_class)->get_times(sink, frame, start, end);
    if (GST_CLOCK_TIME_IS_VALID(*start) && GST_CLOCK_TIME_IS_VALID(*end) &&
        *end > *start + LONGEST_STILL)
        *end = GST_CLOCK_TIME_NONE;
}

gboolean plane_sink_set_caps(GstBaseSink *sink, GstCaps *caps)
{
    GstVideoInfo info;
    if (!gst_video_info_from_caps(&info, caps))
        return FALSE;
    FrameOutput &output = output_of(sink);
    output.set_format(platform::stream_of(sink->sinkpad), info,
                      output.colour_tags().of_frames(sink->sinkpad, caps, info),
                      platform::film_peak(caps));
    return TRUE;
}

// Decoders of libav draw straight into the buffers that they hand on only where the sink offers a
// pool. Otherwise they keep a second set of frames and copy each.
gboolean plane_sink_propose_allocation(GstBaseSink *, GstQuery *query)
{
    gst_query_add_allocation_meta(query, GST_VIDEO_META_API_TYPE, nullptr);
    GstCaps *caps = nullptr;
    gboolean need_pool = FALSE;
    gst_query_parse_allocation(query, &caps, &need_pool);
    GstVideoInfo info;
    if (!need_pool || !caps || !gst_video_info_from_caps(&info, caps))
        return TRUE;
    const platform::PoolPtr pool = platform::make_frame_pool();
    const auto size = static_cast<guint>(GST_VIDEO_INFO_SIZE(&info));
    GstStructure *config = gst_buffer_pool_get_config(pool.get());
    gst_buffer_pool_config_set_params(config, caps, size, 0, 0);
    if (gst_buffer_pool_set_config(pool.get(), config))
        gst_query_add_allocation_pool(query, pool.get(), size, 0, 0);
    return TRUE;
}

/** As long as it lives the sink has something in hand, and does not wait for a frame. */
class InHand {
  public:
    explicit InHand(FrameOutput &output) : output_(output) { output_.set_in_hand(true); }
    ~InHand() { output_.set_in_hand(false); }
    InHand(const InHand &) = delete;
    InHand &operator=(const InHand &) = delete;

  private:
    FrameOutput &output_;
};

GstFlowReturn plane_sink_take(GstPad *pad, GstObject *sink, GstBuffer *frame)
{
    FrameOutput &output = output_of(sink);
    const InHand in_hand(output);
    output.count_arrival();
    return reinterpret_cast<PlaneSink *>(sink)->take(pad, sink, frame);
}

gboolean plane_sink_event(GstBaseSink *sink, GstEvent *event)
{
    FrameOutput &output = output_of(sink);
    std::optional<InHand> in_hand;
    if (GST_EVENT_IS_SERIALIZED(event))
        in_hand.emplace(output);
    switch (GST_EVENT_TYPE(event)) {
    case GST_EVENT_TAG: {
        GstTagList *tags = nullptr;
        GstVideoOrientationMethod method = GST_VIDEO_ORIENTATION_IDENTITY;
        gst_event_parse_tag(event, &tags);
        if (gst_video_orientation_from_tag(tags, &method))
            output.set_orientation(method);
        break;
    }
    case GST_EVENT_SEGMENT: {
        const GstSegment *segment = nullptr;
        gst_event_parse_segment(event, &segment);
        output.set_direction(segment->rate);
        output.set_at_end(false);
        reinterpret_cast<PlaneSink *>(sink)->newest = GST_CLOCK_TIME_NONE;
        break;
    }
    case GST_EVENT_GAP: {
        output.count_arrival();
        // The reader skips rubbish; the time it skips to is as little to be trusted.
        GstClockTime length = GST_CLOCK_TIME_NONE;
        gst_event_parse_gap(event, nullptr, &length);
        if (GST_CLOCK_TIME_IS_VALID(length) && length > LONGEST_STILL) {
            gst_event_unref(event);
            return TRUE;
        }
        break;
    }
    case GST_EVENT_FLUSH_STOP:
        output.set_at_end(false);
        break;
    case GST_EVENT_EOS:
    case GST_EVENT_SEGMENT_DONE:
        output.set_at_end(true);
        break;
    default:
        break;
    }
    return GST_BASE_SINK_CLASS(plane_sink_parent_class)->event(sink, event);
}

GstFlowReturn plane_sink_prepare(GstBaseSink *sink, GstBuffer *frame)
{
    if (hopelessly_early(sink, frame)) {
        GST_ELEMENT_ERROR(sink, STREAM, DECODE, ("its times jump far ahead"), (nullptr));
        return GST_FLOW_ERROR;
    }
    // A frame that will be thrown away anyway is not worth painting.
    if (!is_past(sink, frame, gst_base_sink_get_max_lateness(sink)))
        output_of(sink).prepare(frame, media_time(sink, frame));
    // The frame that filled the pipeline comes once more when it starts to run, whose time that is.
    auto *self = reinterpret_cast<PlaneSink *>(sink);
    self->late = frame != self->filling && is_past(sink, frame, 0);
    self->filling = sink->need_preroll ? frame : nullptr;
    return GST_FLOW_OK;
}

GstFlowReturn plane_sink_show_frame(GstVideoSink *sink, GstBuffer *frame)
{
    const bool late = reinterpret_cast<PlaneSink *>(sink)->late;
    if (output_of(sink).show(frame, media_time(GST_BASE_SINK(sink), frame), late))
        return GST_FLOW_OK;
    GST_ELEMENT_ERROR(sink, RESOURCE, BUSY, ("the video plane is gone"), (nullptr));
    return GST_FLOW_ERROR;
}

void plane_sink_finalize(GObject *object)
{
    delete reinterpret_cast<PlaneSink *>(object)->output;
    G_OBJECT_CLASS(plane_sink_parent_class)->finalize(object);
}

void plane_sink_class_init(PlaneSinkClass *type)
{
    auto *element = GST_ELEMENT_CLASS(type);
    gst_element_class_add_static_pad_template(element, &sink_template);
    gst_element_class_set_static_metadata(element, "Video plane sink", "Sink/Video",
                                          "Shows frames on the video plane of a window",
                                          "the media player");
    auto *base = GST_BASE_SINK_CLASS(type);
    base->set_caps = plane_sink_set_caps;
    base->propose_allocation = plane_sink_propose_allocation;
    base->event = plane_sink_event;
    base->get_times = plane_sink_get_times;
    base->prepare = plane_sink_prepare;
    GST_VIDEO_SINK_CLASS(type)->show_frame = plane_sink_show_frame;
    G_OBJECT_CLASS(type)->finalize = plane_sink_finalize;
}

void plane_sink_init(PlaneSink *sink)
{
    sink->output = nullptr;
    sink->newest = GST_CLOCK_TIME_NONE;
    sink->filling = nullptr;
    sink->late = FALSE;
    GstPad *pad = GST_BASE_SINK_PAD(sink);
    sink->take = GST_PAD_CHAINFUNC(pad);
    gst_pad_set_chain_function(pad, plane_sink_take);
    gst_base_sink_set_max_lateness(GST_BASE_SINK(sink),
                                   static_cast<gint64>(platform::MAX_LATENESS));
}

} // namespace

namespace platform {

ElementPtr make_plane_sink(std::shared_ptr<FrameOutput> output)
{
    auto *element = GST_ELEMENT(gst_object_ref_sink(g_object_new(plane_sink_get_type(), nullptr)));
    reinterpret_cast<PlaneSink *>(element)->output =
        new std::shared_ptr<FrameOutput>(std::move(output));
    return ElementPtr(element);
}

} // namespace platform
