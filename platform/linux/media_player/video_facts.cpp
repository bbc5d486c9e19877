#include "media_player/video_facts.h"

namespace platform {
namespace {

std::string name_in(GType type, int value)
{
    auto *values = static_cast<GEnumClass *>(g_type_class_ref(type));
    const GEnumValue *found = g_enum_get_value(values, value);
    std::string name = found ? found->value_nick : "";
    g_type_class_unref(values);
    return name;
}

void note_decoder(VideoStatus &video, GstPad *pad)
{
    const ElementPtr decoder(gst_pad_get_parent_element(pad));
    GstElementFactory *factory = decoder ? gst_element_get_factory(decoder.get()) : nullptr;
    if (!factory)
        return;
    const char *name = gst_element_factory_get_metadata(factory, GST_ELEMENT_METADATA_LONGNAME);
    video.decoder = GST_OBJECT_NAME(factory);
    video.decoder_name = name ? name : "";
    video.hardware = gst_element_factory_list_is_type(factory, GST_ELEMENT_FACTORY_TYPE_HARDWARE);
}

void note_frames(VideoStatus &video, const GstVideoInfo &frames)
{
    video.width = GST_VIDEO_INFO_WIDTH(&frames);
    video.height = GST_VIDEO_INFO_HEIGHT(&frames);
    video.pixel_width = GST_VIDEO_INFO_PAR_N(&frames);
    video.pixel_height = GST_VIDEO_INFO_PAR_D(&frames);
    video.frame_rate = 0;
    if (GST_VIDEO_INFO_FPS_D(&frames) > 0)
        video.frame_rate = static_cast<double>(GST_VIDEO_INFO_FPS_N(&frames)) /
                           static_cast<double>(GST_VIDEO_INFO_FPS_D(&frames));
    video.interlaced = GST_VIDEO_INFO_IS_INTERLACED(&frames);
    video.format = gst_video_format_to_string(GST_VIDEO_INFO_FORMAT(&frames));
    video.depth = static_cast<int>(GST_VIDEO_INFO_COMP_DEPTH(&frames, 0));
}

void note_colour(VideoStatus &video, const TaggedColour &colour)
{
    const GstVideoColorimetry &parts = colour.parts;
    video.range = {parts.range == GST_VIDEO_COLOR_RANGE_0_255 ? "full" : "limited", colour.range};
    video.matrix = {name_in(GST_TYPE_VIDEO_COLOR_MATRIX, parts.matrix), colour.matrix};
    video.transfer = {name_in(GST_TYPE_VIDEO_TRANSFER_FUNCTION, parts.transfer), colour.transfer};
    video.primaries = {name_in(GST_TYPE_VIDEO_COLOR_PRIMARIES, parts.primaries), colour.primaries};
}

void note_conversion(VideoStatus &video, const GstVideoColorimetry &colour,
                     const VideoFacts::Conversion &conversion)
{
    const Transfer transfer = colour_space_of(colour, conversion.peak).transfer;
    const bool mapped = conversion.exact && transfer != Transfer::SDR;
    video.exact = conversion.exact;
    video.peak = !mapped ? 0 : transfer == Transfer::HLG ? HLG_PEAK : conversion.peak;
    video.white = mapped ? conversion.white : 0;
    if (transfer == Transfer::SDR)
        video.mapping = ToneMapping::None;
    else if (!mapped)
        video.mapping = ToneMapping::Ignored;
    else
        video.mapping = transfer == Transfer::HLG ? ToneMapping::HLG : ToneMapping::PQ;
}

} // namespace

void VideoFacts::on_event(GstPad *pad, GstPadProbeInfo *info)
{
    GstEvent *event = GST_PAD_PROBE_INFO_EVENT(info);
    if (GST_EVENT_TYPE(event) != GST_EVENT_CAPS)
        return;
    GstCaps *caps = nullptr;
    GstVideoInfo frames;
    gst_event_parse_caps(event, &caps);
    const std::lock_guard<std::mutex> lock(mutex_);
    VideoStatus &video = streams_[stream_of(pad)];
    note_decoder(video, pad);
    if (gst_video_info_from_caps(&frames, caps))
        note_frames(video, frames);
}

void VideoFacts::on_frames(const std::string &stream, const TaggedColour &colour,
                           const Conversion &conversion)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    shown_ = stream;
    VideoStatus &video = streams_[stream];
    note_colour(video, colour);
    note_conversion(video, colour.parts, conversion);
}

VideoStatus VideoFacts::get() const
{
    const std::lock_guard<std::mutex> lock(mutex_);
    const auto found = streams_.find(shown_);
    return found == streams_.end() ? VideoStatus{} : found->second;
}

} // namespace platform
