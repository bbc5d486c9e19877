// The EXIF data of a photo, from "Exif" on.

#include "fuzz.h"
#include "still_picture/exif_orientation.h"

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    // No segment of a JPEG file is larger.
    if (size < 65536)
        platform::upright_orientation({data, data + size});
    return 0;
}
