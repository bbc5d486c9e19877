#include "video_writer.h"

#include <cmath>
#include <memory>
#include <stdexcept>

#include <gst/app/gstappsrc.h>
#include <gst/gst.h>

#include "cancellation.h"
#include "scene.h"
#include "tone.h"

namespace sample {

namespace {

constexpr int FRAME_RATE = 30;
constexpr guint64 MOST_QUEUED_FRAMES = 4;
constexpr GstClockTime WAIT_STEP = 50 * GST_MSECOND; // how soon Ctrl-C is noticed

struct ObjectUnref {
    void operator()(void *object) const { gst_object_unref(object); }
};
struct MessageUnref {
    void operator()(GstMessage *message) const { gst_message_unref(message); }
};
struct ErrorFree {
    void operator()(GError *error) const { g_error_free(error); }
};
struct CapsUnref {
    void operator()(GstCaps *caps) const { gst_caps_unref(caps); }
};
template <typename T> using ObjectPtr = std::unique_ptr<T, ObjectUnref>;
using MessagePtr = std::unique_ptr<GstMessage, MessageUnref>;
using ErrorPtr = std::unique_ptr<GError, ErrorFree>;
using CapsPtr = std::unique_ptr<GstCaps, CapsUnref>;

struct PipelineStop {
    void operator()(GstElement *pipeline) const
    {
        gst_element_set_state(pipeline, GST_STATE_NULL);
        gst_object_unref(pipeline);
    }
};
using PipelinePtr = std::unique_ptr<GstElement, PipelineStop>;

struct Recipe {
    const char *video;
    const char *audio;
    const char *muxer;
};

// Key frames twice a second keep seeking and backward play smooth.
const Recipe MP4_RECIPE = {
    "x264enc speed-preset=veryfast pass=quant quantizer=20 key-int-max=15 bframes=0 "
    "! video/x-h264,profile=high ! h264parse",
    "avenc_aac bitrate=128000 ! aacparse", "mp4mux"};
const Recipe MATROSKA_RECIPE = {
    "vp8enc deadline=1 cpu-used=8 threads=2 end-usage=cq cq-level=12 target-bitrate=8000000 "
    "min-quantizer=4 max-quantizer=40 keyframe-max-dist=15",
    "vorbisenc quality=0.4", "matroskamux"};

/** Names the missing package instead of letting the pipeline's parser complain. */
void check_elements(bool mp4)
{
    struct Need {
        const char *element;
        const char *package;
    };
    static const Need common[] = {{"appsrc", "gstreamer1.0-plugins-base"},
                                  {"videoconvert", "gstreamer1.0-plugins-base"},
                                  {"audioconvert", "gstreamer1.0-plugins-base"}};
    static const Need for_mp4[] = {{"x264enc", "gstreamer1.0-plugins-ugly"},
                                   {"h264parse", "gstreamer1.0-plugins-bad"},
                                   {"avenc_aac", "gstreamer1.0-libav"},
                                   {"aacparse", "gstreamer1.0-plugins-good"},
                                   {"mp4mux", "gstreamer1.0-plugins-good"}};
    static const Need for_matroska[] = {{"vp8enc", "gstreamer1.0-plugins-good"},
                                        {"vorbisenc", "gstreamer1.0-plugins-base"},
                                        {"matroskamux", "gstreamer1.0-plugins-good"}};
    const auto check = [](const Need &need) {
        const ObjectPtr<GstElementFactory> factory(gst_element_factory_find(need.element));
        if (!factory)
            throw std::runtime_error(std::string("GStreamer's element ") + need.element +
                                     " is missing; Debian's package " + need.package + " has it.");
    };
    for (const Need &need : common)
        check(need);
    if (mp4) {
        for (const Need &need : for_mp4)
            check(need);
    } else {
        for (const Need &need : for_matroska)
            check(need);
    }
}

class VideoPipeline {
  public:
    VideoPipeline(const Item &item, const Recipe &recipe, const std::string &path);
    void push_frame(const Image &image, int64_t number);
    void push_sound(const Tone &tone, int64_t first, int64_t count);
    /** Waits until the file is complete. */
    void finish();

  private:
    void wait_for_room();
    /** Looks for trouble, for as long as one step at most; true at the end of the stream. */
    bool wait_on_bus(GstClockTime time);
    static void set_caps(GstAppSrc *source, const std::string &description);
    static void push(GstAppSrc *source, const void *data, size_t size, GstClockTime time,
                     GstClockTime duration);

    PipelinePtr pipeline_;
    ObjectPtr<GstBus> bus_;
    ObjectPtr<GstAppSrc> video_;
    ObjectPtr<GstAppSrc> audio_;
    guint64 frame_size_;
};

VideoPipeline::VideoPipeline(const Item &item, const Recipe &recipe, const std::string &path)
    : frame_size_(static_cast<guint64>(item.width) * static_cast<guint64>(item.height) * 4)
{
    const std::string description =
        std::string("appsrc name=video format=time ! videoconvert n-threads=2 "
                    "! video/x-raw,format=I420 ! queue max-size-buffers=4 ! ") +
        recipe.video + " ! queue max-size-time=0 max-size-bytes=0 max-size-buffers=0 ! mux. " +
        "appsrc name=audio format=time max-bytes=0 ! audioconvert ! " + recipe.audio +
        " ! queue max-size-time=0 max-size-bytes=0 max-size-buffers=0 ! mux. " + recipe.muxer +
        " name=mux ! filesink name=file";
    GError *raw_error = nullptr;
    GstElement *parsed = gst_parse_launch(description.c_str(), &raw_error);
    const ErrorPtr error(raw_error);
    if (!parsed)
        throw std::runtime_error(error ? error->message : "The encoder cannot be set up.");
    pipeline_.reset(parsed);
    if (error)
        throw std::runtime_error(error->message);

    bus_.reset(gst_element_get_bus(parsed));
    video_.reset(GST_APP_SRC(gst_bin_get_by_name(GST_BIN(parsed), "video")));
    audio_.reset(GST_APP_SRC(gst_bin_get_by_name(GST_BIN(parsed), "audio")));
    const ObjectPtr<GstElement> file(gst_bin_get_by_name(GST_BIN(parsed), "file"));
    g_object_set(file.get(), "location", path.c_str(), nullptr);
    set_caps(video_.get(), "video/x-raw,format=BGRx,width=" + std::to_string(item.width) +
                               ",height=" + std::to_string(item.height) +
                               ",framerate=" + std::to_string(FRAME_RATE) + "/1");
    set_caps(audio_.get(),
             "audio/x-raw,format=S16LE,layout=interleaved,rate=" + std::to_string(Tone::RATE) +
                 ",channels=" + std::to_string(Tone::CHANNELS));
    if (gst_element_set_state(parsed, GST_STATE_PLAYING) == GST_STATE_CHANGE_FAILURE) {
        wait_on_bus(0);
        throw std::runtime_error("The encoder cannot be started.");
    }
}

void VideoPipeline::set_caps(GstAppSrc *source, const std::string &description)
{
    const CapsPtr caps(gst_caps_from_string(description.c_str()));
    gst_app_src_set_caps(source, caps.get());
}

void VideoPipeline::push(GstAppSrc *source, const void *data, size_t size, GstClockTime time,
                         GstClockTime duration)
{
    GstBuffer *buffer = gst_buffer_new_memdup(data, size);
    GST_BUFFER_PTS(buffer) = time;
    GST_BUFFER_DURATION(buffer) = duration;
    // A refusal means that the pipeline has failed; the bus tells why.
    gst_app_src_push_buffer(source, buffer);
}

void VideoPipeline::push_frame(const Image &image, int64_t number)
{
    wait_for_room();
    const auto time_of = [](int64_t frame) {
        return gst_util_uint64_scale(static_cast<guint64>(frame), GST_SECOND, FRAME_RATE);
    };
    push(video_.get(), image.pixels.data(), image.bytes(), time_of(number),
         time_of(number + 1) - time_of(number));
}

void VideoPipeline::push_sound(const Tone &tone, int64_t first, int64_t count)
{
    const std::vector<int16_t> samples = tone.samples(first, count);
    const auto time_of = [](int64_t sample) {
        return gst_util_uint64_scale(static_cast<guint64>(sample), GST_SECOND, Tone::RATE);
    };
    push(audio_.get(), samples.data(), samples.size() * sizeof samples[0], time_of(first),
         time_of(first + count) - time_of(first));
}

void VideoPipeline::wait_for_room()
{
    wait_on_bus(0);
    // A blocking push would never return when the disk is full and the pipeline stands.
    while (gst_app_src_get_current_level_bytes(video_.get()) >= MOST_QUEUED_FRAMES * frame_size_)
        wait_on_bus(WAIT_STEP / 10);
}

void VideoPipeline::finish()
{
    gst_app_src_end_of_stream(video_.get());
    gst_app_src_end_of_stream(audio_.get());
    while (!wait_on_bus(WAIT_STEP)) {
    }
}

bool VideoPipeline::wait_on_bus(GstClockTime time)
{
    throw_if_cancelled();
    const auto kinds = static_cast<GstMessageType>(GST_MESSAGE_ERROR | GST_MESSAGE_EOS);
    const MessagePtr message(gst_bus_timed_pop_filtered(bus_.get(), time, kinds));
    if (!message)
        return false;
    if (GST_MESSAGE_TYPE(message.get()) == GST_MESSAGE_EOS)
        return true;
    GError *raw_error = nullptr;
    gst_message_parse_error(message.get(), &raw_error, nullptr);
    const ErrorPtr error(raw_error);
    throw std::runtime_error(error ? error->message : "The encoder failed.");
}

bool ends_in(const std::string &text, const std::string &end)
{
    return text.size() >= end.size() &&
           text.compare(text.size() - end.size(), end.size(), end) == 0;
}

} // namespace

void write_video(const Item &item, const std::string &path, double seconds,
                 const std::function<void(double)> &progress)
{
    const bool mp4 = ends_in(item.name, ".mp4");
    check_elements(mp4);
    VideoPipeline pipeline(item, mp4 ? MP4_RECIPE : MATROSKA_RECIPE, path);
    Scene scene(item, seconds);
    const Tone tone(item.pitch, seconds);
    const auto frames = static_cast<int64_t>(std::lround(seconds * FRAME_RATE));
    constexpr int64_t SAMPLES_PER_FRAME = Tone::RATE / FRAME_RATE;
    for (int64_t frame = 0; frame < frames; ++frame) {
        // Sound first: the muxer must never wait for it while the pictures wait for the muxer.
        pipeline.push_sound(tone, frame * SAMPLES_PER_FRAME, SAMPLES_PER_FRAME);
        pipeline.push_frame(scene.at(static_cast<double>(frame) / FRAME_RATE), frame);
        progress(static_cast<double>(frame + 1) / static_cast<double>(frames));
    }
    pipeline.finish();
}

} // namespace sample
