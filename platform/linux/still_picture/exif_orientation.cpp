#include "still_picture/exif_orientation.h"

#include <memory>

#include <libexif/exif-data.h>

namespace platform {

namespace {

struct ExifDeleter {
    void operator()(ExifData *data) const { exif_data_unref(data); }
};

/** The tag's value; 0 when there is none. */
int tag_of(const std::vector<uint8_t> &exif)
{
    if (exif.empty())
        return 0;
    const std::unique_ptr<ExifData, ExifDeleter> data(
        exif_data_new_from_data(exif.data(), static_cast<unsigned int>(exif.size())));
    if (!data)
        return 0;
    // Only of the picture itself: the second directory tells how its thumbnail lies.
    const ExifEntry *entry = exif_content_get_entry(data->ifd[EXIF_IFD_0], EXIF_TAG_ORIENTATION);
    if (!entry || entry->format != EXIF_FORMAT_SHORT || entry->components < 1 || entry->size < 2)
        return 0;
    return exif_get_short(entry->data, exif_data_get_byte_order(data.get()));
}

} // namespace

Orientation upright_orientation(const std::vector<uint8_t> &exif)
{
    switch (tag_of(exif)) {
    case 2:
        return {false, true, false};
    case 3:
        return {false, true, true};
    case 4:
        return {false, false, true};
    case 5:
        return {true, false, false};
    case 6:
        return {true, true, false};
    case 7:
        return {true, true, true};
    case 8:
        return {true, false, true};
    default:
        return {};
    }
}

} // namespace platform
