#include "clips.h"

#include <cstring>
#include <fstream>
#include <map>
#include <sstream>
#include <stdexcept>

#include <gst/app/gstappsrc.h>
#include <gst/gst.h>
#include <gst/video/video.h>

namespace player_test {
namespace {

struct Format {
    std::string video; ///< encoder, with %d for the distance of key frames
    std::string audio;
    std::string mux;
};

const std::string X264 = "x264enc speed-preset=ultrafast bframes=0 key-int-max=%d ! h264parse";
const std::string AAC = "avenc_aac ! aacparse";
const std::string MP2 = "avenc_mp2 ! mpegaudioparse";

const std::map<std::string, Format> &formats()
{
    static const std::map<std::string, Format> all = {
        {"mp4", {X264, AAC, "mp4mux"}},
        {"mkv", {X264, AAC, "matroskamux"}},
        {"ts", {X264, AAC, "mpegtsmux"}},
        {"tp", {X264, AAC, "mpegtsmux"}},
        {"avi", {"avenc_mpeg4 gop-size=%d", MP2, "avimux"}},
        {"flv", {X264, AAC, "flvmux"}},
        {"ogg", {"theoraenc keyframe-force=%d", "vorbisenc", "oggmux"}},
        {"asf", {"avenc_wmv2 gop-size=%d ! identity name=late", "avenc_wmav2", "asfmux"}},
        {"wmv", {"avenc_wmv2 gop-size=%d ! identity name=late", "avenc_wmav2", "asfmux"}},
        {"mpeg",
         {"mpeg2enc format=3 max-gop-size=%d min-gop-size=%d ! mpegvideoparse", MP2, "mpegpsmux"}},
    };
    return all;
}

std::string with_number(std::string text, int number)
{
    for (size_t place; (place = text.find("%d")) != std::string::npos;)
        text.replace(place, 2, std::to_string(number));
    return text;
}

// The encoder is the first element of the line.
std::string with_options(const std::string &encoder, const std::string &options)
{
    const size_t end = encoder.find(' ');
    return encoder.substr(0, end) + " " + options + encoder.substr(end);
}

std::string extension_of(const std::string &path)
{
    return path.substr(path.rfind('.') + 1);
}

std::string raw_caps(const Clip &clip)
{
    std::ostringstream caps;
    caps << "video/x-raw,format=BGRx,framerate=30/1,width=" << clip.width
         << ",height=" << clip.height << ",pixel-aspect-ratio=" << clip.pixel_width << "/"
         << clip.pixel_height;
    return caps.str();
}

std::string description(const std::string &path, const Clip &clip)
{
    const Format &format = formats().at(extension_of(path));
    std::ostringstream text;
    text << "appsrc name=pictures format=time caps=\"" << raw_caps(clip) << "\" ! ";
    text << "videoconvert ! video/x-raw,format=" << clip.format << " ! " << clip.filter << " ! "
         << with_options(with_number(format.video, clip.key_distance), clip.encoder_options)
         << " ! queue ! mux. ";
    if (clip.sound)
        text << "audiotestsrc wave=sine volume=0.5 samplesperbuffer=1600 num-buffers="
             << clip.frames << " ! audio/x-raw,rate=48000,channels=2 ! audioconvert ! "
             << format.audio << " ! queue ! mux. ";
    text << format.mux << " name=mux ! filesink name=file";
    return text.str();
}

// Video encoders count from a thousand hours on, and the ASF muxer takes that for real.
GstPadProbeReturn count_from_zero(GstPad *, GstPadProbeInfo *info, gpointer)
{
    constexpr GstClockTime BEGINNING = 1000 * 60 * 60 * GST_SECOND;
    GstBuffer *buffer = gst_buffer_make_writable(GST_PAD_PROBE_INFO_BUFFER(info));
    if (GST_BUFFER_PTS(buffer) >= BEGINNING)
        GST_BUFFER_PTS(buffer) -= BEGINNING;
    GST_BUFFER_DTS(buffer) = GST_CLOCK_TIME_NONE;
    GST_PAD_PROBE_INFO_DATA(info) = buffer;
    return GST_PAD_PROBE_OK;
}

GstBuffer *picture(const Clip &clip, int number)
{
    const uint32_t colours[] = {0xff0000, 0x00ff00, 0xffffff, 0x0000ff};
    const size_t bytes = static_cast<size_t>(clip.width) * clip.height * 4;
    GstBuffer *buffer = gst_buffer_new_allocate(nullptr, bytes, nullptr);
    GstMapInfo map;
    gst_buffer_map(buffer, &map, GST_MAP_WRITE);
    auto *pixel = reinterpret_cast<uint32_t *>(map.data);
    for (int y = 0; y < clip.height; y++)
        for (int x = 0; x < clip.width; x++)
            *pixel++ = colours[(y * 2 / clip.height) * 2 + x * 2 / clip.width];
    gst_buffer_unmap(buffer, &map);
    GST_BUFFER_PTS(buffer) = gst_util_uint64_scale(number, GST_SECOND, 30);
    GST_BUFFER_DURATION(buffer) = GST_SECOND / 30;
    return buffer;
}

void run_to_end(GstElement *pipeline, const std::string &path)
{
    GError *error = nullptr;
    GstBus *bus = gst_element_get_bus(pipeline);
    GstMessage *message = gst_bus_timed_pop_filtered(
        bus, 30 * GST_SECOND, static_cast<GstMessageType>(GST_MESSAGE_EOS | GST_MESSAGE_ERROR));
    std::string trouble = message ? "" : "timed out";
    if (message && GST_MESSAGE_TYPE(message) == GST_MESSAGE_ERROR) {
        char *details = nullptr;
        gst_message_parse_error(message, &error, &details);
        trouble = std::string(error->message) + " " + (details ? details : "");
        g_error_free(error);
        g_free(details);
    }
    if (message)
        gst_message_unref(message);
    gst_object_unref(bus);
    gst_element_set_state(pipeline, GST_STATE_NULL);
    gst_object_unref(pipeline);
    if (!trouble.empty())
        throw std::runtime_error("cannot make " + path + ": " + trouble);
}

GstElement *launch(const std::string &text, const std::string &path)
{
    GError *error = nullptr;
    GstElement *pipeline = gst_parse_launch(text.c_str(), &error);
    if (error)
        throw std::runtime_error(error->message);
    GstElement *file = gst_bin_get_by_name(GST_BIN(pipeline), "file");
    g_object_set(file, "location", path.c_str(), nullptr);
    gst_object_unref(file);
    return pipeline;
}

void make(const std::string &text, const std::string &path)
{
    GstElement *pipeline = launch(text, path);
    gst_element_set_state(pipeline, GST_STATE_PLAYING);
    run_to_end(pipeline, path);
}

// The muxer writes no turn: it is put into the matrix of the track header.
void write_turn(const std::string &path, int degrees)
{
    constexpr size_t MATRIX_BEHIND_NAME = 44;
    const uint32_t one = 0x00010000;
    const uint32_t minus_one = 0xffff0000;
    const uint32_t quarter[] = {0, one, 0, minus_one, 0};
    const uint32_t half[] = {minus_one, 0, 0, 0, minus_one};
    std::string contents = read_file(path);
    size_t place = contents.find("tkhd");
    if (place == std::string::npos || degrees % 90 != 0 || degrees > 180)
        throw std::runtime_error("cannot turn " + path);
    place += MATRIX_BEHIND_NAME;
    for (const uint32_t value : degrees == 90 ? quarter : half)
        for (int shift = 24; shift >= 0; shift -= 8)
            contents[place++] = static_cast<char>(value >> shift);
    write_file(path, contents);
}

} // namespace

void make_clip(const std::string &path, const Clip &clip)
{
    GstElement *pipeline = launch(description(path, clip), path);
    if (GstElement *late = gst_bin_get_by_name(GST_BIN(pipeline), "late")) {
        GstPad *pad = gst_element_get_static_pad(late, "src");
        gst_pad_add_probe(pad, GST_PAD_PROBE_TYPE_BUFFER, count_from_zero, nullptr, nullptr);
        gst_object_unref(pad);
        gst_object_unref(late);
    }
    GstElement *source = gst_bin_get_by_name(GST_BIN(pipeline), "pictures");
    gst_element_set_state(pipeline, GST_STATE_PLAYING);
    for (int i = 0; i < clip.frames; i++)
        gst_app_src_push_buffer(GST_APP_SRC(source), picture(clip, i));
    gst_app_src_end_of_stream(GST_APP_SRC(source));
    gst_object_unref(source);

    run_to_end(pipeline, path);
    if (clip.turn != 0)
        write_turn(path, clip.turn);
}

void run_ffmpeg(const std::string &arguments)
{
    const std::string command = "ffmpeg -y -nostdin -loglevel error " + arguments;
    GError *trouble = nullptr;
    char *said = nullptr;
    int status = 0;
    g_spawn_command_line_sync(command.c_str(), nullptr, &said, &status, &trouble);
    const std::string complaint = trouble ? trouble->message : said ? said : "";
    g_clear_error(&trouble);
    g_free(said);
    if (!complaint.empty() || status != 0)
        throw std::runtime_error(command + "\n" + complaint);
}

void make_sound(const std::string &path)
{
    make("audiotestsrc num-buffers=43 ! vorbisenc ! oggmux ! filesink name=file", path);
}

void make_photo(const std::string &path)
{
    make("videotestsrc num-buffers=1 ! jpegenc ! filesink name=file", path);
}

void write_file(const std::string &path, const std::string &contents)
{
    std::ofstream(path, std::ios::binary) << contents;
}

std::string read_file(const std::string &path)
{
    std::ostringstream contents;
    contents << std::ifstream(path, std::ios::binary).rdbuf();
    return contents.str();
}

} // namespace player_test
