#include "media_player/media_formats.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace platform {
namespace {

// In each list by the alphabet. One kind is one reader more for a hostile file to choose from: what
// comes here is what README.md promises, and what cameras, phones, broadcasters and the usual
// programs put into it.
const char *const CONTAINERS[] = {
    "application/kate", "application/ogg", "application/x-3gp", "audio/ogg",
    "audio/webm",       "audio/x-m4a",     "audio/x-matroska",  "video/mj2",
    "video/mpegts",     "video/ogg",       "video/quicktime",   "video/webm",
    "video/x-cdxa",     "video/x-flv",     "video/x-matroska",  "video/x-matroska-3d",
    "video/x-ms-asf",   "video/x-msvideo",
};
const char *const PICTURES[] = {
    "image/jpeg",           "video/mpeg",
    "video/x-av1",          "video/x-cinepak",
    "video/x-divx",         "video/x-dnxhd",
    "video/x-dv",           "video/x-ffv",
    "video/x-flash-screen", "video/x-flash-screen2",
    "video/x-flash-video",  "video/x-gst-av-ffvhuff",
    "video/x-h261",         "video/x-h263",
    "video/x-h264",         "video/x-h265",
    "video/x-huffyuv",      "video/x-indeo",
    "video/x-msmpeg",       "video/x-msvideocodec",
    "video/x-prores",       "video/x-rle",
    "video/x-svq",          "video/x-theora",
    "video/x-vp3",          "video/x-vp6",
    "video/x-vp6-alpha",    "video/x-vp6-flash",
    "video/x-vp8",          "video/x-vp9",
    "video/x-wmv",
};
const char *const SOUNDS[] = {
    "audio/AMR",
    "audio/AMR-WB",
    "audio/ac3",
    "audio/mpeg",
    "audio/ms-gsm",
    "audio/x-ac3",
    "audio/x-adpcm",
    "audio/x-alac",
    "audio/x-alaw",
    "audio/x-dts",
    "audio/x-eac3",
    "audio/x-flac",
    "audio/x-gsm",
    "audio/x-lpcm",
    "audio/x-mulaw",
    "audio/x-nellymoser",
    "audio/x-opus",
    "audio/x-private-ts-lpcm",
    "audio/x-private1-ac3",
    "audio/x-private1-dts",
    "audio/x-private1-lpcm",
    "audio/x-private2-lpcm",
    "audio/x-speex",
    "audio/x-true-hd",
    "audio/x-vorbis",
    "audio/x-wma",
    "audio/x-wms",
};

template <size_t count> bool is_one_of(const char *name, const char *const (&names)[count])
{
    return std::any_of(std::begin(names), std::end(names),
                       [name](const char *known) { return std::strcmp(name, known) == 0; });
}

// A reader that takes another kind as well may be talked into it by what is in the file.
bool reads_nothing_else(GstElementFactory *factory)
{
    bool reads = false;
    for (const GList *entry = gst_element_factory_get_static_pad_templates(factory); entry;
         entry = entry->next) {
        auto *pad = static_cast<GstStaticPadTemplate *>(entry->data);
        if (pad->direction != GST_PAD_SINK)
            continue;
        const CapsPtr caps(gst_static_pad_template_get_caps(pad));
        if (!is_video_format(caps.get()))
            return false;
        reads = true;
    }
    return reads;
}

// Whatever a file names as a place, in a redirection above all, is looked for by its scheme. What
// an appsrc gives comes from the program itself.
bool leads_elsewhere(GstElementFactory *source)
{
    if (gst_element_factory_get_uri_type(source) != GST_URI_SRC)
        return false;
    const gchar *const *schemes = gst_element_factory_get_uri_protocols(source);
    for (; schemes && *schemes; schemes++) {
        static const char *const HARMLESS[] = {"appsrc", "fd", "file"};
        if (!is_one_of(*schemes, HARMLESS))
            return true;
    }
    return false;
}

} // namespace

bool is_video_format(const GstCaps *caps)
{
    if (!caps || gst_caps_is_any(caps) || gst_caps_is_empty(caps))
        return false;
    for (guint i = 0; i < gst_caps_get_size(caps); i++) {
        const char *name = gst_structure_get_name(gst_caps_get_structure(caps, i));
        if (!is_one_of(name, CONTAINERS) && !is_one_of(name, PICTURES) && !is_one_of(name, SOUNDS))
            return false;
    }
    return true;
}

void limit_formats()
{
    // What has a lower rank is chosen by nobody.
    GList *all = gst_element_factory_list_get_elements(GST_ELEMENT_FACTORY_TYPE_DECODABLE,
                                                       GST_RANK_MARGINAL);
    for (const GList *entry = all; entry; entry = entry->next)
        if (!reads_nothing_else(GST_ELEMENT_FACTORY(entry->data)))
            gst_plugin_feature_set_rank(GST_PLUGIN_FEATURE(entry->data), GST_RANK_NONE);
    gst_plugin_feature_list_free(all);

    // Of these, the rank is not asked for.
    GList *sources =
        gst_element_factory_list_get_elements(GST_ELEMENT_FACTORY_TYPE_SRC, GST_RANK_NONE);
    for (const GList *entry = sources; entry; entry = entry->next)
        if (leads_elsewhere(GST_ELEMENT_FACTORY(entry->data)))
            gst_registry_remove_feature(gst_registry_get(), GST_PLUGIN_FEATURE(entry->data));
    gst_plugin_feature_list_free(sources);
}

} // namespace platform
