#include "media_player/colour_tags.h"

namespace platform {
namespace {

const char *const FIELD = "colorimetry";

std::string colorimetry_of(const GstCaps *caps)
{
    const char *text = gst_structure_get_string(gst_caps_get_structure(caps, 0), FIELD);
    return text ? text : "";
}

// A matrix that the pictures' format cannot have is as good as none.
GstVideoColorimetry parsed(const std::string &text, bool rgb)
{
    GstVideoColorimetry colour = {};
    gst_video_colorimetry_from_string(&colour, text.c_str());
    if ((colour.matrix == GST_VIDEO_COLOR_MATRIX_RGB) != rgb)
        colour.matrix = GST_VIDEO_COLOR_MATRIX_UNKNOWN;
    return colour;
}

Transfer transfer_of(const GstVideoColorimetry &colour)
{
    switch (colour.transfer) {
    case GST_VIDEO_TRANSFER_SMPTE2084:
        return Transfer::PQ;
    case GST_VIDEO_TRANSFER_ARIB_STD_B67:
        return Transfer::HLG;
    default:
        return Transfer::SDR;
    }
}

const char *usual(const GstVideoInfo &frame, bool high_dynamic_range)
{
    if (GST_VIDEO_INFO_IS_RGB(&frame))
        return GST_VIDEO_COLORIMETRY_SRGB;
    if (high_dynamic_range)
        return GST_VIDEO_COLORIMETRY_BT2020;
    // A film in scope format has the width of HD and the height of less.
    const bool high_definition =
        GST_VIDEO_INFO_WIDTH(&frame) >= 1280 || GST_VIDEO_INFO_HEIGHT(&frame) > 576;
    return high_definition ? GST_VIDEO_COLORIMETRY_BT709 : GST_VIDEO_COLORIMETRY_BT601;
}

void fill_unknown(GstVideoColorimetry &colour, const GstVideoColorimetry &from)
{
    if (colour.range == GST_VIDEO_COLOR_RANGE_UNKNOWN)
        colour.range = from.range;
    if (colour.matrix == GST_VIDEO_COLOR_MATRIX_UNKNOWN)
        colour.matrix = from.matrix;
    if (colour.transfer == GST_VIDEO_TRANSFER_UNKNOWN)
        colour.transfer = from.transfer;
    if (colour.primaries == GST_VIDEO_COLOR_PRIMARIES_UNKNOWN)
        colour.primaries = from.primaries;
}

template <typename Part> ColourSource source_of(Part part, Part container, Part decoded, Part coded)
{
    if (part == container)
        return ColourSource::Container;
    return part == decoded || part == coded ? ColourSource::Stream : ColourSource::Usual;
}

GstCaps *caps_of(GstPadProbeInfo *info)
{
    GstCaps *caps = nullptr;
    GstEvent *event = GST_PAD_PROBE_INFO_EVENT(info);
    if (GST_EVENT_TYPE(event) == GST_EVENT_CAPS)
        gst_event_parse_caps(event, &caps);
    return caps;
}

bool may_know_its_range(const GstCaps *coded)
{
    const GstStructure *stream = gst_caps_get_structure(coded, 0);
    return gst_structure_has_name(stream, "video/x-h264") ||
           gst_structure_has_name(stream, "video/x-h265");
}

bool is_of_libav(GstPad *decoder_pad)
{
    const ElementPtr decoder(gst_pad_get_parent_element(decoder_pad));
    GstElementFactory *factory = decoder ? gst_element_get_factory(decoder.get()) : nullptr;
    return factory && g_str_has_prefix(GST_OBJECT_NAME(factory), "avdec_");
}

CapsPtr without_range(const GstCaps *coded, const std::string &colorimetry)
{
    GstVideoColorimetry colour = {};
    if (!gst_video_colorimetry_from_string(&colour, colorimetry.c_str()))
        return nullptr;
    colour.range = GST_VIDEO_COLOR_RANGE_UNKNOWN;
    const CharsPtr text(gst_video_colorimetry_to_string(&colour));
    CapsPtr caps(gst_caps_copy(coded));
    if (text)
        gst_caps_set_simple(caps.get(), FIELD, G_TYPE_STRING, text.get(), nullptr);
    else // nothing else was known
        gst_structure_remove_field(gst_caps_get_structure(caps.get(), 0), FIELD);
    return caps;
}

} // namespace

std::string stream_of(GstPad *pad)
{
    const CharsPtr id(gst_pad_get_stream_id(pad));
    return id ? id.get() : "";
}

TaggedColour colour_of(const std::string &decoded, const std::string &coded,
                       const std::string &container, const GstVideoInfo &frame)
{
    const bool rgb = GST_VIDEO_INFO_IS_RGB(&frame);
    const GstVideoColorimetry told[] = {parsed(container, rgb), parsed(decoded, rgb),
                                        parsed(coded, rgb)};
    GstVideoColorimetry colour = told[1];
    fill_unknown(colour, told[2]);
    const bool high_dynamic_range = transfer_of(colour) != Transfer::SDR;
    if (colour.primaries == GST_VIDEO_COLOR_PRIMARIES_UNKNOWN)
        colour.primaries =
            high_dynamic_range ? GST_VIDEO_COLOR_PRIMARIES_BT2020 : GST_VIDEO_COLOR_PRIMARIES_BT709;
    fill_unknown(colour, parsed(usual(frame, high_dynamic_range), rgb));
    const auto source = [&](auto part) {
        return source_of(colour.*part, told[0].*part, told[1].*part, told[2].*part);
    };
    return {colour, source(&GstVideoColorimetry::range), source(&GstVideoColorimetry::matrix),
            source(&GstVideoColorimetry::transfer), source(&GstVideoColorimetry::primaries)};
}

ColourSpace colour_space_of(const GstVideoColorimetry &colour, double peak)
{
    ColourSpace space;
    gst_video_color_matrix_get_Kr_Kb(colour.matrix, &space.kr, &space.kb);
    space.full_range = colour.range == GST_VIDEO_COLOR_RANGE_0_255;
    const GstVideoColorPrimariesInfo *lights = gst_video_color_primaries_get_info(colour.primaries);
    // Those of digital cinema (SMPTE ST 428) are axes of measurement, not lights.
    if (lights && lights->Ry > 0 && lights->Gy > 0 && lights->By > 0)
        space.primaries = {
            {lights->Rx, lights->Ry}, {lights->Gx, lights->Gy}, {lights->Bx, lights->By}};
    space.transfer = transfer_of(colour);
    space.peak = peak;
    return space;
}

double film_peak(const GstCaps *frames)
{
    constexpr double MASTERING_UNITS = 10000; // of a cd/m²
    GstVideoContentLightLevel content = {};
    GstVideoMasteringDisplayInfo mastering = {};
    double brightest = 0;
    if (gst_video_content_light_level_from_caps(&content, frames))
        brightest = content.max_content_light_level;
    double display = 0;
    if (gst_video_mastering_display_info_from_caps(&mastering, frames))
        display = mastering.max_display_mastering_luminance / MASTERING_UNITS;
    return trusted_peak(brightest, display);
}

void ColourTags::on_parsed_event(GstPad *pad, GstPadProbeInfo *info)
{
    const GstCaps *caps = caps_of(info);
    if (!caps)
        return;
    const std::lock_guard<std::mutex> lock(mutex_);
    streams_[stream_of(pad)].parsed = colorimetry_of(caps);
}

void ColourTags::on_coded_event(GstPad *pad, GstPadProbeInfo *info, const std::string &demuxer)
{
    const GstCaps *coded = caps_of(info);
    if (!coded)
        return;
    const std::string colorimetry = colorimetry_of(coded);
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        streams_[stream_of(pad)].coded = colorimetry;
    }
    if (demuxer != "qtdemux" || !may_know_its_range(coded) || !is_of_libav(pad))
        return;
    if (const CapsPtr caps = without_range(coded, colorimetry)) {
        GstEvent *event = GST_PAD_PROBE_INFO_EVENT(info);
        GstEvent *instead = gst_event_new_caps(caps.get());
        gst_event_set_seqnum(instead, gst_event_get_seqnum(event));
        GST_PAD_PROBE_INFO_DATA(info) = instead;
        gst_event_unref(event);
    }
}

TaggedColour ColourTags::of_frames(GstPad *pad, const GstCaps *caps, const GstVideoInfo &frame)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    const Told &told = streams_[stream_of(pad)];
    return colour_of(colorimetry_of(caps), told.coded, told.parsed.value_or(told.coded), frame);
}

} // namespace platform
