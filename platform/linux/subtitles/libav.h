/**
 * The functions of libavformat, libavcodec and libavutil that read subtitles. The program is not
 * linked with these libraries: some ninety others come with them, and the loader would take half as
 * long again before the program begins.
 */
#pragma once

#include <string>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

// Each is called as `libav().name(...)`.
#define LIBAV_UTIL_FUNCTIONS(of)                                                                   \
    of(av_dict_free) of(av_dict_set) of(av_free) of(av_freep) of(av_log_format_line2)              \
        of(av_log_set_callback) of(av_malloc) of(av_rescale_q)
#define LIBAV_CODEC_FUNCTIONS(of)                                                                  \
    of(av_packet_alloc) of(av_packet_free) of(av_packet_unref) of(avcodec_alloc_context3)          \
        of(avcodec_decode_subtitle2) of(avcodec_find_decoder) of(avcodec_free_context)             \
            of(avcodec_open2) of(avcodec_parameters_to_context) of(avsubtitle_free)
#define LIBAV_FORMAT_FUNCTIONS(of)                                                                 \
    of(av_find_input_format) of(av_probe_input_format3) of(av_read_frame)                          \
        of(avformat_alloc_context) of(avformat_close_input) of(avformat_free_context)              \
            of(avformat_open_input) of(avio_alloc_context) of(avio_context_free)

namespace platform {

/** The kind of pointer that leads to a function of the libraries. */
template <auto function> using LibavPointer = decltype(function);

struct Libav {
#define LIBAV_MEMBER(name) LibavPointer<&::name> name;
    LIBAV_UTIL_FUNCTIONS(LIBAV_MEMBER)
    LIBAV_CODEC_FUNCTIONS(LIBAV_MEMBER)
    LIBAV_FORMAT_FUNCTIONS(LIBAV_MEMBER)
#undef LIBAV_MEMBER
    std::string error; ///< why a library or a function is missing; empty when all are there
};

/** Loads the libraries at the first call, which takes some tens of milliseconds. Any thread. */
const Libav &libav();

} // namespace platform
