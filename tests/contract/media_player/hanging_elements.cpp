#include "hanging_elements.h"

#include <gst/base/gstbasesink.h>
#include <gst/base/gstbasesrc.h>
#include <gst/video/gstvideodecoder.h>

namespace player_test {
namespace {

/** Makes grey pictures of whatever comes. */
struct HangingDecoder {
    GstVideoDecoder base;
};
struct HangingDecoderClass {
    GstVideoDecoderClass base;
};
GType hanging_decoder_get_type();
G_DEFINE_TYPE(HangingDecoder, hanging_decoder, GST_TYPE_VIDEO_DECODER)

GstStaticPadTemplate sink_template = GST_STATIC_PAD_TEMPLATE(
    "sink", GST_PAD_SINK, GST_PAD_ALWAYS, GST_STATIC_CAPS("video/x-h264, alignment=au"));
GstStaticPadTemplate src_template = GST_STATIC_PAD_TEMPLATE(
    "src", GST_PAD_SRC, GST_PAD_ALWAYS, GST_STATIC_CAPS(GST_VIDEO_CAPS_MAKE("GRAY8")));

gboolean set_format(GstVideoDecoder *decoder, GstVideoCodecState *coded)
{
    gst_video_codec_state_unref(gst_video_decoder_set_output_state(
        decoder, GST_VIDEO_FORMAT_GRAY8, GST_VIDEO_INFO_WIDTH(&coded->info),
        GST_VIDEO_INFO_HEIGHT(&coded->info), coded));
    return TRUE;
}

GstFlowReturn handle_frame(GstVideoDecoder *decoder, GstVideoCodecFrame *frame)
{
    decoders().pass(frame->pts);
    const GstFlowReturn result = gst_video_decoder_allocate_output_frame(decoder, frame);
    if (result != GST_FLOW_OK) {
        gst_video_decoder_release_frame(decoder, frame);
        return result;
    }
    gst_buffer_memset(frame->output_buffer, 0, 0x80, static_cast<gsize>(-1));
    return gst_video_decoder_finish_frame(decoder, frame);
}

void hanging_decoder_finalize(GObject *object)
{
    G_OBJECT_CLASS(hanging_decoder_parent_class)->finalize(object);
    decoders().count_element(-1);
}

void hanging_decoder_class_init(HangingDecoderClass *type)
{
    auto *element = GST_ELEMENT_CLASS(type);
    gst_element_class_add_static_pad_template(element, &sink_template);
    gst_element_class_add_static_pad_template(element, &src_template);
    gst_element_class_set_static_metadata(element, "Decoder that hangs", "Codec/Decoder/Video",
                                          "Hangs where a test wants it", "nobody");
    GST_VIDEO_DECODER_CLASS(type)->set_format = set_format;
    GST_VIDEO_DECODER_CLASS(type)->handle_frame = handle_frame;
    G_OBJECT_CLASS(type)->finalize = hanging_decoder_finalize;
}

void hanging_decoder_init(HangingDecoder *)
{
    decoders().count_element(1);
}

/** Reads files like GStreamer's own element, which it is made from; its class is the plugin's. */
GstBaseSrcClass *file_source_class = nullptr;

GstFlowReturn fill(GstBaseSrc *source, guint64 offset, guint length, GstBuffer *buffer)
{
    readers().pass(offset);
    return file_source_class->fill(source, offset, length, buffer);
}

gboolean start(GstBaseSrc *source)
{
    readers().pass(0);
    return file_source_class->start(source);
}

void hanging_reader_finalize(GObject *object)
{
    G_OBJECT_CLASS(file_source_class)->finalize(object);
    readers().count_element(-1);
}

GType hanging_reader_type()
{
    gst_object_unref(gst_element_factory_make("filesrc", nullptr)); // loads it
    const GType parent = g_type_from_name("GstFileSrc");
    GTypeQuery facts = {};
    g_type_query(parent, &facts);
    GTypeInfo info = {};
    info.class_size = static_cast<guint16>(facts.class_size);
    info.instance_size = static_cast<guint16>(facts.instance_size);
    info.class_init = [](gpointer type, gpointer) {
        file_source_class = GST_BASE_SRC_CLASS(g_type_class_peek_parent(type));
        GST_BASE_SRC_CLASS(type)->start = start;
        GST_BASE_SRC_CLASS(type)->fill = fill;
        G_OBJECT_CLASS(type)->finalize = hanging_reader_finalize;
    };
    info.instance_init = [](GTypeInstance *, gpointer) { readers().count_element(1); };
    return g_type_register_static(parent, "HangingReader", &info, GTypeFlags{});
}

struct LostDevice {
    GstBaseSink base;
    bool gone;
};
struct LostDeviceClass {
    GstBaseSinkClass base;
};
GType lost_device_get_type();
G_DEFINE_TYPE(LostDevice, lost_device, GST_TYPE_BASE_SINK)

GstStaticPadTemplate sound_template =
    GST_STATIC_PAD_TEMPLATE("sink", GST_PAD_SINK, GST_PAD_ALWAYS, GST_STATIC_CAPS("audio/x-raw"));

GstStateChangeReturn lost_device_change_state(GstElement *device, GstStateChange change)
{
    if (change == GST_STATE_CHANGE_NULL_TO_READY) {
        if (reinterpret_cast<LostDevice *>(device)->gone)
            GST_ELEMENT_ERROR(device, RESOURCE, OPEN_WRITE, ("the device is gone"), (nullptr));
        devices().pass(0);
    }
    return GST_ELEMENT_CLASS(lost_device_parent_class)->change_state(device, change);
}

void lost_device_finalize(GObject *object)
{
    G_OBJECT_CLASS(lost_device_parent_class)->finalize(object);
    devices().count_element(-1);
}

void lost_device_class_init(LostDeviceClass *type)
{
    auto *element = GST_ELEMENT_CLASS(type);
    gst_element_class_add_static_pad_template(element, &sound_template);
    gst_element_class_set_static_metadata(element, "Device that is gone", "Sink/Audio",
                                          "Hangs when it is opened", "nobody");
    element->change_state = lost_device_change_state;
    G_OBJECT_CLASS(type)->finalize = lost_device_finalize;
}

void lost_device_init(LostDevice *)
{
    devices().count_element(1);
}

} // namespace

Hang &decoders()
{
    static Hang all;
    return all;
}

Hang &readers()
{
    static Hang all;
    return all;
}

Hang &devices()
{
    static Hang all;
    return all;
}

void register_hanging_elements()
{
    gst_element_register(nullptr, "hangingdec", GST_RANK_NONE, hanging_decoder_get_type());
    gst_element_register(nullptr, "hangingsrc", GST_RANK_NONE, hanging_reader_type());
}

void set_rank(const char *element, guint rank)
{
    GstPluginFeature *feature = GST_PLUGIN_FEATURE(gst_element_factory_find(element));
    gst_plugin_feature_set_rank(feature, rank);
    gst_object_unref(feature);
}

platform::ElementPtr make_hanging_device(bool gone)
{
    auto *device = static_cast<LostDevice *>(g_object_new(lost_device_get_type(), nullptr));
    device->gone = gone;
    return platform::ElementPtr(GST_ELEMENT(gst_object_ref_sink(device)));
}

} // namespace player_test
