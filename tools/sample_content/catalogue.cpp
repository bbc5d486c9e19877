#include "catalogue.h"

namespace sample {

const std::vector<Item> &catalogue()
{
    static const std::vector<Item> items = {
        {"sunrise.mp4",
         Kind::video,
         1920,
         1080,
         {224, 90, 16},
         Motif::hills,
         "video, H.264 and AAC in MP4",
         261.63},
        {"sunrise_EngUS.srt", Kind::subtitle, 0, 0, {}, Motif::hills, "", 0, false, "EngUS"},
        {"sunrise_Kor.srt", Kind::subtitle, 0, 0, {}, Motif::hills, "", 0, false, "Kor"},
        {"meadow.mkv",
         Kind::video,
         1280,
         720,
         {40, 150, 56},
         Motif::bushes,
         "video, VP8 and Vorbis in Matroska",
         329.63},
        {"portrait_tower.mp4",
         Kind::video,
         1080,
         1920,
         {122, 48, 184},
         Motif::skyline,
         "video, H.264 and AAC in MP4",
         392.00},
        {"harbour.jpg", Kind::photo, 1920, 1080, {10, 90, 200}, Motif::waves, "photo, JPEG"},
        {"ridge.jpg",
         Kind::photo,
         1920,
         1080,
         {180, 0, 40},
         Motif::peaks,
         "photo, JPEG, turned by its EXIF orientation",
         0,
         true},
        {"portrait_garden.jpg",
         Kind::photo,
         1080,
         1920,
         {214, 176, 0},
         Motif::bushes,
         "photo, JPEG"},
    };
    return items;
}

Item small_version(Item item)
{
    if (item.width > 0) {
        const bool lying = item.width > item.height;
        item.width = lying ? 320 : 180;
        item.height = lying ? 180 : 320;
    }
    return item;
}

std::string colours_as_json()
{
    std::string json;
    for (const Item &item : catalogue()) {
        if (item.kind == Kind::subtitle)
            continue;
        json += json.empty() ? "{\n" : ",\n";
        json += "  \"" + item.name + "\": [" + std::to_string(item.colour.red) + ", " +
                std::to_string(item.colour.green) + ", " + std::to_string(item.colour.blue) + "]";
    }
    return json + "\n}\n";
}

} // namespace sample
