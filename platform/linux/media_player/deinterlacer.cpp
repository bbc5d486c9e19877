#include "media_player/deinterlacer.h"

#include <algorithm>
#include <array>

#include "base/bands.h"
#include "colour/field_picture.h"
#include "media_player/mapped_frame.h"
#include "media_player/plane_sink.h"

namespace platform {
namespace {

/** Samples of a plane for which waking another thread is worth it. */
constexpr int64_t WORTH_A_BAND = int64_t{1280} * 720;

/** A film whose frames are further apart has a gap in it. */
constexpr GstClockTime LONGEST_FRAME = 200 * GST_MSECOND;

/** Bytes of a sample, where rows are made of nothing but samples; 0 where they are not. */
int sample_bytes(const GstVideoInfo &info)
{
    const GstVideoFormatInfo *format = info.finfo;
    const auto other = static_cast<GstVideoFormatFlags>(GST_VIDEO_FORMAT_FLAG_COMPLEX |
                                                        GST_VIDEO_FORMAT_FLAG_TILED |
                                                        GST_VIDEO_FORMAT_FLAG_PALETTE);
    if (format->flags & other)
        return 0;
    const guint depth = format->depth[0] + format->shift[0];
    for (guint part = 0; part < format->n_components; ++part)
        if (format->depth[part] + format->shift[part] != depth)
            return 0;
    if (depth == 8)
        return 1;
    return depth <= 16 && (format->flags & GST_VIDEO_FORMAT_FLAG_LE) ? 2 : 0;
}

/** Bytes of a plane's row, to the last pixel that shares its chroma with one of the picture. */
int row_bytes(const GstVideoInfo &info, guint plane)
{
    int bytes = 0;
    for (guint part = 0; part < GST_VIDEO_INFO_N_COMPONENTS(&info); ++part)
        if (GST_VIDEO_INFO_COMP_PLANE(&info, part) == plane)
            bytes = std::max(bytes, GST_VIDEO_INFO_COMP_WIDTH(&info, part) *
                                        GST_VIDEO_INFO_COMP_PSTRIDE(&info, part));
    return bytes;
}

/** Time from one frame to another; GST_CLOCK_TIME_NONE where that cannot be told, or is a gap. */
GstClockTime time_between(GstBuffer *frame, GstBuffer *next)
{
    if (!frame || !next || !GST_BUFFER_PTS_IS_VALID(frame) || !GST_BUFFER_PTS_IS_VALID(next) ||
        GST_BUFFER_PTS(next) <= GST_BUFFER_PTS(frame))
        return GST_CLOCK_TIME_NONE;
    const GstClockTime time = GST_BUFFER_PTS(next) - GST_BUFFER_PTS(frame);
    return time < LONGEST_FRAME ? time : GST_CLOCK_TIME_NONE;
}

class Deinterlacer {
  public:
    Deinterlacer(GstPad *out, FieldPace &pace, std::function<void()> on_halved)
        : out_(out), pace_(pace), on_halved_(std::move(on_halved))
    {
        gst_segment_init(&segment_, GST_FORMAT_TIME);
    }

    ~Deinterlacer() { set_pool(nullptr); }
    Deinterlacer(const Deinterlacer &) = delete;
    Deinterlacer &operator=(const Deinterlacer &) = delete;

    /** @return what follows of them for the pictures; null: they cannot be understood */
    CapsPtr set_caps(GstCaps *caps);
    void set_segment(const GstSegment &segment);
    GstFlowReturn take(BufferPtr frame);

    /** Shows the frame that waits for the one after it. */
    GstFlowReturn finish();

    /** Begins anew, at another place of the film. */
    void flush();

    /**
     * The sink has had a picture in hand.
     *
     * @param due  running time
     * @param late how long after it; negative: before it
     */
    void on_picture(GstClockTime due, GstClockTimeDiff late);

  private:
    void set_pool(PoolPtr pool);
    bool make_pool();
    bool is_interlaced(GstBuffer *frame) const;
    void forget();
    GstFlowReturn show(GstBuffer *before, GstBuffer *after);
    GstFlowReturn show_field(GstBuffer *before, GstBuffer *after, const Field &field,
                             GstClockTime time, GstClockTime length);
    GstClockTime length_of_frame(GstBuffer *before, GstBuffer *after) const;
    bool leave_out(GstClockTime time, GstClockTime length);
    void judge(GstClockTimeDiff late);
    BufferPtr picture_of(GstBuffer *before, GstBuffer *after, const Field &field);
    void fill(const std::array<const MappedFrame *, 3> &frames, const Field &field,
              const MappedFrame &picture);

    GstPad *const out_;
    FieldPace &pace_;
    const std::function<void()> on_halved_;
    GstVideoInfo info_ = {};
    int sample_bytes_ = 0; ///< 0: there are no fields to be shown
    GstVideoInfo picture_info_ = {};
    PoolPtr pool_;
    Bands bands_;
    GstSegment segment_ = {};
    /** The picture in the sink's hand is a field's, of a film at its own speed. */
    bool is_judged_ = false;
    /** Running time that has passed; GST_CLOCK_TIME_NONE before a picture was shown. */
    GstClockTime now_ = GST_CLOCK_TIME_NONE;
    BufferPtr before_; ///< the one before, where that belongs to the same scene
    BufferPtr frame_;  ///< the newest
};

void Deinterlacer::set_pool(PoolPtr pool)
{
    if (pool_)
        gst_buffer_pool_set_active(pool_.get(), FALSE);
    pool_ = std::move(pool);
}

CapsPtr Deinterlacer::set_caps(GstCaps *caps)
{
    sample_bytes_ = 0;
    set_pool(nullptr);
    if (!gst_video_info_from_caps(&info_, caps))
        return nullptr;
    const GstVideoInterlaceMode mode = GST_VIDEO_INFO_INTERLACE_MODE(&info_);
    if (mode != GST_VIDEO_INTERLACE_MODE_FIELDS && mode != GST_VIDEO_INTERLACE_MODE_ALTERNATE)
        sample_bytes_ = sample_bytes(info_);
    if (sample_bytes_ == 0)
        return CapsPtr(gst_caps_ref(caps));
    CapsPtr pictures(gst_caps_copy(caps));
    gst_caps_set_simple(pictures.get(), "interlace-mode", G_TYPE_STRING, "progressive", nullptr);
    gst_structure_remove_field(gst_caps_get_structure(pictures.get(), 0), "field-order");
    return gst_video_info_from_caps(&picture_info_, pictures.get()) ? std::move(pictures) : nullptr;
}

// Most films are progressive and never need one.
bool Deinterlacer::make_pool()
{
    set_pool(PoolPtr(gst_video_buffer_pool_new()));
    const CapsPtr pictures(gst_video_info_to_caps(&picture_info_));
    GstStructure *config = gst_buffer_pool_get_config(pool_.get());
    gst_buffer_pool_config_set_params(
        config, pictures.get(), static_cast<guint>(GST_VIDEO_INFO_SIZE(&picture_info_)), 0, 0);
    return gst_buffer_pool_set_config(pool_.get(), config) &&
           gst_buffer_pool_set_active(pool_.get(), TRUE);
}

void Deinterlacer::set_segment(const GstSegment &segment)
{
    segment_ = segment;
    is_judged_ = false;
}

// GStreamer looks at a frame's flag only where the caps say that it may be either. But caps that
// say "progressive" may be the container's word, and the flag is the coded picture's own.
bool Deinterlacer::is_interlaced(GstBuffer *frame) const
{
    return sample_bytes_ != 0 &&
           (GST_VIDEO_INFO_INTERLACE_MODE(&info_) == GST_VIDEO_INTERLACE_MODE_INTERLEAVED ||
            GST_BUFFER_FLAG_IS_SET(frame, GST_VIDEO_BUFFER_FLAG_INTERLACED));
}

GstFlowReturn Deinterlacer::take(BufferPtr frame)
{
    if (!is_interlaced(frame.get())) {
        const GstFlowReturn result = finish();
        is_judged_ = false;
        return result == GST_FLOW_OK ? gst_pad_push(out_, frame.release()) : result;
    }
    GstFlowReturn result = GST_FLOW_OK;
    if (GST_BUFFER_FLAG_IS_SET(frame.get(), GST_BUFFER_FLAG_DISCONT))
        result = finish();
    else if (frame_)
        result = show(before_.get(), frame.get());
    before_ = std::move(frame_);
    frame_ = std::move(frame);
    return result;
}

GstFlowReturn Deinterlacer::finish()
{
    const GstFlowReturn result = frame_ ? show(before_.get(), nullptr) : GST_FLOW_OK;
    forget();
    return result;
}

void Deinterlacer::forget()
{
    before_.reset();
    frame_.reset();
}

void Deinterlacer::flush()
{
    forget();
    now_ = GST_CLOCK_TIME_NONE;
}

void Deinterlacer::on_picture(GstClockTime due, GstClockTimeDiff late)
{
    now_ = due + static_cast<GstClockTime>(std::max(late, GstClockTimeDiff{0}));
    judge(late);
}

void Deinterlacer::judge(GstClockTimeDiff late)
{
    if (is_judged_ && pace_.on_picture(std::chrono::nanoseconds(late)))
        on_halved_();
}

/** Whether a picture is so late that the sink would not show it. Then it counts as dropped. */
bool Deinterlacer::leave_out(GstClockTime time, GstClockTime length)
{
    const GstClockTime due = gst_segment_to_running_time(&segment_, GST_FORMAT_TIME, time);
    if (!GST_CLOCK_TIME_IS_VALID(now_) || !GST_CLOCK_TIME_IS_VALID(due) ||
        now_ <= due + MAX_LATENESS)
        return false;
    GstObject *element = GST_OBJECT_PARENT(out_);
    gst_element_post_message(
        GST_ELEMENT(element),
        gst_message_new_qos(element, FALSE, due,
                            gst_segment_to_stream_time(&segment_, GST_FORMAT_TIME, time), time,
                            length));
    judge(GST_CLOCK_DIFF(due, now_));
    return true;
}

// Readers round durations, and some tell those of fields: the times of frames are more exact. Where
// frames are missing before the next, though, a field does not wait for it: a frame is no longer
// than the film's rate tells or, as that may be of fields too, than the one before it.
GstClockTime Deinterlacer::length_of_frame(GstBuffer *before, GstBuffer *after) const
{
    GstClockTime usual = GST_CLOCK_TIME_NONE;
    if (GST_VIDEO_INFO_FPS_N(&info_) > 0)
        usual = gst_util_uint64_scale_int(GST_SECOND, GST_VIDEO_INFO_FPS_D(&info_),
                                          GST_VIDEO_INFO_FPS_N(&info_));
    const GstClockTime length = time_between(frame_.get(), after);
    if (GST_CLOCK_TIME_IS_VALID(length)) {
        const GstClockTime former = time_between(before, frame_.get());
        if (GST_CLOCK_TIME_IS_VALID(former) && former > usual)
            usual = former;
        return std::min(length, usual);
    }
    return GST_BUFFER_DURATION_IS_VALID(frame_.get()) ? GST_BUFFER_DURATION(frame_.get()) : usual;
}

GstFlowReturn Deinterlacer::show(GstBuffer *before, GstBuffer *after)
{
    if (segment_.rate < 0)
        std::swap(before, after);
    const bool bottom_first =
        GST_VIDEO_INFO_FIELD_ORDER(&info_) != GST_VIDEO_FIELD_ORDER_TOP_FIELD_FIRST &&
        !GST_BUFFER_FLAG_IS_SET(frame_.get(), GST_VIDEO_BUFFER_FLAG_TFF);
    const Field first = {true, bottom_first};
    const GstClockTime time = GST_BUFFER_PTS(frame_.get());
    const GstClockTime length = length_of_frame(before, after);
    is_judged_ =
        segment_.rate == 1.0 && GST_CLOCK_TIME_IS_VALID(time) && GST_CLOCK_TIME_IS_VALID(length);
    if (!is_judged_ || pace_.is_halved())
        return show_field(before, after, first, time, GST_BUFFER_DURATION(frame_.get()));
    const GstFlowReturn result = show_field(before, after, first, time, length / 2);
    if (result != GST_FLOW_OK)
        return result;
    return show_field(before, after, {false, !bottom_first}, time + length / 2,
                      length - length / 2);
}

GstFlowReturn Deinterlacer::show_field(GstBuffer *before, GstBuffer *after, const Field &field,
                                       GstClockTime time, GstClockTime length)
{
    if (leave_out(time, length))
        return GST_FLOW_OK;
    BufferPtr picture = picture_of(before, after, field);
    if (!picture)
        return GST_FLOW_ERROR;
    GST_BUFFER_PTS(picture.get()) = time;
    GST_BUFFER_DURATION(picture.get()) = length;
    return gst_pad_push(out_, picture.release());
}

BufferPtr Deinterlacer::picture_of(GstBuffer *before, GstBuffer *after, const Field &field)
{
    GstBuffer *buffer = nullptr;
    if ((!pool_ && !make_pool()) ||
        gst_buffer_pool_acquire_buffer(pool_.get(), &buffer, nullptr) != GST_FLOW_OK)
        return nullptr;
    BufferPtr picture(buffer);
    const MappedFrame own(info_, frame_.get(), GST_MAP_READ);
    const MappedFrame earlier(info_, before ? before : frame_.get(), GST_MAP_READ);
    const MappedFrame later(info_, after ? after : frame_.get(), GST_MAP_READ);
    const MappedFrame written(picture_info_, buffer, GST_MAP_WRITE);
    if (!own || !earlier || !later || !written)
        return nullptr;
    fill({before ? &earlier : &own, &own, after ? &later : &own}, field, written);
    return picture;
}

void Deinterlacer::fill(const std::array<const MappedFrame *, 3> &frames, const Field &field,
                        const MappedFrame &picture)
{
    const GstVideoFormatInfo *format = info_.finfo;
    for (guint plane = 0; plane < GST_VIDEO_INFO_N_PLANES(&info_); ++plane) {
        gint parts[GST_VIDEO_MAX_COMPONENTS];
        gst_video_format_info_component(format, plane, parts);
        const auto part = static_cast<guint>(parts[0]);
        WovenPlanes planes = {};
        planes.before = frames[0]->plane(plane);
        planes.frame = frames[1]->plane(plane);
        planes.after = frames[2]->plane(plane);
        for (int i = 0; i < 3; ++i)
            planes.strides[i] = frames[i]->stride(plane);
        planes.sample_bytes = sample_bytes_;
        planes.samples = row_bytes(info_, plane) / sample_bytes_;
        planes.rows = GST_VIDEO_INFO_COMP_HEIGHT(&info_, part);
        planes.largest = (1 << (format->depth[part] + format->shift[part])) - 1;
        const int64_t samples = int64_t{planes.samples} * planes.rows;
        bands_.run(planes.rows, static_cast<int>(1 + samples / WORTH_A_BAND),
                   [&](int, int first, int count) {
                       fill_field(planes, field, first, count, picture.plane(plane),
                                  picture.stride(plane));
                   });
    }
}

struct DeinterlacerElement {
    GstElement base;
    GstPad *in;
    GstPad *out;
    Deinterlacer *work; ///< ours; GObject memory knows no constructors
};

struct DeinterlacerElementClass {
    GstElementClass base;
};

GType deinterlacer_element_get_type();

G_DEFINE_TYPE(DeinterlacerElement, deinterlacer_element, GST_TYPE_ELEMENT)

GstStaticPadTemplate sink_template =
    GST_STATIC_PAD_TEMPLATE("sink", GST_PAD_SINK, GST_PAD_ALWAYS,
                            GST_STATIC_CAPS(GST_VIDEO_CAPS_MAKE(GST_VIDEO_FORMATS_ALL)));
GstStaticPadTemplate src_template =
    GST_STATIC_PAD_TEMPLATE("src", GST_PAD_SRC, GST_PAD_ALWAYS,
                            GST_STATIC_CAPS(GST_VIDEO_CAPS_MAKE(GST_VIDEO_FORMATS_ALL)));

Deinterlacer &work_of(GstObject *element)
{
    return *reinterpret_cast<DeinterlacerElement *>(element)->work;
}

GstFlowReturn on_frame(GstPad *, GstObject *element, GstBuffer *frame)
{
    return work_of(element).take(BufferPtr(frame));
}

gboolean on_event(GstPad *pad, GstObject *element, GstEvent *event)
{
    Deinterlacer &work = work_of(element);
    switch (GST_EVENT_TYPE(event)) {
    case GST_EVENT_CAPS: {
        work.finish();
        GstCaps *caps = nullptr;
        gst_event_parse_caps(event, &caps);
        const CapsPtr pictures = work.set_caps(caps);
        gst_event_unref(event);
        return pictures && gst_pad_push_event(reinterpret_cast<DeinterlacerElement *>(element)->out,
                                              gst_event_new_caps(pictures.get()));
    }
    case GST_EVENT_SEGMENT: {
        work.finish();
        const GstSegment *segment = nullptr;
        gst_event_parse_segment(event, &segment);
        work.set_segment(*segment);
        break;
    }
    case GST_EVENT_FLUSH_STOP:
        work.flush();
        break;
    case GST_EVENT_EOS:
    case GST_EVENT_SEGMENT_DONE:
    case GST_EVENT_GAP:
        work.finish();
        break;
    default:
        break;
    }
    return gst_pad_event_default(pad, element, event);
}

gboolean on_event_from_sink(GstPad *pad, GstObject *element, GstEvent *event)
{
    if (GST_EVENT_TYPE(event) == GST_EVENT_QOS) {
        GstClockTime due = 0;
        GstClockTimeDiff late = 0;
        gst_event_parse_qos(event, nullptr, nullptr, &late, &due);
        work_of(element).on_picture(due, late);
    }
    return gst_pad_event_default(pad, element, event);
}

GstStateChangeReturn change_state(GstElement *element, GstStateChange change)
{
    const GstStateChangeReturn result =
        GST_ELEMENT_CLASS(deinterlacer_element_parent_class)->change_state(element, change);
    if (change == GST_STATE_CHANGE_PAUSED_TO_READY)
        work_of(GST_OBJECT(element)).flush();
    return result;
}

void finalize(GObject *object)
{
    delete reinterpret_cast<DeinterlacerElement *>(object)->work;
    G_OBJECT_CLASS(deinterlacer_element_parent_class)->finalize(object);
}

void deinterlacer_element_class_init(DeinterlacerElementClass *type)
{
    auto *element = GST_ELEMENT_CLASS(type);
    gst_element_class_add_static_pad_template(element, &sink_template);
    gst_element_class_add_static_pad_template(element, &src_template);
    gst_element_class_set_static_metadata(element, "Deinterlacer", "Filter/Effect/Video",
                                          "Makes a picture of each field", "the media player");
    element->change_state = change_state;
    G_OBJECT_CLASS(type)->finalize = finalize;
}

// What it knows nothing of goes through: caps in both directions, and the pool that the sink
// offers.
void deinterlacer_element_init(DeinterlacerElement *self)
{
    self->in = gst_pad_new_from_static_template(&sink_template, "sink");
    gst_pad_set_chain_function(self->in, on_frame);
    gst_pad_set_event_function(self->in, on_event);
    GST_PAD_SET_PROXY_CAPS(self->in);
    GST_PAD_SET_PROXY_ALLOCATION(self->in);
    gst_element_add_pad(&self->base, self->in);
    self->out = gst_pad_new_from_static_template(&src_template, "src");
    gst_pad_set_event_function(self->out, on_event_from_sink);
    gst_element_add_pad(&self->base, self->out);
}

} // namespace

ElementPtr make_deinterlacer(FieldPace &pace, std::function<void()> on_halved)
{
    auto *element = reinterpret_cast<DeinterlacerElement *>(
        gst_object_ref_sink(g_object_new(deinterlacer_element_get_type(), nullptr)));
    element->work = new Deinterlacer(element->out, pace, std::move(on_halved));
    return ElementPtr(&element->base);
}

} // namespace platform
