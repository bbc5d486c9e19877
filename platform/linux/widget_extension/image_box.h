/** A picture scaled into its box, which clicks pass through. Main-loop thread only. */
#pragma once

#include <Elementary.h>

namespace platform {

/** @return the box's object, or null. */
Evas_Object *create_image_box(Evas_Object *parent);

/** Shows a picture file; null or a file that cannot be read empties the box. */
void set_image_file(Evas_Object *image_box, const char *path);

/** Whether the picture keeps its proportions; else it is stretched over the box. */
void set_image_proportional(Evas_Object *image_box, bool proportional);

} // namespace platform
