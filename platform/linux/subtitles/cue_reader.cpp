#include "subtitles/cue_reader.h"

#include <algorithm>
#include <cstdarg>
#include <cstring>
#include <memory>
#include <mutex>
#include <queue>
#include <utility>

#include "log/platform_log.h"
#include "subtitles/ass_text.h"
#include "subtitles/libav.h"
#include "subtitles/native_formats.h"

namespace platform {

namespace {

constexpr int64_t DEFAULT_DURATION_MS = 5000; // of a last text without an end
constexpr int64_t LATEST_MS = int64_t{48} * 3600 * 1000;

// A demo folder is filled by strangers: these bounds keep a file from stalling the picture.
constexpr size_t MOST_EVENTS = 100000;
constexpr size_t LONGEST_PLAIN = size_t{4} * 1024;
constexpr size_t LONGEST_STYLED = size_t{64} * 1024;
constexpr size_t MOST_AT_ONCE_PLAIN = 8;
constexpr size_t MOST_AT_ONCE_STYLED = 256;

// libass goes through all that is up for every frame, and the worst of tags cost it some five
// microseconds a byte: this much is a third of a second, and a frame being drawn cannot be stopped.
constexpr size_t MOST_BYTES_AT_ONCE = LONGEST_STYLED;

// Our own, because the converters' style is small and thin on a large screen; the painter adapts
// sizes to the picture. The coordinates are those in which SubRip's positions are counted.
constexpr char PLAIN_HEADER[] =
    "[Script Info]\n"
    "ScriptType: v4.00+\n"
    "PlayResX: 384\n"
    "PlayResY: 288\n"
    "WrapStyle: 0\n"
    "ScaledBorderAndShadow: yes\n"
    "[V4+ Styles]\n"
    "Format: Name, Fontname, Fontsize, PrimaryColour, SecondaryColour, OutlineColour, BackColour, "
    "Bold, Italic, Underline, StrikeOut, ScaleX, ScaleY, Spacing, Angle, BorderStyle, Outline, "
    "Shadow, Alignment, MarginL, MarginR, MarginV, Encoding\n"
    // The encoding -1 lets each text's own letters decide where its lines begin.
    "Style: Default,sans-serif,19,&H00FFFFFF,&H00FFFFFF,&H00000000,&H80000000,0,0,0,0,100,100,0,0,"
    "1,1.2,0.6,2,24,24,18,-1\n"
    "[Events]\n"
    "Format: Layer, Start, End, Style, Name, MarginL, MarginR, MarginV, Effect, Text\n";

/** Lines that libav may still log in this thread; damaged files have a complaint for every line. */
thread_local int libav_lines_left = 0;
constexpr int LIBAV_LINES_PER_FILE = 3;

void route_libav_log(void *source, int level, const char *format, va_list arguments)
{
    if (level > AV_LOG_WARNING || libav_lines_left <= 0)
        return;
    --libav_lines_left;
    char line[512];
    int print_prefix = 1;
    libav().av_log_format_line2(source, level, format, arguments, line, sizeof line, &print_prefix);
    line[std::strcspn(line, "\n")] = '\0';
    PLATFORM_LOGD("subtitles", "%s", line);
}

/** The file's text as a stream that libavformat can read. */
class MemoryStream {
  public:
    MemoryStream(const std::string &text, const StopRequest &stop) : text_(text), stop_(stop)
    {
        constexpr int SIZE = 32 * 1024;
        auto *buffer = static_cast<unsigned char *>(libav().av_malloc(SIZE));
        context_ = buffer ? libav().avio_alloc_context(buffer, SIZE, 0, this, &read, nullptr, &seek)
                          : nullptr;
        if (!context_)
            libav().av_free(buffer);
    }
    ~MemoryStream()
    {
        if (context_)
            libav().av_freep(&context_->buffer);
        libav().avio_context_free(&context_);
    }
    MemoryStream(const MemoryStream &) = delete;
    MemoryStream &operator=(const MemoryStream &) = delete;
    AVIOContext *context() { return context_; }

  private:
    static int read(void *self, uint8_t *buffer, int size)
    {
        auto *stream = static_cast<MemoryStream *>(self);
        if (is_stopped(stream->stop_))
            return AVERROR_EXIT;
        const size_t left = stream->text_.size() - stream->position_;
        const size_t count = std::min(left, static_cast<size_t>(size));
        if (count == 0)
            return AVERROR_EOF;
        std::memcpy(buffer, stream->text_.data() + stream->position_, count);
        stream->position_ += count;
        return static_cast<int>(count);
    }

    static int64_t seek(void *self, int64_t offset, int whence)
    {
        auto *stream = static_cast<MemoryStream *>(self);
        const auto size = static_cast<int64_t>(stream->text_.size());
        if (whence == AVSEEK_SIZE)
            return size;
        const int64_t base = whence == SEEK_CUR   ? static_cast<int64_t>(stream->position_)
                             : whence == SEEK_END ? size
                                                  : 0;
        if (base + offset < 0 || base + offset > size)
            return AVERROR(EINVAL);
        stream->position_ = static_cast<size_t>(base + offset);
        return base + offset;
    }

    const std::string &text_;
    const StopRequest &stop_;
    size_t position_ = 0;
    AVIOContext *context_ = nullptr;
};

struct FormatCloser {
    void operator()(AVFormatContext *context) const { libav().avformat_close_input(&context); }
};
struct CodecCloser {
    void operator()(AVCodecContext *context) const { libav().avcodec_free_context(&context); }
};
struct PacketFreer {
    void operator()(AVPacket *packet) const { libav().av_packet_free(&packet); }
};
using FormatPtr = std::unique_ptr<AVFormatContext, FormatCloser>;
using CodecPtr = std::unique_ptr<AVCodecContext, CodecCloser>;
using PacketPtr = std::unique_ptr<AVPacket, PacketFreer>;

/** The readers worth trying, the likely ones first: content, then extension, then all of them. */
std::vector<std::string> candidates(const std::string &text, const std::string &extension)
{
    static const std::vector<std::string> known = {
        "ass",    "srt",   "sami",    "microdvd", "mpl2", "subviewer", "subviewer1",
        "webvtt", "mpsub", "jacosub", "pjs",      "stl",  "aqtitle",   "vplayer"};
    static const struct {
        const char *extension;
        std::vector<std::string> readers;
    } by_extension[] = {
        {"smi", {"sami"}},      {"sami", {"sami"}},
        {"srt", {"srt"}},       {"sub", {"microdvd", "subviewer", "subviewer1", "mpsub"}},
        {"ttxt", {"ttxt"}},     {"txt", {"mpl2", "vplayer", "microdvd", "powerdivx"}},
        {"ssa", {"ass"}},       {"ass", {"ass"}},
        {"psb", {"powerdivx"}}, {"mpl", {"mpl2", "microdvd"}}};

    std::vector<std::string> result;
    const auto add = [&result](const std::string &name) {
        if (std::find(result.begin(), result.end(), name) == result.end())
            result.push_back(name);
    };

    std::string start = text.substr(0, size_t{32} * 1024);
    const auto length = static_cast<int>(start.size());
    start.resize(start.size() + AVPROBE_PADDING_SIZE);
    AVProbeData probe = {};
    probe.filename = "";
    probe.buf = reinterpret_cast<unsigned char *>(start.data());
    probe.buf_size = length;
    int score = 0;
    const AVInputFormat *probed = libav().av_probe_input_format3(&probe, 1, &score);
    if (probed && std::find(known.begin(), known.end(), probed->name) != known.end())
        add(probed->name);
    for (const auto &entry : by_extension) {
        if (extension == entry.extension)
            std::for_each(entry.readers.begin(), entry.readers.end(), add);
    }
    std::for_each(known.begin(), known.end(), add);
    add("powerdivx");
    add("ttxt");
    return result;
}

FormatPtr open_format(MemoryStream &stream, const std::string &reader)
{
    const AVInputFormat *format = libav().av_find_input_format(reader.c_str());
    AVFormatContext *context = libav().avformat_alloc_context();
    if (!format || !context || !stream.context()) {
        libav().avformat_free_context(context);
        return nullptr;
    }
    context->pb = stream.context();
    AVDictionary *options = nullptr;
    // Frame numbers of a file that does not tell its rate count at the rate of television.
    if (reader == "microdvd")
        libav().av_dict_set(&options, "subfps", "25", 0);
    const int status = libav().avformat_open_input(&context, "", format, &options);
    libav().av_dict_free(&options);
    return FormatPtr(status < 0 ? nullptr : context); // a failed opening has freed the context
}

CodecPtr open_codec(const AVStream &stream)
{
    const AVCodec *codec = libav().avcodec_find_decoder(stream.codecpar->codec_id);
    CodecPtr context(codec ? libav().avcodec_alloc_context3(codec) : nullptr);
    if (!context || libav().avcodec_parameters_to_context(context.get(), stream.codecpar) < 0)
        return nullptr;
    context->pkt_timebase = stream.time_base;
    if (libav().avcodec_open2(context.get(), codec, nullptr) < 0)
        return nullptr;
    return context;
}

void decode_packet(AVCodecContext *codec, AVPacket *packet, const AVStream &stream,
                   AssScript &script)
{
    AVSubtitle subtitle = {};
    int got = 0;
    if (libav().avcodec_decode_subtitle2(codec, &subtitle, &got, packet) < 0 || !got)
        return;
    const AVRational milliseconds = {1, 1000};
    AssEvent event;
    event.start_ms = libav().av_rescale_q(packet->pts, stream.time_base, milliseconds);
    event.duration_ms = packet->duration < 0 ? -1
                                             : libav().av_rescale_q(packet->duration,
                                                                    stream.time_base, milliseconds);
    for (unsigned i = 0; i < subtitle.num_rects; ++i) {
        const AVSubtitleRect *rect = subtitle.rects[i];
        if (rect->type != SUBTITLE_ASS || !rect->ass)
            continue;
        event.chunk = rect->ass;
        script.events.push_back(event);
    }
    libav().avsubtitle_free(&subtitle);
}

AssScript read_with_libav(const std::string &text, const std::string &reader,
                          const StopRequest &stop)
{
    AssScript script;
    script.format = reader;
    const std::string filtered = reader == "sami" ? first_sami_language(text) : std::string();
    MemoryStream memory(filtered.empty() ? text : filtered, stop);
    const FormatPtr format = open_format(memory, reader);
    if (!format || format->nb_streams == 0 ||
        format->streams[0]->codecpar->codec_type != AVMEDIA_TYPE_SUBTITLE)
        return script;
    const AVStream &stream = *format->streams[0];
    const CodecPtr codec = open_codec(stream);
    const PacketPtr packet(libav().av_packet_alloc());
    if (!codec || !packet)
        return script;

    script.own_styles = reader == "ass";
    if (script.own_styles && codec->subtitle_header)
        script.header.assign(reinterpret_cast<const char *>(codec->subtitle_header),
                             static_cast<size_t>(codec->subtitle_header_size));
    const auto longest = static_cast<int>(script.own_styles ? LONGEST_STYLED : LONGEST_PLAIN);
    while (script.events.size() < MOST_EVENTS && !is_stopped(stop) &&
           libav().av_read_frame(format.get(), packet.get()) >= 0) {
        if (packet->size <= longest && packet->pts != AV_NOPTS_VALUE)
            decode_packet(codec.get(), packet.get(), stream, script);
        libav().av_packet_unref(packet.get());
    }
    return script;
}

AssScript read_natively(const std::string &text, const std::string &reader)
{
    AssScript script;
    script.format = reader;
    for (const PlainCue &cue : reader == "ttxt" ? read_ttxt(text) : read_powerdivx(text)) {
        if (script.events.size() >= MOST_EVENTS)
            break;
        if (cue.text.size() <= LONGEST_PLAIN)
            script.events.push_back({cue.start_ms, cue.duration_ms,
                                     std::to_string(script.events.size()) + ",0,Default,,0,0,0,," +
                                         plain_to_ass(cue.text)});
    }
    return script;
}

/** Gives texts without an end one: the start of the next, or a time to read the last. */
void close_open_ends(std::vector<AssEvent> &events)
{
    for (size_t i = 0; i < events.size(); ++i) {
        if (events[i].duration_ms >= 0)
            continue;
        const bool last = i + 1 == events.size();
        events[i].duration_ms =
            last ? DEFAULT_DURATION_MS : events[i + 1].start_ms - events[i].start_ms;
    }
}

bool is_shown(const AssEvent &event, bool own_styles)
{
    if (event.start_ms < 0 || event.start_ms > LATEST_MS || event.duration_ms <= 0 ||
        event.duration_ms > LATEST_MS)
        return false;
    // A drawing is worth showing too, but only a script with styles can hold one.
    return own_styles ? !event.text().empty() : !ass_to_plain(event.text()).empty();
}

/** Drops events that would come on top of too many others at the same time. */
void thin_out(AssScript &script)
{
    const size_t most = script.own_styles ? MOST_AT_ONCE_STYLED : MOST_AT_ONCE_PLAIN;
    using EndAndSize = std::pair<int64_t, size_t>;
    std::priority_queue<EndAndSize, std::vector<EndAndSize>, std::greater<>> up;
    size_t bytes = 0; // of all that are up
    const auto is_too_many = [&](const AssEvent &event) {
        while (!up.empty() && up.top().first <= event.start_ms) {
            bytes -= up.top().second;
            up.pop();
        }
        const size_t size = event.chunk.size();
        if (up.size() >= most || (!up.empty() && bytes + size > MOST_BYTES_AT_ONCE))
            return true;
        up.emplace(event.start_ms + event.duration_ms, size);
        bytes += size;
        return false;
    };
    std::vector<AssEvent> kept;
    for (AssEvent &event : script.events) {
        if (!is_too_many(event))
            kept.push_back(std::move(event));
    }
    script.events = std::move(kept);
}

void tidy(AssScript &script)
{
    std::vector<AssEvent> &events = script.events;
    std::stable_sort(events.begin(), events.end(),
                     [](const AssEvent &a, const AssEvent &b) { return a.start_ms < b.start_ms; });
    close_open_ends(events);
    const bool own_styles = script.own_styles;
    events.erase(
        std::remove_if(events.begin(), events.end(),
                       [own_styles](const AssEvent &e) { return !is_shown(e, own_styles); }),
        events.end());
    thin_out(script);
    if (!own_styles)
        script.header = PLAIN_HEADER;
}

/** The place where the given field of a chunk begins, or its end. */
size_t field_place(const std::string &chunk, int field)
{
    size_t at = 0;
    for (; field > 0; --field) {
        const size_t comma = chunk.find(',', at);
        if (comma == std::string::npos)
            return chunk.size();
        at = comma + 1;
    }
    return at;
}

} // namespace

std::string AssEvent::text() const
{
    return chunk.substr(field_place(chunk, 8));
}

bool AssEvent::has_effect() const
{
    const size_t at = field_place(chunk, 7);
    return at < chunk.size() && chunk[at] != ',';
}

std::optional<AssScript> read_script(const std::string &text, const std::string &extension,
                                     std::string &error, const StopRequest &stop)
{
    if (!libav().error.empty()) {
        error = "There is nothing to read it with: " + libav().error + ".";
        return std::nullopt;
    }
    static std::once_flag log_routed;
    std::call_once(log_routed, [] { libav().av_log_set_callback(&route_libav_log); });
    libav_lines_left = LIBAV_LINES_PER_FILE;

    for (const std::string &reader : candidates(text, extension)) {
        const bool native = reader == "ttxt" || reader == "powerdivx";
        AssScript script =
            native ? read_natively(text, reader) : read_with_libav(text, reader, stop);
        if (is_stopped(stop)) {
            error = LOAD_STOPPED;
            return std::nullopt;
        }
        tidy(script);
        if (!script.events.empty())
            return script;
    }
    error = "It holds no subtitle text in a known format.";
    return std::nullopt;
}

} // namespace platform
