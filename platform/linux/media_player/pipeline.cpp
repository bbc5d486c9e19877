#include "media_player/pipeline.h"

#include <algorithm>
#include <cstring>
#include <optional>

#include <gst/pbutils/pbutils.h>

#include "base/worker_thread.h"
#include "log/platform_log.h"
#include "media_player/deinterlacer.h"
#include "media_player/media_formats.h"
#include "media_player/plane_sink.h"

namespace platform {
namespace {

// The flags of playbin; their type is private to its plugin.
constexpr guint FLAG_VIDEO = 1 << 0;
constexpr guint FLAG_AUDIO = 1 << 1;
constexpr guint FLAG_NATIVE_VIDEO = 1 << 6;

// Backwards play keeps the frames from one key frame to the next decoded.
constexpr int64_t BACKWARDS_MEMORY_LIMIT = int64_t{192} * 1024 * 1024;

// Readers of MPEG streams flush everything, then refuse or skip the beginning, and say they agree.
const char *const READERS_WITH_ROUNDS[] = {"qtdemux",  "matroskademux", "avidemux",
                                           "flvdemux", "oggdemux",      "asfdemux"};

// Other readers refuse backwards play, or go on forward and say nothing.
const char *const READERS_BACKWARDS[] = {"qtdemux", "matroskademux"};

template <size_t count> bool is_one_of(const std::string &name, const char *const (&names)[count])
{
    return std::find(std::begin(names), std::end(names), name) != std::end(names);
}

// Messages of older seeks than this have long been handled.
constexpr size_t REMEMBERED_SEEKS = 16;

ElementPtr make_video_end(const std::shared_ptr<FrameOutput> &output,
                          std::function<void()> on_fields_halved)
{
    ElementPtr bin(GST_ELEMENT(gst_object_ref_sink(gst_bin_new("picture"))));
    const ElementPtr first = make_deinterlacer(output->field_pace(), std::move(on_fields_halved));
    const ElementPtr sink = make_plane_sink(output);
    gst_bin_add_many(GST_BIN(bin.get()), first.get(), sink.get(), nullptr);
    gst_element_link(first.get(), sink.get());
    const PadPtr pad(gst_element_get_static_pad(first.get(), "sink"));
    gst_pad_add_probe(
        pad.get(), GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM,
        [](GstPad *entry, GstPadProbeInfo *info, gpointer shown_by) {
            static_cast<FrameOutput *>(shown_by)->facts().on_event(entry, info);
            return GST_PAD_PROBE_OK;
        },
        output.get(), nullptr); // the sink keeps it
    gst_element_add_pad(bin.get(), gst_ghost_pad_new("sink", pad.get()));
    return bin;
}

/** What kind of thing a track holds: "video", "audio" and so on; of nothing, nothing. */
std::string kind_of(const GstCaps *caps)
{
    if (!caps || gst_caps_is_empty(caps))
        return {};
    const std::string media = gst_structure_get_name(gst_caps_get_structure(caps, 0));
    return media.substr(0, media.find('/'));
}

gboolean is_no_sound(GstElement *, GstPad *, GstCaps *caps, gpointer)
{
    return kind_of(caps) != "audio";
}

// Sound that nobody is to hear stays as it is coded: a decoder that can make nothing of it would
// keep the picture from coming.
void leave_sound_coded(GstBin *, GstBin *, GstElement *element, gpointer)
{
    const GstElementFactory *factory = gst_element_get_factory(element);
    if (factory && std::strcmp(GST_OBJECT_NAME(factory), "decodebin") == 0)
        g_signal_connect(element, "autoplug-continue", G_CALLBACK(is_no_sound), nullptr);
}

/** What a message says that nothing reads; null when it says nothing. */
const GstCaps *unread_caps(GstMessage *message)
{
    const GValue *detail = gst_structure_get_value(gst_message_get_structure(message), "detail");
    return detail && GST_VALUE_HOLDS_CAPS(detail) ? gst_value_get_caps(detail) : nullptr;
}

// A film does not need its embedded subtitles and whatever else lies in it. Whatever nobody has a
// name for is in the way of the picture.
std::optional<Track> track_of(const GstCaps *caps)
{
    const std::string kind = kind_of(caps);
    if (kind == "audio")
        return Track::Sound;
    const bool picture = kind.empty() || kind == "video" || kind == "image";
    return picture ? std::optional(Track::Picture) : std::nullopt;
}

// A probe behind the demuxer would miss some events: decodebin hands those that stick to a pad
// straight to the next element.
void add_probe(GstElement *element, const char *pad_name, GstPadProbeType type,
               GstPadProbeCallback probe, gpointer data)
{
    if (const PadPtr pad{gst_element_get_static_pad(element, pad_name)})
        gst_pad_add_probe(pad.get(), type, probe, data, nullptr);
}

std::string name_of(const GstCaps *caps)
{
    const CharsPtr description(gst_pb_utils_get_codec_description(caps));
    return description ? description.get()
                       : gst_structure_get_name(gst_caps_get_structure(caps, 0));
}

std::string missing_decoder(GstMessage *message)
{
    const CharsPtr description(gst_missing_plugin_message_get_description(message));
    return description ? description.get() : "something nobody has a name for";
}

} // namespace

Pipeline::Pipeline(const std::string &uri, const std::shared_ptr<FrameOutput> &output,
                   const AudioSinkMaker &make_audio_sink, std::chrono::milliseconds patience,
                   PipelineEvents events)
    : events_(std::move(events)), patience_(patience), playbin_(make_element("playbin")),
      output_(output)
{
    if (!playbin_)
        return;
    const ElementPtr video = make_video_end(output, events_.fields_halved);
    // Without a sink of ours playbin would open a device of its choice, sound or no sound.
    const bool with_sound = static_cast<bool>(make_audio_sink);
    const ElementPtr audio = with_sound ? make_audio_sink() : make_element("fakesink");
    // An element of our own: a sound server would remember its own mute switch past our end.
    volume_ = make_element("volume");
    if (volume_) {
        add_probe(volume_.get(), "sink", GST_PAD_PROBE_TYPE_BUFFER, on_sound, this);
        sound_step_.reset(gst_element_get_static_pad(volume_.get(), "sink"));
    }
    g_object_set(playbin_.get(), "uri", uri.c_str(), "video-sink", video.get(), "flags",
                 FLAG_VIDEO | FLAG_NATIVE_VIDEO | (with_sound ? FLAG_AUDIO : 0), nullptr);
    if (audio)
        g_object_set(playbin_.get(), "audio-sink", audio.get(), nullptr);
    if (volume_)
        g_object_set(playbin_.get(), "audio-filter", volume_.get(), nullptr);
    g_signal_connect(playbin_.get(), "deep-element-added", G_CALLBACK(on_element), this);
    if (!with_sound)
        g_signal_connect(playbin_.get(), "deep-element-added", G_CALLBACK(leave_sound_coded),
                         nullptr);
    const BusPtr bus(gst_element_get_bus(playbin_.get()));
    gst_bus_set_sync_handler(bus.get(), on_message, this, nullptr);
}

Pipeline::~Pipeline()
{
    if (!playbin_)
        return;
    gst_element_set_state(playbin_.get(), GST_STATE_NULL);
    g_signal_handlers_disconnect_by_data(playbin_.get(), this);
    const BusPtr bus(gst_element_get_bus(playbin_.get()));
    gst_bus_set_sync_handler(bus.get(), nullptr, nullptr, nullptr);
}

bool Pipeline::open()
{
    return playbin_ &&
           gst_element_set_state(playbin_.get(), GST_STATE_PAUSED) != GST_STATE_CHANGE_FAILURE;
}

bool Pipeline::open_in_time()
{
    return playbin_ && ask([](GstElement *playbin) {
               return gst_element_set_state(playbin, GST_STATE_PAUSED) != GST_STATE_CHANGE_FAILURE;
           });
}

// Opening and seeking go through the elements to the disk, and wait for a decoder at work. What
// comes after one that hangs would hang as well.
bool Pipeline::ask(std::function<bool(GstElement *)> question, bool at_once)
{
    const std::shared_ptr<GstElement> playbin(GST_ELEMENT(gst_object_ref(playbin_.get())),
                                              gst_object_unref);
    const auto answer = std::make_shared<std::atomic<bool>>(false);
    const bool done = WorkerThread::run_apart(
        "file-asker",
        [question = std::move(question), playbin, answer] { *answer = question(playbin.get()); },
        patience_);
    hangs_ = !done && at_once;
    return !done || *answer;
}

void Pipeline::play()
{
    go_to(GST_STATE_PLAYING);
}

void Pipeline::hold()
{
    go_to(GST_STATE_PAUSED);
}

// A change of state waits for a seek that is still unanswered, which may be for ever.
void Pipeline::go_to(GstState state)
{
    if (!hangs_)
        ask([state](GstElement *playbin) {
            return gst_element_set_state(playbin, state) != GST_STATE_CHANGE_FAILURE;
        });
}

bool Pipeline::seek(const Seek &seek)
{
    int flags = GST_SEEK_FLAG_FLUSH;
    flags |= seek.key_frame ? GST_SEEK_FLAG_KEY_UNIT | GST_SEEK_FLAG_SNAP_BEFORE
                            : GST_SEEK_FLAG_ACCURATE;
    if (seek.in_rounds)
        flags |= GST_SEEK_FLAG_SEGMENT;
    const auto position = static_cast<gint64>(seek.position);
    // The end is said anew: backwards play has left its own where it began.
    if (seek.rate > 0)
        return send_seek(seek.rate, flags, position, GST_SEEK_TYPE_SET, -1);
    return send_seek(seek.rate, flags, 0, GST_SEEK_TYPE_SET, position);
}

bool Pipeline::next_round(double rate)
{
    return send_seek(rate, GST_SEEK_FLAG_SEGMENT, 0, GST_SEEK_TYPE_NONE, -1);
}

bool Pipeline::send_seek(double rate, int flags, gint64 start, GstSeekType stop_type, gint64 stop)
{
    if (hangs_)
        return true;
    GstEvent *event = gst_event_new_seek(rate, GST_FORMAT_TIME, static_cast<GstSeekFlags>(flags),
                                         GST_SEEK_TYPE_SET, start, stop_type, stop);
    {
        const std::lock_guard<std::mutex> lock(facts_mutex_);
        seeks_.push_front(gst_event_get_seqnum(event));
        if (seeks_.size() > REMEMBERED_SEEKS)
            seeks_.pop_back();
    }
    // Without a flush it waits for the reader to get rid of what it has read, behind slow slides.
    return ask([event](GstElement *playbin) { return gst_element_send_event(playbin, event); },
               (flags & GST_SEEK_FLAG_FLUSH) != 0);
}

// A message carries the number of the seek it follows from; some readers number by themselves.
bool Pipeline::is_stale(GstMessage *message) const
{
    const std::lock_guard<std::mutex> lock(facts_mutex_);
    const auto found = std::find(seeks_.begin(), seeks_.end(), gst_message_get_seqnum(message));
    return found != seeks_.end() && found != seeks_.begin();
}

void Pipeline::mute(bool silent)
{
    if (volume_)
        g_object_set(volume_.get(), "mute", silent ? TRUE : FALSE, nullptr);
}

bool Pipeline::reader_gave_up() const
{
    const std::lock_guard<std::mutex> lock(facts_mutex_);
    if (!reader_)
        return false;
    const PadPtr pad(gst_element_get_static_pad(reader_.get(), "sink"));
    GST_OBJECT_LOCK(reader_.get());
    const bool found_nothing = reader_->numsrcpads == 0;
    GST_OBJECT_UNLOCK(reader_.get());
    return found_nothing && pad && GST_PAD_MODE(pad.get()) == GST_PAD_MODE_PULL &&
           gst_pad_get_task_state(pad.get()) == GST_TASK_PAUSED;
}

bool Pipeline::has_picture() const
{
    int streams = 0;
    g_object_get(playbin_.get(), "n-video", &streams, nullptr);
    return streams > 0;
}

bool Pipeline::has_sound() const
{
    int streams = 0;
    g_object_get(playbin_.get(), "n-audio", &streams, nullptr);
    return streams > 0;
}

bool Pipeline::is_photo() const
{
    const std::lock_guard<std::mutex> lock(facts_mutex_);
    return photo_decoder_ && demuxer_.empty();
}

GstClockTime Pipeline::duration() const
{
    gint64 duration = 0;
    if (!gst_element_query_duration(playbin_.get(), GST_FORMAT_TIME, &duration) || duration < 0)
        return GST_CLOCK_TIME_NONE;
    return static_cast<GstClockTime>(duration);
}

GstClockTime Pipeline::position() const
{
    gint64 position = 0;
    if (gst_element_query_position(playbin_.get(), GST_FORMAT_TIME, &position) && position >= 0)
        return static_cast<GstClockTime>(position);
    return output_->position();
}

std::string Pipeline::demuxer() const
{
    const std::lock_guard<std::mutex> lock(facts_mutex_);
    return demuxer_;
}

bool Pipeline::has_one_picture() const
{
    const std::lock_guard<std::mutex> lock(facts_mutex_);
    return end_coded_ && longest_stretch_ == 1;
}

// A reader that stands at its only picture finds nothing on its way back to it.
bool Pipeline::goes_in_rounds() const
{
    return is_one_of(demuxer(), READERS_WITH_ROUNDS) && (!has_one_picture() || has_sound());
}

bool Pipeline::plays_backwards() const
{
    const std::lock_guard<std::mutex> lock(facts_mutex_);
    if (!is_one_of(demuxer_, READERS_BACKWARDS) || key_frames_ < 2)
        return false;
    const int64_t frame_bytes = static_cast<int64_t>(output_->width()) * output_->height() * 3 / 2;
    return frame_bytes * std::max(longest_key_distance_, frames_since_key_) <
           BACKWARDS_MEMORY_LIMIT;
}

// Whoever works at what has come in, or waits with it, holds this lock of his entry.
bool Pipeline::is_at_work(const PadPtr &entry)
{
    if (!entry)
        return false;
    const bool at_work = !GST_PAD_STREAM_TRYLOCK(entry.get());
    if (!at_work)
        GST_PAD_STREAM_UNLOCK(entry.get());
    return at_work;
}

Pipeline::Motion Pipeline::motion() const
{
    Motion motion;
    GstState state = GST_STATE_NULL;
    gst_element_get_state(playbin_.get(), &state, nullptr, 0);
    if (state == GST_STATE_PLAYING)
        motion.clock = gst_element_get_current_clock_time(playbin_.get());
    motion.sound = sound_pieces_;
    motion.sounding = is_at_work(sound_step_);
    const std::lock_guard<std::mutex> lock(facts_mutex_);
    motion.coded = coded_frames_;
    motion.decoding = std::any_of(picture_steps_.begin(), picture_steps_.end(), is_at_work);
    return motion;
}

void Pipeline::note_coded_frame(GstBuffer *frame)
{
    const std::lock_guard<std::mutex> lock(facts_mutex_);
    coded_frames_++;
    longest_stretch_ = std::max(longest_stretch_, ++stretch_);
    if (!GST_BUFFER_FLAG_IS_SET(frame, GST_BUFFER_FLAG_DELTA_UNIT)) {
        key_frames_++;
        frames_since_key_ = 0;
    }
    if (frames_since_key_ >= 0)
        longest_key_distance_ = std::max(longest_key_distance_, ++frames_since_key_);
}

void Pipeline::note_coded_event(GstEventType type)
{
    const std::lock_guard<std::mutex> lock(facts_mutex_);
    if (type == GST_EVENT_SEGMENT)
        stretch_ = 0;
    else if (type == GST_EVENT_SEGMENT_DONE)
        end_coded_ = true;
}

GstPadProbeReturn Pipeline::on_coded_frame(GstPad *, GstPadProbeInfo *info, gpointer self)
{
    if (GstBuffer *frame = GST_PAD_PROBE_INFO_BUFFER(info))
        static_cast<Pipeline *>(self)->note_coded_frame(frame);
    return GST_PAD_PROBE_OK;
}

GstPadProbeReturn Pipeline::on_sound(GstPad *, GstPadProbeInfo *, gpointer self)
{
    ++static_cast<Pipeline *>(self)->sound_pieces_;
    return GST_PAD_PROBE_OK;
}

GstPadProbeReturn Pipeline::on_parsed_event(GstPad *pad, GstPadProbeInfo *info, gpointer self)
{
    static_cast<Pipeline *>(self)->output_->colour_tags().on_parsed_event(pad, info);
    return GST_PAD_PROBE_OK;
}

GstPadProbeReturn Pipeline::on_decoded_event(GstPad *pad, GstPadProbeInfo *info, gpointer self)
{
    static_cast<Pipeline *>(self)->output_->facts().on_event(pad, info);
    return GST_PAD_PROBE_OK;
}

GstPadProbeReturn Pipeline::on_coded_event(GstPad *pad, GstPadProbeInfo *info, gpointer self)
{
    auto *pipeline = static_cast<Pipeline *>(self);
    pipeline->output_->colour_tags().on_coded_event(pad, info, pipeline->demuxer());
    pipeline->note_coded_event(GST_EVENT_TYPE(GST_PAD_PROBE_INFO_EVENT(info)));
    return GST_PAD_PROBE_OK;
}

void Pipeline::on_element(GstBin *, GstBin *, GstElement *element, gpointer self)
{
    const char *klass = gst_element_get_metadata(element, GST_ELEMENT_METADATA_KLASS);
    GstElementFactory *factory = gst_element_get_factory(element);
    if (!klass || !factory)
        return;
    auto *pipeline = static_cast<Pipeline *>(self);
    if (std::strstr(klass, "Demuxer")) {
        const std::lock_guard<std::mutex> lock(pipeline->facts_mutex_);
        pipeline->demuxer_ = GST_OBJECT_NAME(factory);
        pipeline->reader_.reset(GST_ELEMENT(gst_object_ref(element)));
    } else if (std::strstr(klass, "Decoder") &&
               (std::strstr(klass, "Video") || std::strstr(klass, "Image"))) {
        {
            const std::lock_guard<std::mutex> lock(pipeline->facts_mutex_);
            pipeline->photo_decoder_ = std::strstr(klass, "Image") != nullptr;
            pipeline->picture_steps_.emplace_back(gst_element_get_static_pad(element, "sink"));
        }
        add_probe(element, "sink", GST_PAD_PROBE_TYPE_BUFFER, on_coded_frame, self);
        add_probe(element, "sink", GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM, on_coded_event, self);
        add_probe(element, "src", GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM, on_decoded_event, self);
    } else if (std::strstr(klass, "Parser")) {
        if (std::strstr(klass, "Video")) {
            const std::lock_guard<std::mutex> lock(pipeline->facts_mutex_);
            pipeline->picture_steps_.emplace_back(gst_element_get_static_pad(element, "sink"));
        }
        add_probe(element, "sink", GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM, on_parsed_event, self);
    }
}

// Once a container has been opened it is about one of its tracks.
void Pipeline::on_nothing_to_read_it(GstMessage *message) const
{
    const GstCaps *caps = unread_caps(message);
    if (caps && demuxer().empty() && !is_video_format(caps))
        events_.format_refused(name_of(caps));
    else if (const std::optional<Track> track = track_of(caps))
        events_.decoder_missing(*track, missing_decoder(message));
}

GstBusSyncReply Pipeline::on_message(GstBus *, GstMessage *message, gpointer self)
{
    const auto *pipeline = static_cast<Pipeline *>(self);
    const PipelineEvents &events = pipeline->events_;
    switch (GST_MESSAGE_TYPE(message)) {
    case GST_MESSAGE_ASYNC_DONE:
        if (GST_MESSAGE_SRC(message) == GST_OBJECT(pipeline->playbin_.get()))
            events.ready();
        break;
    case GST_MESSAGE_EOS:
        if (GST_MESSAGE_SRC(message) == GST_OBJECT(pipeline->playbin_.get()))
            events.ended();
        break;
    case GST_MESSAGE_SEGMENT_DONE:
        if (GST_MESSAGE_SRC(message) == GST_OBJECT(pipeline->playbin_.get()))
            events.round_read(!pipeline->is_stale(message));
        break;
    case GST_MESSAGE_ERROR:
        events.failed(read_failure(message));
        break;
    case GST_MESSAGE_QOS:
        pipeline->output_->count_arrival();
        events.frame_dropped();
        break;
    case GST_MESSAGE_CLOCK_LOST:
        events.clock_lost();
        break;
    case GST_MESSAGE_ELEMENT:
        if (gst_is_missing_plugin_message(message))
            pipeline->on_nothing_to_read_it(message);
        break;
    default:
        break;
    }
    gst_message_unref(message);
    return GST_BUS_DROP;
}

} // namespace platform
