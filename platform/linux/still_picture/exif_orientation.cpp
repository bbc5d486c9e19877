#include "still_picture/exif_orientation.h"

#include <memory>

#include <libexif/exif-data.h>

namespace platform {

namespace {

struct ExifDeleter {
    void operator()(ExifData *data) const { exif_data_unref(data); }
};

constexpr int UPRIGHT = 1;

} // namespace

int exif_orientation(const std::vector<uint8_t> &exif)
{
    if (exif.empty())
        return UPRIGHT;
    const std::unique_ptr<ExifData, ExifDeleter> data(
        exif_data_new_from_data(exif.data(), static_cast<unsigned int>(exif.size())));
    if (!data)
        return UPRIGHT;
    // Only of the picture itself: the second directory tells how its thumbnail lies.
    const ExifEntry *entry = exif_content_get_entry(data->ifd[EXIF_IFD_0], EXIF_TAG_ORIENTATION);
    if (!entry || entry->format != EXIF_FORMAT_SHORT || entry->components < 1 || entry->size < 2)
        return UPRIGHT;
    const int value = exif_get_short(entry->data, exif_data_get_byte_order(data.get()));
    return value >= 1 && value <= 8 ? value : UPRIGHT;
}

} // namespace platform
