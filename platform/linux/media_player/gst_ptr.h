/**
 * Owning pointers for what GStreamer and GLib hand out, so that no path forgets to give it back.
 */
#pragma once

#include <memory>

#include <gst/gst.h>
#include <gst/video/video.h>

namespace platform {

struct GstObjectUnref {
    void operator()(gpointer object) const { gst_object_unref(object); }
};
struct GstCapsUnref {
    void operator()(GstCaps *caps) const { gst_caps_unref(caps); }
};
struct GstBufferUnref {
    void operator()(GstBuffer *buffer) const { gst_buffer_unref(buffer); }
};
struct GstConverterFree {
    void operator()(GstVideoConverter *converter) const { gst_video_converter_free(converter); }
};
struct GFree {
    void operator()(gpointer memory) const { g_free(memory); }
};
struct GErrorFree {
    void operator()(GError *error) const { g_error_free(error); }
};

using ElementPtr = std::unique_ptr<GstElement, GstObjectUnref>;
using PadPtr = std::unique_ptr<GstPad, GstObjectUnref>;
using BusPtr = std::unique_ptr<GstBus, GstObjectUnref>;
using PoolPtr = std::unique_ptr<GstBufferPool, GstObjectUnref>;
using CapsPtr = std::unique_ptr<GstCaps, GstCapsUnref>;
using BufferPtr = std::unique_ptr<GstBuffer, GstBufferUnref>;
using ConverterPtr = std::unique_ptr<GstVideoConverter, GstConverterFree>;
using CharsPtr = std::unique_ptr<char, GFree>;
using ErrorPtr = std::unique_ptr<GError, GErrorFree>;

/** Makes an element that we own outright; null when there is no such element. */
inline ElementPtr make_element(const char *factory)
{
    GstElement *element = gst_element_factory_make(factory, nullptr);
    return ElementPtr(element ? GST_ELEMENT(gst_object_ref_sink(element)) : nullptr);
}

} // namespace platform
