/** Looking into media files: what they hold, and what is seen and heard in them. */
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

/** Red, green, blue. */
using Rgb = std::array<int, 3>;

struct Frame {
    int width = 0;
    int height = 0;
    std::vector<uint8_t> bytes; ///< BGRx

    /** The colour at a place given in shares of the width and the height. */
    Rgb at(double x, double y) const;
    /** The frame turned clockwise by a quarter. */
    Frame turned_clockwise() const;
};

struct VideoFacts {
    int width = 0;
    int height = 0;
    double frame_rate = 0;
    double seconds = 0;
    std::string container;
    std::string video_codec;
    std::string audio_codec;
    int audio_channels = 0;
};

/** What GStreamer's discoverer says; all empty when it finds no video. */
VideoFacts discover(const std::string &path);

/** All frames of a video. */
std::vector<Frame> decode_video(const std::string &path);

/** The first channel of a video's sound at 48000 samples a second, -1 to 1. */
std::vector<double> decode_sound(const std::string &path);

/** A JPEG file as it is stored, without regard to EXIF; empty when it is none. */
Frame decode_jpeg(const std::string &content);

/** The EXIF orientation, 0 when the file has none. */
int exif_orientation(const std::string &content);

/** The largest difference between two colours' components. */
int difference(const Rgb &a, const Rgb &b);
