/**
 * The files of the sample folder: what each one is, how large, and which colour tells it from the
 * others. Tests recognise what is on screen by these colours; colors.json holds them once more for
 * tests in other languages.
 */
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace sample {

enum class Kind { video, photo, subtitle };

/** What the landscape in the middle of a picture looks like. */
enum class Motif { hills, waves, peaks, skyline, bushes };

struct Colour {
    uint8_t red;
    uint8_t green;
    uint8_t blue;
};

struct Item {
    std::string name;
    Kind kind;
    int width = 0; ///< as the viewer sees it
    int height = 0;
    Colour colour = {};
    Motif motif = Motif::hills;
    std::string note;          ///< second line in the picture
    double pitch = 0;          ///< of a video's tone, in hertz
    bool turned = false;       ///< a photo stored lying, upright through its EXIF orientation
    std::string language = {}; ///< of a subtitle, as in the file's name
};

/** All items in the order of making. */
const std::vector<Item> &catalogue();

/** The same items small, for tests that need many of them quickly. */
Item small_version(Item item);

/** The table of colours as JSON: name to [red, green, blue]. */
std::string colours_as_json();

} // namespace sample
