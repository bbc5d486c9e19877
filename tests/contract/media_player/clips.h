/**
 * Makes small videos for the tests, with GStreamer's own encoders.
 */
#pragma once

#include <string>

namespace player_test {

struct Clip {
    int width = 160;
    int height = 90;
    int frames = 60;       ///< at 30 a second
    int key_distance = 15; ///< frames from one key frame to the next
    bool sound = true;
    int pixel_width = 1; ///< pixel aspect ratio
    int pixel_height = 1;
    int turn = 0;                ///< how a player has to turn it clockwise; MP4 without sound only
    std::string format = "I420"; ///< of the pictures that go to the encoder
    std::string encoder_options; ///< beyond those of the container
    std::string filter = "identity"; ///< between pictures and encoder
};

/**
 * The picture of every clip: four quarters, from the top left clockwise red, green, blue, white.
 */
enum class Quarter { Red, Green, Blue, White };

/** Makes a clip; its container and codecs follow from the file name's extension. */
void make_clip(const std::string &path, const Clip &clip = {});

/**
 * Makes videos of other kinds.
 *
 * @param arguments of ffmpeg: what it reads, how it codes, the files
 */
void run_ffmpeg(const std::string &arguments);

/** Makes a file with a second of sound and no picture. */
void make_sound(const std::string &path);

/** Makes a JPEG file. */
void make_photo(const std::string &path);

/** Writes a file. */
void write_file(const std::string &path, const std::string &contents);

/** Reads a file. */
std::string read_file(const std::string &path);

} // namespace player_test
