/*
 * Prints what converting a frame costs, in milliseconds of one thread's processor time, beside
 * GStreamer's converter and libswscale, which are given the same frames, in turns. A line for each
 * kind of frame: its name, this code's time, GStreamer's, libswscale's.
 */
#include <algorithm>
#include <cstdio>
#include <ctime>
#include <functional>
#include <vector>

#include <gst/video/video.h>

extern "C" {
#include <libswscale/swscale.h>
}

#include "colour/colour_converter.h"
#include "colour/enlarger.h"
#include "colour/plane_scaler.h"

namespace {

using namespace platform;

constexpr int ROUNDS = 15;

double processor_ms()
{
    timespec time = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) * 1e-6;
}

struct Kind {
    const char *name;
    YuvFormat format;
    Size from;
    Size to;
    Transfer transfer;
    const rows::Version &version = ColourConverter::best_version();
};

/** A frame that is different everywhere, in memory of GStreamer's. */
struct Frame {
    GstVideoInfo info;
    GstVideoFrame mapped;

    Frame(GstVideoFormat format, const Size &size)
    {
        gst_video_info_set_format(&info, format, static_cast<guint>(size.width),
                                  static_cast<guint>(size.height));
        GstBuffer *buffer = gst_buffer_new_allocate(nullptr, info.size, nullptr);
        gst_video_frame_map(&mapped, &info, buffer,
                            static_cast<GstMapFlags>(GST_MAP_READ | GST_MAP_WRITE));
        gst_buffer_unref(buffer);
    }
    ~Frame() { gst_video_frame_unmap(&mapped); }
    Frame(const Frame &) = delete;
    Frame &operator=(const Frame &) = delete;

    void fill(int depth, int shift)
    {
        unsigned noise = 1;
        for (guint plane = 0; plane < GST_VIDEO_FRAME_N_PLANES(&mapped); ++plane) {
            auto *bytes = static_cast<uint8_t *>(GST_VIDEO_FRAME_PLANE_DATA(&mapped, plane));
            const gsize end =
                plane + 1 < GST_VIDEO_FRAME_N_PLANES(&mapped) ? info.offset[plane + 1] : info.size;
            for (gsize i = 0; i<end - info.offset[plane]; i += depth> 8 ? 2 : 1) {
                noise = noise * 1664525 + 1013904223;
                const unsigned value = noise >> (32 - depth) << shift;
                bytes[i] = static_cast<uint8_t>(value);
                if (depth > 8)
                    bytes[i + 1] = static_cast<uint8_t>(value >> 8);
            }
        }
    }
};

void measure(const Kind &kind)
{
    struct Names {
        GstVideoFormat gstreamer;
        AVPixelFormat libav;
    };
    const Names names = std::vector<Names>{
        {GST_VIDEO_FORMAT_I420, AV_PIX_FMT_YUV420P},
        {GST_VIDEO_FORMAT_NV12, AV_PIX_FMT_NV12},
        {GST_VIDEO_FORMAT_I420_10LE, AV_PIX_FMT_YUV420P10LE},
        {GST_VIDEO_FORMAT_P010_10LE, AV_PIX_FMT_P010LE}}[static_cast<size_t>(kind.format)];
    Frame source(names.gstreamer, kind.from);
    source.fill(depth_of(kind.format), kind.format == YuvFormat::P010 ? 6 : 0);
    Frame target(GST_VIDEO_FORMAT_BGRx, kind.to);
    auto *pixels = static_cast<uint8_t *>(GST_VIDEO_FRAME_PLANE_DATA(&target.mapped, 0));

    YuvImage image = {kind.format, kind.from, {}, {}};
    for (guint i = 0; i < GST_VIDEO_FRAME_N_PLANES(&source.mapped); ++i) {
        image.planes[i] =
            static_cast<const uint8_t *>(GST_VIDEO_FRAME_PLANE_DATA(&source.mapped, i));
        image.strides[i] = GST_VIDEO_FRAME_PLANE_STRIDE(&source.mapped, i);
    }
    ColourSpace space;
    space.transfer = kind.transfer;
    if (kind.transfer != Transfer::SDR)
        space.primaries = BT2020_PRIMARIES;
    const ColourConverter converter(space, depth_of(kind.format), REFERENCE_WHITE, kind.version);
    const Size own = converter.size_for(kind.from, kind.to);
    std::vector<uint32_t> small(static_cast<size_t>(own.area()));
    PlaneScaler scaler;

    GstStructure *options =
        gst_structure_new("options", GST_VIDEO_CONVERTER_OPT_THREADS, G_TYPE_UINT, 1u,
                          GST_VIDEO_CONVERTER_OPT_RESAMPLER_METHOD, GST_TYPE_VIDEO_RESAMPLER_METHOD,
                          GST_VIDEO_RESAMPLER_METHOD_LINEAR, GST_VIDEO_CONVERTER_OPT_RESAMPLER_TAPS,
                          G_TYPE_UINT, 2u, nullptr);
    GstVideoConverter *gstreamer = gst_video_converter_new(&source.info, &target.info, options);
    SwsContext *swscale =
        sws_getContext(kind.from.width, kind.from.height, names.libav, kind.to.width,
                       kind.to.height, AV_PIX_FMT_BGR0, SWS_BILINEAR, nullptr, nullptr, nullptr);

    const std::function<void()> ways[] = {
        [&] {
            auto *to = reinterpret_cast<uint32_t *>(pixels);
            const bool larger = own != kind.to;
            converter.convert(scaler.scaled(image, own), 0, own.height, larger ? small.data() : to,
                              own.width);
            if (larger)
                enlarge({small.data(), own.width, own}, {to, kind.to.width, kind.to}, 0,
                        kind.to.height);
        },
        [&] { gst_video_converter_frame(gstreamer, &source.mapped, &target.mapped); },
        [&] {
            const uint8_t *const planes[] = {image.planes[0], image.planes[1], image.planes[2]};
            const int strides[] = {static_cast<int>(image.strides[0]),
                                   static_cast<int>(image.strides[1]),
                                   static_cast<int>(image.strides[2])};
            uint8_t *const to[] = {pixels};
            const int to_stride[] = {kind.to.width * 4};
            sws_scale(swscale, planes, strides, 0, kind.from.height, to, to_stride);
        }};
    double best[] = {1e9, 1e9, 1e9};
    for (int round = 0; round < ROUNDS; ++round) {
        for (size_t way = 0; way < std::size(ways); ++way) {
            const double start = processor_ms();
            ways[way]();
            best[way] = std::min(best[way], processor_ms() - start);
        }
    }
    std::printf("%s %.2f %.2f %.2f\n", kind.name, best[0], best[1], best[2]);
    sws_freeContext(swscale);
    gst_video_converter_free(gstreamer);
}

} // namespace

int main(int argc, char *argv[])
{
    gst_init(&argc, &argv);
    constexpr Size HD = {1920, 1080};
    constexpr Size UHD = {3840, 2160};
    const Kind kinds[] = {
        {"i420-1080p", YuvFormat::I420, HD, HD, Transfer::SDR},
        {"nv12-1080p", YuvFormat::NV12, HD, HD, Transfer::SDR},
        {"i420_10-1080p", YuvFormat::I420_10, HD, HD, Transfer::SDR},
        {"i420_10-1080p-base", YuvFormat::I420_10, HD, HD, Transfer::SDR, rows::BASE},
        {"p010-1080p", YuvFormat::P010, HD, HD, Transfer::SDR},
        {"i420-2160p-to-1080p", YuvFormat::I420, UHD, HD, Transfer::SDR},
        {"nv12-2160p-to-1080p", YuvFormat::NV12, UHD, HD, Transfer::SDR},
        {"i420_10-2160p-to-1080p", YuvFormat::I420_10, UHD, HD, Transfer::SDR},
        {"p010-2160p-to-1080p", YuvFormat::P010, UHD, HD, Transfer::SDR},
        {"i420-1080p-to-2160p", YuvFormat::I420, HD, UHD, Transfer::SDR},
        {"pq-1080p", YuvFormat::I420_10, HD, HD, Transfer::PQ},
        {"pq-1080p-base", YuvFormat::I420_10, HD, HD, Transfer::PQ, rows::BASE},
        {"hlg-1080p", YuvFormat::I420_10, HD, HD, Transfer::HLG},
        {"hlg-1080p-base", YuvFormat::I420_10, HD, HD, Transfer::HLG, rows::BASE},
        {"pq-2160p-to-1080p", YuvFormat::I420_10, UHD, HD, Transfer::PQ},
        {"hlg-2160p-to-1080p", YuvFormat::I420_10, UHD, HD, Transfer::HLG},
        {"pq-1080p-to-2160p", YuvFormat::I420_10, HD, UHD, Transfer::PQ},
    };
    for (const Kind &kind : kinds)
        measure(kind);
    return 0;
}
