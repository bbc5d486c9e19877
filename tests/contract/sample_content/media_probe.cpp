#include "media_probe.h"

#include <cstdlib>
#include <functional>
#include <memory>

#include <gst/app/gstappsink.h>
#include <gst/gst.h>
#include <gst/pbutils/pbutils.h>
#include <gtest/gtest.h>
#include <libexif/exif-data.h>
#include <turbojpeg.h>

namespace {

constexpr GstClockTime DEADLINE = 60 * GST_SECOND;

struct ObjectUnref {
    void operator()(void *object) const { gst_object_unref(object); }
};
struct GlibUnref {
    void operator()(void *object) const { g_object_unref(object); }
};
struct GlibFree {
    void operator()(char *text) const { g_free(text); }
};
struct ErrorFree {
    void operator()(GError *error) const { g_error_free(error); }
};
struct CapsUnref {
    void operator()(GstCaps *caps) const { gst_caps_unref(caps); }
};
struct SampleUnref {
    void operator()(GstSample *sample) const { gst_sample_unref(sample); }
};
struct PipelineStop {
    void operator()(GstElement *pipeline) const
    {
        gst_element_set_state(pipeline, GST_STATE_NULL);
        gst_object_unref(pipeline);
    }
};
template <typename T> using GlibPtr = std::unique_ptr<T, GlibUnref>;
using TextPtr = std::unique_ptr<char, GlibFree>;
using CapsPtr = std::unique_ptr<GstCaps, CapsUnref>;
using SamplePtr = std::unique_ptr<GstSample, SampleUnref>;

std::string codec_name(GstDiscovererStreamInfo *stream)
{
    const CapsPtr caps(gst_discoverer_stream_info_get_caps(stream));
    const GstStructure *structure = caps ? gst_caps_get_structure(caps.get(), 0) : nullptr;
    return structure ? gst_structure_get_name(structure) : "";
}

/** Runs a file through "decodebin ! converter" and hands every buffer to the visitor. */
void decode(const std::string &path, const std::string &converter,
            const std::function<void(const GstStructure &, const GstMapInfo &)> &visit)
{
    const std::string description =
        "filesrc name=file ! decodebin ! " + converter + " ! appsink name=sink sync=false";
    GError *raw_error = nullptr;
    GstElement *parsed = gst_parse_launch(description.c_str(), &raw_error);
    const std::unique_ptr<GError, ErrorFree> error(raw_error);
    ASSERT_NE(parsed, nullptr) << (error ? error->message : "");
    const std::unique_ptr<GstElement, PipelineStop> pipeline(parsed);
    const std::unique_ptr<GstElement, ObjectUnref> file(
        gst_bin_get_by_name(GST_BIN(parsed), "file"));
    const std::unique_ptr<GstElement, ObjectUnref> sink(
        gst_bin_get_by_name(GST_BIN(parsed), "sink"));
    g_object_set(file.get(), "location", path.c_str(), nullptr);
    gst_element_set_state(parsed, GST_STATE_PLAYING);
    for (;;) {
        const SamplePtr sample(gst_app_sink_try_pull_sample(GST_APP_SINK(sink.get()), DEADLINE));
        if (!sample)
            break;
        GstMapInfo map;
        GstBuffer *buffer = gst_sample_get_buffer(sample.get());
        ASSERT_TRUE(gst_buffer_map(buffer, &map, GST_MAP_READ));
        visit(*gst_caps_get_structure(gst_sample_get_caps(sample.get()), 0), map);
        gst_buffer_unmap(buffer, &map);
    }
    EXPECT_TRUE(gst_app_sink_is_eos(GST_APP_SINK(sink.get())))
        << path << " did not play to its end";
}

} // namespace

Rgb Frame::at(double x, double y) const
{
    const auto column = static_cast<size_t>(x * (width - 1) + 0.5);
    const auto row = static_cast<size_t>(y * (height - 1) + 0.5);
    const uint8_t *pixel = &bytes[(row * static_cast<size_t>(width) + column) * 4];
    return {pixel[2], pixel[1], pixel[0]};
}

Frame Frame::turned_clockwise() const
{
    Frame turned = {height, width, std::vector<uint8_t>(bytes.size())};
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const size_t from = (static_cast<size_t>(y) * static_cast<size_t>(width) + x) * 4;
            const size_t to =
                (static_cast<size_t>(x) * static_cast<size_t>(height) + (height - 1 - y)) * 4;
            for (size_t i = 0; i < 4; ++i)
                turned.bytes[to + i] = bytes[from + i];
        }
    }
    return turned;
}

VideoFacts discover(const std::string &path)
{
    VideoFacts facts;
    const GlibPtr<GstDiscoverer> discoverer(gst_discoverer_new(DEADLINE, nullptr));
    const TextPtr uri(gst_filename_to_uri(path.c_str(), nullptr));
    if (!discoverer || !uri)
        return facts;
    const GlibPtr<GstDiscovererInfo> info(
        gst_discoverer_discover_uri(discoverer.get(), uri.get(), nullptr));
    if (!info)
        return facts;
    facts.seconds = static_cast<double>(gst_discoverer_info_get_duration(info.get())) / GST_SECOND;
    const GlibPtr<GstDiscovererStreamInfo> container(
        gst_discoverer_info_get_stream_info(info.get()));
    if (container)
        facts.container = codec_name(container.get());
    GList *videos = gst_discoverer_info_get_video_streams(info.get());
    if (videos) {
        auto *video = static_cast<GstDiscovererVideoInfo *>(videos->data);
        facts.width = static_cast<int>(gst_discoverer_video_info_get_width(video));
        facts.height = static_cast<int>(gst_discoverer_video_info_get_height(video));
        facts.frame_rate = static_cast<double>(gst_discoverer_video_info_get_framerate_num(video)) /
                           gst_discoverer_video_info_get_framerate_denom(video);
        facts.video_codec = codec_name(GST_DISCOVERER_STREAM_INFO(video));
    }
    gst_discoverer_stream_info_list_free(videos);
    GList *sounds = gst_discoverer_info_get_audio_streams(info.get());
    if (sounds) {
        auto *sound = static_cast<GstDiscovererAudioInfo *>(sounds->data);
        facts.audio_channels = static_cast<int>(gst_discoverer_audio_info_get_channels(sound));
        facts.audio_codec = codec_name(GST_DISCOVERER_STREAM_INFO(sound));
    }
    gst_discoverer_stream_info_list_free(sounds);
    return facts;
}

std::vector<Frame> decode_video(const std::string &path)
{
    std::vector<Frame> frames;
    decode(path, "videoconvert ! video/x-raw,format=BGRx",
           [&frames](const GstStructure &caps, const GstMapInfo &map) {
               Frame frame;
               gst_structure_get_int(&caps, "width", &frame.width);
               gst_structure_get_int(&caps, "height", &frame.height);
               frame.bytes.assign(map.data, map.data + map.size);
               frames.push_back(std::move(frame));
           });
    return frames;
}

std::vector<double> decode_sound(const std::string &path)
{
    std::vector<double> samples;
    decode(path,
           "audioconvert ! audioresample ! "
           "audio/x-raw,format=S16LE,rate=48000,channels=2,layout=interleaved",
           [&samples](const GstStructure &, const GstMapInfo &map) {
               const auto *values = reinterpret_cast<const int16_t *>(map.data);
               for (size_t i = 0; i < map.size / sizeof *values; i += 2)
                   samples.push_back(values[i] / 32768.0);
           });
    return samples;
}

Frame decode_jpeg(const std::string &content)
{
    struct DecompressorDeleter {
        void operator()(void *handle) const { tjDestroy(handle); }
    };
    const std::unique_ptr<void, DecompressorDeleter> decompressor(tjInitDecompress());
    const auto *data = reinterpret_cast<const unsigned char *>(content.data());
    Frame frame;
    int sampling = 0;
    int space = 0;
    if (tjDecompressHeader3(decompressor.get(), data, content.size(), &frame.width, &frame.height,
                            &sampling, &space) != 0)
        return {};
    frame.bytes.resize(static_cast<size_t>(frame.width) * static_cast<size_t>(frame.height) * 4);
    if (tjDecompress2(decompressor.get(), data, content.size(), frame.bytes.data(), frame.width, 0,
                      frame.height, TJPF_BGRX, 0) != 0)
        return {};
    return frame;
}

int exif_orientation(const std::string &content)
{
    struct DataUnref {
        void operator()(ExifData *data) const { exif_data_unref(data); }
    };
    const std::unique_ptr<ExifData, DataUnref> data(
        exif_data_new_from_data(reinterpret_cast<const unsigned char *>(content.data()),
                                static_cast<unsigned>(content.size())));
    const ExifEntry *entry =
        data ? exif_content_get_entry(data->ifd[EXIF_IFD_0], EXIF_TAG_ORIENTATION) : nullptr;
    return entry ? exif_get_short(entry->data, exif_data_get_byte_order(data.get())) : 0;
}

int difference(const Rgb &a, const Rgb &b)
{
    int largest = 0;
    for (size_t i = 0; i < a.size(); ++i)
        largest = std::max(largest, std::abs(a[i] - b[i]));
    return largest;
}
